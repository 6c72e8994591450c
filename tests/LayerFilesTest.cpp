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
        fs::create_directory("sub");
        for (const char* file : {"one.vrs", "other.txt", "sub/three.vrs"}) {
            std::ofstream(file) << file;
        }
        frame = openFrame();
    }

    // Opens what waits for an answer, with a timer behind it, and answers it.
    void during(const std::function<void()>& open, const std::function<void()>& answer) {
        SetTimer(frame, 1, 10, nullptr);
        seen.clear();
        run({{"opening", always, open}, {"timers behind it", timersGoOn, [&] {
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

    const ProgramFolder place;
    const fs::path& folder = place.path;
    HWND frame = nullptr;
};

}  // namespace

TEST_F(LayerFiles, AFileIsReplacedInOneStepOrLeftAlone) {
    const auto open = [](const std::string& name, DWORD access) {
        return CreateFileA(name.c_str(), access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    };
    fs::create_directory("empty");
    std::ofstream("locked") << "old";
    fs::permissions("locked", fs::perms::owner_read);
    for (const std::string to : {"fresh", "one.vrs", "locked", "empty", "sub", "missing/file"}) {
        const bool moves = to == "fresh" || to == "one.vrs";
        const std::string before = read(to);
        std::ofstream("part") << "new";
        EXPECT_EQ(MoveFileExA("part", to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH), moves) << to;
        EXPECT_EQ(read(to), moves ? "new" : before) << to;
        EXPECT_EQ(DeleteFileA("part"), !moves) << to;
        const HANDLE file = open(to, GENERIC_WRITE);
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, moves) << to;
        EXPECT_TRUE(moves ? FlushFileBuffers(file) && CloseHandle(file) : !DeleteFileA(to.c_str())) << to;
        EXPECT_FALSE(FlushFileBuffers(file) || CloseHandle(file)) << to << " is closed";
        EXPECT_EQ(read(to), moves ? "new" : before) << to;
    }
    EXPECT_TRUE(fs::exists("empty") && read("locked") == "old");
    const HANDLE readable = open("locked", GENERIC_READ);
    EXPECT_TRUE(!FlushFileBuffers(readable) && CloseHandle(readable)) << "opened for reading only";
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
        const auto place = [=](const char* name) {
            const QAbstractItemModel& model = *list->model();
            const QModelIndex first = model.index(0, 0, list->rootIndex());
            return list->visualRect(model.match(first, Qt::DisplayRole, QLatin1String(name)).value(0));
        };
        // A thread of Qt's own looks for the files, in real time.
        EXPECT_TRUE(QTest::qWaitFor([=] { return !place("one.vrs").isEmpty(); }));
        EXPECT_TRUE(place("other.txt").isEmpty()) << "filtered";
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place("one.vrs").center());
        push(0);
    };
    EXPECT_EQ(choose(GetOpenFileNameA, "", chooseFile), "one.vrs");
    EXPECT_EQ(choose(GetSaveFileNameA, "one.vrs", [&] { push(1); }), "") << "turned back";
}

TEST_F(LayerFiles, MessageBoxesGiveTheAnswer) {
    using Box = QMessageBox;
    const struct {
        UINT type;
        int answer;
        Box::StandardButton button;
        const char* keys;  // none: a click on the button
    } rows[] = {{MB_OK, IDOK, Box::Ok, "\x1B"},
                {MB_OK, IDOK, Box::Ok, ""},
                {MB_YESNO, IDYES, Box::Yes, "\n"},
                {MB_YESNO, IDNO, Box::No, ""}};
    for (const auto& row : rows) {
        int answer = -1;
        during([&] { answer = MessageBoxA(frame, "one & two\n<b>\xB3</b>", "caption", row.type); },
               [&] {
                   auto& box = dynamic_cast<Box&>(modal());
                   EXPECT_EQ(box.text(), QStringLiteral("one & two\n<b>\u0142</b>"));
                   EXPECT_EQ(box.textFormat(), Qt::PlainText);
                   if (row.type == MB_YESNO) {
                       box.close();
                       typeAll("\x1B");
                       settle();
                       EXPECT_TRUE(box.isVisible() && !box.button(Box::No)->isDown()) << "a question wants an answer";
                   }
                   *row.keys ? typeAll(row.keys) : QTest::mouseClick(box.button(row.button), Qt::LeftButton);
               });
        EXPECT_EQ(answer, row.answer) << row.keys;
    }
}
