// The Emulation builder: the two times of the emulated Lambda signal, and the square wave that comes of them.
#pragma once

#include "platform/Win32.h"

// Runs the dialog over the page with TuningDialogOpen set until it closes.
void RunEmulationDialog();

// Draws scale and wave on the dialog's client area, in pixels from 10, 10 to 550, 165: the wave with the times last
// read by a tick, the scale in volts by the Lambda sensor type (ParamBlockA, byte 2).
void DrawEmulationPlot(HWND window);
