// The settings file: what is written, and what the reader accepts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "model/Blocks.h"
#include "settings/SettingsFormat.h"

namespace {

// Every byte of the mirrors tells where it stands: A 1 to 13, B 101 to 114, C 201 to 212, the base position 77.
void fillMirrors() {
    const auto number = [](std::span<BYTE> block, int first) {
        for (size_t at = 0; at < block.size(); ++at) {
            block[at] = static_cast<BYTE>(first + static_cast<int>(at));
        }
    };
    number(ParamBlockA, 0);
    number(ParamBlockB, 100);
    number(ParamBlockC, 200);
    LiveBlock[4] = 77;
}

const std::string Gen1Text =
    "[Tarve_X]\nVersion=1.2\n[Configuration]\n"
    "Options= 1\nLambdaType= 2\nLambdaPoint= 3\nLambdaDelay= 4\nEmulType= 5\nEmulBJ_TimeHi= 6\nEmulBJ_TimeLo= 7\n"
    "EmulDO_TimeHi= 8\nEmulDO_TimeLo= 9\nInjectDelay= 10\nLPGOnTemp= 11\nAttMax= 101\nAttMin= 102\nAttInit= 77\n"
    "TPSJump= 103\nAttJump= 104\nLPGOnRPMLo= 105\nLPGOnRPMHi= 106\nIgnitionType= 107\nCutOffRPMLo= 108\n"
    "CutOffRPMHi= 109\nCutOffSteps= 110\nLPGOffRPMLo= 111\nLPGOffRPMHi= 112\nTPSInert= 12\nAttMax_BJ= 113\n"
    "AttMin_BJ= 114\nOtwarcie_GAZU= 13\n";

const std::string Gen2Text =
    "[Tarve_X2]\nVersion=4\n[Configuration]\n"
    "Options= 1\nLambdaType= 2\nLambdaPoint= 3\nLambdaDelay= 4\nEmulType= 5\nEmulBJ_TimeHi= 6\nEmulBJ_TimeLo= 7\n"
    "ZAM_OTW_BJ= 206\nZAM_OTW_DO= 207\nInjectDelay= 10\nLPGOnTemp= 11\nAttMax= 101\nAttMin= 102\nAttInit= 77\n"
    "TPSJump= 103\nAttJump= 104\nLPGOnRPMLo= 105\nLPGOnRPMHi= 106\nIgnitionType= 107\nCutOffRPMLo= 108\n"
    "CutOffRPMHi= 109\nCutOffSteps= 110\nLPGOffRPMLo= 111\nLPGOffRPMHi= 112\nTPSInert= 12\nAttMax_BJ= 113\n"
    "AttMin_BJ= 114\nProg1= 201\nProg2= 202\nProg3= 203\nProg4= 204\nWOZG= 8\nNULL= 0\n";

bool accepts(const std::string& text, int family) {
    std::FILE* file = fmemopen(const_cast<char*>(text.data()), std::max<size_t>(1, text.size()), "r");
    ScanSettings(file, SettingsFormatOf(family));
    return SettingsMatch(SettingsFormatOf(family));
}

std::string with(std::string text, const std::string& from, const std::string& to) {
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

}  // namespace

TEST(SettingsFormat, WritesEachGenerationFromItsPlaces) {
    fillMirrors();
    for (const auto& [family, expected] : {std::pair{2, Gen1Text}, {4, Gen2Text}, {1, Gen1Text}}) {
        std::string written(expected.size() + 100, '\0');
        std::FILE* file = fmemopen(written.data(), written.size(), "w");
        WriteSettings(file, SettingsFormatOf(family));
        std::fclose(file);
        EXPECT_EQ(written.c_str(), expected);
    }
}

TEST(SettingsFormat, AcceptsWhatHasItsKeysInOrderAndRefusesTheRest) {
    const std::string longToken(40, 'x');
    std::string windows = Gen2Text;
    for (size_t at = windows.find('\n'); at != std::string::npos; at = windows.find('\n', at + 2)) {
        windows.insert(at, "\r");
    }
    struct Row {
        const char* what;
        std::string text;
        int value;  // in the line of LambdaPoint; -1 for a refused file, -2 for a line without a number
    };
    const Row rows[] = {
        {"as written", Gen2Text, 3},
        {"line ends of another system", windows, 3},
        {"blanks and broken lines", with(Gen2Text, "LambdaPoint= 3", "\n\n\tLambdaPoint=\n \v\f 3"), 3},
        {"lines after the last", Gen2Text + "More= 1\n", 3},
        {"no line end at all", Gen2Text.substr(0, Gen2Text.size() - 1), 3},
        {"300", with(Gen2Text, "LambdaPoint= 3", "LambdaPoint= 300"), 44},
        {"-1", with(Gen2Text, "LambdaPoint= 3", "LambdaPoint= -1"), 255},
        {"+7", with(Gen2Text, "LambdaPoint= 3", "LambdaPoint= +007"), 7},
        {"a very long number", with(Gen2Text, "LambdaPoint= 3", "LambdaPoint= 1" + std::string(30, '0')), 0},
        {"no number", with(Gen2Text, "LambdaPoint= 3", "LambdaPoint="), -2},
        {"any number behind NULL", with(Gen2Text, "NULL= 0", "NULL= 99"), 3},
        {"no number behind NULL", with(Gen2Text, "NULL= 0", "NULL="), 3},
        {"glued", with(Gen2Text, "LambdaPoint= 3", "LambdaPoint=3"), -1},
        {"other order", with(with(Gen2Text, "AttMax=", "AttX="), "AttMin=", "AttMax="), -1},
        {"other case", with(Gen2Text, "WOZG", "wozg"), -1},
        {"other tag", with(Gen2Text, "X2]", "X3]"), -1},
        {"version that begins alike", with(Gen2Text, "Version=4", "Version=4.1"), -1},
        {"version shorter", with(Gen2Text, "Version=4", "Version="), -1},
        {"the other generation", Gen1Text, -1},
        {"text for a number", with(Gen2Text, "LambdaPoint= 3", "LambdaPoint= abc"), -1},
        {"a sign for a number", with(Gen2Text, "LambdaPoint= 3", "LambdaPoint= -"), -1},
        {"text behind a number", with(Gen2Text, "LambdaPoint= 3", "LambdaPoint= 3x"), -1},
        {"too few lines", with(Gen2Text, "NULL= 0\n", ""), -1},
        {"empty", "", -1},
        {"a token longer than a row", with(Gen2Text, "LambdaPoint=", "LambdaPoint=" + longToken), -1},
        {"a key followed by a zero byte", with(Gen2Text, "LambdaPoint=", std::string("LambdaPoint=\0x", 14)), -1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        // What an earlier file left must not help this one.
        EXPECT_TRUE(accepts(with(Gen2Text, "LambdaPoint= 3", "LambdaPoint= 111"), 4));
        EXPECT_EQ(accepts(row.text, 4), row.value != -1);
        if (row.value >= 0) {
            EXPECT_TRUE(CellGiven[2]);
            EXPECT_EQ(CellImage[2], row.value);
            EXPECT_EQ(CellImage[31], 8);
        }
        if (row.value == -2) {
            EXPECT_FALSE(CellGiven[2]);
        }
    }
    EXPECT_TRUE(accepts(Gen1Text, 2));
    EXPECT_TRUE(accepts(Gen1Text, 3));
    EXPECT_FALSE(accepts(Gen2Text, 2));
}
