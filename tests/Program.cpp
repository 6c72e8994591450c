#include "Program.h"

#include <array>
#include <fstream>

#include "link/Link.h"
#include "model/Blocks.h"
#include "platform/linux/PortTable.h"
#include "readings/ReadingsModel.h"
#include "readings/ReadingsPage.h"
#include "shell/AppState.h"
#include "shell/MainWindow.h"

ProgramFolder::ProgramFolder() {
    std::array<char, 24> name{"/tmp/window-test-XXXXXX"};
    path = mkdtemp(name.data());
    usualFolder = std::filesystem::current_path();
    usualPorts = layer::portDirectory();
    std::filesystem::create_directory_symlink(LANGUAGE_DIRECTORY, path / "Lang");
    std::filesystem::create_directory(path / "ports");
    for (int port = 1; port <= layer::PortCount; ++port) {
        std::filesystem::create_symlink(path / "nowhere", path / "ports" / ("COM" + std::to_string(port)));
    }
    layer::setPortDirectory(path / "ports");
    std::filesystem::current_path(path);
}

ProgramFolder::~ProgramFolder() {
    layer::setPortDirectory(usualPorts);
    std::filesystem::current_path(usualFolder);
    std::filesystem::remove_all(path);
}

void ProgramFolder::writeIni(unsigned port, const std::string& language) const {
    std::ofstream(path / "Tarvex.ini", std::ios::binary)
        << "[Ustawienia]\nCommPort= " << port << "\nLanguage= " << language << "\n";
}

bool startProgram() {
    if (!CreateMainWindow(nullptr)) {
        return false;
    }
    ShowWindow(MainWindow, SW_SHOWDEFAULT);
    UpdateWindow(MainWindow);
    return true;
}

void forgetProgram() {
    PortNumber = 0;
    LangCode = {};
    LangTable = {};
    MainMenu = nullptr;
    AppPage = ReadingsPage;
    LinkLost = 1;
    LinkRetries = 0;
    TimerPeriod = GoodLinkPeriod;
    ActiveTimerPeriod = 0;
    IdentBlock = {};
    LiveBlock = {};
    ParamBlockA = {};
    ParamBlockB = {};
    ParamTickCount = 0;
    OnGas = 0;
    LearnRunning = 0;
    LearnRequested = 0;
    StatusHold = 0;
}
