// The pages: which dialog shows each and what belongs to making, redrawing and leaving it.
#pragma once

// Makes the page of AppPage for the first time, at the start of the program, and names it in the caption.
void OpenFirstPage();

// Replaces the showing page by `page` of enum Page; the showing one is left alone, only its highlight is renewed.
void SwitchPage(int page);

// Puts the main window and the showing page into the size of SizeProfile.
void RebuildPage();

// Puts the showing page into the language of LangTable, with its caption.
void ReloadPage();

// What the main window's paint draws for the page of AppPage.
void RedrawPage();

// Takes the highlight off all page items of the menu bar and gives it to that of AppPage.
void HighlightPageItem();
