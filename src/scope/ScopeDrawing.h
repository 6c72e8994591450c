// What the Oscilloscope page draws, straight on its window in design coordinates, from what ScopeCapture.h records.
#pragma once

#include "scope/ScopeCapture.h"

// Panels, labels and time axis, and the page's two controls as CursorMode wants them. Reads ParamBlockA first, so that
// the labels tell the controller's present sensors.
void DrawScopeFrame();
// Panels and the whole history.
void DrawScopeTraces();
// The newest column, with the marker before it and what the last sweep left there wiped.
void DrawSweptColumn(const SweptColumn& swept);
// The value cursor at CursorPos, what it covered at CursorPrevPos repaired, and the marker of the held sweep.
void DrawScopeCursor();

enum class ScopeMoment : BYTE {
    Now,     // the mirrors
    Stored,  // a column under the value cursor
};
// The four read-outs and the status box; leaves the speed shown in EngineRPM.
void ScopeReadouts(const ScopeSample& sample, ScopeMoment moment);
