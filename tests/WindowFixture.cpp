#include "WindowFixture.h"

#include <QWidget>
#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "drawing/Canvas.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "platform/linux/Layer.h"
#include "shell/AppState.h"
#include "shell/Language.h"
#include "shell/MainWindow.h"

int lastExitCode = -1;

namespace {

constexpr UINT_PTR FirstWakeTimer = 70;
constexpr UINT WakePeriod = 20;

void CALLBACK wake(HWND, UINT, UINT_PTR, DWORD) {
}

// A dialog's own keys, or the main window's accelerators where none is open.
bool takenBefore(HACCEL accelerators, MSG& message) {
    const layer::Window* active = layer::find(layer::activeWindow());
    return active && active->modal ? layer::dialogTakesKey(active->handle, message)
                                   : TranslateAcceleratorA(MainWindow, accelerators, &message) != 0;
}

}  // namespace

bool pumpUntil(const std::function<bool()>& condition, double seconds) {
    const HACCEL accelerators = LoadAcceleratorsA(nullptr, MAKEINTRESOURCEA(IDA_MAIN));
    const Moment end = layer::theClock().now() + static_cast<Moment>(seconds * static_cast<double>(Second));
    // A loop that waits for nothing must look at the condition all the same.
    static UINT_PTR nested = 0;
    const UINT_PTR timer = FirstWakeTimer + nested++;
    SetTimer(GetDesktopWindow(), timer, WakePeriod, wake);
    bool running = true;
    while (running && !condition() && layer::theClock().now() < end) {
        MSG message{};
        running = GetMessageA(&message, nullptr, 0, 0);
        if (!running) {
            lastExitCode = static_cast<int>(message.wParam);
        } else if (!takenBefore(accelerators, message)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    KillTimer(GetDesktopWindow(), timer);
    --nested;
    return condition();
}

void settle() {
    // A program that is busy without a pause never rests.
    constexpr int Enough = 6;
    HeldClock& clock = *HeldClock::current();
    const int before = clock.timesServed();
    bool rested = false;
    int rests = 0;
    clock.whenAtRest([&] {
        rested = true;
        // A dialog that has opened meanwhile goes on in a loop of its own.
        return ++rests <= Enough && PostMessageA(GetDesktopWindow(), WM_NULL, 0, 0);
    });
    EXPECT_TRUE(pumpUntil([&] {
        return rested || (clock.timesServed() > before + Enough && !layer::nextToPaint() && !clock.hasInput());
    }));
    clock.whenAtRest(nullptr);
}

std::vector<COLORREF> snapshot(HWND window, const RECT& area) {
    std::vector<COLORREF> pixels;
    const HDC dc = GetDC(window);
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            pixels.push_back(GetPixel(dc, x, y));
        }
    }
    ReleaseDC(window, dc);
    return pixels;
}

COLORREF pixelOf(HWND window, int x, int y) {
    return snapshot(window, {x, y, x + 1, y + 1}).front();
}

int countPixels(HWND window, const RECT& area, const std::function<bool(COLORREF)>& wanted) {
    return static_cast<int>(std::ranges::count_if(snapshot(window, area), wanted));
}

bool reddish(COLORREF colour) {
    return (colour & 0xFF) > 200 && (colour >> 8 & 0xFF) < 140 && (colour >> 16) < 140;
}

bool darkish(COLORREF colour) {
    return (colour & 0xFF) < 140 && (colour >> 8 & 0xFF) < 140 && (colour >> 16) < 140;
}

QWidget* widgetOf(HWND window) {
    const layer::Window* found = layer::find(window);
    return found ? found->outer.data() : nullptr;
}

RECT placeOf(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

std::string text(const RECT& rect) {
    return std::to_string(rect.left) + "," + std::to_string(rect.top) + " " + std::to_string(rect.right - rect.left) +
           "x" + std::to_string(rect.bottom - rect.top);
}

std::string textOf(HWND window) {
    const QWidget& widget = *widgetOf(window);
    return (widget.isWindow() ? widget.windowTitle() : widget.property("text").toString()).toStdString();
}

std::string marked(std::span<const UINT> items, UINT mark) {
    std::string numbers;
    for (size_t at = 0; at < items.size(); ++at) {
        if (GetMenuState(MainMenu, items[at], MF_BYCOMMAND) & mark) {
            numbers += (numbers.empty() ? "" : " ") + std::to_string(at + 1);
        }
    }
    return numbers;
}

std::string line(size_t number) {
    const int codePage = CurrentLanguage().charSet == RUSSIAN_CHARSET ? 1251 : 1250;
    return layer::decode(LangTable[number].data(), codePage).toStdString();
}

std::string hex(const simulator::Bytes& bytes) {
    const auto size = static_cast<qsizetype>(bytes.size());
    return QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()), size)
        .toHex(' ')
        .toUpper()
        .toStdString();
}

void WindowFixture::TearDown() {
    if (IsWindow(MainWindow)) {
        closeProgram();
    }
    server.reset();
}

void WindowFixture::writeFile(const std::string& name, const std::string& content) const {
    std::ofstream(folder / name, std::ios::binary) << content;
}

std::string WindowFixture::readFile(const std::string& name) const {
    std::stringstream content;
    content << std::ifstream(folder / name, std::ios::binary).rdbuf();
    return content.str();
}

void WindowFixture::plugController(int family, int firmware) {
    plug({family, firmware, false, 1, "", simulator::Scenario::Idle, false, {}});
}

void WindowFixture::plug(const simulator::Config& config) {
    server.reset();
    server = std::make_unique<HeldController>(*clock, config);
}

void WindowFixture::setLive(std::size_t byte, std::uint8_t value) {
    server->with([&](simulator::Controller& controller) { controller.overrideLive(byte, value); });
}

void WindowFixture::setCell(int cell, std::uint8_t value) {
    server->with([&](simulator::Controller& controller) { controller.cells.set(cell, value); });
}

bool WindowFixture::untilRead() {
    std::array<simulator::Bytes, 3> held;
    server->with([&](const simulator::Controller& controller) {
        held = {controller.block(2), controller.block(3), controller.block(4)};
    });
    return pumpUntil([&] {
        return LinkLost == 0 && std::ranges::equal(held[0], LiveBlock) && std::ranges::equal(held[2], ParamBlockB) &&
               std::equal(held[1].begin(), held[1].end(), ParamBlockA.begin());
    });
}

static std::string framesOf(const simulator::Log& log, bool onlyWrites) {
    std::string all;
    for (const simulator::LogEntry& entry : log) {
        if (entry.isWrite || !onlyWrites) {
            all += (all.empty() ? "" : ", ") + hex({entry.request.bytes.begin(), entry.request.bytes.end()});
        }
    }
    return all;
}

std::string WindowFixture::written() const {
    return framesOf(server->log(), true);
}

std::string WindowFixture::sent() const {
    std::string all = framesOf(server->log(), false);
    server->clearLog();
    return all;
}

void WindowFixture::start() {
    ASSERT_TRUE(startProgram());
}

void WindowFixture::startIn(const std::string& language, unsigned port) {
    writeIni(port, language);
    start();
    ASSERT_TRUE(pumpUntil([] { return widgetOf(MainWindow)->isActiveWindow() && !layer::nextToPaint(); }));
}

void WindowFixture::startOn(int family, int firmware) {
    plugController(family, firmware);
    startIn("ang");
    ASSERT_TRUE(pumpUntil([=] { return LinkLost == 0 && ControllerFamily == family; }));
    EXPECT_EQ(FirmwareVersion, firmware);
    ASSERT_TRUE(!FamilyServed() || untilRead());
}

int WindowFixture::closeProgram() {
    PostMessageA(MainWindow, WM_CLOSE, 0, 0);
    const int code = RunMessageLoop();
    forgetProgram();
    return code;
}

void WindowFixture::useProfile(int profile) {
    SendMessageA(MainWindow, WM_COMMAND, SizeItems[profile - 1], 0);
    repaint();
}

void WindowFixture::repaint() {
    InvalidateRect(MainWindow, nullptr, TRUE);
    InvalidateRect(PageWindow, nullptr, TRUE);
    UpdateWindow(MainWindow);
}

RECT WindowFixture::statusRow(int row) {
    const int top = 385 + 20 * row;
    return {DesignX(40), DesignY(top), DesignX(440), DesignY(top + 20)};
}
