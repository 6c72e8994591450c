// What the tests of the simulated controller share.
#pragma once

#include "simulator/Simulator.h"

#include <sstream>
#include <string>

inline simulator::Bytes Hex(const std::string& text) {
    simulator::Bytes bytes;
    std::istringstream stream(text);
    for (unsigned value; stream >> std::hex >> value;) {
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
    return bytes;
}

inline simulator::Config Of(int family, simulator::Scenario scenario = simulator::Scenario::Idle) {
    simulator::Config config;
    config.family = family;
    config.scenario = scenario;
    config.wirePace = false;
    return config;
}

inline const simulator::Bytes AskIdentity = Hex("65 01 01 67");
inline const simulator::Bytes AskLive = Hex("65 02 02 69");
