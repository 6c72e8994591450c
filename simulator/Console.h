// The commands that drive a running simulator, one a line.
#pragma once

#include "simulator/Server.h"

#include <string>
#include <string_view>

namespace simulator {

struct ConsoleResult {
    std::string text;  // to print; empty: nothing. A refusal reads "action 'object': reason"
    bool quit = false;
};

ConsoleResult RunConsoleCommand(Server& server, std::string_view line);

}  // namespace simulator
