// What stands on the screen, as each system knows it. All places are on the screen.
//
//   win NAME CLASS ID PARENT RECT CLIENTRECT SHOWN ENABLED FOCUS STATE TEXT
//   part WINDOW PART RECT                        of a scroll bar: its thumb
//   menu LEVEL INDEX RECT STATE TEXT             level 0 is the bar, 1 an open popup
//   entry INDEX RECT MARKED TEXT                 of an open list, as far as it shows
//   draw WINDOW CALL RECT TEXT                   in client coordinates of the window
//
// Rectangles are left, top, width and height. A control's name is its parent's with its id behind it.
#pragma once

#include "platform/Win32.h"

namespace message_log {

void writeWindows();
HWND windowOf(HDC dc);
// -1 for what is no control.
int controlIdOf(HWND window);

}  // namespace message_log
