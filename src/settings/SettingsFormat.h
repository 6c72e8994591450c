// The settings file: one controller's parameters as text, in the two formats of the two generations. A new parameter
// gets its row in SettingsFormat.cpp; what asks the user and writes to the controller stands in SettingsCommands.h.
//
// A file is a sequence of tokens: three header lines, then a key and a number for each value.
#pragma once

#include <array>
#include <cstdio>
#include <span>

#include "platform/Win32.h"

// One row a line of the file, from its first on: the header lines, then the keys with their "=".
constexpr size_t SettingsRowSize = 30;
constexpr size_t SettingsRowRoom = 45;
using SettingsRow = std::array<char, SettingsRowSize>;
using SettingsRows = std::array<SettingsRow, SettingsRowRoom>;
constexpr size_t SettingsHeaderRows = 3;

// The keys of both generations. Never written.
extern const SettingsRows SettingsKeysGen1;
extern const SettingsRows SettingsKeysGen2;
// The tokens of the last scan, cut to a row. A key always has room to spare, so that a cut token is no key.
extern SettingsRows ScanRows;

// The bytes of the last scan, one a value line in the order of the file, and whether the file gave them: a key may have
// no number behind it. Both live from scan to scan; no mirror changes by a scan.
extern std::array<BYTE, SettingsRowRoom - SettingsHeaderRows> CellImage;
extern std::array<bool, SettingsRowRoom - SettingsHeaderRows> CellGiven;

// What is bound to a generation. The value lines of `cells` come first in the file and are written to the controller in
// that order; those after them hold 0 and go nowhere.
struct SettingsFormat {
    const SettingsRows& keys;
    size_t rows;
    size_t values;
    std::span<const unsigned> cells;
    int family;  // in which the cells are read back
    const char* filter;
    const char* extension;
};
// The second generation for family 4, the first for any other.
const SettingsFormat& SettingsFormatOf(int family);

// Reads the tokens and values of an open file and closes it. Rows that the file does not supply are empty.
void ScanSettings(std::FILE* file, const SettingsFormat& format);
// Whether the last scan found all rows of the format, letter for letter.
bool SettingsMatch(const SettingsFormat& format);
// Writes all lines from the mirrors to an open file.
void WriteSettings(std::FILE* file, const SettingsFormat& format);
