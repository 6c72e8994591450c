// The basic types of Win32 in the widths that they have there. Include platform/Win32.h, not this.
#pragma once

#include <cstddef>
#include <cstdint>

#define CALLBACK
#define WINAPI
#define APIENTRY

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using INT = int;
using LONG = std::int32_t;
using BOOL = int;
using COLORREF = DWORD;
using ATOM = WORD;
using LCID = DWORD;
using LANGID = WORD;
using UINT_PTR = std::uintptr_t;
using INT_PTR = std::intptr_t;
using LONG_PTR = std::intptr_t;
using DWORD_PTR = std::uintptr_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using LPSTR = char*;
using LPCSTR = const char*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPDWORD = DWORD*;

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;

using HANDLE = void*;
using HGDIOBJ = void*;
using HWND = struct HWND__*;
using HDC = struct HDC__*;
using HMENU = struct HMENU__*;
using HINSTANCE = struct HINSTANCE__*;
using HACCEL = struct HACCEL__*;
using HICON = struct HICON__*;
using HCURSOR = HICON;
using HPEN = struct HPEN__*;
using HBRUSH = struct HBRUSH__*;
using HFONT = struct HFONT__*;
using HBITMAP = struct HBITMAP__*;

struct POINT {
    LONG x;
    LONG y;
};

struct SIZE {
    LONG cx;
    LONG cy;
};

struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

constexpr WORD LOWORD(std::uintptr_t value) {
    return static_cast<WORD>(value & 0xFFFF);
}
constexpr WORD HIWORD(std::uintptr_t value) {
    return static_cast<WORD>((value >> 16) & 0xFFFF);
}
constexpr WPARAM MAKEWPARAM(unsigned low, unsigned high) {
    return (low & 0xFFFFu) | (high & 0xFFFFu) << 16;
}
constexpr LPARAM MAKELPARAM(unsigned low, unsigned high) {
    return static_cast<LPARAM>((low & 0xFFFFu) | (high & 0xFFFFu) << 16);
}
inline LPCSTR MAKEINTRESOURCEA(unsigned id) {
    return reinterpret_cast<LPCSTR>(static_cast<std::uintptr_t>(id & 0xFFFF));
}
