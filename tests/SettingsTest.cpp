// File, Save As and Open against a simulated controller: what the file holds, what reaches the wire, what the user is
// told.
#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "User.h"
#include "link/Link.h"
#include "platform/linux/Layer.h"
#include "settings/SettingsFormat.h"
#include "shell/AppState.h"
#include "simulator/Cells.h"

namespace {

QLineEdit* nameEdit() {
    QWidget* dialog = layer::foreignDialog();
    return dialog ? dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")) : nullptr;
}

bool fileDialogShown() {
    return nameEdit() && layer::foreignDialog()->isActiveWindow();
}

Step giveName(const std::string& name) {
    return {"file dialog", fileDialogShown, [name] {
                QTest::keyClicks(nameEdit(), QString::fromStdString(name));
                press(Qt::Key_Return);
            }};
}

void command(UINT id, const std::vector<Step>& steps) {
    PostMessageA(MainWindow, WM_COMMAND, id, 0);
    run(steps);
}

class Settings : public WindowFixture {
protected:
    std::map<unsigned, unsigned> cells() {
        std::map<unsigned, unsigned> held;
        server->with([&](const simulator::Controller& controller) {
            for (const unsigned cell : format().cells) {
                held[cell] = controller.cells.get(static_cast<int>(cell));
            }
        });
        return held;
    }
    void changeCells(unsigned seed) {
        std::minstd_rand random(seed);
        for (const unsigned cell : format().cells) {
            setCell(static_cast<int>(cell), static_cast<std::uint8_t>(random()));
        }
    }
    static const SettingsFormat& format() {
        return SettingsFormatOf(ControllerFamily);
    }
    // What a file of these cells is.
    static std::string fileOf(const std::map<unsigned, unsigned>& held) {
        std::ostringstream text;
        for (size_t row = 0; row < format().rows; ++row) {
            text << format().keys[row].data();
            if (row >= SettingsHeaderRows) {
                const size_t value = row - SettingsHeaderRows;
                text << ' ' << (value < format().cells.size() ? held.at(format().cells[value]) : 0);
            }
            text << '\n';
        }
        return text.str();
    }
    // The cell numbers that were written, in their order; the writes stand in one row without a poll between them.
    std::vector<unsigned> writtenCells() const {
        std::vector<unsigned> numbers;
        bool ended = false;
        for (const simulator::LogEntry& entry : server->log()) {
            if (!entry.isWrite) {
                ended = !numbers.empty();
                continue;
            }
            EXPECT_FALSE(ended) << "a poll between two writes";
            numbers.push_back(entry.request.bytes[1] - (ControllerFamily == 4 ? 1u : 0u));
        }
        return numbers;
    }
    size_t polls() const {
        return static_cast<size_t>(std::ranges::count_if(
            server->log(), [](const simulator::LogEntry& entry) { return entry.request.bytes[1] == 1; }));
    }
};

}  // namespace

TEST_F(Settings, WhatIsSavedComesBackWithAllCellsChangedMeanwhile) {
    for (const int family : {2, 4}) {
        SCOPED_TRACE(family);
        startOn(family);
        changeCells(7);
        auto saved = cells();
        choose(FileMenu, 1);
        run({{"polls behind the dialog", [&] { return fileDialogShown() && polls() > 2; }, [] {}},
             giveName(std::to_string(family))});
        const std::string name = family == 4 ? "4.vr2" : "2.vrs";
        EXPECT_EQ(readFile(name), fileOf(saved));
        EXPECT_FALSE(std::filesystem::exists(folder / (name + ".part")));

        changeCells(8);
        EXPECT_NE(cells(), saved);
        // A key without a number keeps the controller's value.
        std::string content = fileOf(saved);
        const auto& [key, cell] =
            family == 4 ? std::pair("Prog2= ", simulator::Prog2) : std::pair("AttMin= ", simulator::AttMin);
        const size_t number = content.find(key) + std::strlen(key);
        writeFile(name, content.erase(number, content.find('\n', number) - number));
        saved[cell] = cells()[cell];
        server->clearLog();
        choose(FileMenu, 0);
        run({giveName(name)});
        EXPECT_EQ(cells(), saved);
        EXPECT_EQ(writtenCells(), std::vector<unsigned>(format().cells.begin(), format().cells.end()));
        closeProgram();
        server.reset();
    }
}

TEST_F(Settings, LoadEndsAtTheFirstWriteThatIsNotConfirmed) {
    startOn(4);
    changeCells(7);
    writeFile("a.vr2", fileOf(cells()));
    for (size_t good = 0; good < format().cells.size(); ++good) {
        SCOPED_TRACE(good);
        changeCells(100 + static_cast<unsigned>(good));
        server->clearLog();
        server->addFault(
            {.kind = simulator::FaultKind::Silence, .count = 1, .onlyWrites = true, .after = static_cast<int>(good)});
        std::string text;
        size_t before = 0;
        command(IDM_OPEN, {giveName("a.vr2"),
                           {"polls behind the box",
                            [&] {
                                before = before == 0 && boxShown() ? polls() : before;
                                return before != 0 && polls() > before + 1;
                            },
                            [] {}},
                           answer(text)});
        EXPECT_EQ(text, line(170) + ": " + line(171));
        EXPECT_EQ(writtenCells().size(), good + 1);
        server->clearFaults();
    }
}

TEST_F(Settings, FileThatDoesNotFitSendsNothing) {
    startOn(4);
    const std::string good = fileOf(cells());
    const std::string mismatch = line(169) + ": " + line(168);
    writeFile("old.vr2", "[Tarve_X]\nVersion=1.2\n" + good);
    server->clearLog();
    const auto expectTold = [](const char* name, const std::string& expected) {
        std::string text;
        command(IDM_OPEN, {giveName(name), answer(text)});
        EXPECT_EQ(text, expected) << name;
    };
    expectTold("old.vr2", mismatch);
    expectTold("none.vr2", "I/O Error: " + line(167));
    command(IDM_OPEN, {{"file dialog", fileDialogShown, [] { press(Qt::Key_Escape); }}});
    EXPECT_EQ(writtenCells().size(), 0u);

    // Without a link only files of the first generation match, and their first cell fails.
    server->unplug();
    ASSERT_TRUE(pumpUntil([] { return LinkLost == 1 && ControllerFamily == 1; }));
    writeFile("new.vr2", good);
    writeFile("first.vrs", fileOf(cells()));
    expectTold("new.vr2", mismatch);
    expectTold("first.vrs", line(170) + ": " + line(171));
}

TEST_F(Settings, SaveAsksBeforeItReplacesAndTellsWhatItCannotWrite) {
    startOn(4);
    const std::string held = fileOf(cells());
    writeFile("a.vr2", "old");
    std::string text, shown;
    command(IDM_SAVE_AS, {giveName("a.vr2"), answer(text, Qt::Key_N), {"dialog again", fileDialogShown, [&] {
                                                                           shown = nameEdit()->text().toStdString();
                                                                           press(Qt::Key_Escape);
                                                                       }}});
    EXPECT_EQ(text, line(172) + ": " + line(173));
    EXPECT_EQ(shown, "a.vr2");
    EXPECT_EQ(readFile("a.vr2"), "old");
    text.clear();
    command(IDM_SAVE_AS, {giveName("a.vr2"), answer(text, Qt::Key_Y)});
    EXPECT_EQ(readFile("a.vr2"), held);

    server->clearLog();
    command(IDM_SAVE_AS, {giveName("nowhere/a.vr2"), answer(text)});
    EXPECT_EQ(text, "I/O Error: " + line(174));
    writeFile("locked.vr2", "old");
    std::filesystem::permissions(folder / "locked.vr2", std::filesystem::perms::owner_read);
    command(IDM_SAVE_AS, {giveName("locked.vr2"), answer(shown, Qt::Key_Y), answer(shown)});
    EXPECT_EQ(shown, "I/O Error: " + line(174));
    EXPECT_EQ(readFile("locked.vr2"), "old");
    for (const simulator::LogEntry& entry : server->log()) {
        EXPECT_NE(entry.request.bytes[1], 5) << "blocks were read for a file that cannot be written";
    }
}
