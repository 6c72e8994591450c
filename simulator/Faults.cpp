#include "simulator/Faults.h"

#include <array>
#include <charconv>

namespace simulator {
namespace {

constexpr std::array<std::string_view, 11> Names = {"silence", "lost-byte",  "flipped-bit", "late",
                                                    "split",   "wrong-echo", "hang-up",     "garbage",
                                                    "doubled", "endless",    "mix"};

template <typename Number>
bool ParseWhole(std::string_view text, Number& number) {
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::optional<FaultKind> FaultByName(std::string_view name) {
    for (std::size_t i = 0; i < Names.size(); ++i) {
        if (Names[i] == name) {
            return static_cast<FaultKind>(i);
        }
    }
    return std::nullopt;
}

std::string FaultNames() {
    std::string text;
    for (std::string_view name : Names) {
        text += text.empty() ? "" : ", ";
        text += name;
    }
    return text;
}

std::optional<FaultRule> ParseFault(std::string_view text) {
    std::size_t equals = text.find('=');
    std::optional<FaultKind> kind = FaultByName(text.substr(0, equals));
    if (!kind) {
        return std::nullopt;
    }
    FaultRule rule{*kind};
    if (equals == std::string_view::npos) {
        return rule;
    }
    std::string_view amount = text.substr(equals + 1);
    if (amount.find('.') != std::string_view::npos) {
        bool good = ParseWhole(amount, rule.probability) && rule.probability >= 0 && rule.probability <= 1;
        return good ? std::optional(rule) : std::nullopt;
    }
    return ParseWhole(amount, rule.count) && rule.count > 0 ? std::optional(rule) : std::nullopt;
}

std::size_t Faults::below(std::size_t limit) {
    return generator() % limit;
}

std::optional<FaultKind> Faults::choose(bool isWrite) {
    for (FaultRule& rule : rules) {
        bool onlyWrites = rule.onlyWrites || rule.kind == FaultKind::WrongEcho;
        if (rule.count == 0 || (onlyWrites && !isWrite)) {
            continue;
        }
        if (rule.after > 0) {
            --rule.after;
            continue;
        }
        double draw = static_cast<double>(generator()) / (static_cast<double>(std::mt19937::max()) + 1);
        if (draw >= rule.probability) {
            continue;
        }
        rule.count -= rule.count > 0 ? 1 : 0;
        if (rule.kind != FaultKind::Mix) {
            return rule.kind;
        }
        FaultKind kind = static_cast<FaultKind>(below(static_cast<std::size_t>(FaultKind::Mix)));
        return kind == FaultKind::WrongEcho && !isWrite ? FaultKind::FlippedBit : kind;
    }
    return std::nullopt;
}

Transmission Faults::send(const Bytes& reply, bool isWrite) {
    Transmission out;
    if (reply.empty()) {
        return out;
    }
    for (std::uint8_t byte : reply) {
        out.bytes.push_back({byte});
    }
    std::optional<FaultKind> kind = choose(isWrite);
    if (!kind) {
        return out;
    }
    std::size_t half = reply.size() / 2;
    switch (*kind) {
        case FaultKind::Silence:
            out.bytes.clear();
            break;
        case FaultKind::LostByte:
            out.bytes.erase(out.bytes.begin() + static_cast<long>(below(reply.size())));
            break;
        case FaultKind::FlippedBit:
            out.bytes[below(reply.size())].value ^= static_cast<std::uint8_t>(1U << below(8));
            break;
        case FaultKind::Late:
            out.bytes.front().pauseBefore = LateSeconds;
            break;
        case FaultKind::Split:
            out.bytes[half].pauseBefore = SplitSeconds;
            break;
        case FaultKind::WrongEcho: {
            Bytes wrong{reply[0], static_cast<std::uint8_t>(reply[1] + 1 + below(255))};
            Seal(wrong);
            out.bytes[1].value = wrong[1];
            out.bytes[2].value = wrong[2];
            break;
        }
        case FaultKind::HangUp:
            out.bytes.resize(half);
            out.hangUp = true;
            break;
        case FaultKind::Garbage:
            for (TimedByte& byte : out.bytes) {
                byte.value = randomByte();
            }
            out.bytes.front().value |= 0x80;  // never the marker
            break;
        case FaultKind::Doubled:
            for (std::uint8_t byte : reply) {
                out.bytes.push_back({byte});
            }
            break;
        case FaultKind::Endless:
            for (int i = 0; i < EndlessBytes; ++i) {
                out.bytes.push_back({randomByte(), 0, true});
            }
            break;
        case FaultKind::Mix:
            break;
    }
    return out;
}

}  // namespace simulator
