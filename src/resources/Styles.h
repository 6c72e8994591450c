// The window and control styles that the resource script uses, as numbers, since its compiler is also run where no
// Windows headers are.
#pragma once

#define LANG_NEUTRAL 0x00
#define SUBLANG_NEUTRAL 0x00

#define WS_CHILD 0x40000000L
#define WS_VISIBLE 0x10000000L
#define WS_TABSTOP 0x00010000L
#define WS_EX_TRANSPARENT 0x00000020L

#define BS_PUSHBUTTON 0x00000000L
#define BS_MULTILINE 0x00002000L

#define VK_F4 0x73
