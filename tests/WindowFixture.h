// What window tests share: the message loop until something holds, pixels, and the program itself with a simulated
// controller at COM 1.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/Win32.h"
#include "simulator/Server.h"

class QWidget;

constexpr COLORREF Black = RGB(0, 0, 0);
constexpr COLORREF White = RGB(255, 255, 255);
constexpr COLORREF Silver = RGB(192, 192, 192);
constexpr COLORREF Grey = RGB(128, 128, 128);
constexpr COLORREF PaleGrey = RGB(210, 210, 210);
constexpr COLORREF Red = RGB(255, 0, 0);
constexpr COLORREF DarkGreen = RGB(0, 128, 0);
constexpr COLORREF Green = RGB(0, 255, 0);
constexpr COLORREF Blue = RGB(0, 0, 255);
constexpr COLORREF Cyan = RGB(0, 255, 255);
constexpr COLORREF Yellow = RGB(255, 255, 0);
constexpr COLORREF Navy = RGB(0, 0, 128);
constexpr COLORREF Olive = RGB(128, 128, 0);

// Runs the loop that the program runs, accelerators included, until the condition holds. False when that took too long
// or the quit message came, whose code is then in lastExitCode.
bool pumpUntil(const std::function<bool()>& condition, double seconds = 10);
extern int lastExitCode;
// Timer messages that this loop has handed out.
extern int timersRung;

COLORREF pixelOf(HWND window, int x, int y);
int countPixels(HWND window, const RECT& area, const std::function<bool(COLORREF)>& wanted);
std::vector<COLORREF> snapshot(HWND window, const RECT& area);
// Antialiased letters have few pixels of their full colour.
bool reddish(COLORREF colour);
bool darkish(COLORREF colour);

// What the user's mouse and keyboard meet.
QWidget* widgetOf(HWND window);
RECT placeOf(HWND window);
// A message box or a picture of a fault is easier to find with the numbers in it.
std::string hex(const simulator::Bytes& bytes);

// A folder of its own as working directory, with Lang, and with every port leading nowhere.
class WindowFixture : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    void writeFile(const std::string& name, const std::string& content) const;
    std::string readFile(const std::string& name) const;
    void writeIni(unsigned port, const std::string& language) const;

    // A controller at COM 1 that answers at once and whose engine stands still, so that pictures do too.
    void plugController(int family);
    // Makes it show a live byte or hold a cell.
    void setLive(std::size_t byte, std::uint8_t value);
    void setCell(int cell, std::uint8_t value);
    // Until the program's mirrors hold all that the controller holds now.
    bool untilRead();
    std::vector<simulator::Bytes> writtenFrames() const;

    // Starts the program as its entry does, without the loop.
    void start();
    // Closes it as its user does; the exit code of the loop, with the state as at a process's start.
    int closeProgram();
    // Chooses a size, 1 to 5, as the menu does, and paints it.
    void useProfile(int profile);
    static void repaint();

    COLORREF page(int x, int y) const;
    // Letters in a row of the status panel, 1 to 5.
    int redInRow(int row) const;
    int blackInRow(int row) const;
    RECT statusRow(int row) const;

    std::filesystem::path folder;
    std::unique_ptr<simulator::Server> server;

private:
    std::string usualPorts;
    std::filesystem::path usualFolder;
};
