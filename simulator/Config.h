// What one simulated controller is made with.
#pragma once

#include "simulator/Driver.h"
#include "simulator/Faults.h"

#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

struct Config {
    int family = 4;          // 1 to 8; 2 and 4 have cells and blocks, the others answer only the identity
    int firmware = 5;        // 0 to 31
    bool wirePace = true;    // false: replies leave at once
    std::uint32_t seed = 1;  // the same seed and steps give the same run
    std::string portLink;    // path of the link to the device; empty: none
    Scenario scenario = Scenario::Cycle;
    bool clockRuns = true;  // false: the engine moves only by Controller::step
    std::vector<FaultRule> faults;
};

}  // namespace simulator
