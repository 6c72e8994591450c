// All that reads a file of the user's, on any bytes. The first byte picks the reader: '1' and '2' the settings of that
// generation, 'i' the ini, 'l' the language texts. What each promises about any file is checked, so that a wrong result
// ends the run as a crash does.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Cells.h"
#include "settings/SettingsFormat.h"
#include "shell/AppState.h"
#include "shell/Ini.h"
#include "shell/Language.h"
#include "shell/Ports.h"

namespace {

constexpr std::string_view WhiteSpace = " \t\n\v\f\r";

#define CHECK(condition)                                                                 \
    do {                                                                                 \
        if (!(condition)) {                                                              \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                \
        }                                                                                \
    } while (false)

std::FILE* open(std::string_view content) {
    return fmemopen(const_cast<char*>(content.data()), content.size(), "r");
}

bool ends(std::span<const char> row) {
    return std::ranges::find(row, '\0') != row.end();
}

std::string_view textOf(std::span<const char> row) {
    CHECK(ends(row));
    return row.data();
}

bool isToken(std::string_view text) {
    return text.find_first_of(WhiteSpace) == std::string_view::npos;
}

struct Scan {
    decltype(CellImage) image;
    bool matches;
};

constexpr BYTE Before = 0xA5;

Scan scan(std::string_view content, const SettingsFormat& format) {
    ScanRows.back().fill('x');
    CellImage.fill(Before);
    CellGiven.fill(true);
    ScanSettings(open(content), format);
    for (size_t row = 0; row < ScanRows.size(); ++row) {
        CHECK(isToken(textOf(ScanRows[row])));
        CHECK(row < format.rows || textOf(ScanRows[row]).empty());
    }
    for (size_t value = 0; value < CellImage.size(); ++value) {
        CHECK(CellGiven[value] || CellImage[value] == Before);
        CHECK(value < format.values || !CellGiven[value]);
    }
    return {CellImage, SettingsMatch(format)};
}

void putMirror(MirrorByte place, BYTE value) {
    CHECK(place.mirror != Mirror::None);
    switch (place.mirror) {
        case Mirror::Live:
            LiveBlock[place.offset] = value;
            break;
        case Mirror::ParamA:
            ParamBlockA[place.offset] = value;
            break;
        case Mirror::ParamB:
            ParamBlockB[place.offset] = value;
            break;
        case Mirror::ParamC:
            ParamBlockC[place.offset] = value;
            break;
        case Mirror::None:
            break;
    }
}

std::string write(const Scan& values, const SettingsFormat& format) {
    for (size_t value = 0; value < format.cells.size(); ++value) {
        putMirror(CellMirror(format.cells[value], format.family), values.image[value]);
    }
    std::string written(2000, '\0');
    std::FILE* file = fmemopen(written.data(), written.size(), "w");
    WriteSettings(file, format);
    std::fclose(file);
    return written.c_str();
}

// The rules of the format once more, on the whole text: whether a file matches, and its values.
bool expect(std::string_view content, const SettingsFormat& format, decltype(CellImage)& image) {
    size_t at = 0;
    const auto skip = [&](std::string_view letters) {
        at = std::min(content.find_first_not_of(letters, at), content.size());
    };
    for (size_t row = 0; row < format.rows; ++row) {
        const std::string_view key = format.keys[row].data();
        skip(WhiteSpace);
        if (!content.substr(at).starts_with(key)) {
            return false;
        }
        at += key.size();
        if (at < content.size() && WhiteSpace.find(content[at]) == std::string_view::npos) {
            return false;
        }
        if (row < SettingsHeaderRows) {
            continue;
        }
        skip(WhiteSpace);
        const bool negative = content.substr(at).starts_with('-');
        const bool sign = negative || content.substr(at).starts_with('+');
        at += sign ? 1 : 0;
        const size_t digits = at;
        skip("0123456789");
        if (sign && at == digits) {
            return false;
        }
        unsigned number = 0;
        for (const char digit : content.substr(digits, at - digits)) {
            number = number * 10 + static_cast<unsigned>(digit - '0');
        }
        if (at > digits) {
            image[row - SettingsHeaderRows] = static_cast<BYTE>(negative ? 0 - number : number);
        }
    }
    return true;
}

// A file is taken by the rules, and whatever the values, a file of them is read back to the same.
void checkSettings(std::string_view content, int family) {
    const SettingsFormat& format = SettingsFormatOf(family);
    const Scan first = scan(content, format);
    decltype(CellImage) image;
    image.fill(Before);
    CHECK(expect(content, format, image) == first.matches);
    CHECK(!first.matches || image == first.image);

    const Scan second = scan(write(first, format), format);
    CHECK(second.matches);
    const auto cells = static_cast<std::ptrdiff_t>(format.cells.size());
    CHECK(std::equal(first.image.begin(), first.image.begin() + cells, second.image.begin()));
}

void readIni(std::string_view content) {
    PortNumber = HighestPort + 1;
    LangCode = {};
    std::FILE* file = open(content);
    ReadIniItems(file);
    std::fclose(file);
    CHECK(PortNumber <= HighestPort);
    CHECK(isToken(textOf(LangCode)));
}

void checkIni(std::string_view content) {
    readIni(content);
    const unsigned port = PortNumber;
    const std::string code = LangCode.data();
    if (!code.empty()) {
        readIni("[Ustawienia]\nCommPort= " + std::to_string(port) + "\nLanguage= " + code + "\n");
        CHECK(PortNumber == port && LangCode.data() == code);
    }
}

// Leaves in the table what it held in lines that the file does not give.
std::string readLanguage(std::string_view content) {
    LangTable = {};
    for (auto& slot : LangTable) {
        slot.front() = '-';
    }
    std::FILE* file = open(content);
    ReadLanguageLines(file);
    std::fclose(file);
    std::string lines;
    for (const auto& slot : LangTable) {
        lines.append("Name=").append(textOf(slot)).append("\n");
    }
    return lines;
}

// For a file in which every "=" begins a text of its own line.
std::string expectedLines(std::string_view content) {
    std::string lines;
    for (const auto& slot : LangTable) {
        const std::string_view line = content.substr(0, content.find('\n'));
        content.remove_prefix(std::min(line.size() + 1, content.size()));
        const size_t equals = line.rfind('=');
        const std::string_view text = equals == std::string_view::npos ? "-" : line.substr(equals + 1);
        lines.append("Name=").append(text.substr(0, std::min(slot.size() - 1, text.find('\0')))).append("\n");
    }
    return lines;
}

void checkLanguage(std::string_view content) {
    std::string plain;
    for (size_t at = 0; at < content.size(); ++at) {
        if (!content.substr(at).starts_with("\r\n")) {
            plain += content[at];
        }
    }
    const std::string lines = readLanguage(content);
    CHECK(plain.find("\r\n") != plain.npos || readLanguage(plain) == lines);
    const bool odd = plain.find("==") != plain.npos || plain.find("=\n") != plain.npos || plain.ends_with('=');
    CHECK(odd || lines == expectedLines(plain));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view content(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (*data) {
        case '1':
            checkSettings(content, Family2);
            break;
        case '2':
            checkSettings(content, Family4);
            break;
        case 'i':
            checkIni(content);
            break;
        case 'l':
            checkLanguage(content);
            break;
        default:
            break;
    }
    return 0;
}
