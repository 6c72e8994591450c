// Bounded texts: every text that the program builds goes through these, which cut what does not fit and always end it
// with a zero. None of them looks at the locale, so that a figure reads the same on every desktop.
#pragma once

#include <span>

// to is at least one character long; what does not fit is left out. The format is that of printf; its figures are whole
// numbers, since a floating point one would follow the locale.
[[gnu::format(printf, 2, 3)]] void FormatText(std::span<char> to, const char* format, ...);
void CopyText(std::span<char> to, const char* from);

// A real number with a decimal point and six places, as "%f" has it, of which a short text keeps the first characters:
// the value is cut, not rounded.
void RealText(std::span<char> to, double value);
