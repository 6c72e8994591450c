// Prints one table: each figure beside its reference and what it should be. With words as arguments, only the rows that
// have one of them in their name: tarvex-benchmarks [WORD...]
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <span>
#include <string>

#include "Rows.h"
#include "Workplace.h"

namespace {

using benchmarks::Result;

enum class Aim { None, AtMost, AtMostOver, AtMostTimes, AtLeastTimes };

struct Row {
    const char* what;
    const char* unit;
    Result (*measure)();
    const char* referenceName;  // null: there is none
    Aim aim;
    double limit;  // in the unit, in the unit above the reference, or times the reference
};

// Processes come first: what they share with this one counts as half theirs, and this one is still small then.
constexpr Row Rows[] = {
    {"Start to the first complete paint", "ms", benchmarks::StartMilliseconds, "bare window", Aim::AtMostTimes, 1.5},
    {"Memory at the first paint", "MB", benchmarks::FirstMegabytes, "bare window", Aim::AtMostTimes, 1.5},
    {"Memory after some seconds", "MB", benchmarks::LaterMegabytes, "bare window", Aim::AtMostTimes, 1.5},
    {"Processor share, live readings", "%", benchmarks::LiveShare, nullptr, Aim::None, 0},
    {"Processor share, link lost", "%", benchmarks::LostShare, nullptr, Aim::AtMost, 2},
    {"Exchange of a tick, median", "ms", benchmarks::ExchangeMedian, "wire", Aim::AtMostOver, 1},
    {"Exchange of a tick, 95th percentile", "ms", benchmarks::ExchangeSlow, "wire", Aim::AtMostOver, 1},
    {"Save of a settings file", "ms", benchmarks::SaveSettingsTime, "wire", Aim::AtMostTimes, 1.05},
    {"Load of a settings file", "ms", benchmarks::LoadSettingsTime, "wire", Aim::AtMostTimes, 1.05},
    {"Tick, engine running, mean *", "ms", benchmarks::TickRunning, nullptr, Aim::AtMost, 1.5},
    {"Tick, engine running, 95th percentile *", "ms", benchmarks::TickRunningSlow, nullptr, Aim::None, 0},
    {"Tick, gauge at rest, mean *", "ms", benchmarks::TickStill, nullptr, Aim::AtMost, 1.5},
    {"Tick, Configuration page at rest, mean *", "ms", benchmarks::TickConfiguration, nullptr, Aim::AtMost, 1},
    {"Tick, Options page at rest, mean *", "ms", benchmarks::TickOptions, nullptr, Aim::AtMost, 1},
    {"Full repaint, Readings page, median *", "ms", benchmarks::ReadingsRepaint, nullptr, Aim::AtMost, 10},
    {"Switch to the Readings page *", "ms", benchmarks::SwitchToReadings, nullptr, Aim::AtMost, 60},
    {"Switch to the Configuration page *", "ms", benchmarks::SwitchToConfiguration, nullptr, Aim::AtMost, 60},
    {"Switch to the Options page *", "ms", benchmarks::SwitchToOptions, nullptr, Aim::AtMost, 60},
    {"Change of size, Readings page *", "ms", benchmarks::ChangeOfSize, nullptr, Aim::AtMost, 60},
    {"Change of language, Readings page *", "ms", benchmarks::ChangeOfLanguage, nullptr, Aim::AtMost, 60},
    {"Input to the frame on the wire, median **", "ms", benchmarks::InputToWire, nullptr, Aim::AtMost, 5},
    {"Input to the frame on the wire, 95th percentile **", "ms", benchmarks::InputToWireSlow, nullptr, Aim::AtMost, 5},
    {"Input to the changed pixel, median **", "ms", benchmarks::InputToPixel, nullptr, Aim::AtMost, 5},
    {"Input to the changed pixel, 95th percentile **", "ms", benchmarks::InputToPixelSlow, nullptr, Aim::AtMost, 5},
    {"Oscilloscope, columns a second", "/s", benchmarks::ScopeColumns, "wire", Aim::AtLeastTimes, 0.98},
    {"Oscilloscope, a column, mean *", "ms", benchmarks::ScopeColumnTime, "exchange", Aim::AtMostOver, 0.5},
    {"Oscilloscope, history drawn anew *", "ms", benchmarks::ScopeRedraw, nullptr, Aim::AtMost, 5},
    {"Oscilloscope, growth in 150000 columns", "MB", benchmarks::ScopeGrowth, nullptr, Aim::AtMost, 0.5},
};

double Limit(const Row& row, double reference) {
    switch (row.aim) {
        case Aim::AtMost:
            return row.limit;
        case Aim::AtMostOver:
            return reference + row.limit;
        case Aim::AtMostTimes:
        case Aim::AtLeastTimes:
            return reference * row.limit;
        case Aim::None:
            break;
    }
    return 0;
}

std::string WithUnit(double value, const char* unit) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f %s", value, unit);
    return text;
}

void PrintLine(const char* what, const std::string& figure, const std::string& reference, const std::string& aim,
               const char* verdict) {
    std::printf("%-50s %11s   %-24s %-14s %s\n", what, figure.c_str(), reference.c_str(), aim.c_str(), verdict);
    std::fflush(stdout);
}

void PrintRow(const Row& row) {
    const Result result = row.measure();
    const std::string reference =
        row.referenceName ? std::string(row.referenceName) + " " + WithUnit(result.reference, row.unit) : "-";
    if (row.aim == Aim::None) {
        PrintLine(row.what, WithUnit(result.figure, row.unit), reference, "-", "");
        return;
    }
    const double limit = Limit(row, result.reference);
    const bool least = row.aim == Aim::AtLeastTimes;
    const bool met = least ? result.figure >= limit : result.figure <= limit;
    PrintLine(row.what, WithUnit(result.figure, row.unit), reference,
              (least ? ">= " : "<= ") + WithUnit(limit, row.unit), met ? "met" : "missed");
}

bool IsWanted(const Row& row, std::span<char* const> words) {
    return words.empty() || std::ranges::any_of(words, [&](const char* word) { return std::strstr(row.what, word); });
}

}  // namespace

int main(int count, char** arguments) {
    try {
        const benchmarks::Workplace place;
        std::printf("Screen: %s\n\n", place.screen().c_str());
        PrintLine("What", "Figure", "Reference", "Aim", "");
        for (const Row& row : Rows) {
            if (IsWanted(row, std::span(arguments, static_cast<size_t>(count)).subspan(1))) {
                PrintRow(row);
            }
        }
        benchmarks::CloseProgram();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    std::printf(
        "\nMemory is the proportional set size. The bare window has the tool's size, menu bar and button.\n"
        "* Processor time of all threads of the tool's process, from the message to the pixels handed to the\n"
        "  screen, in the largest window size; the simulated controller answers without delay and its thread\n"
        "  is not counted.\n"
        "** From an input at any moment of a tick, at the true pace, less what was left of that tick's exchanges\n"
        "   when it came: a tick box until the controller has its request, a button until the program waits with it\n"
        "   painted.\n");
    return 0;
}
