#include "files/TextFiles.h"

#include <array>

#include "model/Text.h"
#include "platform/Win32.h"

namespace {

// Behind the file's own name while its new content is being written.
constexpr const char* PartEnding = ".part";
using PartPath = std::array<char, PathSize + 8>;

PartPath PartBeside(const char* path) {
    PartPath part{};
    FormatText(part, "%s%s", path, PartEnding);
    return part;
}

HANDLE OpenForWriting(const char* path) {
    return CreateFileA(path, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

// A file that may not be written could still be replaced by another of its name.
bool MayReplace(const char* path) {
    if (!FileOpens(path)) {
        return true;
    }
    const HANDLE file = OpenForWriting(path);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    CloseHandle(file);
    return true;
}

bool PutOnDisk(const char* path) {
    const HANDLE file = OpenForWriting(path);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool done = FlushFileBuffers(file) != 0;
    CloseHandle(file);
    return done;
}

// The same in every locale.
bool IsSpace(int letter) {
    return letter == ' ' || (letter >= '\t' && letter <= '\r');
}

bool IsDigit(int letter) {
    return letter >= '0' && letter <= '9';
}

int SkipSpace(std::FILE* file) {
    int letter = std::fgetc(file);
    while (IsSpace(letter)) {
        letter = std::fgetc(file);
    }
    return letter;
}

}  // namespace

bool FileOpens(const char* path) {
    std::FILE* file = std::fopen(path, "r");
    if (file) {
        std::fclose(file);
    }
    return file != nullptr;
}

std::FILE* OpenTextFile(const char* path) {
    std::FILE* file = std::fopen(path, "r");
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

void ReadToken(std::FILE* file, std::span<char> token) {
    int letter = SkipSpace(file);
    if (letter == EOF) {
        return;
    }
    size_t length = 0;
    while (letter != EOF && !IsSpace(letter)) {
        if (length + 1 < token.size()) {
            // A zero would end the token early.
            token[length++] = letter == 0 ? '?' : static_cast<char>(letter);
        }
        letter = std::fgetc(file);
    }
    token[length] = '\0';
}

ScannedNumber ReadNumber(std::FILE* file) {
    constexpr unsigned Most = 1'000'000;
    int letter = SkipSpace(file);
    const bool negative = letter == '-';
    const bool sign = negative || letter == '+';
    if (sign) {
        letter = std::fgetc(file);
    }
    ScannedNumber number{false, false, !negative, 0};
    while (IsDigit(letter)) {
        number.found = true;
        number.whole = number.whole && number.low < Most;
        number.low = number.low * 10 + static_cast<unsigned>(letter - '0');
        letter = std::fgetc(file);
    }
    std::ungetc(letter, file);
    number.bareSign = sign && !number.found;
    number.low = negative ? 0u - number.low : number.low;
    return number;
}

std::FILE* BeginReplacing(const char* path) {
    return MayReplace(path) ? std::fopen(PartBeside(path).data(), "w") : nullptr;
}

bool EndReplacing(std::FILE* content, const char* path) {
    const PartPath part = PartBeside(path);
    const bool written = std::ferror(content) == 0;
    const bool closed = std::fclose(content) == 0;
    if (written && closed && PutOnDisk(part.data()) &&
        MoveFileExA(part.data(), path, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        return true;
    }
    DeleteFileA(part.data());
    return false;
}
