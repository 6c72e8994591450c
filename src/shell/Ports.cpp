#include "shell/Ports.h"

#include <cstdio>
#include <string_view>

#include "link/Link.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

namespace {

constexpr unsigned LastMenuPort = 9;
constexpr unsigned FirstMenuCode = 11;
constexpr unsigned OtherPortCode = 20;

// The items of the Port menu by PortMenuCode, from FirstMenuCode on.
constexpr std::array<UINT, OtherPortCode - FirstMenuCode + 1> PortItems = {
    IDM_COM1, IDM_COM2, IDM_COM3, IDM_COM4, IDM_COM5, IDM_COM6, IDM_COM7, IDM_COM8, IDM_COM9, IDM_COM_OTHER,
};

constexpr auto MakeComNames() {
    std::array<std::array<char, 12>, HighestPort + 1> names{};
    constexpr std::string_view prefix = "\\\\.\\COM";
    for (unsigned number = 1; number <= HighestPort; ++number) {
        auto& name = names[number];
        size_t length = 0;
        for (const char letter : prefix) {
            name[length++] = letter;
        }
        for (unsigned unit = 100; unit > 0; unit /= 10) {
            if (number >= unit) {
                name[length++] = static_cast<char>('0' + number / unit % 10);
            }
        }
    }
    return names;
}

}  // namespace

constexpr std::array<std::array<char, 12>, HighestPort + 1> ComNameTable = MakeComNames();

void UsePortNumber() {
    PortName = ComNameTable[PortNumber].data();
    CheckPortMenu(PortNumber <= LastMenuPort ? PortNumber + FirstMenuCode - 1 : OtherPortCode);
}

void CheckPortMenu(unsigned code) {
    PortMenuCode = code;
    std::array<char, 24> text{"..."};
    if (code >= OtherPortCode) {
        std::snprintf(text.data(), text.size(), "...COM %ld", static_cast<long>(PortNumber));
    }
    ModifyMenuA(MainMenu, IDM_COM_OTHER, MF_BYCOMMAND | MF_STRING, IDM_COM_OTHER, text.data());
    for (unsigned index = 0; index < PortItems.size(); ++index) {
        const UINT check = code == FirstMenuCode + index ? MF_CHECKED : MF_UNCHECKED;
        CheckMenuItem(MainMenu, PortItems[index], MF_BYCOMMAND | check);
    }
}
