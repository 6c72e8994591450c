#include "shell/Pages.h"

#include <algorithm>
#include <array>

#include "readings/ReadingsDrawing.h"
#include "readings/ReadingsPage.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

namespace {

void DrawReadingsPage() {
    DrawReadingsFrame();
    UpdateReadings();
    HighlightPageItem();
}

struct PageRow {
    Page page;
    UINT dialog;
    DLGPROC procedure;
    int captionLine;
    void (*fill)();
    void (*redraw)();
};

constexpr PageRow Pages[] = {
    {ReadingsPage, IDD_READINGS, ReadingsProc, 175, DrawReadingsFrame, DrawReadingsPage},
};

const PageRow& CurrentPage() {
    return *std::ranges::find(Pages, AppPage, &PageRow::page);
}

struct PageItem {
    Page page;
    UINT command;
};

constexpr PageItem PageItems[] = {
    {ReadingsPage, IDM_READINGS}, {ConfigurationPage, IDM_CONFIGURATION}, {OptionsPage, IDM_OPTIONS},
    {DiagramPage, IDM_DIAGRAM},   {ResetPage, IDM_RESET},                 {OscilloscopePage, IDM_OSCILLOSCOPE},
};

}  // namespace

void OpenPage() {
    const PageRow& row = CurrentPage();
    PageWindow = CreateDialogParamA(AppInstance, MAKEINTRESOURCEA(row.dialog), MainWindow, row.procedure, 0);
    // The Readings page lies under the borders of the client area by a few pixels, which centres its panels.
    SetWindowPos(PageWindow, nullptr, -5, -10, ProfileWidth, ProfileHeight, 0);
    row.fill();
}

void ShowCaption() {
    SetWindowTextA(MainWindow, LangTable[static_cast<size_t>(CurrentPage().captionLine)].data());
}

void RedrawPage() {
    CurrentPage().redraw();
}

void HighlightPageItem() {
    for (const PageItem& item : PageItems) {
        HiliteMenuItem(MainWindow, MainMenu, item.command, MF_BYCOMMAND | MF_UNHILITE);
    }
    const auto* shown = std::ranges::find(PageItems, AppPage, &PageItem::page);
    HiliteMenuItem(MainWindow, MainMenu, shown->command, MF_BYCOMMAND | MF_HILITE);
}
