#include "shell/Ini.h"

#include <cctype>
#include <cstdio>
#include <span>

#include "link/Link.h"
#include "model/Text.h"
#include "shell/AppState.h"
#include "shell/Ports.h"

namespace {

constexpr const char* IniName = "Tarvex.ini";

int SkipBlanks(std::FILE* file) {
    int letter = std::fgetc(file);
    while (letter != EOF && std::isspace(letter)) {
        letter = std::fgetc(file);
    }
    return letter;
}

// The next token, cut to the buffer; at the end of the file the buffer keeps what it holds.
void ReadToken(std::FILE* file, std::span<char> token) {
    int letter = SkipBlanks(file);
    if (letter == EOF) {
        return;
    }
    size_t length = 0;
    while (letter != EOF && !std::isspace(letter)) {
        if (length + 1 < token.size()) {
            token[length++] = static_cast<char>(letter);
        }
        letter = std::fgetc(file);
    }
    token[length] = '\0';
}

// A decimal number with an optional sign, 0 if none stands there or if it names no port. What is no number stays for
// the next token.
unsigned ReadPortNumber(std::FILE* file) {
    int letter = SkipBlanks(file);
    const bool negative = letter == '-';
    if (letter == '-' || letter == '+') {
        letter = std::fgetc(file);
    }
    unsigned number = 0;
    while (letter != EOF && std::isdigit(letter)) {
        if (number <= HighestPort) {
            number = number * 10 + static_cast<unsigned>(letter - '0');
        }
        letter = std::fgetc(file);
    }
    std::ungetc(letter, file);
    return negative || number > HighestPort ? 0 : number;
}

// Null for what is no file of settings: a directory opens on some systems and fails only at the first read.
std::FILE* OpenIni() {
    std::FILE* file = std::fopen(IniName, "r");
    if (!file) {
        return nullptr;
    }
    const int letter = std::fgetc(file);
    if (std::ferror(file)) {
        std::fclose(file);
        return nullptr;
    }
    if (letter != EOF) {
        std::ungetc(letter, file);
    }
    return file;
}

}  // namespace

void ReadIni() {
    std::FILE* file = OpenIni();
    if (!file) {
        PortNumber = 1;
        CopyText(LangCode, "pol");
        WriteIni();
        return;
    }
    ReadToken(file, LangCode);
    ReadToken(file, LangCode);
    PortNumber = ReadPortNumber(file);
    ReadToken(file, LangCode);
    ReadToken(file, LangCode);
    std::fclose(file);
}

void WriteIni() {
    std::FILE* file = std::fopen(IniName, "w");
    if (!file) {
        return;
    }
    std::fprintf(file, "[Ustawienia]\nCommPort= %u\nLanguage= %s\n", PortNumber, LangCode.data());
    std::fclose(file);
}
