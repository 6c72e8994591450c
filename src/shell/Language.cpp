#include "shell/Language.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "model/Text.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/Ini.h"
#include "shell/Pages.h"
#include "shell/Ports.h"
#include "shell/SizeProfiles.h"

namespace {

constexpr LCID LocaleOf(WORD primary) {
    return MAKELCID(MAKELANGID(primary, SUBLANG_DEFAULT), SORT_DEFAULT);
}

constexpr std::array<Language, 5> Languages = {{
    {"pol", IDM_MENU_POLISH, IDM_LANGUAGE_POLISH, IDB_TAG_POLISH, IDB_TAG_POLISH_CHOSEN, EASTEUROPE_CHARSET,
     LocaleOf(LANG_POLISH)},
    {"ang", IDM_MENU_ENGLISH, IDM_LANGUAGE_ENGLISH, IDB_TAG_ENGLISH, IDB_TAG_ENGLISH_CHOSEN, EASTEUROPE_CHARSET,
     LocaleOf(LANG_ENGLISH)},
    {"rus", IDM_MENU_RUSSIAN, IDM_LANGUAGE_RUSSIAN, IDB_TAG_RUSSIAN, IDB_TAG_RUSSIAN_CHOSEN, RUSSIAN_CHARSET,
     LocaleOf(LANG_RUSSIAN)},
    {"lit", IDM_MENU_LITHUANIAN, IDM_LANGUAGE_LITHUANIAN, IDB_TAG_LITHUANIAN, IDB_TAG_LITHUANIAN_CHOSEN,
     EASTEUROPE_CHARSET, LocaleOf(LANG_LITHUANIAN)},
    {"cs", IDM_MENU_CZECH, IDM_LANGUAGE_CZECH, IDB_TAG_CZECH, IDB_TAG_CZECH_CHOSEN, EASTEUROPE_CHARSET,
     LocaleOf(LANG_CZECH)},
}};

constexpr Language OtherLanguage = {"", IDM_MENU_POLISH,    IDM_LANGUAGE_POLISH,  0,
                                    0,  EASTEUROPE_CHARSET, LocaleOf(LANG_POLISH)};

// The two tags of each language, loaded once and kept to the end of the process, since menus only refer to them.
struct TagPair {
    HBITMAP plain;
    HBITMAP chosen;
};
std::array<TagPair, Languages.size()> Tags{};

}  // namespace

const Language& CurrentLanguage() {
    const std::string_view code = LangCode.data();
    const auto* found = std::ranges::find_if(Languages, [&](const Language& row) { return code == row.code; });
    return found == Languages.end() ? OtherLanguage : *found;
}

void ReadLanguageFile() {
    SetThreadLocale(CurrentLanguage().locale);
    SetCurrentDirectoryA(StartDirectory.data());
    std::array<char, 96> path{};
    FormatText(path, "Lang/Tarvex_lang.%s", LangCode.data());
    std::FILE* file = std::fopen(path.data(), "r");
    if (!file) {
        return;
    }
    ReadLanguageLines(file);
    std::fclose(file);
}

void ChooseLanguage(UINT menuItem) {
    const auto* chosen = std::ranges::find(Languages, menuItem, &Language::menuItem);
    CopyText(LangCode, chosen->code);
    WriteIni();
    ReadLanguageFile();
    ReloadPage();
    LoadLanguageMenu();
    MarkMenu();
    HighlightPageItem();
}

void LoadLanguageMenu() {
    const HMENU before = MainMenu;
    MainMenu = LoadMenuA(AppInstance, MAKEINTRESOURCEA(CurrentLanguage().menu));
    SetMenu(MainWindow, MainMenu);
    DrawMenuBar(MainWindow);
    MainMenu = GetMenu(MainWindow);
    if (before != MainMenu) {
        DestroyMenu(before);
    }
    for (const Language& row : Languages) {
        const UINT check = row.menuItem == CurrentLanguage().menuItem ? MF_CHECKED : MF_UNCHECKED;
        CheckMenuItem(MainMenu, row.menuItem, MF_BYCOMMAND | check);
    }
}

void SetLanguageBitmaps() {
    DrawMenuBar(MainWindow);
    for (size_t index = 0; index < Languages.size(); ++index) {
        const Language& row = Languages[index];
        TagPair& pair = Tags[index];
        if (!pair.plain) {
            pair = {LoadBitmapA(AppInstance, MAKEINTRESOURCEA(row.tag)),
                    LoadBitmapA(AppInstance, MAKEINTRESOURCEA(row.chosenTag))};
        }
        SetMenuItemBitmaps(MainMenu, row.menuItem, MF_BYCOMMAND, pair.plain, pair.chosen);
    }
}

void MarkMenu() {
    SetLanguageBitmaps();
    EnableSizeMenu(AllowedProfile);
    CheckPortMenu(PortMenuCode);
    ApplySizeProfile();
}
