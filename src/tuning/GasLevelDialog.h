// The gas level sensor: its type, the four thresholds on scroll bars, and five lamps that show the level of now.
#pragma once

#include "platform/Win32.h"

// Runs the dialog over the page with TuningDialogOpen set until it closes.
void RunGasLevelDialog();

// Brings controls and lamps into line with the mirrors and the thresholds and level that the last tick took from
// ParamBlockC.
void RefreshGasLevelDialog(HWND window);
