#include "shell/Ports.h"

#include <string_view>

#include "dialogs/Dialogs.h"
#include "link/Link.h"
#include "model/Text.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/Ini.h"

namespace {

constexpr unsigned LastMenuPort = 9;
constexpr unsigned FirstMenuCode = 11;
constexpr unsigned OtherPortCode = 20;

// The items of the Port menu by PortMenuCode, from FirstMenuCode on.
constexpr std::array<UINT, OtherPortCode - FirstMenuCode + 1> PortItems = {
    IDM_COM1, IDM_COM2, IDM_COM3, IDM_COM4, IDM_COM5, IDM_COM6, IDM_COM7, IDM_COM8, IDM_COM9, IDM_COM_OTHER,
};

// The plain names of the ports in the menu, from COM 1 on.
constexpr std::array<const char*, LastMenuPort> MenuPortNames = {
    "COM1:", "COM2:", "COM3:", "COM4:", "COM5:", "COM6:", "COM7:", "COM8:", "COM9:"};

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

void InitPortDialog(HWND dialog) {
    std::array<char, 12> text{};
    for (unsigned number = 1; number <= HighestPort; ++number) {
        FormatText(text, "COM %ld", static_cast<long>(number));
        SendDlgItemMessageA(dialog, IDC_PORTS, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.data()));
    }
    SendDlgItemMessageA(dialog, IDC_PORTS, CB_SETCURSEL, static_cast<WPARAM>(PortNumber) - 1, 0);
    CentreDialog(dialog);
}

void TakePort(HWND dialog) {
    const LRESULT selected = SendDlgItemMessageA(dialog, IDC_PORTS, CB_GETCURSEL, 0, 0);
    ClosePort();
    PortNumber = static_cast<unsigned>(selected + 1);
    UsePortNumber();
    WriteIni();
    EndDialog(dialog, IDC_CLOSE);
}

INT_PTR CALLBACK PortDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            InitPortDialog(dialog);
            return 1;
        case WM_PAINT:
            SetDlgItemTextA(dialog, IDC_CLOSE, LangTable[CloseLine].data());
            return 0;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDC_CLOSE) {
                TakePort(dialog);
            } else if (LOWORD(wParam) == IDC_CANCEL) {
                EndDialog(dialog, IDC_CANCEL);
            }
            return 0;
        default:
            return 0;
    }
}

}  // namespace

constexpr std::array<std::array<char, 12>, HighestPort + 1> ComNameTable = MakeComNames();

void ChoosePort(unsigned number) {
    ClosePort();
    PortName = MenuPortNames[number - 1];
    PortNumber = number;
    CheckPortMenu(number + FirstMenuCode - 1);
    WriteIni();
}

void RunPortDialog() {
    DialogBoxParamA(AppInstance, MAKEINTRESOURCEA(IDD_PORT), PageWindow, PortDialogProc, 0);
}

void UsePortNumber() {
    PortName = ComNameTable[PortNumber].data();
    CheckPortMenu(PortNumber <= LastMenuPort ? PortNumber + FirstMenuCode - 1 : OtherPortCode);
}

void CheckPortMenu(unsigned code) {
    PortMenuCode = code;
    std::array<char, 24> text{"..."};
    if (code >= OtherPortCode) {
        FormatText(text, "...COM %ld", static_cast<long>(PortNumber));
    }
    ModifyMenuA(MainMenu, IDM_COM_OTHER, MF_BYCOMMAND | MF_STRING, IDM_COM_OTHER, text.data());
    for (unsigned index = 0; index < PortItems.size(); ++index) {
        const UINT check = code == FirstMenuCode + index ? MF_CHECKED : MF_UNCHECKED;
        CheckMenuItem(MainMenu, PortItems[index], MF_BYCOMMAND | check);
    }
}
