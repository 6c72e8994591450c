// The bytes of the tuning pages as the controller's makers tell them, not as the program's tables do: what every entry
// of a control sends, and what each byte of a block shows.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "model/Blocks.h"

using Values = std::vector<unsigned>;

// What every entry of a control writes, from the first on; of a box without and with its tick. Of a value of 16 bits
// the low byte goes to the cell, then the high one to the next cell. With a mask the other bits of the byte must stay.
struct Entries {
    int id;
    int cell;
    Values values;
    bool twoCells = false;
    unsigned mask = 0;
    std::vector<std::pair<int, std::uint8_t>> held = {};  // cells of the controller before
};

std::vector<Entries> configurationEntries(int family);
std::vector<Entries> optionsEntries(int family, int firmware);

// What a byte of a mirror selects in a control: an entry, -1 for none, or a tick.
struct Shown {
    const BYTE* byte;
    int id;
    std::function<int(int)> entry;
    int family = 0;  // 0 for both
};

extern const std::vector<Shown> OnConfiguration;
extern const std::vector<Shown> OnOptions;
