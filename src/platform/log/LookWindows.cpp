#include <array>
#include <string>

#define TARVEX_LOGGING_CALLS
#include "platform/log/Calls.h"
#include "platform/log/Look.h"
#include "platform/log/MessageLog.h"

namespace message_log {

namespace {

constexpr UINT MenuOfPopup = 0x01E1;  // MN_GETHMENU
using Text = std::array<char, 512>;

std::string classOf(HWND window) {
    Text name{};
    GetClassNameA(window, name.data(), static_cast<int>(name.size()));
    return name.data();
}

RECT onScreen(HWND window) {
    RECT area{};
    GetClientRect(window, &area);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&area), 2);
    return area;
}

std::string entriesOf(HWND box) {
    std::string all;
    const LRESULT count = SendMessageA(box, CB_GETCOUNT, 0, 0);
    for (LRESULT index = 0; index < count; ++index) {
        Text entry{};
        SendMessageA(box, CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(entry.data()));
        all += (index ? "|" : "") + std::string(entry.data());
    }
    return all;
}

long long stateOf(HWND window, const std::string& kind) {
    return kind == "Button"              ? SendMessageA(window, BM_GETCHECK, 0, 0)
           : kind == "ComboBox"          ? SendMessageA(window, CB_GETCURSEL, 0, 0)
           : kind == "ScrollBar"         ? SendMessageA(window, SBM_GETPOS, 0, 0)
           : kind == "msctls_progress32" ? SendMessageA(window, PBM_GETPOS, 0, 0)
                                         : 0;
}

// A picture's text is its number.
bool isPicture(HWND window, const std::string& kind) {
    const LONG type = GetWindowLongA(window, GWL_STYLE) & SS_TYPEMASK;
    return kind == "Static" && (type == SS_ICON || type == SS_BITMAP);
}

void writeThumb(HWND bar, const std::string& name) {
    SCROLLBARINFO info{};
    info.cbSize = sizeof info;
    if (!GetScrollBarInfo(bar, OBJID_CLIENT, &info)) {
        return;
    }
    RECT thumb = onScreen(bar);
    if (GetWindowLongA(bar, GWL_STYLE) & SBS_VERT) {
        thumb.bottom = thumb.top + info.xyThumbBottom;
        thumb.top += info.xyThumbTop;
    } else {
        thumb.right = thumb.left + info.xyThumbBottom;
        thumb.left += info.xyThumbTop;
    }
    Line("part").text(name.c_str()).text("thumb").rect(thumb).write();
}

void writeWindow(HWND window, const std::string& name, const std::string& parent) {
    const std::string kind = classOf(window);
    RECT place{};
    GetWindowRect(window, &place);
    Text text{};
    GetWindowTextA(window, text.data(), static_cast<int>(text.size()));
    const std::string shown = kind == "ComboBox"        ? entriesOf(window)
                              : isPicture(window, kind) ? std::string()
                                                        : std::string(text.data());
    Line("win")
        .text(name.c_str())
        .text(kind.c_str())
        .number(parent.empty() ? 0 : GetDlgCtrlID(window))
        .text(parent.c_str())
        .rect(place)
        .rect(onScreen(window))
        .number(IsWindowVisible(window))
        .number(IsWindowEnabled(window))
        .number(GetFocus() == window)
        .number(stateOf(window, kind))
        .text(shown.c_str())
        .write();
    if (kind == "ScrollBar") {
        writeThumb(window, name);
    }
}

void writeTree(HWND window, const std::string& name, const std::string& parent) {
    writeWindow(window, name, parent);
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        const std::string own = nameOf(child);
        writeTree(child, own.empty() ? name + "/" + std::to_string(GetDlgCtrlID(child)) : own, name);
    }
}

// A menu's text is Unicode in the resource; its letters are told in the code page that has them all.
std::string itemText(HMENU menu, UINT item) {
    std::array<wchar_t, 512> wide{};
    GetMenuStringW(menu, item, wide.data(), static_cast<int>(wide.size()), MF_BYPOSITION);
    for (const UINT page : {1250U, 1251U}) {
        Text text{};
        BOOL replaced = FALSE;
        WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, wide.data(), -1, text.data(), static_cast<int>(text.size()),
                            nullptr, &replaced);
        if (!replaced) {
            return text.data();
        }
    }
    return "?";
}

void writeItems(HWND window, HMENU menu, int level) {
    for (int index = 0; index < GetMenuItemCount(menu); ++index) {
        const auto item = static_cast<UINT>(index);
        RECT place{};
        GetMenuItemRect(window, menu, item, &place);
        const UINT state = GetMenuState(menu, item, MF_BYPOSITION) & (MF_GRAYED | MF_CHECKED | MF_HILITE);
        Line("menu").number(level).number(index).rect(place).number(state).text(itemText(menu, item).c_str()).write();
    }
}

void writeEntries(HWND list) {
    RECT area{};
    GetClientRect(list, &area);
    const LRESULT count = SendMessageA(list, LB_GETCOUNT, 0, 0);
    const LRESULT marked = SendMessageA(list, LB_GETCURSEL, 0, 0);
    for (LRESULT index = SendMessageA(list, LB_GETTOPINDEX, 0, 0); index < count; ++index) {
        RECT place{};
        SendMessageA(list, LB_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&place));
        if (place.top >= area.bottom) {
            return;
        }
        MapWindowPoints(list, nullptr, reinterpret_cast<POINT*>(&place), 2);
        Text text{};
        SendMessageA(list, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text.data()));
        Line("entry").number(index).rect(place).number(index == marked).text(text.data()).write();
    }
}

BOOL CALLBACK writeTopLevel(HWND window, LPARAM) {
    if (!IsWindowVisible(window)) {
        return TRUE;
    }
    const std::string kind = classOf(window);
    const std::string name = nameOf(window);
    if (!name.empty()) {
        writeTree(window, name, "");
        if (GetMenu(window)) {
            writeItems(window, GetMenu(window), 0);
        }
    } else if (kind == "#32768") {
        writeItems(window, reinterpret_cast<HMENU>(SendMessageA(window, MenuOfPopup, 0, 0)), 1);
    } else if (kind == "ComboLBox") {
        writeEntries(window);
    } else if (kind == "#32770") {
        writeTree(window, "foreign", "");
    }
    return TRUE;
}

}  // namespace

void writeWindows() {
    EnumThreadWindows(GetCurrentThreadId(), writeTopLevel, 0);
}

HWND windowOf(HDC dc) {
    return WindowFromDC(dc);
}

int controlIdOf(HWND window) {
    return IsWindow(window) ? GetDlgCtrlID(window) : -1;
}

}  // namespace message_log
