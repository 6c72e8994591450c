// What stands behind the handles that CreateFileA gives: a serial port or a plain file. For Files.cpp and Serial.cpp.
#pragma once

#include "platform/Win32.h"

namespace layer {

// Handles are numbers that are never given out twice, so that one kept too long reaches nothing else.
HANDLE nextHandle();

// A port by its name; INVALID_HANDLE_VALUE if it cannot be had for this program alone.
HANDLE openPort(const char* name);
// False for what is no open port.
bool closePort(HANDLE handle);
bool isPort(HANDLE handle);

bool isPlainFile(HANDLE handle);
// Ends the program if a plain file was given to a call that serves ports only.
void refusePlainFile(HANDLE handle);

}  // namespace layer
