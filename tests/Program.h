// The whole program within a test: its working directory, its start and its end.
#pragma once

#include <filesystem>
#include <string>

// A folder of its own as working directory, with Lang, and with every port leading nowhere, for as long as it lives.
class ProgramFolder {
public:
    ProgramFolder();
    ~ProgramFolder();
    ProgramFolder(const ProgramFolder&) = delete;
    ProgramFolder& operator=(const ProgramFolder&) = delete;

    void writeIni(unsigned port, const std::string& language) const;

    std::filesystem::path path;

private:
    std::string usualPorts;
    std::filesystem::path usualFolder;
};

// Starts the program as its entry does, without the loop; false if its window could not be made.
bool startProgram();
// After its end: the state as at a process's start.
void forgetProgram();
