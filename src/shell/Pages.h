// The pages: which dialog shows them and what belongs to their making.
#pragma once

// Makes the page of AppPage as PageWindow and fills it.
void OpenPage();

// Names the page of AppPage in the caption of the main window.
void ShowCaption();

// What the main window's paint draws for the page of AppPage.
void RedrawPage();

// Takes the highlight off all page items of the menu bar and gives it to that of AppPage.
void HighlightPageItem();
