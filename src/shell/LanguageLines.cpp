#include <algorithm>
#include <array>

#include "shell/AppState.h"
#include "shell/Language.h"

namespace {

// CR LF counts as one line end.
int ReadLetter(std::FILE* file) {
    const int letter = std::fgetc(file);
    if (letter != '\r') {
        return letter;
    }
    const int next = std::fgetc(file);
    if (next == '\n') {
        return next;
    }
    std::ungetc(next, file);
    return letter;
}

void AppendToLine(int line, size_t at, int letter) {
    if (line < LangLineCount && at + 1 < LangLineSize) {
        auto& slot = LangTable[static_cast<size_t>(line)];
        slot[at] = static_cast<char>(letter);
        slot[at + 1] = '\0';
    }
}

}  // namespace

// The letter right after a "=" begins the slot's text whatever it is, even a newline: then the line does not count, and
// every later text lands one slot lower.
void ReadLanguageLines(std::FILE* file) {
    int line = 0;
    size_t length = 0;
    bool collecting = false;
    for (int letter = ReadLetter(file); letter != EOF; letter = ReadLetter(file)) {
        if (letter == '\n') {
            line = std::min(line + 1, LangLineCount);
            collecting = false;
        }
        if (collecting) {
            AppendToLine(line, length++, letter);
        }
        if (letter == '=') {
            const int first = ReadLetter(file);
            if (first == EOF) {
                return;
            }
            collecting = true;
            length = 0;
            AppendToLine(line, length++, first);
        }
    }
}
