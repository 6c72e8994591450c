// Where the measuring happens: a directory of its own, so that no file and no port of the user is touched, and a
// screen.
#pragma once

#include <filesystem>
#include <string>

namespace benchmarks {

struct TemporaryDirectory {
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory();

    std::filesystem::path path;
};

// Fills a directory with the language files, an ini file and a port that leads nowhere, and makes it the working one;
// chooses the screen for this process and its children. Throws std::system_error.
class Workplace {
public:
    Workplace();

    const std::string& screen() const {
        return chosenScreen;
    }

private:
    TemporaryDirectory directory;
    std::string chosenScreen;
};

// The link that is COM1 in the working place; a simulated controller replaces it and takes it away with itself.
std::string PortLink();
// A port that is there but cannot be opened. Without it the tool would try the computer's own first port.
void UnplugPort();

// A program beside this one.
std::string ProgramPath(const char* name);

}  // namespace benchmarks
