// A log of what the program's own procedures are told, of what it draws and of what stands on the screen, for the
// comparison of the program on Linux with the one on Windows. Only a build with TARVEX_MESSAGE_LOG has it.
//
// The environment variable of that name holds the log's file. Each line is a kind and its fields, parted by tabs:
//
//   msg WINDOW MESSAGE WPARAM LPARAM CONTROL     before the procedure gets it; CONTROL is the id behind LPARAM, or -
//   box TEXT CAPTION TYPE                        a message box opens, and with boxend ANSWER it ends
//   file KIND, fileend ANSWER NAME               the same of a file dialog
//   beat                                         twenty times a second, as long as nothing else is to be done
//   look NUMBER ... end NUMBER                   what stands on the screen; see Look.h
//
// A look is asked for by writing its number and a semicolon into the file that is named as the log with ".look" behind
// it; it is told with the next beat.
#pragma once

#include <string>

#include "platform/Win32.h"

namespace message_log {

class Line {
public:
    explicit Line(const char* kind) : line(kind) {
    }
    Line& text(const char* value);
    Line& number(long long value);
    Line& rect(const RECT& value);
    void write();

private:
    std::string line;
};

// "main" for the main window, else the dialog's template and how many dialogs were made before it: "106.3". Empty for a
// window of another kind.
std::string nameOf(HWND window);

// A call that drew on a window, with the area that it may have changed, and the window's calls that still show.
void noteDrawing(HWND window, const char* call, const RECT& area, const char* text);
void forgetDrawings(HWND window);
void writeDrawings();

}  // namespace message_log
