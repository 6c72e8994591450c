// The file of settings, Tarvex.ini in the current directory:
//
//   [Ustawienia]
//   CommPort= <PortNumber>
//   Language= <LangCode>
#pragma once

#include <cstdio>

// Reads PortNumber and LangCode; creates the file with port 1 and "pol" if it cannot be opened.
void ReadIni();

// The same from an open file, which stays open. Only the order of the items counts: a token, a token and a number, two
// tokens. Missing items leave what the reader had reached: PortNumber 0 and, as LangCode, the last token. A number
// outside 0 to 128 names no port and counts as 0; a longer LangCode is cut.
void ReadIniItems(std::FILE* file);

// Rewrites the whole file from PortNumber and LangCode. Where nothing can be written the program goes on without: the
// choice then holds until the program ends.
void WriteIni();
