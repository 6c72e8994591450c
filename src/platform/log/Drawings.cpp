// The drawing calls, each passed on and kept as long as what it drew may show.
#include <algorithm>
#include <string>
#include <vector>

#define TARVEX_LOGGING_CALLS
#include "platform/log/Calls.h"
#include "platform/log/Look.h"
#include "platform/log/MessageLog.h"

namespace message_log {

namespace {

// A line's pen is four pixels wide at most.
constexpr int PenMargin = 3;
constexpr size_t MostDrawings = 4000;

struct Drawing {
    HWND window;
    std::string call;
    RECT area;
    std::string text;
};

std::vector<Drawing>& drawings() {
    static std::vector<Drawing> standing;
    return standing;
}

bool fills(const std::string& call) {
    return call == "Rectangle" || call == "BitBlt" || call == "ExtTextOutA";
}

bool covers(const RECT& outer, const RECT& inner) {
    return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
           outer.bottom >= inner.bottom;
}

RECT around(POINT from, POINT to) {
    return {std::min(from.x, to.x) - PenMargin, std::min(from.y, to.y) - PenMargin, std::max(from.x, to.x) + PenMargin,
            std::max(from.y, to.y) + PenMargin};
}

POINT penPlace{};

}  // namespace

void noteDrawing(HWND window, const char* call, const RECT& area, const char* text) {
    if (!window) {
        return;
    }
    const RECT whole{std::min(area.left, area.right), std::min(area.top, area.bottom), std::max(area.left, area.right),
                     std::max(area.top, area.bottom)};
    Drawing drawing{window, call, whole, text};
    std::erase_if(drawings(), [&](const Drawing& old) {
        if (old.window != window || !covers(whole, old.area)) {
            return false;
        }
        return fills(drawing.call) || (covers(old.area, whole) && old.call == drawing.call);
    });
    // Texts are few and stand long.
    if (drawings().size() >= MostDrawings) {
        drawings().erase(
            std::ranges::find_if(drawings(), [](const Drawing& old) { return old.call != "ExtTextOutA"; }));
    }
    drawings().push_back(std::move(drawing));
}

void forgetDrawings(HWND window) {
    std::erase_if(drawings(), [&](const Drawing& drawing) { return drawing.window == window; });
}

void writeDrawings() {
    for (const Drawing& drawing : drawings()) {
        Line("draw")
            .text(nameOf(drawing.window).c_str())
            .text(drawing.call.c_str())
            .rect(drawing.area)
            .text(drawing.text.c_str())
            .write();
    }
}

}  // namespace message_log

using namespace message_log;

BOOL LoggedRectangle(HDC dc, int left, int top, int right, int bottom) {
    noteDrawing(windowOf(dc), "Rectangle", {left, top, right, bottom}, "");
    return Rectangle(dc, left, top, right, bottom);
}

BOOL LoggedRoundRect(HDC dc, int left, int top, int right, int bottom, int cornerWidth, int cornerHeight) {
    noteDrawing(windowOf(dc), "RoundRect", {left, top, right, bottom}, "");
    return RoundRect(dc, left, top, right, bottom, cornerWidth, cornerHeight);
}

BOOL LoggedEllipse(HDC dc, int left, int top, int right, int bottom) {
    noteDrawing(windowOf(dc), "Ellipse", {left, top, right, bottom}, "");
    return Ellipse(dc, left, top, right, bottom);
}

BOOL LoggedPolyline(HDC dc, const POINT* points, int count) {
    for (int index = 1; index < count; ++index) {
        noteDrawing(windowOf(dc), "Polyline", around(points[index - 1], points[index]), "");
    }
    return Polyline(dc, points, count);
}

BOOL LoggedMoveToEx(HDC dc, int x, int y, POINT* previous) {
    penPlace = {x, y};
    return MoveToEx(dc, x, y, previous);
}

BOOL LoggedLineTo(HDC dc, int x, int y) {
    noteDrawing(windowOf(dc), "LineTo", around(penPlace, {x, y}), "");
    penPlace = {x, y};
    return LineTo(dc, x, y);
}

BOOL LoggedBitBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY, DWORD operation) {
    noteDrawing(windowOf(to), "BitBlt", {x, y, x + width, y + height}, "");
    return BitBlt(to, x, y, width, height, from, fromX, fromY, operation);
}

BOOL LoggedExtTextOutA(HDC dc, int x, int y, UINT options, const RECT* rect, LPCSTR text, UINT count,
                       const INT* spacing) {
    SIZE cell{};
    GetTextExtentPoint32A(dc, text, static_cast<int>(count), &cell);
    RECT area{x, y, x + cell.cx, y + cell.cy};
    if (rect && (options & ETO_OPAQUE)) {
        area = {std::min(area.left, rect->left), std::min(area.top, rect->top), std::max(area.right, rect->right),
                std::max(area.bottom, rect->bottom)};
    }
    noteDrawing(windowOf(dc), "ExtTextOutA", area, std::string(text, count).c_str());
    return ExtTextOutA(dc, x, y, options, rect, text, count, spacing);
}
