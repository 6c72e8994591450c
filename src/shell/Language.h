// The languages: their files, menus and character sets.
#pragma once

#include <cstdio>

#include "platform/Win32.h"

// One language and what hangs on it.
struct Language {
    const char* code;  // LangCode, compared exactly
    UINT menu;
    UINT menuItem;
    UINT tag;        // bitmap of the menu item while not chosen, 0 for none
    UINT chosenTag;  // and while chosen
    BYTE charSet;    // of the fonts
    LCID locale;     // of the texts in controls
};

// The row of LangCode; a code that has none gets a row with the Polish menu.
const Language& CurrentLanguage();

// Fills LangTable from "Lang/Tarvex_lang.<LangCode>" under StartDirectory. Without the file the table keeps what it
// holds.
void ReadLanguageFile();

// The same from an open file, which stays open. The text of a line is what follows its last "=" and the line's number,
// from 0, is its slot. A text is cut to 127 bytes and lines beyond the table are left out.
void ReadLanguageLines(std::FILE* file);

// A choice from the Language menu by its item's id: stores the code in the ini, reads the texts, renews the page and
// the menu with all its marks.
void ChooseLanguage(UINT menuItem);

// Loads the language's menu into MainMenu and the window, and checks the language's item. The menu before it is freed.
void LoadLanguageMenu();

// Redraws the bar and gives the language items their tag bitmaps.
void SetLanguageBitmaps();

// Puts all marks on a freshly loaded menu, which has none: tags, grey sizes, the port and the size.
void MarkMenu();
