// The two 8-bit code pages of the program's texts.
#include <iconv.h>

#include <cerrno>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr LCID RussianLocale = MAKELCID(MAKELANGID(LANG_RUSSIAN, SUBLANG_DEFAULT), SORT_DEFAULT);
int currentCodePage = 1250;

std::array<char16_t, 256> readTable(const char* name) {
    std::array<char16_t, 256> table{};
    iconv_t converter = iconv_open("UTF-16LE", name);
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        reportUnsupported("code page", QString::fromLatin1(name));
    }
    for (unsigned byte = 0; byte < 256; ++byte) {
        char in = static_cast<char>(byte);
        char* inText = &in;
        size_t inLeft = 1;
        char16_t out = 0;
        char* outText = reinterpret_cast<char*>(&out);
        size_t outLeft = sizeof out;
        const bool known = iconv(converter, &inText, &inLeft, &outText, &outLeft) != static_cast<size_t>(-1);
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        table[byte] = known ? out : u'\uFFFD';
    }
    iconv_close(converter);
    return table;
}

}  // namespace

int controlCodePage() {
    return currentCodePage;
}

const std::array<char16_t, 256>& codePageTable(int codePage) {
    static const std::array<char16_t, 256> centralEuropean = readTable("CP1250");
    static const std::array<char16_t, 256> cyrillic = readTable("CP1251");
    return codePage == 1251 ? cyrillic : centralEuropean;
}

QString decode(QByteArrayView text, int codePage) {
    const auto& table = codePageTable(codePage);
    QString result;
    result.reserve(text.size());
    for (const char byte : text) {
        result.append(QChar(table[static_cast<BYTE>(byte)]));
    }
    return result;
}

QByteArray encode(const QString& text, int codePage) {
    const auto& table = codePageTable(codePage);
    QByteArray result;
    for (const QChar letter : text) {
        const auto* found = std::find(table.begin(), table.end(), letter.unicode());
        result.append(found == table.end() ? '?' : static_cast<char>(found - table.begin()));
    }
    return result;
}

}  // namespace layer

BOOL SetThreadLocale(LCID locale) {
    layer::currentCodePage = locale == layer::RussianLocale ? 1251 : 1250;
    return TRUE;
}
