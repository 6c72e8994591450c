// The Diagram page: the wiring diagram of the installation in the user's language, scrolled in the two small sizes and
// centred in the others. It uses neither the link nor the controller's data.
#pragma once

#include "platform/Win32.h"

// The loaded picture and what of it shows, in pixels. Made with the page's window and renewed with it.
extern HBITMAP DiagramBitmap;
constexpr int DiagramWidth = 961;
constexpr int DiagramHeight = 636;
// Upper left corner of the view on the page, maybe negative where the picture is centred, and the size of the view.
extern int DiagramOriginX;
extern int DiagramOriginY;
extern int DiagramViewWidth;
extern int DiagramViewHeight;
// The picture's pixel in the view's corner: 0 on a new page, else 1 to the largest offset.
extern unsigned DiagramScrollX;
extern unsigned DiagramScrollY;
extern unsigned DiagramMaxX;
extern unsigned DiagramMaxY;

INT_PTR CALLBACK DiagramProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// What follows each making of the page's window: view, scroll bars and picture.
void FillDiagramPage();
// Copies the view to the page.
void DrawDiagram();
