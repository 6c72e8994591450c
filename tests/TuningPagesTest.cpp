// The Configuration and the Options page: what they offer and say, and what happens between two polls.
#include <array>
#include <string>
#include <vector>

#include "TuningPages.h"
#include "tuning/ConfigurationPage.h"
#include "tuning/OptionsPage.h"
#include "tuning/TuningState.h"

namespace {

Ids joined(std::initializer_list<Ids> parts) {
    Ids all;
    for (const Ids& part : parts) {
        all.insert(part.begin(), part.end());
    }
    return all;
}

}  // namespace

TEST_F(TuningPages, FamilyAndBitsDecideWhatIsOffered) {
    const Ids Wave = {1019, 1020, 1079, 1080, 1091, 1092, 1025, 1085, 1093}, LowSignal = {1140},
              Gas = {1130, 1088, 1206, 1007}, Valve = {1096, 1149, 1095}, Base = {1003, 1057},
              Jump = {1046, 1047, 1064, 1065, 1058, 1059}, CutOff = {1048, 1060, 1061, 1066, 1067, 1049},
              GasOff = {1050, 1062}, Temperature = {1051, 1063}, JumpSwitch = {1039}, Panel = {1209, 1207};
    const Ids NoFeature = joined({Jump, CutOff, GasOff, Temperature});
    struct Row {
        UINT page;
        int family, firmware;
        int a1, a2, a5;
        Ids disabled, hidden;
        size_t line = 0;  // of the gas level sensor, or the label of the jump
    };
    constexpr UINT First = IDM_CONFIGURATION, Second = IDM_OPTIONS;
    const Row rows[] = {
        {First, 2, 9, 0x01, 0x00, 0x00, joined({LowSignal, Gas}), Valve},
        {First, 4, 4, 0x01, 0x00, 0x00, Gas, Valve},
        {First, 4, 5, 0x81, 0x00, 0x08, {}, {}, 181},
        {First, 4, 31, 0x80, 0x05, 0xBC, {}, {}, 182},
        {First, 4, 5, 0x7E, 0xFD, 0x00, {}, Valve, 183},
        {First, 4, 5, 0x01, 0x02, 0x02, Wave, Valve, 181},
        {First, 2, 9, 0xFF, 0x07, 0xFF, joined({LowSignal, Gas, Wave}), {}},
        {Second, 2, 9, 0x04, 0x00, 0x00, Panel, joined({Base, NoFeature}), 110},
        {Second, 4, 5, 0x00, 0x00, 0x00, {}, NoFeature, 132},
        {Second, 4, 4, 0xFF, 0x00, 0x00, Panel, Base, 132},
        {Second, 4, 31, 0x0C, 0x01, 0x40, {}, joined({Base, CutOff, GasOff, Temperature}), 132},
        {Second, 4, 5, 0x24, 0x08, 0x00, {}, joined({Base, Jump, GasOff, Temperature}), 132},
        {Second, 4, 5, 0x44, 0x0F, 0x00, {}, joined({Base, Jump, CutOff, Temperature}), 132},
        {Second, 4, 5, 0x06, 0x04, 0x00, {}, joined({Base, Jump, CutOff, GasOff}), 132},
        {Second, 4, 5, 0x6E, 0x02, 0x00, JumpSwitch, joined({Base, Jump}), 132},
        {Second, 4, 5, 0x6A, 0x13, 0x00, JumpSwitch, Jump, 132},
        {Second, 2, 9, 0x6A, 0x26, 0x00, joined({JumpSwitch, Panel}), Jump, 110},
        {Second, 2, 9, 0x6A, 0xF5, 0x00, Panel, {}, 110},
        {Second, 1, 0, 0x00, 0x00, 0x00, Panel, NoFeature, 110},
    };
    startOn(4, 5);
    UINT page = 0;
    for (const Row& row : rows) {
        SCOPED_TRACE(&row - rows);
        if (page != row.page) {
            open(page = row.page);
        }
        clearMirrors();
        A[0] = 0x65;
        ControllerFamily = row.family;
        FirmwareVersion = row.firmware;
        A[1] = static_cast<BYTE>(row.a1);
        A[2] = static_cast<BYTE>(row.a2);
        A[5] = static_cast<BYTE>(row.a5);
        page == Second ? RefreshOptionsPage() : RefreshConfigurationPage();
        EXPECT_EQ(controls(IsWindowEnabled), row.disabled);
        EXPECT_EQ(controls(IsWindowVisible), row.hidden);
        EXPECT_EQ(textOf(page == Second ? 1064 : 1007), row.line == 0 ? "" : line(row.line));
        if (page == Second) {
            EXPECT_EQ(textOf(1058), line(row.family == 4 ? 126 : 123));
            EXPECT_EQ(entriesOf(1046), row.family == 4 ? 50 : 256);
            EXPECT_EQ(selected(1207), row.disabled.contains(1207) || row.a5 == 0x40 ? 0 : 1);
            EXPECT_EQ(selected(1039), row.hidden.contains(1046) ? 0 : 1);
        } else if (row.family != 4) {
            pick(1140, 1);
        }
        EXPECT_EQ(sent(), "");
    }
}

TEST_F(TuningPages, TextsStandInTheirPlaces) {
    // An id and its line, and how many of both rise together; of a list its entries.
    using Rows = std::vector<std::array<int, 3>>;
    const Rows onConfiguration = {
        {1126, 35, 5},  {1075, 40, 12}, {1088, 52, 1},  {1089, 53, 4}, {1087, 57, 1},  {1093, 58, 3}, {1140, 185, 1},
        {1074, 187, 1}, {1096, 188, 1}, {1206, 197, 1}, {1018, 61, 3}, {1021, 64, 18}, {1023, 82, 2}, {1024, 84, 6},
    };
    const Rows onOptions = {
        {1131, 92, 5},  {1014, 97, 1},  {1034, 104, 1}, {1075, 105, 4}, {1039, 109, 1}, {1065, 111, 1},
        {1040, 112, 1}, {1066, 113, 2}, {1041, 115, 2}, {1079, 117, 1}, {1057, 118, 1}, {1085, 119, 2},
        {1088, 121, 1}, {1136, 122, 1}, {1059, 124, 5}, {1209, 201, 1}, {1207, 202, 1}, {1052, 129, 3},
    };
    startOn(4, 5);
    for (const auto& [page, rows] : {std::pair{IDM_CONFIGURATION, onConfiguration}, {IDM_OPTIONS, onOptions}}) {
        open(page);
        for (const auto& [id, first, count] : rows) {
            for (int at = 0; at < count; ++at) {
                EXPECT_EQ(isList(id) ? entryOf(id, at) : textOf(id + at), line(static_cast<size_t>(first + at))) << id;
            }
        }
    }
    // Lists of the same values with signs of their own.
    for (const auto& [id, last] : {std::pair{1013, "-255"}, {1043, "+255"}, {1044, "-255"}, {1045, "+255"}}) {
        EXPECT_EQ(entryOf(id, 255), last) << id;
    }
}

TEST_F(TuningPages, ChoicesBetweenTwoPollsWorkFromTheOldBytes) {
    connect(2, 9, IDM_OPTIONS);
    clearMirrors();
    pick(1041, 0);
    EXPECT_EQ(sent(), "") << "the other bits, which were never read, would go out as zeroes";
    setCell(simulator::Options, 0xFF);
    tick();
    sent();
    constexpr int GotFocus = 6;
    notify(1041, GotFocus);
    pick(1040, 0);
    pick(1041, 0);
    EXPECT_EQ(sent(), "65 05 DF 49, 65 05 BF 29");
    pick(1034, 1);
    pick(1041, 0);
    EXPECT_EQ(sent(), "65 05 FB 65, 65 05 BB 25") << "freeing the base is seen at once";
    pick(1034, 0);
    pick(1041, 0);
    EXPECT_EQ(sent(), "65 05 FF 69, 65 05 BB 25") << "locking it is not";
    open(IDM_CONFIGURATION);
    pick(1003, 5);
    A[2] = 0x50;
    pick(1013, 3);
    EXPECT_EQ(sent(), "65 06 50 BB, 65 07 3C A8, 65 07 17 83") << "the list that shows decides";
    tick();
    EXPECT_EQ(entriesOf(1013), 16);
    EXPECT_EQ(selected(1013), 0) << "23 is below the new list";
}

TEST_F(TuningPages, ALinkLostBehindAnOpenListShowsOnceItIsClosed) {
    for (const auto& [page, id] : {std::pair{IDM_CONFIGURATION, 1017}, {IDM_OPTIONS, 1043}}) {
        SCOPED_TRACE(id);
        connect(4, 5, page);
        const int held = selected(id);
        run({{"box", always, [=] { clickOn(control(id)); }},
             {"list", [=] { return listOpen(control(id)); },
              [&] {
                  server->unplug();
                  tick(6);
                  EXPECT_TRUE(ComboOpen == 1 && LinkLost == 0 && selected(id) == held);
                  press(Qt::Key_Escape);
              }},
             {"closed list", [] { return ComboOpen == 0; }, stopTimer}});
        tick(4);
        EXPECT_TRUE(LinkLost == 1 && ActiveTimerPeriod == 500 && selected(id) == 0);
        server->replug();
        tick(2);
        EXPECT_EQ(selected(id), held);
        closeProgram();
    }
}

// A step by key in the open list opens the builder at once, which takes the list away.
TEST_F(TuningPages, AListThatADialogTookAwayOpensAgainAtOnce) {
    startOn(4, 5);
    SendMessageA(MainWindow, WM_COMMAND, IDM_CONFIGURATION, 0);
    chooseByMouse(1018, 1);
    for (int round = 0; round < 2; ++round) {
        run({{"box", [] { return IsWindowEnabled(control(1018)) != 0; }, [] { clickOn(control(1018)); }},
             {"list", [] { return listOpen(control(1018)) && selected(1018) == 1; }, [] { press(Qt::Key_Up); }},
             {"builder", dialogShown, [] { press(Qt::Key_Escape); }}});
        EXPECT_TRUE(pumpUntil([] { return ComboOpen == 0 && TuningDialogOpen == 0; }));
        chooseByMouse(1018, 1);
    }
}
