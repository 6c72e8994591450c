// The settings file: what is written, and what is refused. The files of fuzz/corpus prove the reader's other rules.
#include <gtest/gtest.h>

#include <numeric>
#include <string>

#include "model/Blocks.h"
#include "settings/SettingsFormat.h"

namespace {

const std::string First =
    "Options= 1\nLambdaType= 2\nLambdaPoint= 3\nLambdaDelay= 4\nEmulType= 5\nEmulBJ_TimeHi= 6\nEmulBJ_TimeLo= 7\n";
const std::string Second =
    "InjectDelay= 10\nLPGOnTemp= 11\nAttMax= 101\nAttMin= 102\nAttInit= 77\nTPSJump= 103\nAttJump= 104\n"
    "LPGOnRPMLo= 105\nLPGOnRPMHi= 106\nIgnitionType= 107\nCutOffRPMLo= 108\nCutOffRPMHi= 109\nCutOffSteps= 110\n"
    "LPGOffRPMLo= 111\nLPGOffRPMHi= 112\nTPSInert= 12\nAttMax_BJ= 113\nAttMin_BJ= 114\n";
const std::string Gen1Text = "[Tarve_X]\nVersion=1.2\n[Configuration]\n" + First +
                             "EmulDO_TimeHi= 8\nEmulDO_TimeLo= 9\n" + Second + "Otwarcie_GAZU= 13\n";
const std::string Gen2Text = "[Tarve_X2]\nVersion=4\n[Configuration]\n" + First + "ZAM_OTW_BJ= 206\nZAM_OTW_DO= 207\n" +
                             Second + "Prog1= 201\nProg2= 202\nProg3= 203\nProg4= 204\nWOZG= 8\nNULL= 0\n";

bool accepts(std::string text, int family) {
    ScanSettings(fmemopen(text.data(), text.size(), "r"), SettingsFormatOf(family));
    return SettingsMatch(SettingsFormatOf(family));
}

}  // namespace

TEST(SettingsFormat, WritesEachGenerationFromItsPlaces) {
    // A 1 to 13, B 101 to 114, C 201 to 212.
    std::iota(ParamBlockA.begin(), ParamBlockA.end(), BYTE{0});
    std::iota(ParamBlockB.begin(), ParamBlockB.end(), BYTE{100});
    std::iota(ParamBlockC.begin(), ParamBlockC.end(), BYTE{200});
    LiveBlock[4] = 77;
    for (const auto& [family, expected] : {std::pair{2, Gen1Text}, {4, Gen2Text}, {1, Gen1Text}}) {
        std::string written(expected.size() + 100, '\0');
        std::FILE* file = fmemopen(written.data(), written.size(), "w");
        WriteSettings(file, SettingsFormatOf(family));
        std::fclose(file);
        EXPECT_EQ(written.c_str(), expected);
    }
}

TEST(SettingsFormat, RefusesWhatHasNotItsKeysLetterForLetterInTheirOrder) {
    struct Row {
        const char *what, *from, *to;
    };
    const Row rows[] = {
        {"other order", "AttMax= 101\nAttMin= 102", "AttMin= 102\nAttMax= 101"},
        {"other case", "WOZG", "wozg"},
        {"other tag", "X2]", "X3]"},
        {"version that begins alike", "Version=4", "Version=4.1"},
        {"version shorter", "Version=4", "Version="},
        {"last line missing", "NULL= 0\n", ""},
    };
    for (const Row& row : rows) {
        EXPECT_TRUE(accepts(Gen2Text, 4)) << "what it leaves must not help the next file";
        std::string text = Gen2Text;
        EXPECT_FALSE(accepts(text.replace(text.find(row.from), std::string(row.from).size(), row.to), 4)) << row.what;
    }
    EXPECT_TRUE(accepts(Gen2Text.substr(0, Gen2Text.size() - 1), 4)) << "no line end at all";
    EXPECT_FALSE(accepts(Gen2Text.substr(0, 1), 4)) << "hardly any file";
    EXPECT_TRUE(accepts(Gen1Text, 3));
}
