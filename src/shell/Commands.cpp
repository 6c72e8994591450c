#include "shell/Commands.h"

#include <algorithm>

#include "resources/Ids.h"
#include "service/ControllerDialog.h"
#include "settings/SettingsCommands.h"
#include "shell/About.h"
#include "shell/AppState.h"
#include "shell/Language.h"
#include "shell/MainWindow.h"
#include "shell/Pages.h"
#include "shell/Ports.h"
#include "shell/SizeProfiles.h"

namespace {

struct CommandRow {
    unsigned id;
    void (*run)(int argument);
    int argument;
};

void Open(int) {
    OpenSettings();
}

void SaveAs(int) {
    SaveSettings();
}

void Exit(int) {
    CloseMainWindow();
}

void ShowAbout(int) {
    RunAboutDialog();
}

void ShowController(int) {
    RunControllerDialog();
}

void ChooseOtherPort(int) {
    RunPortDialog();
}

void ChooseMenuPort(int number) {
    ChoosePort(static_cast<unsigned>(number));
}

void ChooseMenuLanguage(int item) {
    ChooseLanguage(static_cast<UINT>(item));
}

constexpr CommandRow Commands[] = {
    {IDM_OPEN, Open, 0},
    {IDM_SAVE_AS, SaveAs, 0},
    {IDM_EXIT, Exit, 0},
    {IDM_ABOUT, ShowAbout, 0},
    {IDM_CONTROLLER, ShowController, 0},
    {IDM_READINGS, SwitchPage, ReadingsPage},
    {IDM_CONFIGURATION, SwitchPage, ConfigurationPage},
    {IDM_OPTIONS, SwitchPage, OptionsPage},
    {IDM_RESET, SwitchPage, ResetPage},
    {IDM_OSCILLOSCOPE, SwitchPage, OscilloscopePage},
    {IDM_DIAGRAM, SwitchPage, DiagramPage},
    {IDM_COM1, ChooseMenuPort, 1},
    {IDM_COM2, ChooseMenuPort, 2},
    {IDM_COM3, ChooseMenuPort, 3},
    {IDM_COM4, ChooseMenuPort, 4},
    {IDM_COM5, ChooseMenuPort, 5},
    {IDM_COM6, ChooseMenuPort, 6},
    {IDM_COM7, ChooseMenuPort, 7},
    {IDM_COM8, ChooseMenuPort, 8},
    {IDM_COM9, ChooseMenuPort, 9},
    {IDM_COM_OTHER, ChooseOtherPort, 0},
    {IDM_SIZE_640X480, ChooseSize, 1},
    {IDM_SIZE_800X600, ChooseSize, 2},
    {IDM_SIZE_1024X768, ChooseSize, 3},
    {IDM_SIZE_1280X960, ChooseSize, 4},
    {IDM_SIZE_1280X1024, ChooseSize, 5},
    {IDM_LANGUAGE_POLISH, ChooseMenuLanguage, IDM_LANGUAGE_POLISH},
    {IDM_LANGUAGE_ENGLISH, ChooseMenuLanguage, IDM_LANGUAGE_ENGLISH},
    {IDM_LANGUAGE_RUSSIAN, ChooseMenuLanguage, IDM_LANGUAGE_RUSSIAN},
    {IDM_LANGUAGE_LITHUANIAN, ChooseMenuLanguage, IDM_LANGUAGE_LITHUANIAN},
    {IDM_LANGUAGE_CZECH, ChooseMenuLanguage, IDM_LANGUAGE_CZECH},
};

}  // namespace

bool RunCommand(unsigned id) {
    const auto* row = std::ranges::find(Commands, id, &CommandRow::id);
    if (row == std::end(Commands)) {
        return false;
    }
    row->run(row->argument);
    return true;
}
