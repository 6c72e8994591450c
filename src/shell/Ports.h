// The choice of the serial port.
#pragma once

#include <array>

constexpr unsigned HighestPort = 128;

// Device names by PortNumber: entry 0 is empty, entries 1 to 128 are "\\.\COM1" to "\\.\COM128".
extern const std::array<std::array<char, 12>, HighestPort + 1> ComNameTable;

// A choice from the Port menu, 1 to 9: closes the open port, takes the number and its plain name "COM1:" to "COM9:",
// marks the menu and rewrites the ini. The next exchange opens the port.
void ChoosePort(unsigned number);

// Runs the RS 232 dialog over the page, for any number from 1 to 128. The page goes on polling behind it.
void RunPortDialog();

// Takes PortName from ComNameTable by PortNumber, which must be 0 to 128, and marks its item of the Port menu.
void UsePortNumber();

// Stores the code in PortMenuCode, checks its item (11 to 19: COM 1 to COM 9; 20: the last item; else none) and lets
// the last item name the port while it stands for one.
void CheckPortMenu(unsigned code);
