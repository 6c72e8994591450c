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

// CR LF counts as one line end.
int ReadLetter(std::FILE* file) {
    const int letter = std::fgetc(file);
    if (letter != '\r') {
        return letter;
    }
    const int next = std::fgetc(file);
    if (next == '\n') {
        return next;
    }
    std::ungetc(next, file);
    return letter;
}

void AppendToLine(int line, size_t at, int letter) {
    if (line < LangLineCount && at + 1 < LangLineSize) {
        auto& slot = LangTable[static_cast<size_t>(line)];
        slot[at] = static_cast<char>(letter);
        slot[at + 1] = '\0';
    }
}

// The letter right after a "=" begins the slot's text whatever it is, even a newline: then the line does not count, and
// every later text lands one slot lower.
void ReadLines(std::FILE* file) {
    int line = 0;
    size_t length = 0;
    bool collecting = false;
    for (int letter = ReadLetter(file); letter != EOF; letter = ReadLetter(file)) {
        if (letter == '\n') {
            line = std::min(line + 1, LangLineCount);
            collecting = false;
        }
        if (collecting) {
            AppendToLine(line, length++, letter);
        }
        if (letter == '=') {
            const int first = ReadLetter(file);
            if (first == EOF) {
                return;
            }
            collecting = true;
            length = 0;
            AppendToLine(line, length++, first);
        }
    }
}

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
    ReadLines(file);
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
