#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "model/Blocks.h"
#include "model/Choices.h"
#include "shell/AppState.h"

// What the entries are worth on the wire is proved on the pages.
TEST(Choices, EveryListHasItsTexts) {
    std::strcpy(LangTable[64].data(), "first");
    std::strcpy(LangTable[81].data(), "last");
    // The first two and the last one of each list, in the order of their names.
    constexpr const char* Expected[] = {
        "0,40 0,42 0,60", "1,00 1,02 1,30", "2:00 2:02 3:00", "0:05 0:10 21:15", "0,025 0,050 6,375", "0,1 0,2 5,0",
        "0,04 0,06 0,40", "first  last",    "1500 1600 3500", "1000 1100 2500",  "4000 4100 8000",    "+0 +1 +255",
        "-0 -1 -255",     "0 1 255",        "2 4 100",        "0,0 0,1 5,0",     "0,0 0,1 5,0",       "10 12 60",
    };
    ASSERT_EQ(std::size(Expected), static_cast<size_t>(ChoiceName::Count));
    for (size_t name = 0; name < std::size(Expected); ++name) {
        const Choice& choice = ChoiceOf(static_cast<ChoiceName>(name));
        const auto text = [&](unsigned entry) {
            std::array<char, LangLineSize> entryText{};
            EntryText(choice, entry, entryText);
            return std::string(entryText.data());
        };
        EXPECT_EQ(text(0) + " " + text(1) + " " + text(choice.entries - 1), Expected[name]);
    }
}

TEST(Blocks, DatesArePackedAcrossTwoBytes) {
    struct Row {
        unsigned day, month, year;
        BYTE dayByte, yearByte;
    };
    for (const Row& row : {Row{0, 0, 0, 0x00, 0x00}, Row{30, 7, 24, 0xFE, 0x18}, Row{0, 8, 24, 0x00, 0x98},
                           Row{30, 11, 62, 0x7E, 0xBE}}) {
        const DateBytes bytes = PackDate(row.day, row.month, row.year);
        EXPECT_TRUE(bytes.day == row.dayByte && bytes.year == row.yearByte) << row.year;
        const Date date = UnpackDate({row.dayByte, static_cast<BYTE>(row.yearByte | 0x40)});
        EXPECT_TRUE(date.day == static_cast<int>(row.day) + 1 && date.month == static_cast<int>(row.month) + 1 &&
                    date.year == static_cast<int>(row.year) + 2000)
            << row.year;
    }
}
