#include "simulator/CommandLine.h"

#include <getopt.h>

#include <charconv>
#include <limits>
#include <string_view>

namespace simulator {
namespace {

enum Option { Family = 1, Firmware, Port, Pace, Seed, ScenarioName, Fault, Verbose, Help };

constexpr option LongOptions[] = {
    {"family", required_argument, nullptr, Family}, {"firmware", required_argument, nullptr, Firmware},
    {"port", required_argument, nullptr, Port},     {"pace", required_argument, nullptr, Pace},
    {"seed", required_argument, nullptr, Seed},     {"scenario", required_argument, nullptr, ScenarioName},
    {"fault", required_argument, nullptr, Fault},   {"verbose", no_argument, nullptr, Verbose},
    {"help", no_argument, nullptr, Help},           {nullptr, 0, nullptr, 0},
};

std::string Refusal(std::string_view name, std::string_view value, std::string_view reason) {
    return "read option '--" + std::string(name) + "=" + std::string(value) + "': " + std::string(reason);
}

template <typename Number>
bool ReadNumber(std::string_view text, Number low, Number high, Number& number) {
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= low && number <= high;
}

// The reason for a refusal, or nothing.
std::string Take(int option, std::string_view value, CommandLine& line) {
    Config& config = line.config;
    switch (option) {
        case Family:
            return ReadNumber(value, 1, 8, config.family) ? "" : "a family is a number from 1 to 8";
        case Firmware:
            return ReadNumber(value, 0, 31, config.firmware) ? "" : "a version is a number from 0 to 31";
        case Port:
            config.portLink = value;
            return value.empty() ? "the path of a link is missing" : "";
        case Pace:
            config.wirePace = value == "wire";
            return value == "wire" || value == "none" ? "" : "a pace is wire or none";
        case Seed:
            return ReadNumber(value, 0U, std::numeric_limits<std::uint32_t>::max(), config.seed)
                       ? ""
                       : "a seed is a number from 0 to 4294967295";
        case ScenarioName:
            if (std::optional<Scenario> scenario = ScenarioByName(value)) {
                config.scenario = *scenario;
                return "";
            }
            return "a scenario is one of " + ScenarioNames();
        case Fault:
            if (std::optional<FaultRule> rule = ParseFault(value)) {
                config.faults.push_back(*rule);
                return "";
            }
            return "a fault is one of " + FaultNames() + ", with nothing, =COUNT or =0.PROBABILITY behind it";
        case Verbose:
            line.verbose = true;
            return "";
        default:
            line.help = true;
            return "";
    }
}

}  // namespace

CommandLine ParseCommandLine(int argc, char** argv) {
    CommandLine line;
    optind = 0;  // so that a second call starts anew
    opterr = 0;
    int index = 0;
    for (int option; (option = getopt_long(argc, argv, "+:", LongOptions, &index)) != -1;) {
        if (option == '?' || option == ':') {
            const char* reason = option == ':' ? "a value is missing" : "there is no such option, or it takes no value";
            line.error = "read option '" + std::string(argv[optind - 1]) + "': " + reason;
            return line;
        }
        std::string_view value = optarg != nullptr ? optarg : "";
        std::string reason = Take(option, value, line);
        if (!reason.empty()) {
            line.error = Refusal(LongOptions[index].name, value, reason);
            return line;
        }
    }
    if (optind < argc) {
        line.error = "read argument '" + std::string(argv[optind]) + "': only options are taken, see --help";
    }
    return line;
}

std::string HelpText() {
    return "usage: tarvex-simulator [OPTION]...\n"
           "A controller of an LPG conversion on a pseudo-terminal, for work without a car.\n"
           "\n"
           "  --family=N        2 or 4; 1, 3, 5 to 8 answer only the identity (4)\n"
           "  --firmware=N      version 0 to 31 (5)\n"
           "  --port=PATH       make PATH a link to the device, such as ports/COM1\n"
           "  --pace=wire|none  answer at the pace of 9600 baud, or at once (wire)\n"
           "  --seed=N          the same seed gives the same run (1)\n"
           "  --scenario=NAME   cycle, idle, cruise, cold, off, ramp (cycle)\n"
           "  --fault=NAME[=N]  spoil replies: the next N, or with =0.N that part of them,\n"
           "                    else all; may be given several times. NAME is silence,\n"
           "                    lost-byte, flipped-bit, late, split, wrong-echo, hang-up,\n"
           "                    garbage, doubled, endless, mix\n"
           "  --verbose         print every frame\n"
           "  --help            print this text\n"
           "\n"
           "Standard input takes commands, one a line; 'help' lists them.\n"
           "SIGINT, SIGTERM or 'quit' ends it and removes the link.\n";
}

}  // namespace simulator
