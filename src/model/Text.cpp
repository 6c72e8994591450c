#include "model/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

void PutText(std::span<char> to, std::string_view from) {
    const std::size_t length = std::min(from.size(), to.size() - 1);
    std::copy_n(from.data(), length, to.data());
    to[length] = '\0';
}

}  // namespace

void FormatText(std::span<char> to, const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    std::vsnprintf(to.data(), to.size(), format, values);
    va_end(values);
}

void CopyText(std::span<char> to, const char* from) {
    PutText(to, from);
}

void RealText(std::span<char> to, double value) {
    std::array<char, 32> figures{};
    const auto result =
        std::to_chars(figures.data(), figures.data() + figures.size(), value, std::chars_format::fixed, 6);
    PutText(to, std::string_view(figures.data(), static_cast<std::size_t>(result.ptr - figures.data())));
}
