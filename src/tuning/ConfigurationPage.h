// The Configuration page: the set-up of the installation, from the Lambda sensor to the gas level sensor.
#pragma once

#include "platform/Win32.h"

// The page's dialog procedure.
INT_PTR CALLBACK ConfigurationProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Fill the lists of PageWindow, a new window, and set its texts in the language of LangTable.
void FillConfigurationLists();
void ApplyConfigurationTexts();

// One poll: the identity and the blocks that the page shows, its refresh, the timer. Nothing at all while DialogPause
// is set; while a list is dropped down or a dialog of the page is open the timer only.
void TickConfiguration();

// Brings every control of PageWindow into line with the mirrors and sets LambdaPointList to the type that they name.
void RefreshConfigurationPage();
