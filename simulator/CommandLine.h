// The program's arguments.
#pragma once

#include "simulator/Config.h"

#include <string>

namespace simulator {

struct CommandLine {
    Config config;
    bool help = false;
    bool verbose = false;
    std::string error;  // "action 'object': reason"; empty: all is well
};

CommandLine ParseCommandLine(int argc, char** argv);
std::string HelpText();

}  // namespace simulator
