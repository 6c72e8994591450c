// The window and control styles that the resource script uses, as numbers, since its compiler is also run where no
// Windows headers are.
#pragma once

#define LANG_NEUTRAL 0x00
#define SUBLANG_NEUTRAL 0x00

#define WS_CHILD 0x40000000L
#define WS_POPUP 0x80000000L
#define WS_VISIBLE 0x10000000L
#define WS_CAPTION 0x00C00000L
#define WS_SYSMENU 0x00080000L
#define WS_VSCROLL 0x00200000L
#define WS_TABSTOP 0x00010000L
#define WS_EX_TRANSPARENT 0x00000020L

#define DS_MODALFRAME 0x80L

#define BS_PUSHBUTTON 0x00000000L
#define BS_DEFPUSHBUTTON 0x00000001L
#define BS_MULTILINE 0x00002000L

#define SS_LEFT 0x00L
#define SS_CENTER 0x01L
#define SS_RIGHT 0x02L
#define SS_ICON 0x03L
#define SS_BITMAP 0x0EL
#define SS_ETCHEDHORZ 0x10L
#define SS_ETCHEDFRAME 0x12L
#define SS_CENTERIMAGE 0x0200L

#define CBS_DROPDOWNLIST 0x0003L

#define VK_F4 0x73
