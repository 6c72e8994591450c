#include "shell/Pages.h"

#include <algorithm>
#include <array>

#include "readings/ReadingsDrawing.h"
#include "readings/ReadingsPage.h"
#include "resources/Ids.h"
#include "scope/OscilloscopePage.h"
#include "service/DiagramPage.h"
#include "service/ResetPage.h"
#include "shell/AppState.h"
#include "shell/SizeProfiles.h"
#include "tuning/ConfigurationPage.h"
#include "tuning/OptionsPage.h"

namespace {

constexpr size_t ProfileCount = 5;

void Nothing() {
}

void FillConfigurationPage() {
    FillConfigurationLists();
    ApplyConfigurationTexts();
}

void FillOptionsPage() {
    FillOptionsLists();
    ApplyOptionsTexts();
}

void RedrawReadings() {
    DrawReadingsFrame();
    UpdateReadings();
    HighlightPageItem();
}

struct PageRow {
    Page page;
    UINT menuItem;
    std::array<UINT, ProfileCount> dialogs;  // by SizeProfile
    int captionLine;
    DLGPROC procedure;
    void (*fill)();    // after each making of the window
    void (*redraw)();  // in the paint of the main window
    // A change of size or language makes the window anew; else it stays and `retext` renews its texts.
    bool remade;
    void (*retext)();
    // The page also puts the main window back to its place when it is made.
    bool placesMainWindow;
};

constexpr std::array<UINT, ProfileCount> ForAllSizes(UINT dialog) {
    return {dialog, dialog, dialog, dialog, dialog};
}

// In the order in which the highlight is taken off their menu items.
constexpr PageRow Pages[] = {
    {ReadingsPage, IDM_READINGS, ForAllSizes(IDD_READINGS), 175, ReadingsProc, DrawReadingsFrame, RedrawReadings, true,
     Nothing, false},
    {ConfigurationPage,
     IDM_CONFIGURATION,
     {IDD_CONFIGURATION1, IDD_CONFIGURATION2, IDD_CONFIGURATION3, IDD_CONFIGURATION4, IDD_CONFIGURATION5},
     176,
     ConfigurationProc,
     FillConfigurationPage,
     Nothing,
     true,
     Nothing,
     false},
    {OptionsPage,
     IDM_OPTIONS,
     {IDD_OPTIONS1, IDD_OPTIONS2, IDD_OPTIONS3, IDD_OPTIONS4, IDD_OPTIONS5},
     177,
     OptionsProc,
     FillOptionsPage,
     Nothing,
     true,
     Nothing,
     false},
    {DiagramPage, IDM_DIAGRAM, ForAllSizes(IDD_DIAGRAM), 178, DiagramProc, FillDiagramPage, DrawDiagram, true, Nothing,
     true},
    {ResetPage, IDM_RESET, ForAllSizes(IDD_RESET), 179, ResetProc, Nothing, PlaceResetPage, false, ApplyResetTexts,
     false},
    {OscilloscopePage, IDM_OSCILLOSCOPE, ForAllSizes(IDD_OSCILLOSCOPE), 180, ScopeProc, FillScopePage, RedrawScope,
     true, Nothing, false},
};

const PageRow& RowOf(int page) {
    return *std::ranges::find(Pages, page, &PageRow::page);
}

void CreatePage(const PageRow& row) {
    const UINT dialog = row.dialogs[static_cast<size_t>(SizeProfile - 1)];
    PageWindow = CreateDialogParamA(AppInstance, MAKEINTRESOURCEA(dialog), MainWindow, row.procedure, 0);
    // A page places itself and starts its timer at its first paint, which the main window's paint would take from it.
    UpdateWindow(PageWindow);
    // That has validated what the page covers of the main window, whose paint has to finish the page.
    InvalidateRect(MainWindow, nullptr, FALSE);
}

// The ending page's procedure may look at PageWindow, which never names a window that has gone.
void MakePage(const PageRow& row) {
    const HWND before = PageWindow;
    PageWindow = nullptr;
    DestroyWindow(before);
    // A list that was open went with its page, without a word.
    ComboOpen = 0;
    CreatePage(row);
    row.fill();
}

void ShowCaption(const PageRow& row) {
    SetWindowTextA(MainWindow, LangTable[static_cast<size_t>(row.captionLine)].data());
}

}  // namespace

void OpenFirstPage() {
    const PageRow& row = RowOf(ReadingsPage);
    CreatePage(row);
    PlaceReadingsPage(PageWindow);
    row.fill();
    AppPage = row.page;
    ShowCaption(row);
}

void SwitchPage(int page) {
    if (page != AppPage) {
        const PageRow& row = RowOf(page);
        MakePage(row);
        AppPage = row.page;
        ShowCaption(row);
        if (row.placesMainWindow) {
            RebuildPage();
        }
    }
    HighlightPageItem();
}

void RebuildPage() {
    ApplySizeProfile();
    ReadDesktop();
    PlaceMainWindow();
    ChooseFonts();
    const PageRow& row = RowOf(AppPage);
    if (row.remade) {
        MakePage(row);
    }
}

void ReloadPage() {
    const PageRow& row = RowOf(AppPage);
    if (row.remade) {
        MakePage(row);
    }
    row.retext();
    ShowCaption(row);
    if (row.placesMainWindow) {
        RebuildPage();
    }
}

void RedrawPage() {
    RowOf(AppPage).redraw();
}

void HighlightPageItem() {
    for (const PageRow& row : Pages) {
        HiliteMenuItem(MainWindow, MainMenu, row.menuItem, MF_BYCOMMAND | MF_UNHILITE);
    }
    HiliteMenuItem(MainWindow, MainMenu, RowOf(AppPage).menuItem, MF_BYCOMMAND | MF_HILITE);
}
