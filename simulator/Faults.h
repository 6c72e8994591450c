// What goes wrong with a reply on its way, on demand.
#pragma once

#include "simulator/Wire.h"

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

enum class FaultKind {
    Silence,     // no reply
    LostByte,    // one byte is missing
    FlippedBit,  // one bit is wrong
    Late,        // the reply comes after LateSeconds
    Split,       // the reply pauses halfway for SplitSeconds
    WrongEcho,   // the reply to a write tells another value; reads are left alone
    HangUp,      // the device goes away after half the reply and is back after a second
    Garbage,     // random bytes that do not begin as a reply, as many as the reply has
    Doubled,     // the reply comes twice
    Endless,     // after the reply EndlessBytes random ones go on at the line's pace
    Mix          // one of the above, chosen anew each time
};

constexpr double LateSeconds = 0.3;
constexpr double SplitSeconds = 0.12;
constexpr int EndlessBytes = 1920;  // 2 s

std::optional<FaultKind> FaultByName(std::string_view name);
std::string FaultNames();

struct FaultRule {
    FaultKind kind = FaultKind::Silence;
    double probability = 1;  // of each reply
    int count = -1;          // replies still to spoil; below 0: no end
    bool onlyWrites = false;
    int after = 0;  // replies to leave alone first
};

// "silence", "silence=0.2" (probability, with a decimal point) or "silence=3" (count); nothing if it is none of these.
std::optional<FaultRule> ParseFault(std::string_view text);

struct TimedByte {
    std::uint8_t value = 0;
    double pauseBefore = 0;  // seconds beyond the line's own pace
    bool paced = false;      // keeps the line's pace even where replies do not
};

struct Transmission {
    std::vector<TimedByte> bytes;
    bool hangUp = false;  // the device goes away after the last byte
};

class Faults {
public:
    Faults(std::uint32_t seed, std::vector<FaultRule> rules) : generator(seed), rules(std::move(rules)) {
    }

    void add(const FaultRule& rule) {
        rules.push_back(rule);
    }
    void clear() {
        rules.clear();
    }

    // The first rule that applies to this reply spoils it.
    Transmission send(const Bytes& reply, bool isWrite);

private:
    std::optional<FaultKind> choose(bool isWrite);
    std::size_t below(std::size_t limit);
    std::uint8_t randomByte() {
        return static_cast<std::uint8_t>(below(256));
    }

    std::mt19937 generator;
    std::vector<FaultRule> rules;
};

}  // namespace simulator
