// The drawing of the Readings page, straight on PageWindow: what stands still, and the live fields of a ReadingsModel.
#pragma once

#include "drawing/Canvas.h"
#include "readings/ReadingsModel.h"

// Arc point, 0 to 160, at which the needle was last drawn. From process start to exit; DrawRpmGauge writes it.
extern unsigned NeedleIndex;

// The page without its values, with the text of LearnButton and the gauge. Called when the page is made and on each
// paint of the main window, before UpdateReadings.
void DrawReadingsFrame();

// The gauge at EngineRPM on the canvas of the caller, whose colours are left as the gauge needed them last. limitRpm is
// the LPG-off speed that colours the scale.
void DrawRpmGauge(Canvas& canvas, unsigned limitRpm);

// All live fields, in their order, over what the frame or the last evaluation left.
void DrawReadings(const ReadingsModel& model);

// Writes language line 0 to 208 on the last status line in red, outside of an evaluation.
void DrawStatusNotice(int line);
