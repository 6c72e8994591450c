#include "service/ControllerDialog.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "dialogs/Dialogs.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Cells.h"
#include "model/Text.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

int RegEditOpen = 0;
int DateEditOpen = 0;

namespace {

constexpr size_t TitleLine = 190;
constexpr size_t NoLinkLine = 161;
constexpr size_t UnknownLine = 162;
constexpr size_t ChangeLine = 197;
constexpr size_t StoreLine = 198;

constexpr std::array Texts{
    DialogText{IDC_INFO_VERSION_LABEL, 159},
    DialogText{IDC_INFO_REGISTRATION_LABEL, 191},
    DialogText{IDC_INFO_REGISTRATION_BUTTON, ChangeLine},
    DialogText{IDC_INFO_HOURS_LABEL, 192},
    DialogText{IDC_INFO_HOURS_BUTTON, 199},
    DialogText{IDC_INFO_DATE_LABEL, 193},
    DialogText{IDC_INFO_DATE_BUTTON, ChangeLine},
    DialogText{IDC_INFO_YEAR_LABEL, 194},
    DialogText{IDC_INFO_MONTH_LABEL, 195},
    DialogText{IDC_INFO_DAY_LABEL, 196},
    DialogText{IDC_CLOSE, CloseLine},
};

// What only family 4 stores.
constexpr int StoredControls[] = {
    IDC_INFO_REGISTRATION_LABEL, IDC_INFO_REGISTRATION, IDC_INFO_REGISTRATION_BUTTON,
    IDC_INFO_HOURS_LABEL,        IDC_INFO_HOURS,        IDC_INFO_HOURS_BUTTON,
    IDC_INFO_DATE_LABEL,         IDC_INFO_DATE,         IDC_INFO_DATE_BUTTON,
};
constexpr int StoredFields[] = {IDC_INFO_REGISTRATION, IDC_INFO_HOURS, IDC_INFO_DATE};
constexpr int DateEditor[] = {
    IDC_INFO_DATE_GROUP, IDC_INFO_YEAR,        IDC_INFO_MONTH,     IDC_INFO_DAY,
    IDC_INFO_YEAR_LABEL, IDC_INFO_MONTH_LABEL, IDC_INFO_DAY_LABEL,
};

constexpr int FirstYear = 2000;
constexpr int LastClockYear = 2100;
constexpr int YearCount = 63;
constexpr int MonthCount = 12;
constexpr int February = 1;
constexpr std::array<int, MonthCount> DaysOfMonths = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// From the computer's clock when the dialog opens.
struct {
    int year;
    int month;
    int day;
} Today;

using Registration = std::array<char, RegistrationLength + 1>;

int DayCount(int year, int monthIndex) {
    const bool leap = year % 4 == 0;
    return DaysOfMonths[static_cast<size_t>(monthIndex)] + (monthIndex == February && leap ? 1 : 0);
}

void FillNumbers(HWND dialog, int combo, const char* format, int first, int count) {
    SendDlgItemMessageA(dialog, combo, CB_RESETCONTENT, 0, 0);
    std::array<char, 8> text{};
    for (int number = first; number < first + count; ++number) {
        FormatText(text, format, static_cast<long>(number));
        AddEntry(dialog, combo, text.data());
    }
    SelectEntry(dialog, combo, 0);
}

void FillDays(HWND dialog, int count) {
    FillNumbers(dialog, IDC_INFO_DAY, "%02ld", 1, count);
}

int Selected(HWND dialog, int combo) {
    return static_cast<int>(SendDlgItemMessageA(dialog, combo, CB_GETCURSEL, 0, 0));
}

void NoteToday() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    Today = {std::clamp(static_cast<int>(now.wYear), FirstYear, LastClockYear), now.wMonth, now.wDay};
}

void InitDialog(HWND dialog) {
    NoteToday();
    CentreDialog(dialog);
    SetTimer(dialog, DialogTimer, TimerPeriod, nullptr);
    SendDlgItemMessageA(dialog, IDC_INFO_REGISTRATION, EM_SETLIMITTEXT, RegistrationLength, 0);
    SetDlgItemTextA(dialog, IDC_INFO_REGISTRATION, "");
    RegEditOpen = 0;
    DateEditOpen = 0;
    FillNumbers(dialog, IDC_INFO_YEAR, "%ld", FirstYear, YearCount);
    FillNumbers(dialog, IDC_INFO_MONTH, "%02ld", 1, MonthCount);
    FillDays(dialog, DaysOfMonths[0]);
    SetWindowTextA(dialog, LangTable[TitleLine].data());
    SetDialogTexts(dialog, Texts);
}

void EnableStored(HWND dialog, bool enable) {
    for (const int id : StoredControls) {
        EnableControl(dialog, id, enable);
    }
}

void ShowDateEditor(HWND dialog, bool show) {
    for (const int id : DateEditor) {
        ShowControl(dialog, id, show);
    }
}

// The version text alone, with nothing stored to see or change.
void ShowNothingStored(HWND dialog, const char* version) {
    SetControlText(dialog, IDC_INFO_VERSION, version);
    EnableStored(dialog, false);
    ShowDateEditor(dialog, false);
    for (const int id : StoredFields) {
        SetControlText(dialog, id, "");
    }
}

void ShowDate(HWND dialog) {
    ShowDateEditor(dialog, DateEditOpen != 0);
    SetControlText(dialog, IDC_INFO_DATE_BUTTON, LangTable[DateEditOpen != 0 ? StoreLine : ChangeLine].data());
    if (DateEditOpen != 0) {
        return;
    }
    const Date date = InstallationDate();
    std::array<char, 12> text{};
    FormatText(text, "%04d-%02d-%02d", date.year, date.month, date.day);
    SetControlText(dialog, IDC_INFO_DATE, text.data());
}

void ShowRegistration(HWND dialog) {
    SetControlText(dialog, IDC_INFO_REGISTRATION_BUTTON, LangTable[RegEditOpen != 0 ? StoreLine : ChangeLine].data());
    SendDlgItemMessageA(dialog, IDC_INFO_REGISTRATION, EM_SETREADONLY, RegEditOpen != 0 ? FALSE : TRUE, 0);
    if (RegEditOpen != 0) {
        return;
    }
    Registration text{};
    std::copy_n(ParamBlockC.begin() + ParamCByte::Registration, RegistrationLength, text.begin());
    SetControlText(dialog, IDC_INFO_REGISTRATION, text.data());
}

void ShowStored(HWND dialog, const char* version) {
    EnableStored(dialog, true);
    SetControlText(dialog, IDC_INFO_VERSION, version);
    std::array<char, 16> hours{};
    FormatText(hours, "%uh%u'", HoursOnGas(), unsigned{ParamBlockC[ParamCByte::Minutes]});
    SetControlText(dialog, IDC_INFO_HOURS, hours.data());
    ShowDate(dialog);
    ShowRegistration(dialog);
}

void Tick(HWND dialog) {
    PollIdentity();
    std::array<char, 8> version{};
    FormatText(version, "%d.%02d", ControllerFamily, FirmwareVersion);
    if (LinkLost != 0) {
        ShowNothingStored(dialog, LangTable[NoLinkLine].data());
    } else if (ControllerFamily == Family2) {
        ShowNothingStored(dialog, version.data());
    } else if (ControllerFamily == Family4) {
        ReadParamBlockC();
        ShowStored(dialog, version.data());
    } else {
        SetControlText(dialog, IDC_INFO_VERSION, LangTable[UnknownLine].data());
        EnableStored(dialog, false);
    }
}

void StoreRegistration(HWND dialog) {
    Registration text{};
    GetWindowTextA(GetDlgItem(dialog, IDC_INFO_REGISTRATION), text.data(), static_cast<int>(text.size()));
    const size_t length = std::strlen(text.data());
    for (unsigned place = 0; place < RegistrationLength; ++place) {
        WriteCell(ParamCell::Registration + place, place < length ? static_cast<BYTE>(text[place]) : BYTE{0});
    }
}

void EditRegistration(HWND dialog) {
    if (RegEditOpen == 0) {
        RegEditOpen = 1;
        return;
    }
    RegEditOpen = 0;
    StoreRegistration(dialog);
}

void ClearHours(HWND) {
    for (const unsigned cell :
         {unsigned{ParamCell::HoursLo}, unsigned{ParamCell::HoursHi}, unsigned{ParamCell::Minutes}}) {
        WriteCell(cell, 0);
    }
}

// It starts at today. A clock past the list leaves the year unselected.
void OpenDateEditor(HWND dialog) {
    DateEditOpen = 1;
    FillDays(dialog, DayCount(Today.year, Today.month - 1));
    SelectEntry(dialog, IDC_INFO_DAY, Today.day - 1);
    SelectEntry(dialog, IDC_INFO_MONTH, Today.month - 1);
    SelectEntry(dialog, IDC_INFO_YEAR, Today.year - FirstYear < YearCount ? Today.year - FirstYear : -1);
}

// Without a year nothing is stored, and the editor stays: a wrong date in a controller would be worse.
void StoreDate(HWND dialog) {
    const int year = Selected(dialog, IDC_INFO_YEAR);
    const int month = Selected(dialog, IDC_INFO_MONTH);
    const int day = Selected(dialog, IDC_INFO_DAY);
    if (year < 0 || month < 0 || day < 0) {
        return;
    }
    DateEditOpen = 0;
    const DateBytes bytes =
        PackDate(static_cast<unsigned>(day), static_cast<unsigned>(month), static_cast<unsigned>(year));
    WriteCell(ParamCell::DateDay, bytes.day);
    WriteCell(ParamCell::DateYear, bytes.year);
}

void EditDate(HWND dialog) {
    if (DateEditOpen == 0) {
        OpenDateEditor(dialog);
    } else {
        StoreDate(dialog);
    }
}

struct StoredButton {
    WORD id;
    void (*press)(HWND dialog);
};
constexpr StoredButton StoredButtons[] = {
    {IDC_INFO_REGISTRATION_BUTTON, EditRegistration},
    {IDC_INFO_HOURS_BUTTON, ClearHours},
    {IDC_INFO_DATE_BUTTON, EditDate},
};

void RefillDays(HWND dialog, WORD changed) {
    const int month = Selected(dialog, IDC_INFO_MONTH);
    // An unselected year counts as a common one.
    const int year = Selected(dialog, IDC_INFO_YEAR);
    if (month >= 0 && (changed == IDC_INFO_MONTH || month == February)) {
        FillDays(dialog, DayCount(year, month));
    }
}

INT_PTR TakeCommand(HWND dialog, WORD id, WORD news) {
    if (id == IDC_CLOSE || id == IDC_CANCEL) {
        CloseDialog(dialog, id, DialogPause);
        return 1;
    }
    if ((id == IDC_INFO_YEAR || id == IDC_INFO_MONTH) && news == CBN_SELCHANGE) {
        RefillDays(dialog, id);
    }
    const auto* button = std::ranges::find(StoredButtons, id, &StoredButton::id);
    if (button != std::end(StoredButtons) && news == BN_CLICKED && ControllerFamily == Family4) {
        button->press(dialog);
    }
    return 0;
}

INT_PTR CALLBACK ControllerProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            InitDialog(dialog);
            return 1;
        case WM_TIMER:
            Tick(dialog);
            return 0;
        case WM_COMMAND:
            return TakeCommand(dialog, LOWORD(wParam), HIWORD(wParam));
        default:
            return 0;
    }
}

}  // namespace

void RunControllerDialog() {
    RunDialog(IDD_CONTROLLER, ControllerProc, DialogPause);
}
