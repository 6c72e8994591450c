// The choice of the serial port.
#pragma once

#include <array>

constexpr unsigned HighestPort = 128;

// Device names by PortNumber: entry 0 is empty, entries 1 to 128 are "\\.\COM1" to "\\.\COM128".
extern const std::array<std::array<char, 12>, HighestPort + 1> ComNameTable;

// Takes PortName from ComNameTable by PortNumber, which must be 0 to 128, and marks its item of the Port menu.
void UsePortNumber();

// Stores the code in PortMenuCode, checks its item (11 to 19: COM 1 to COM 9; 20: the last item; else none) and lets the
// last item name the port while it stands for one.
void CheckPortMenu(unsigned code);
