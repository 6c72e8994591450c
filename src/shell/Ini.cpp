#include "shell/Ini.h"

#include <cstdio>

#include "files/TextFiles.h"
#include "link/Link.h"
#include "model/Text.h"
#include "shell/AppState.h"
#include "shell/Ports.h"

namespace {

constexpr const char* IniName = "Tarvex.ini";

// 0 for what names no port.
unsigned ReadPortNumber(std::FILE* file) {
    const ScannedNumber number = ReadNumber(file);
    return number.whole && number.low <= HighestPort ? number.low : 0;
}

}  // namespace

void ReadIni() {
    std::FILE* file = OpenTextFile(IniName);
    if (!file) {
        PortNumber = 1;
        CopyText(LangCode, "pol");
        WriteIni();
        return;
    }
    ReadIniItems(file);
    std::fclose(file);
}

void ReadIniItems(std::FILE* file) {
    ReadToken(file, LangCode);
    ReadToken(file, LangCode);
    PortNumber = ReadPortNumber(file);
    ReadToken(file, LangCode);
    ReadToken(file, LangCode);
}

void WriteIni() {
    std::FILE* file = std::fopen(IniName, "w");
    if (!file) {
        return;
    }
    std::fprintf(file, "[Ustawienia]\nCommPort= %u\nLanguage= %s\n", PortNumber, LangCode.data());
    std::fclose(file);
}
