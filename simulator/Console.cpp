#include "simulator/Console.h"

#include <charconv>
#include <sstream>
#include <vector>

namespace simulator {
namespace {

constexpr std::string_view Help =
    "throttle PERCENT | rpm N | temp DEGREES | level PERCENT   hold a value by hand\n"
    "auto                    let the scenario drive again\n"
    "start | stop            turn the ignition key\n"
    "gas | petrol            press the fuel switch ('auto' releases it)\n"
    "set CELL VALUE          write a parameter cell (5 to 49)\n"
    "live BYTE VALUE         show a value in live byte 1 to 9; 'live none' ends that\n"
    "fault NAME [COUNT]      spoil replies; 'fault none' ends that\n"
    "unplug | replug         take the device away, bring it back\n"
    "show | help | quit";

constexpr std::string_view NumberWanted = "a number in range is missing";

using Words = std::vector<std::string>;

bool Number(const Words& words, std::size_t at, double low, double high, double& number) {
    if (at >= words.size()) {
        return false;
    }
    const std::string& text = words[at];
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= low && number <= high;
}

struct HeldValue {
    std::string_view name;
    double low;
    double high;
    void (*hold)(Controller& controller, double value);
};

constexpr HeldValue HeldValues[] = {
    {"throttle", 0, 100, [](Controller& controller, double value) { controller.driver.throttle = value; }},
    {"rpm", 0, 12000, [](Controller& controller, double value) { controller.driver.rpm = value; }},
    {"temp", 0, 110, [](Controller& controller, double value) { controller.engine.heldTemperature = value; }},
    {"level", 0, 100, [](Controller& controller, double value) { controller.gas.tank = value / 100; }},
};

struct Switch {
    std::string_view name;
    void (*press)(Controller& controller);
};

constexpr Switch Switches[] = {
    {"start", [](Controller& controller) { controller.driver.turnKey(true); }},
    {"stop", [](Controller& controller) { controller.driver.turnKey(false); }},
    {"gas", [](Controller& controller) { controller.gas.choice = FuelChoice::Gas; }},
    {"petrol", [](Controller& controller) { controller.gas.choice = FuelChoice::Petrol; }},
    {"auto",
     [](Controller& controller) {
         controller.driver.throttle.reset();
         controller.driver.rpm.reset();
         controller.engine.heldTemperature.reset();
         controller.gas.choice = FuelChoice::Auto;
     }},
};

// Each returns the reason for a refusal, or nothing.
std::string_view SetCell(Server& server, const Words& words) {
    double number = 0;
    double value = 0;
    if (!Number(words, 1, FirstCell, LastCell, number) || !Number(words, 2, 0, 255, value)) {
        return NumberWanted;
    }
    return server.with([&](Controller& controller) -> std::string_view {
        int cell = static_cast<int>(number);
        if (!controller.cells.has(cell) || cell == CommandCell) {
            return "this controller has no such cell";
        }
        controller.cells.set(cell, static_cast<std::uint8_t>(value));
        return "";
    });
}

std::string_view SetLive(Server& server, const Words& words) {
    double byte = 0;
    double value = 0;
    if (words.size() == 2 && words[1] == "none") {
        server.with([](Controller& controller) { controller.releaseLive(); });
        return "";
    }
    if (!Number(words, 1, 1, 9, byte) || !Number(words, 2, 0, 255, value)) {
        return NumberWanted;
    }
    server.with([&](Controller& controller) {
        controller.overrideLive(static_cast<std::size_t>(byte), static_cast<std::uint8_t>(value));
    });
    return "";
}

std::string_view SetFault(Server& server, const Words& words) {
    if (words.size() == 2 && words[1] == "none") {
        server.clearFaults();
        return "";
    }
    std::string text = words.size() > 1 ? words[1] : "";
    text += words.size() > 2 ? "=" + words[2] : "";
    std::optional<FaultRule> rule = ParseFault(text);
    if (!rule) {
        return "there is no such fault or amount, see --help";
    }
    server.addFault(*rule);
    return "";
}

std::string_view RunWords(Server& server, const Words& words) {
    for (const HeldValue& row : HeldValues) {
        double value = 0;
        if (row.name == words[0]) {
            if (!Number(words, 1, row.low, row.high, value)) {
                return NumberWanted;
            }
            server.with([&](Controller& controller) { row.hold(controller, value); });
            return "";
        }
    }
    for (const Switch& row : Switches) {
        if (row.name == words[0]) {
            server.with(row.press);
            return "";
        }
    }
    if (words[0] == "set") {
        return SetCell(server, words);
    }
    if (words[0] == "live") {
        return SetLive(server, words);
    }
    if (words[0] == "fault") {
        return SetFault(server, words);
    }
    return "there is no such command, see 'help'";
}

}  // namespace

ConsoleResult RunConsoleCommand(Server& server, std::string_view line) {
    Words words;
    std::istringstream stream{std::string(line)};
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    if (words.empty()) {
        return {};
    }
    const std::string& verb = words[0];
    if (verb == "quit") {
        return {"", true};
    }
    if (verb == "help") {
        return {std::string(Help)};
    }
    if (verb == "show") {
        std::string device = server.devicePath();
        std::string text = server.with([](Controller& controller) { return controller.summary(); });
        return {(device.empty() ? "unplugged" : device) + "\n" + text};
    }
    if (verb == "unplug") {
        server.unplug();
        return {};
    }
    if (verb == "replug") {
        return {server.replug() ? server.devicePath() : "replug 'device': none could be made"};
    }
    std::string_view reason = RunWords(server, words);
    return {reason.empty() ? "" : "run command '" + std::string(line) + "': " + std::string(reason)};
}

}  // namespace simulator
