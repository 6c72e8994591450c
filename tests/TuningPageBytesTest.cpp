// The Configuration and the Options page byte by byte: what each entry sends, and what each byte of a block shows.
#include <algorithm>
#include <string>
#include <vector>

#include "TuningBytes.h"
#include "TuningPages.h"
#include "tuning/ConfigurationPage.h"
#include "tuning/OptionsPage.h"
#include "tuning/TuningState.h"

namespace {

const std::string Poll = "65 01 01 67, 65 02 02 69, 65 03 03 6B, 65 04 04 6D";

std::vector<Entries> entriesOn(UINT page, int family, int firmware) {
    return page == IDM_OPTIONS ? optionsEntries(family, firmware) : configurationEntries(family);
}

// Of a choice while the byte's other bits are these.
std::string frames(int family, const Entries& row, unsigned entry, unsigned others) {
    const unsigned value = row.values[entry] | (row.mask == 0 ? 0 : others & ~row.mask);
    const auto number = static_cast<unsigned>(row.cell + (family == 4 ? 1 : 0));
    return cellFrame(number, value) + (row.twoCells ? ", " + cellFrame(number + 1, value >> 8) : "");
}

}  // namespace

class TuningPageBytes : public TuningPages {
protected:
    void expectEntry(int family, const Entries& row, unsigned entry, std::uint8_t others) {
        if (row.mask != 0) {
            setCell(row.cell, others);
        }
        tick();
        server->clearLog();
        const bool opensDialog = row.id == 1018 && entry == 0;
        if (opensDialog) {
            run({{"choice", always, [=] { pick(1018, entry); }},
                 {"dialog", dialogShown, [] { press(Qt::Key_Escape); }}});
            stopTimer();
        } else {
            pick(row.id, entry);
        }
        ASSERT_EQ(opensDialog ? written() : sent(), frames(family, row, entry, others)) << row.id << " entry " << entry;
        server->clearLog();
        select(row.id, isList(row.id) ? -1 : 1 - static_cast<int>(entry));
        tick();
        ASSERT_EQ(sent(), Poll);
        ASSERT_EQ(selected(row.id), static_cast<int>(entry)) << row.id;
    }
    static void refresh(UINT page) {
        page == IDM_OPTIONS ? RefreshOptionsPage() : RefreshConfigurationPage();
    }
};

TEST_F(TuningPageBytes, EntriesSendTheirBytes) {
    for (const auto& [family, firmware] : {std::pair{2, 9}, {4, 4}, {4, 5}}) {
        startOn(family, firmware);
        for (const UINT page : {IDM_CONFIGURATION, IDM_OPTIONS}) {
            open(page);
            for (const Entries& row : entriesOn(page, family, firmware)) {
                for (const auto& [cell, byte] : row.held) {
                    setCell(cell, byte);
                }
                tick();
                EXPECT_TRUE(!isList(row.id) || entriesOf(row.id) == static_cast<int>(row.values.size())) << row.id;
                for (unsigned entry = 0; entry < row.values.size(); ++entry) {
                    expectEntry(family, row, entry, 0x00);
                    if (row.mask != 0) {
                        expectEntry(family, row, entry, 0xFF);
                    }
                    ASSERT_FALSE(HasFatalFailure()) << "family " << family;
                }
            }
        }
        closeProgram();
    }
}

// The last entry of each list, each box to its other state, while the page polls.
TEST_F(TuningPageBytes, TheMouseReachesEveryControl) {
    startOn(4, 5);
    for (const UINT page : {IDM_CONFIGURATION, IDM_OPTIONS}) {
        SendMessageA(MainWindow, WM_COMMAND, page, 0);
        settle();
        for (const Entries& row : entriesOn(page, 4, 5)) {
            SCOPED_TRACE(row.id);
            setCell(simulator::Options, 0x6A);
            setCell(simulator::EmulType, 0x8C);
            setCell(simulator::LambdaType, row.held.empty() ? 0x11 : row.held[0].second);
            ASSERT_TRUE(untilRead());
            const int entry = isList(row.id) ? entriesOf(row.id) - 1 : 1 - selected(row.id);
            const unsigned others = row.cell == 5 ? A[1] : row.cell == 6 ? A[2] : A[5];
            server->clearLog();
            chooseByMouse(row.id, entry);
            EXPECT_EQ(written(), frames(4, row, static_cast<unsigned>(entry), others));
            EXPECT_TRUE(pumpUntil([&] { return selected(row.id) == entry; })) << "what the controller holds";
        }
    }
}

TEST_F(TuningPageBytes, EveryByteOfTheBlocksIsShownAndSendsNothing) {
    connect(4, 5, IDM_CONFIGURATION);
    std::vector<BYTE*> places = {L + 4};
    for (size_t at = 0; at < ParamBlockB.size(); ++at) {
        places.insert(places.end(), {B + at, A + std::min(at, ParamBlockA.size() - 1)});
    }
    for (const auto& [page, family] :
         {std::pair{IDM_CONFIGURATION, 2}, {IDM_OPTIONS, 2}, {IDM_CONFIGURATION, 4}, {IDM_OPTIONS, 4}}) {
        SCOPED_TRACE(family);
        open(page);
        ControllerFamily = family;
        LastByteCount = 99;
        const Ids all = controls();
        for (BYTE* const place : places) {
            clearMirrors();
            for (int byte = 0; byte < 256; ++byte) {
                *place = static_cast<BYTE>(byte);
                refresh(page);
                for (const Shown& row : page == IDM_OPTIONS ? OnOptions : OnConfiguration) {
                    if (row.byte == place && (row.family == 0 || row.family == family)) {
                        ASSERT_EQ(selected(row.id), row.entry(byte)) << row.id << " at " << byte;
                    }
                }
                for (const int id : all) {
                    ASSERT_TRUE(!isList(id) || selected(id) < entriesOf(id)) << id << " at " << byte;
                }
            }
        }
        clearMirrors();
        EXPECT_EQ(sent(), "");
        EXPECT_EQ(LastByteCount, 99u);
        EXPECT_EQ(ComboOpen + TuningDialogOpen + CorrectionsDialogOpen, 0);
    }
}

TEST_F(TuningPageBytes, ValuesThatDependOnASecondByteAreShown) {
    struct Row {
        int id, entry;
        BYTE* low;  // of the byte or the two bytes of the value
        int value;
        int sensor = 0;
    };
    const std::vector<Row> configuration = {
        {1013, -1, A + 3, 200},      {1013, 0, A + 3, 49, 0x50},   {1013, 15, A + 3, 65, 0x50},
        {1013, -1, A + 3, 66, 0x50}, {1013, 50, A + 3, 150, 0x40}, {1013, -1, A + 3, 151, 0xF0},
        {1022, 20, B + 5, 4225},     {1022, 0, B + 5, 0},          {1022, 0, B + 5, 65535},
        {1022, 6, B + 5, 7000},      {1022, -1, B + 5, 4166},
    };
    const std::vector<Row> options = {
        {1047, 0, B + 3, 250, 0x01}, {1047, 50, B + 3, 0, 0x01}, {1047, 0, B + 3, 255, 0x01}, {1048, 15, B + 8, 5882},
        {1048, -1, B + 8, 5769},     {1050, 40, B + 11, 1863},   {1050, -1, B + 11, 1851},    {1050, -1, B + 11, 1},
        {1051, 0, A + 11, 96},       {1051, 1, A + 11, 99},      {1051, 0, A + 11, 0},        {1051, -1, A + 11, 255},
        {1051, 25, A + 11, 209},     {1051, -1, A + 11, 210},
    };
    for (const auto& [page, rows] : {std::pair{IDM_CONFIGURATION, configuration}, {IDM_OPTIONS, options}}) {
        connect(2, 9, page);
        for (const Row& row : rows) {
            clearMirrors();
            A[2] = static_cast<BYTE>(row.sensor);
            row.low[0] = static_cast<BYTE>(row.value);
            row.low[1] = static_cast<BYTE>(row.value >> 8);
            refresh(page);
            EXPECT_EQ(selected(row.id), row.entry) << row.id << " of " << row.value;
        }
        closeProgram();
    }
}
