#include "platform/log/MessageLog.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>

#define TARVEX_LOGGING_CALLS
#include "platform/log/Calls.h"
#include "platform/log/Look.h"

namespace message_log {

namespace {

constexpr const char* Variable = "TARVEX_MESSAGE_LOG";

struct Dialog {
    std::string name;
    DLGPROC procedure;
    bool ended;
};

// A dialog that is about to be made: its first message tells its handle.
struct Coming {
    std::string name;
    DLGPROC procedure = nullptr;
};

WNDPROC mainProcedure = nullptr;
HWND mainWindow = nullptr;
Coming coming;
int dialogsMade = 0;

std::map<HWND, Dialog>& dialogs() {
    static std::map<HWND, Dialog> known;
    return known;
}

const char* path() {
    const char* value = std::getenv(Variable);
    return value ? value : "";
}

std::FILE* file() {
    static std::FILE* open = *path() ? std::fopen(path(), "w") : nullptr;
    return open;
}

// Tells that the program waits for nothing but time, also where it has no timer of its own.
constexpr UINT_PTR BeatTimer = 0x7E57;
constexpr UINT BeatPeriod = 50;

void lookIfAsked() {
    static const std::string asking = std::string(path()) + ".look";
    std::FILE* request = file() ? std::fopen(asking.c_str(), "r") : nullptr;
    if (!request) {
        return;
    }
    int number = 0;
    const bool whole = std::fscanf(request, "%d;", &number) == 1;
    std::fclose(request);
    if (!whole || std::remove(asking.c_str()) != 0) {
        return;
    }
    Line("look").number(number).write();
    writeWindows();
    writeDrawings();
    Line("end").number(number).write();
}

void CALLBACK beat(HWND, UINT, UINT_PTR, DWORD) {
    Line("beat").write();
    lookIfAsked();
}

void writeMessage(const std::string& name, UINT message, WPARAM wParam, LPARAM lParam) {
    const bool mayBeControl = message == WM_COMMAND || message == WM_HSCROLL || message == WM_VSCROLL;
    const int control = mayBeControl ? controlIdOf(reinterpret_cast<HWND>(lParam)) : -1;
    Line line("msg");
    line.text(name.c_str()).number(message).number(static_cast<long long>(wParam)).number(lParam);
    control < 0 ? line.text("-").write() : line.number(control).write();
}

LRESULT CALLBACK loggedMainProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    mainWindow = window;
    if (message == WM_CREATE) {
        SetTimer(window, BeatTimer, BeatPeriod, beat);
    }
    writeMessage("main", message, wParam, lParam);
    return mainProcedure(window, message, wParam, lParam);
}

INT_PTR CALLBACK loggedDialogProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto known = dialogs().find(window);
    if (coming.procedure && (known == dialogs().end() || known->second.ended)) {
        dialogs()[window] = {coming.name, coming.procedure, false};
        coming.procedure = nullptr;
    }
    Dialog& dialog = dialogs().at(window);
    const DLGPROC procedure = dialog.procedure;
    if (message == WM_DESTROY) {
        dialog.ended = true;
        forgetDrawings(window);
    }
    writeMessage(dialog.name, message, wParam, lParam);
    return procedure(window, message, wParam, lParam);
}

void expectDialog(LPCSTR name, DLGPROC procedure) {
    const auto id = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(name));
    coming = {std::to_string(id) + "." + std::to_string(++dialogsMade), procedure};
}

}  // namespace

Line& Line::text(const char* value) {
    line += '\t';
    for (; *value; ++value) {
        line += *value == '\t' || *value == '\n' || *value == '\r' ? ' ' : *value;
    }
    return *this;
}

Line& Line::number(long long value) {
    line += '\t' + std::to_string(value);
    return *this;
}

Line& Line::rect(const RECT& value) {
    return number(value.left).number(value.top).number(value.right - value.left).number(value.bottom - value.top);
}

void Line::write() {
    if (std::FILE* log = file()) {
        line += '\n';
        std::fwrite(line.data(), 1, line.size(), log);
        std::fflush(log);
    }
}

std::string nameOf(HWND window) {
    if (window && window == mainWindow) {
        return "main";
    }
    const auto known = dialogs().find(window);
    return known == dialogs().end() || known->second.ended ? std::string() : known->second.name;
}

}  // namespace message_log

using namespace message_log;

ATOM LoggedRegisterClassA(const WNDCLASSA* windowClass) {
    WNDCLASSA logged = *windowClass;
    mainProcedure = logged.lpfnWndProc;
    logged.lpfnWndProc = loggedMainProcedure;
    return RegisterClassA(&logged);
}

HWND LoggedCreateDialogParamA(HINSTANCE instance, LPCSTR name, HWND parent, DLGPROC procedure, LPARAM parameter) {
    expectDialog(name, procedure);
    return CreateDialogParamA(instance, name, parent, loggedDialogProcedure, parameter);
}

INT_PTR LoggedDialogBoxParamA(HINSTANCE instance, LPCSTR name, HWND owner, DLGPROC procedure, LPARAM parameter) {
    expectDialog(name, procedure);
    return DialogBoxParamA(instance, name, owner, loggedDialogProcedure, parameter);
}

int LoggedMessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    Line("box").text(text).text(caption).number(type).write();
    const int answer = MessageBoxA(owner, text, caption, type);
    Line("boxend").number(answer).write();
    return answer;
}

BOOL LoggedGetOpenFileNameA(OPENFILENAMEA* dialog) {
    Line("file").text("open").write();
    const BOOL answer = GetOpenFileNameA(dialog);
    Line("fileend").number(answer).text(dialog->lpstrFile).write();
    return answer;
}

BOOL LoggedGetSaveFileNameA(OPENFILENAMEA* dialog) {
    Line("file").text("save").write();
    const BOOL answer = GetSaveFileNameA(dialog);
    Line("fileend").number(answer).text(dialog->lpstrFile).write();
    return answer;
}
