// Reads the little-endian words and texts of resource data; beyond the end everything is zero.
#pragma once

#include <QString>
#include <algorithm>
#include <span>

#include "platform/Win32.h"

namespace layer {

class ResourceReader {
public:
    explicit ResourceReader(std::span<const BYTE> bytes) : data(bytes) {
    }
    bool atEnd() const {
        return position >= data.size();
    }
    size_t offset() const {
        return position;
    }
    WORD peekWord(size_t wordsAhead = 0) const {
        const size_t at = position + 2 * wordsAhead;
        return at + 1 < data.size() ? static_cast<WORD>(data[at] | data[at + 1] << 8) : WORD{0};
    }
    WORD word() {
        const WORD value = peekWord();
        position += 2;
        return value;
    }
    DWORD dword() {
        const DWORD low = word();
        return low | static_cast<DWORD>(word()) << 16;
    }
    void skip(size_t bytes) {
        position += bytes;
    }
    void align(size_t bytes) {
        position = (position + bytes - 1) / bytes * bytes;
    }
    QString text() {
        QString result;
        while (!atEnd()) {
            const WORD letter = word();
            if (letter == 0) {
                break;
            }
            result.append(QChar(letter));
        }
        return result;
    }
    std::span<const BYTE> bytes(size_t count) {
        const size_t from = std::min(position, data.size());
        const size_t taken = std::min(count, data.size() - from);
        position += count;
        return data.subspan(from, taken);
    }

private:
    std::span<const BYTE> data;
    size_t position = 0;
};

}  // namespace layer
