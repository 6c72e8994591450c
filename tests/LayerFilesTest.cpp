// Plain files, file dialogs and message boxes of the layer.
#include <QAbstractItemView>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <fstream>
#include <sstream>

#include "LayerWindows.h"
#include "User.h"

namespace {

namespace fs = std::filesystem;

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

bool timersGoOn() {
    return layer::foreignDialog() && modal().isActiveWindow() && count(WM_TIMER) >= 2;
}

// Letters as they are; line feed and \x1B are keys of their own.
void typeAll(const std::string& keys) {
    for (const char key : keys) {
        key == '\n' ? press(Qt::Key_Return) : key == '\x1B' ? press(Qt::Key_Escape) : type(static_cast<char16_t>(key));
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

    // Opens what waits for an answer from within a message of a frame with a timer, and answers it.
    void during(const std::function<void()>& open, const std::function<void()>& answer) {
        SetTimer(frame, 1, 10, nullptr);
        seen.clear();
        handler = [&](HWND, UINT message) {
            if (message == Mark) {
                open();
            }
            return message == Mark;
        };
        PostMessageA(frame, Mark, 0, 0);
        run({{"timers behind it", timersGoOn, [&] {
                  EXPECT_FALSE(IsWindowEnabled(frame));
                  answer();
              }}});
        EXPECT_TRUE(IsWindowEnabled(frame));
    }

    // What the dialog gave relative to the folder, "" if it gave nothing.
    std::string choose(Asker ask, const std::string& start, const std::function<void()>& answer, DWORD room = 260) {
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
        during([&] { result = ask(&dialog); }, answer);
        EXPECT_TRUE(result == TRUE || path.data() == start) << path.data();
        return result == TRUE ? fs::path(path.data()).lexically_relative(folder).string() : "";
    }

    fs::path folder;
    HWND frame = nullptr;
};

}  // namespace

TEST_F(LayerFiles, AFileIsReplacedInOneStepOrLeftAlone) {
    constexpr DWORD InOneStep = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
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
    for (const char* name : {"locked", "sub", "empty", "missing"}) {
        EXPECT_FALSE(DeleteFileA(name)) << name;
    }
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
    EXPECT_TRUE(FlushFileBuffers(file) && !FlushFileBuffers(readable));
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
    const auto expectChosen = [&](const Row& row) {
        const auto answer = [&] {
            EXPECT_EQ(modal().windowTitle(), QStringLiteral("\u0141"));
            EXPECT_EQ(modal().findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text().toStdString(), row.shown)
                << row.what;
            typeAll(row.keys);
        };
        EXPECT_EQ(choose(row.ask, row.start, answer, row.room), row.chosen) << row.what;
        EXPECT_TRUE(fs::equivalent(".", folder / row.directoryAfter)) << row.what;
    };
    const Row rows[] = {
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
    std::ranges::for_each(rows, expectChosen);
    fs::current_path(folder);
    expectChosen({"not in the current directory", GetOpenFileNameA, "", "", "five\n", "sub/five.vrs", "sub"});
    fs::remove_all(folder / "sub");
    fs::current_path(folder);
    expectChosen({"that of the last choice has gone", GetSaveFileNameA, "", "", "five\n", "five.vrs", "."});
}

TEST_F(LayerFiles, DialogsShowTheFilesOfTheirKindAndTakeTheMouse) {
    const auto push = [](int position) {
        QTest::mouseClick(modal().findChildren<QPushButton*>().at(position), Qt::LeftButton);
    };
    const auto chooseFile = [&] {
        auto* list = modal().findChild<QAbstractItemView*>(QStringLiteral("listView"));
        const auto entry = [&](const char* name) {
            const QModelIndex first = list->model()->index(0, 0, list->rootIndex());
            return list->visualRect(list->model()->match(first, Qt::DisplayRole, QString::fromLatin1(name)).value(0));
        };
        EXPECT_TRUE(pumpUntil([&] { return !entry("one.vrs").isEmpty(); }));
        EXPECT_TRUE(entry("other.txt").isEmpty()) << "filtered";
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, entry("one.vrs").center());
        push(0);
    };
    EXPECT_EQ(choose(GetOpenFileNameA, "", chooseFile), "one.vrs");
    EXPECT_EQ(choose(GetSaveFileNameA, "one.vrs", [&] { push(1); }), "");
}

TEST_F(LayerFiles, MessageBoxesGiveTheAnswer) {
    using Box = QMessageBox;
    struct Row {
        UINT type;
        int answer;
        Box::StandardButton button;
        const char* keys;  // none: a click on the button
    };
    for (const Row& row :
         {Row{MB_OK | MB_ICONEXCLAMATION, IDOK, Box::Ok, "\x1B"}, Row{MB_OK, IDOK, Box::Ok, ""},
          Row{MB_YESNO | MB_ICONINFORMATION, IDYES, Box::Yes, "\n"}, Row{MB_YESNO, IDNO, Box::No, ""}}) {
        const auto reply = [&] {
            auto& box = dynamic_cast<Box&>(modal());
            // As it is shown, with a letter of the code page.
            EXPECT_EQ(box.text(), QStringLiteral("one & two\n<b>\u0142</b>"));
            EXPECT_EQ(box.windowTitle(), QStringLiteral("caption"));
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            if (row.type & MB_YESNO) {
                box.close();
                typeAll("\x1B");
                settle();
                EXPECT_TRUE(box.isVisible() && !box.button(Box::No)->isDown()) << "a question wants an answer";
            }
            *row.keys ? typeAll(row.keys) : QTest::mouseClick(box.button(row.button), Qt::LeftButton);
        };
        int answer = -1;
        during([&] { answer = MessageBoxA(frame, "one & two\n<b>\xB3</b>", "caption", row.type); }, reply);
        EXPECT_EQ(answer, row.answer) << row.type;
    }
}
