#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/Win32.h"
#include "platform/linux/PortTable.h"

namespace layer {

namespace {

std::string workingDirectory() {
    std::error_code error;
    return std::filesystem::current_path(error).string();
}

// Taken before main, since a file dialog may move the working directory later.
const std::string& StartCapture = startDirectory();

}  // namespace

const std::string& startDirectory() {
    static const std::string path = workingDirectory();
    return path;
}

}  // namespace layer

DWORD GetCurrentDirectoryA(DWORD size, LPSTR buffer) {
    const std::string path = layer::workingDirectory();
    const DWORD needed = static_cast<DWORD>(path.size()) + 1;
    if (path.empty() || buffer == nullptr || size < needed) {
        return path.empty() ? 0 : needed;
    }
    std::memcpy(buffer, path.c_str(), needed);
    return needed - 1;
}

BOOL SetCurrentDirectoryA(LPCSTR path) {
    return path != nullptr && chdir(path) == 0 ? TRUE : FALSE;
}
