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
    const bool made = CreateMainWindow(nullptr) != FALSE;
    ShowWindow(MainWindow, SW_SHOWDEFAULT);
    UpdateWindow(MainWindow);
    return made;
}

void forgetProgram() {
    LangCode = {};
    LangTable = {};
    MainMenu = nullptr;
    AppPage = ReadingsPage;
    LinkLost = 1;
    TimerPeriod = GoodLinkPeriod;
    IdentBlock = {};
    LiveBlock = {};
    ParamBlockA = {};
    ParamBlockB = {};
    PortNumber = ActiveTimerPeriod = ParamTickCount = StatusHold = 0;
    ComboOpen = LinkRetries = OnGas = LearnRunning = LearnRequested = 0;
}
