// A fitter's session: a controller with factory values is brought to a given set of parameters on both tuning pages,
// with the mouse and with the keys inside the lists, while the page polls as it does for its user.
#include <QAbstractItemView>
#include <cstdlib>
#include <map>
#include <vector>

#include "TuningPages.h"
#include "tuning/TuningState.h"

namespace {

enum class By { Mouse, Keys, Tick };

struct Change {
    int id;
    By by;
    int entry = 1;  // 0 for a tick taken away
};

bool listShown(int id) {
    return listOpen(control(id));
}

void make(const Change& change) {
    SCOPED_TRACE(change.id);
    ASSERT_TRUE(pumpUntil([&] { return IsWindowVisible(control(change.id)) && IsWindowEnabled(control(change.id)); }));
    ASSERT_NE(selected(change.id), change.entry) << "nothing to change";
    clickOn(control(change.id));
    if (change.by != By::Tick) {
        ASSERT_TRUE(pumpUntil([&] { return listShown(change.id) && ComboOpen == 1; }));
        const int steps = change.entry - selected(change.id);
        if (change.by == By::Mouse) {
            clickEntry(change.entry);
        } else {
            for (int step = 0; step < std::abs(steps); ++step) {
                press(steps > 0 ? Qt::Key_Down : Qt::Key_Up);
            }
            press(Qt::Key_Return);
        }
        ASSERT_TRUE(pumpUntil([&] { return !listShown(change.id) && ComboOpen == 0; }));
    }
}

constexpr Change OnConfiguration[] = {
    {1003, By::Keys, 2},  {1013, By::Mouse, 30}, {1017, By::Keys, 3},   {1019, By::Mouse, 39}, {1020, By::Keys, 30},
    {1018, By::Mouse, 1}, {1021, By::Keys, 7},   {1022, By::Mouse, 10}, {1023, By::Keys, 1},   {1140, By::Tick},
    {1024, By::Mouse, 1}, {1025, By::Keys, 5},   {1026, By::Mouse, 11}, {1074, By::Tick},      {1149, By::Keys, 14},
};
constexpr Change OnOptions[] = {
    {1003, By::Keys, 125}, {1013, By::Mouse, 25}, {1043, By::Keys, 40}, {1044, By::Mouse, 50}, {1045, By::Keys, 70},
    {1039, By::Tick},      {1046, By::Mouse, 29}, {1047, By::Keys, 24}, {1048, By::Mouse, 4},  {1049, By::Keys, 9},
    {1041, By::Tick, 0},   {1051, By::Mouse, 15}, {1207, By::Tick, 0},  {1052, By::Keys, 2},
};

// What the cells hold then; all others are as they were.
const std::map<int, int> Wanted = {
    {simulator::Options, 0xBA},     {simulator::LambdaType, 0x21}, {simulator::LambdaPoint, 130},
    {simulator::LambdaDelay, 4},    {simulator::EmulType, 0xED},   {simulator::EmulBJ_TimeHi, 40},
    {simulator::EmulBJ_TimeLo, 31}, {simulator::InjectDelay, 12},  {simulator::LPGOnTemp, 171},
    {simulator::AttMax, 70},        {simulator::AttMin, 50},       {simulator::AttInit, 125},
    {simulator::TPSJump, 130},      {simulator::AttJump, 60},      {simulator::LPGOnRPMLo, 0x70},
    {simulator::LPGOnRPMHi, 0x17},  {simulator::IgnitionType, 8},  {simulator::CutOffRPMLo, 0xDA},
    {simulator::CutOffRPMHi, 0x29}, {simulator::CutOffSteps, 20},  {simulator::TPSInert, 6},
    {simulator::AttMax_BJ, 40},     {simulator::AttMin_BJ, 25},    {simulator::WOZG, 15},
};

using TuningSession = TuningPages;

std::map<int, int> cellsOf(HeldController& server) {
    std::map<int, int> cells;
    server.with([&](simulator::Controller& controller) {
        for (int cell = simulator::FirstCell; cell <= simulator::LastCell; ++cell) {
            cells[cell] = controller.cells.get(cell);
        }
    });
    return cells;
}

}  // namespace

TEST_F(TuningSession, BringsAFactoryNewControllerToAGivenSet) {
    plugController(4);
    writeIni(1, "pol");
    start();
    ASSERT_TRUE(pumpUntil([] { return LinkLost == 0; }));
    std::map<int, int> expected = Wanted;
    expected.merge(cellsOf(*server));
    for (const UINT page : {IDM_CONFIGURATION, IDM_OPTIONS}) {
        SendMessageA(MainWindow, WM_COMMAND, page, 0);
        settle();
        ASSERT_TRUE(untilRead());
        for (const Change& change : page == IDM_OPTIONS ? std::span<const Change>(OnOptions) : OnConfiguration) {
            make(change);
            ASSERT_FALSE(HasFatalFailure());
            // What the page shows next is what the controller holds.
            ASSERT_TRUE(untilRead());
            ASSERT_TRUE(pumpUntil([&] { return selected(change.id) == change.entry; })) << change.id;
        }
    }
    EXPECT_EQ(cellsOf(*server), expected);
}

// A step by key in the open list opens the builder at once, which takes the list away.
TEST_F(TuningSession, AListThatADialogTookAwayOpensAgainAtOnce) {
    startOn(4, 5);
    SendMessageA(MainWindow, WM_COMMAND, IDM_CONFIGURATION, 0);
    settle();
    make({1018, By::Mouse, 1});
    for (int round = 0; round < 2; ++round) {
        run({{"box", [] { return IsWindowEnabled(control(1018)) != 0; }, [] { clickOn(control(1018)); }},
             {"list", [] { return listShown(1018) && selected(1018) == 1; }, [] { press(Qt::Key_Up); }},
             {"builder", dialogShown, [] { press(Qt::Key_Escape); }}});
        ASSERT_TRUE(pumpUntil([] { return ComboOpen == 0 && TuningDialogOpen == 0; }));
        clickOn(control(1018));
        EXPECT_TRUE(pumpUntil([] { return listShown(1018); }));
        clickEntry(1);
        ASSERT_TRUE(pumpUntil([] { return !listShown(1018) && ComboOpen == 0; }));
    }
}
