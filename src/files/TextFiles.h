// Text files for all who read or keep one: tokens and numbers between white space, and a file that is replaced in one
// step. Nothing here is kept between calls.
#pragma once

#include <cstdio>
#include <span>

// Longest path with its end, as the file dialogs give it.
constexpr size_t PathSize = 260;

// Whether something of this name opens for reading.
bool FileOpens(const char* path);

// Opens a file for reading; null if there is none that can be read. A directory, which opens on some systems and fails
// only at the first read, is none either.
std::FILE* OpenTextFile(const char* path);

// The next run of letters that are not white space, cut to the buffer; one that is cut fills it. At the end of the file
// the buffer keeps what it holds.
void ReadToken(std::FILE* file, std::span<char> token);

struct ScannedNumber {
    bool found;
    bool bareSign;  // a sign with no digit behind it: it is taken, and nothing is found
    bool whole;     // low is the number itself
    unsigned low;   // its low 32 bits, a negative one as two's complement
};
// The next decimal number with an optional sign, after white space. If something else stands there it stays for the
// next token.
ScannedNumber ReadNumber(std::FILE* file);

// New content for a file. It is written beside the file and takes its place in one step once it is safely on the disk,
// so that a full disk, a crash or a pulled plug leaves the old content or the new one, whole.
//
// Opens the place beside; null if the file cannot be written.
std::FILE* BeginReplacing(const char* path);
// Closes what BeginReplacing gave and puts it in the file's place. False if that failed: the file is then as it was.
bool EndReplacing(std::FILE* content, const char* path);
