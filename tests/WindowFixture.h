// What window tests share: the message loop until something holds, pixels, and the program itself with a simulated
// controller at COM 1.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "HeldController.h"
#include "Program.h"
#include "platform/Win32.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

class QWidget;

constexpr COLORREF Black = RGB(0, 0, 0), White = RGB(255, 255, 255), Silver = RGB(192, 192, 192);
constexpr COLORREF Grey = RGB(128, 128, 128), PaleGrey = RGB(210, 210, 210), Red = RGB(255, 0, 0);
constexpr COLORREF DarkGreen = RGB(0, 128, 0), Green = RGB(0, 255, 0), Blue = RGB(0, 0, 255), Cyan = RGB(0, 255, 255);
constexpr COLORREF Yellow = RGB(255, 255, 0), Navy = RGB(0, 0, 128), Olive = RGB(128, 128, 0);

// Runs the loop that the program runs, accelerators included, until the condition holds. False when so much time has
// passed on the clock that is held, or the quit message came, whose code is then in lastExitCode.
bool pumpUntil(const std::function<bool()>& condition, double seconds = 10);
extern int lastExitCode;

COLORREF pixelOf(HWND window, int x, int y);
int countPixels(HWND window, const RECT& area, const std::function<bool(COLORREF)>& wanted);
std::vector<COLORREF> snapshot(HWND window, const RECT& area);
// Antialiased letters have few pixels of their full colour.
bool reddish(COLORREF colour);
bool darkish(COLORREF colour);

// What the user's mouse and keyboard meet.
QWidget* widgetOf(HWND window);
RECT placeOf(HWND window);
// "left,top widthxheight"
std::string text(const RECT& rect);
std::string textOf(HWND window);
std::string hex(const simulator::Bytes& bytes);

// In the order of the menus.
constexpr UINT PortItems[] = {IDM_COM1, IDM_COM2, IDM_COM3, IDM_COM4, IDM_COM5,
                              IDM_COM6, IDM_COM7, IDM_COM8, IDM_COM9, IDM_COM_OTHER};
constexpr UINT SizeItems[] = {IDM_SIZE_640X480, IDM_SIZE_800X600, IDM_SIZE_1024X768, IDM_SIZE_1280X960,
                              IDM_SIZE_1280X1024};
constexpr UINT LanguageItems[] = {IDM_LANGUAGE_POLISH, IDM_LANGUAGE_ENGLISH, IDM_LANGUAGE_RUSSIAN,
                                  IDM_LANGUAGE_LITHUANIAN, IDM_LANGUAGE_CZECH};
// The numbers, from 1 on, of the items with the mark: "3 5".
std::string marked(std::span<const UINT> items, UINT mark);
// A line of the language in use, as its letters.
std::string line(size_t number);

// Runs the program until all that was posted, typed and invalidated has been dealt with; no time passes.
void settle();

// A folder of its own as working directory, with Lang, and with every port leading nowhere. Time is held.
class WindowFixture : public testing::Test {
protected:
    WindowFixture() : folder(place.path), clock(std::make_unique<HeldClock>()) {
    }
    void TearDown() override;

    void writeFile(const std::string& name, const std::string& content) const;
    std::string readFile(const std::string& name) const;
    void writeIni(unsigned port, const std::string& language) const {
        place.writeIni(port, language);
    }

    // At COM 1, in place of the one there.
    void plug(const simulator::Config& config);
    // A controller at COM 1 that answers at once and whose engine stands still, so that pictures do too.
    void plugController(int family, int firmware = 5);
    // Makes it show a live byte or hold a cell.
    void setLive(std::size_t byte, std::uint8_t value);
    void setCell(int cell, std::uint8_t value);
    // Until the program's mirrors hold all that the controller holds now.
    bool untilRead();
    // Frames as hexadecimal bytes, separated by commas: the written ones of the log, and all of it, which is then
    // empty.
    std::string written() const;
    std::string sent() const;

    // Starts the program as its entry does, without the loop.
    void start();
    // The same with an ini file, until all is painted and the keyboard is the program's.
    void startIn(const std::string& language, unsigned port = 1);
    // The same on a controller at COM 1 that is then read.
    void startOn(int family, int firmware = 5);
    // Closes it as its user does; the exit code of the loop, with the state as at a process's start.
    int closeProgram();
    // Chooses a size, 1 to 5, as the menu does, and paints it.
    void useProfile(int profile);
    static void repaint();

    static COLORREF page(int x, int y) {
        return pixelOf(PageWindow, x, y);
    }
    static RECT statusRow(int row);
    // Letters in a row of the status panel, 1 to 5.
    static int redInRow(int row) {
        return countPixels(PageWindow, statusRow(row), reddish);
    }
    static int blackInRow(int row) {
        return countPixels(PageWindow, statusRow(row), darkish);
    }

    const ProgramFolder place;
    const std::filesystem::path& folder;
    std::unique_ptr<HeldClock> clock;
    std::unique_ptr<HeldController> server;
};
