#include "Workplace.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include "platform/linux/PortTable.h"

namespace benchmarks {
namespace {

namespace fs = std::filesystem;

// The smallest desktop that shows the tool in its largest size.
constexpr const char* OffscreenDesktop = R"({"screens":[{"name":"memory","x":0,"y":0,"width":1280,"height":1024,)"
                                         R"("logicalDpi":96,"logicalBaseDpi":96,"dpr":1}]})";

// A connection of this process' own, to the end. A bare X server starts anew when its last client leaves, and turns
// away whom it meets then; with a connection that stays, the programs that come and go find it ready, as on a desktop.
// By name at run time, since the library is only there where there is such a display.
void HoldDisplay(const char* display) {
    using Connect = void* (*)(const char*, int*);
    using HasError = int (*)(void*);
    void* library = dlopen("libxcb.so.1", RTLD_NOW);
    const auto connect = library ? reinterpret_cast<Connect>(dlsym(library, "xcb_connect")) : nullptr;
    const auto hasError = library ? reinterpret_cast<HasError>(dlsym(library, "xcb_connection_has_error")) : nullptr;
    if (!connect || !hasError || hasError(connect(display, nullptr)) != 0) {
        throw std::system_error(ENOTCONN, std::generic_category(), std::string("open display '") + display + "'");
    }
}

std::string ChooseScreen(const fs::path& directory) {
    if (const char* platform = std::getenv("QT_QPA_PLATFORM")) {
        return std::string("that of QT_QPA_PLATFORM=") + platform;
    }
    if (const char* display = std::getenv("DISPLAY"); display != nullptr && *display != '\0') {
        setenv("QT_QPA_PLATFORM", "xcb", 1);
        HoldDisplay(display);
        return std::string("display ") + display;
    }
    const fs::path desktop = directory / "desktop.json";
    std::ofstream(desktop) << OffscreenDesktop;
    setenv("QT_QPA_PLATFORM", ("offscreen:configfile=" + desktop.string()).c_str(), 1);
    return "offscreen, 1280x1024, since there is no DISPLAY";
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
    std::string name = (fs::temp_directory_path() / "tarvex-benchmarks-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "make directory '" + name + "'");
    }
    path = name;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    fs::current_path(fs::temp_directory_path(), ignored);
    fs::remove_all(path, ignored);
}

Workplace::Workplace() : chosenScreen(ChooseScreen(directory.path)) {
    fs::create_directory_symlink(ProgramPath("Lang"), directory.path / "Lang");
    fs::create_directory(directory.path / "ports");
    fs::current_path(directory.path);
    std::ofstream("Tarvex.ini") << "[Ustawienia]\nCommPort= 1\nLanguage= ang\n";
    layer::setPortDirectory((directory.path / "ports").string());
    UnplugPort();
    setenv("XDG_RUNTIME_DIR", directory.path.c_str(), 0);
}

std::string PortLink() {
    return layer::portDirectory() + "/COM1";
}

void UnplugPort() {
    std::error_code ignored;
    fs::remove(PortLink(), ignored);
    fs::create_symlink("nowhere", PortLink());
}

std::string ProgramPath(const char* name) {
    return fs::read_symlink("/proc/self/exe").parent_path() / name;
}

}  // namespace benchmarks
