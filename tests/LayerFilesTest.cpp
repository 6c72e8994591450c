// Plain files, file dialogs and message boxes of the layer.
#include <QAbstractItemView>
#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <fstream>
#include <map>
#include <sstream>

#include "LayerWindows.h"
#include "User.h"

namespace {

namespace fs = std::filesystem;

constexpr UINT Mark = 0x0400;
constexpr DWORD InOneStep = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
using Asker = BOOL (*)(OPENFILENAMEA*);

void write(const fs::path& path, const char* content) {
    std::ofstream(path) << content;
}

std::string read(const fs::path& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

QWidget& modal() {
    return *layer::foreignDialog();
}

bool modalShown() {
    return layer::foreignDialog() && modal().isActiveWindow();
}

bool timersGoOn() {
    return modalShown() && count(WM_TIMER) >= 2;
}

// Letters as they are; line feed and \x1B are keys of their own.
void typeAll(const std::string& keys) {
    const std::map<char, Qt::Key> named{{'\n', Qt::Key_Return}, {'\x1B', Qt::Key_Escape}};
    for (const char key : keys) {
        named.contains(key) ? press(named.at(key)) : type(static_cast<char16_t>(key));
    }
}

class LayerFiles : public Layer {
protected:
    void SetUp() override {
        Layer::SetUp();
        std::string name = "/tmp/tarvex-files-XXXXXX";
        folder = mkdtemp(name.data());
        fs::create_directory(folder / "sub");
        for (const char* file : {"one.vrs", "other.txt", "sub/three.vrs"}) {
            write(folder / file, file);
        }
        fs::current_path(folder);
        frame = openFrame();
    }
    void TearDown() override {
        fs::current_path("/");
        fs::remove_all(folder);
        Layer::TearDown();
    }

    // Opens what waits for an answer from within a message of a frame with a timer, and does the steps.
    void during(const std::function<void()>& open, const std::vector<Step>& steps) {
        SetTimer(frame, 1, 10, nullptr);
        seen.clear();
        handler = [&](HWND, UINT message) {
            if (message == Mark) {
                open();
            }
            return message == Mark;
        };
        PostMessageA(frame, Mark, 0, 0);
        run(steps);
        EXPECT_TRUE(IsWindowEnabled(frame));
    }

    // What the dialog gave relative to the folder, "" if it gave nothing.
    std::string choose(Asker ask, const std::string& start, const std::vector<Step>& steps, DWORD room = 260) {
        std::array<char, 260> path{};
        start.copy(path.data(), path.size() - 1);
        OPENFILENAMEA dialog{};
        dialog.lStructSize = sizeof dialog;
        dialog.lpstrFilter = "\xA3 settings (*.vrs)\0*.vrs\0";
        dialog.lpstrFile = path.data();
        dialog.nMaxFile = room;
        dialog.lpstrTitle = "\xA3";
        dialog.lpstrDefExt = "vrs";
        dialog.Flags = OFN_EXPLORER;
        dialog.hwndOwner = frame;
        BOOL result = 7;
        during([&] { result = ask(&dialog); }, steps);
        EXPECT_TRUE(result == TRUE || path.data() == start) << path.data();
        return result == TRUE ? fs::path(path.data()).lexically_relative(folder).string() : "";
    }

    fs::path folder;
    HWND frame = nullptr;
};

}  // namespace

TEST_F(LayerFiles, AFileIsReplacedInOneStepOrLeftAlone) {
    fs::create_directory(folder / "empty");
    write(folder / "locked", "old");
    fs::permissions(folder / "locked", fs::perms::owner_read);
    for (const auto& [to, moves] : {std::pair{"one.vrs", true},
                                    {"fresh", true},
                                    {"locked", false},
                                    {"empty", false},
                                    {"sub", false},
                                    {"missing/file", false}}) {
        write(folder / "part", "new");
        const std::string before = read(folder / to);
        EXPECT_EQ(MoveFileExA("part", (folder / to).c_str(), InOneStep), moves) << to;
        EXPECT_EQ(read(folder / to), moves ? "new" : before) << to;
        EXPECT_EQ(DeleteFileA("part"), !moves) << to;
    }
    EXPECT_FALSE(MoveFileExA("part", "one.vrs", InOneStep));
    EXPECT_FALSE(DeleteFileA("locked") || DeleteFileA("sub") || DeleteFileA("missing"));
    EXPECT_EQ(read(folder / "locked"), "old");

    const auto open = [](const char* name, DWORD access) {
        return CreateFileA(name, access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    };
    for (const char* name : {"locked", "sub", "missing", "", "COM129:"}) {
        EXPECT_EQ(open(name, GENERIC_WRITE), INVALID_HANDLE_VALUE) << name;
    }
    const HANDLE readable = open("locked", GENERIC_READ);
    const HANDLE file = open("one.vrs", GENERIC_WRITE);
    EXPECT_TRUE(readable != INVALID_HANDLE_VALUE && file != INVALID_HANDLE_VALUE && readable != file);
    EXPECT_TRUE(FlushFileBuffers(file));
    EXPECT_FALSE(FlushFileBuffers(readable));
    EXPECT_TRUE(CloseHandle(file) && CloseHandle(readable));
    EXPECT_FALSE(FlushFileBuffers(file) || CloseHandle(file));
    EXPECT_EQ(read(folder / "one.vrs"), "new");
}

TEST_F(LayerFiles, DialogsTakeNamesFromTheKeyboard) {
    struct Row {
        const char* what;
        Asker ask;
        std::string start, shown, keys, chosen, directoryAfter;
        DWORD room = 260;
    };
    const std::string inside = folder.string() + "/";
    const std::vector<Row> rows{
        {"extension added on opening", GetOpenFileNameA, "", "", "one\n", "one.vrs", "."},
        {"a name of its own, not there yet", GetSaveFileNameA, "", "", "new.txt\n", "new.txt", "."},
        {"any name opens", GetOpenFileNameA, "", "", "ghost\n", "ghost.vrs", "."},
        {"an existing one saves unasked", GetSaveFileNameA, "", "", "one.vrs\n", "one.vrs", "."},
        {"no name is no choice", GetOpenFileNameA, "", "", "\n \n\x1B", "", "."},
        {"through a directory", GetOpenFileNameA, "", "", "sub\nthree\n", "sub/three.vrs", "sub"},
        {"up and back out", GetOpenFileNameA, "", "", "..\n\x1B", "", "sub"},
        {"begins where the last choice was", GetSaveFileNameA, "", "", "four\n", "sub/four.vrs", "sub"},
        {"start name", GetSaveFileNameA, inside + "one.vrs", "one.vrs", "\n", "one.vrs", "."},
        {"whole path", GetOpenFileNameA, "", "", inside + "sub/x.y\n", "sub/x.y", "sub"},
        {"no room for it", GetOpenFileNameA, "", "", inside + "one\n", "", "sub", 20},
    };
    for (const Row& row : rows) {
        const std::vector<Step> steps{
            {row.what, timersGoOn, [&] {
                 EXPECT_EQ(modal().windowTitle(), QStringLiteral("\u0141"));
                 EXPECT_EQ(modal().findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text().toStdString(),
                           row.shown)
                     << row.what;
                 EXPECT_FALSE(IsWindowEnabled(frame));
                 typeAll(row.keys);
             }}};
        EXPECT_EQ(choose(row.ask, row.start, steps, row.room), row.chosen) << row.what;
        EXPECT_TRUE(fs::equivalent(".", folder / row.directoryAfter)) << row.what;
    }

    // The last choice counts more than the current directory, but may be gone.
    const std::vector<Step> typeIt{{"five", modalShown, [] { typeAll("five\n"); }}};
    fs::current_path(folder);
    EXPECT_EQ(choose(GetOpenFileNameA, "", typeIt), "sub/five.vrs");
    fs::remove_all(folder / "sub");
    fs::current_path(folder);
    EXPECT_EQ(choose(GetSaveFileNameA, "", typeIt), "five.vrs");
}

TEST_F(LayerFiles, DialogsShowTheFilesOfTheirKindAndTakeTheMouse) {
    const auto list = [] { return modal().findChild<QAbstractItemView*>(QStringLiteral("listView")); };
    const auto entry = [=](const char* name) {
        const QAbstractItemModel& model = *list()->model();
        return list()->visualRect(
            model.match(model.index(0, 0, list()->rootIndex()), Qt::DisplayRole, QString::fromLatin1(name)).value(0));
    };
    const auto push = [](int position) {
        QTest::mouseClick(modal().findChildren<QPushButton*>().at(position), Qt::LeftButton);
    };
    const auto chooseFile = [&] {
        EXPECT_TRUE(entry("other.txt").isEmpty()) << "filtered";
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, entry("one.vrs").center());
        push(0);
    };
    const auto listed = [&] { return modalShown() && !entry("one.vrs").isEmpty(); };
    EXPECT_EQ(choose(GetOpenFileNameA, "", {{"file", listed, chooseFile}}), "one.vrs");
    EXPECT_EQ(choose(GetSaveFileNameA, "one.vrs", {{"turned back", modalShown, [&] { push(1); }}}), "");
}

TEST_F(LayerFiles, MessageBoxesGiveTheAnswer) {
    using Box = QMessageBox;
    struct Row {
        UINT type;
        Box::Icon icon;
        int answer;
        std::string keys;  // Y and N for the letters of the two buttons; none: a click on the button
    };
    const std::vector<Row> rows{
        {MB_OK | MB_ICONINFORMATION, Box::Information, IDOK, "\n"},
        {MB_OK | MB_ICONEXCLAMATION, Box::Warning, IDOK, "\x1B"},
        {MB_OK | MB_ICONHAND, Box::Critical, IDOK, ""},
        {MB_YESNO, Box::NoIcon, IDYES, "\n"},
        {MB_YESNO | MB_ICONEXCLAMATION, Box::Warning, IDYES, "Y"},
        {MB_YESNO | MB_ICONINFORMATION, Box::Information, IDNO, "N"},
    };
    const std::map<int, Box::StandardButton> buttons{{IDOK, Box::Ok}, {IDYES, Box::Yes}, {IDNO, Box::No}};
    for (const Row& row : rows) {
        const auto look = [&] {
            auto& box = dynamic_cast<Box&>(modal());
            EXPECT_EQ(box.text(), QStringLiteral("one & two\n<b>\u0142</b>"));
            EXPECT_EQ(box.windowTitle(), QStringLiteral("caption"));
            EXPECT_EQ(box.icon(), row.icon);
            EXPECT_FALSE(IsWindowEnabled(frame));
            if ((row.type & MB_YESNO) != 0) {
                box.close();
                press(Qt::Key_Escape);
                EXPECT_TRUE(box.isVisible() && !box.button(Box::No)->isDown()) << "a question wants an answer";
            }
            QAbstractButton* button = box.button(buttons.at(row.answer));
            if (row.keys.empty()) {
                QTest::mouseClick(button, Qt::LeftButton);
            } else if (row.keys == "Y" || row.keys == "N") {
                press(button->shortcut()[0].key());
            } else {
                typeAll(row.keys);
            }
        };
        int answer = -1;
        during([&] { answer = MessageBoxA(frame, "one & two\n<b>\xB3</b>", "caption", row.type); },
               {{"box", timersGoOn, look}});
        EXPECT_EQ(answer, row.answer) << row.type << " " << row.keys;
    }
}
