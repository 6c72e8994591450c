#include "service/DiagramPage.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "dialogs/Dialogs.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

HBITMAP DiagramBitmap = nullptr;
int DiagramOriginX = 0;
int DiagramOriginY = 0;
int DiagramViewWidth = 0;
int DiagramViewHeight = 0;
unsigned DiagramScrollX = 0;
unsigned DiagramScrollY = 0;
unsigned DiagramMaxX = 0;
unsigned DiagramMaxY = 0;

namespace {

// Holds the picture from the making of the page's window to its end.
HDC PictureContext = nullptr;

constexpr unsigned ScrollLine = 10;
constexpr unsigned ScrollPage = 50;
constexpr unsigned LowestOffset = 1;

struct LanguageBitmap {
    std::string_view code;
    UINT bitmap;
};
constexpr UINT OtherBitmap = IDB_DIAGRAM_ENGLISH;
constexpr LanguageBitmap Bitmaps[] = {
    {"ang", IDB_DIAGRAM_ENGLISH},    {"pol", IDB_DIAGRAM_POLISH}, {"rus", IDB_DIAGRAM_RUSSIAN},
    {"lit", IDB_DIAGRAM_LITHUANIAN}, {"cs", IDB_DIAGRAM_CZECH},
};

UINT BitmapOfLanguage() {
    const auto* row = std::ranges::find(Bitmaps, std::string_view(LangCode.data()), &LanguageBitmap::code);
    return row == std::end(Bitmaps) ? OtherBitmap : row->bitmap;
}

// The sizes that are smaller than the picture, from SizeProfile 1 on.
struct ScrolledView {
    Place view;
    Place horizontal;
    Place vertical;
};
constexpr std::array<ScrolledView, 2> ScrolledViews = {{
    {{10, 10, 600, 370}, {10, 380, 600, 15}, {610, 10, 15, 370}},
    {{10, 10, 750, 485}, {10, 495, 750, 20}, {760, 10, 20, 485}},
}};

void SetView(const Place& view) {
    DiagramOriginX = view.x;
    DiagramOriginY = view.y;
    DiagramViewWidth = view.width;
    DiagramViewHeight = view.height;
    DiagramMaxX = static_cast<unsigned>(DiagramWidth - view.width);
    DiagramMaxY = static_cast<unsigned>(DiagramHeight - view.height);
}

void PlaceBar(int id, const Place& place, unsigned largest) {
    const HWND bar = GetDlgItem(PageWindow, id);
    PlaceControl(PageWindow, id, place);
    SetScrollRange(bar, SB_CTL, static_cast<int>(LowestOffset), static_cast<int>(largest), TRUE);
    SendMessageA(bar, SBM_SETPOS, 0, TRUE);
    ShowWindow(bar, SW_SHOW);
}

void ScrollView(const ScrolledView& scrolled) {
    SetView(scrolled.view);
    PlaceBar(IDC_DIAGRAM_HORIZONTAL, scrolled.horizontal, DiagramMaxX);
    PlaceBar(IDC_DIAGRAM_VERTICAL, scrolled.vertical, DiagramMaxY);
}

void CentreView() {
    RECT client{};
    GetClientRect(MainWindow, &client);
    SetView({(client.right - DiagramWidth) / 2, (client.bottom - DiagramHeight) / 2, DiagramWidth, DiagramHeight});
    ShowWindow(GetDlgItem(PageWindow, IDC_DIAGRAM_HORIZONTAL), SW_HIDE);
    ShowWindow(GetDlgItem(PageWindow, IDC_DIAGRAM_VERTICAL), SW_HIDE);
}

void LoadDiagram() {
    DiagramBitmap = LoadBitmapA(AppInstance, MAKEINTRESOURCEA(BitmapOfLanguage()));
    PictureContext = CreateCompatibleDC(nullptr);
    SelectObject(PictureContext, DiagramBitmap);
}

void FreeDiagram() {
    DeleteDC(PictureContext);
    PictureContext = nullptr;
    DeleteObject(DiagramBitmap);
    DiagramBitmap = nullptr;
}

void PaintPage(HWND window) {
    PAINTSTRUCT paint;
    BeginPaint(window, &paint);
    EndPaint(window, &paint);
    SetWindowPos(window, nullptr, 0, 0, ProfileWidth, ProfileHeight, 0);
    DrawDiagram();
}

// One step of an offset. A step back that reaches 0 or wraps below it ends at the lowest one, which is not 0.
unsigned ScrolledOffset(unsigned offset, unsigned largest, WORD code, WORD thumb) {
    const auto back = [=](unsigned by) {
        const unsigned moved = offset - by;
        return moved == 0 || moved > largest ? LowestOffset : moved;
    };
    switch (code) {
        case SB_THUMBTRACK:
            return thumb;
        case SB_PAGEDOWN:
            return std::min(offset + ScrollPage, largest);
        case SB_PAGEUP:
            return back(ScrollPage);
        case SB_LINEDOWN:
            return std::min(offset + ScrollLine, largest);
        case SB_LINEUP:
            return back(ScrollLine);
        default:
            return offset;
    }
}

void Scroll(int bar, unsigned& offset, unsigned largest, WPARAM wParam) {
    offset = ScrolledOffset(offset, largest, LOWORD(wParam), HIWORD(wParam));
    SendDlgItemMessageA(PageWindow, bar, SBM_SETPOS, offset, TRUE);
    DrawDiagram();
}

}  // namespace

INT_PTR CALLBACK DiagramProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            return 1;
        case WM_PAINT:
            PaintPage(window);
            return 0;
        case WM_HSCROLL:
            Scroll(IDC_DIAGRAM_HORIZONTAL, DiagramScrollX, DiagramMaxX, wParam);
            return 0;
        case WM_VSCROLL:
            Scroll(IDC_DIAGRAM_VERTICAL, DiagramScrollY, DiagramMaxY, wParam);
            return 0;
        case WM_COMMAND:
        case WM_TIMER:
            return 0;
        case WM_DESTROY:
            FreeDiagram();
            return 0;
        default:
            DefWindowProcA(window, message, wParam, lParam);
            return 0;
    }
}

void FillDiagramPage() {
    DiagramScrollX = 0;
    DiagramScrollY = 0;
    const auto profile = static_cast<size_t>(SizeProfile - 1);
    if (profile < ScrolledViews.size()) {
        ScrollView(ScrolledViews[profile]);
    } else {
        CentreView();
    }
    LoadDiagram();
    DrawDiagram();
}

void DrawDiagram() {
    const HDC page = GetDC(PageWindow);
    BitBlt(page, DiagramOriginX, DiagramOriginY, DiagramViewWidth, DiagramViewHeight, PictureContext,
           static_cast<int>(DiagramScrollX), static_cast<int>(DiagramScrollY), SRCCOPY);
    ReleaseDC(PageWindow, page);
}
