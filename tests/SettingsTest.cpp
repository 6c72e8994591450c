// File, Save As and Open against a simulated controller: what the file holds, what reaches the wire, what the user is
// told.
#include <QLineEdit>
#include <QTest>
#include <random>
#include <string>
#include <vector>

#include "User.h"
#include "link/Link.h"
#include "platform/linux/Layer.h"
#include "settings/SettingsCommands.h"
#include "settings/SettingsFormat.h"
#include "shell/AppState.h"
#include "simulator/Cells.h"

namespace {

// Of the file dialog that has the keyboard; null if none has.
QLineEdit* nameEdit() {
    QWidget* dialog = layer::foreignDialog();
    return dialog && dialog->isActiveWindow() ? dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")) : nullptr;
}

Step giveName(const std::string& name) {
    return {"file dialog", nameEdit, [name] {
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
    static std::span<const unsigned> cells() {
        return SettingsFormatOf(ControllerFamily).cells;
    }
    simulator::Bytes held() {
        simulator::Bytes values;
        for (const unsigned cell : cells()) {
            values.push_back(
                server->with([=](auto& controller) { return controller.cells.get(static_cast<int>(cell)); }));
        }
        return values;
    }
    void changeCells(unsigned seed) {
        std::minstd_rand random(seed);
        for (const unsigned cell : cells()) {
            setCell(static_cast<int>(cell), static_cast<std::uint8_t>(random()));
        }
    }
    // What a box tells when a file of this name is opened.
    static std::string toldAbout(const std::string& name) {
        std::string text;
        command(IDM_OPEN, {giveName(name), answer(text)});
        return text;
    }
};

}  // namespace

TEST_F(Settings, WhatIsSavedComesBackWithAllCellsChangedMeanwhile) {
    struct Row {
        int family;
        std::string typed, name, key;
        size_t place;  // of the key's value
    };
    // The keys are those of a byte that a page reads and of one that it does not.
    for (const Row& row : {Row{2, "a", "a.vrs", "AttMin= ", 12}, Row{4, "b", "b.vr2", "Prog2= ", 28}}) {
        SCOPED_TRACE(row.family);
        startOn(row.family);
        changeCells(7);
        simulator::Bytes saved = held();
        choose(FileMenu, 1);
        run({giveName(row.typed)});
        EXPECT_FALSE(std::filesystem::exists(folder / (row.name + ".part")));

        changeCells(8);
        EXPECT_NE(held(), saved);
        std::string content = readFile(row.name);
        const size_t number = content.find(row.key) + row.key.size();
        writeFile(row.name, content.erase(number, content.find('\n', number) - number));
        saved[row.place] = held()[row.place];
        server->clearLog();
        choose(FileMenu, 0);
        run({giveName(row.name)});
        EXPECT_EQ(held(), saved) << "but for the key without a number, which keeps the controller's value";
        const std::string writes = written();
        EXPECT_NE(sent().find(writes), std::string::npos) << "a poll between two writes";
        closeProgram();
    }
}

TEST_F(Settings, LoadEndsAtTheFirstWriteThatIsNotConfirmed) {
    startOn(4);
    changeCells(7);
    const simulator::Bytes saved = held();
    SaveSettingsFile("a.vr2");
    for (size_t good = 0; good < saved.size(); ++good) {
        SCOPED_TRACE(good);
        changeCells(100);
        simulator::Bytes expected = held();
        std::copy_n(saved.begin(), good + 1, expected.begin());
        server->addFault(
            {.kind = simulator::FaultKind::Silence, .count = 1, .onlyWrites = true, .after = static_cast<int>(good)});
        EXPECT_EQ(toldAbout("a.vr2"), line(170) + ": " + line(171));
        EXPECT_EQ(held(), expected);
        server->clearFaults();
    }
}

TEST_F(Settings, FileThatDoesNotFitSendsNothing) {
    startOn(4);
    SaveSettingsFile("good.vr2");
    writeFile("old.vr2", "[Tarve_X]\nVersion=1.2\n" + readFile("good.vr2"));
    const std::string mismatch = line(169) + ": " + line(168);
    EXPECT_EQ(toldAbout("old.vr2"), mismatch);
    EXPECT_EQ(toldAbout("none.vr2"), "I/O Error: " + line(167));
    command(IDM_OPEN, {{"file dialog", nameEdit, [] { press(Qt::Key_Escape); }}});
    EXPECT_EQ(written(), "");

    // Without a link only files of the first generation match, and their first cell fails.
    server->unplug();
    ASSERT_TRUE(pumpUntil([] { return LinkLost == 1 && ControllerFamily == 1; }));
    EXPECT_EQ(toldAbout("good.vr2"), mismatch);
    SaveSettingsFile("first.vrs");
    EXPECT_EQ(toldAbout("first.vrs"), line(170) + ": " + line(171));
}

TEST_F(Settings, SaveAsksBeforeItReplacesAndTellsWhatItCannotWrite) {
    startOn(4);
    writeFile("a.vr2", "old");
    std::string text, shown;
    command(IDM_SAVE_AS, {giveName("a.vr2"), answer(text, Qt::Key_N), {"dialog again", nameEdit, [&] {
                                                                           shown = nameEdit()->text().toStdString();
                                                                           press(Qt::Key_Escape);
                                                                       }}});
    EXPECT_EQ(text, line(172) + ": " + line(173));
    EXPECT_EQ(shown + " " + readFile("a.vr2"), "a.vr2 old");
    text.clear();
    command(IDM_SAVE_AS, {giveName("a.vr2"), answer(text, Qt::Key_Y)});
    EXPECT_TRUE(readFile("a.vr2").starts_with("[Tarve_X2]\n"));

    server->clearLog();
    command(IDM_SAVE_AS, {giveName("nowhere/a.vr2"), answer(text)});
    EXPECT_EQ(text, "I/O Error: " + line(174));
    writeFile("locked.vr2", "old");
    std::filesystem::permissions(folder / "locked.vr2", std::filesystem::perms::owner_read);
    command(IDM_SAVE_AS, {giveName("locked.vr2"), answer(shown, Qt::Key_Y), answer(shown)});
    EXPECT_EQ(shown + " " + readFile("locked.vr2"), "I/O Error: " + line(174) + " old");
    EXPECT_EQ(sent().find("65 05 05"), std::string::npos) << "blocks were read for a file that cannot be written";
}
