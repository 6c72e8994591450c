// Menus, their tags, strings and dialog templates, as the compiled resources hold them.
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <array>
#include <set>
#include <span>

#include "LayerWindows.h"
#include "User.h"

namespace {

// What stands round others or between them.
bool isFrame(const layer::Window& control) {
    constexpr DWORD GroupBox = 7;
    const bool etched = (control.style & 0x1F) >= 0x10 && (control.style & 0x1F) <= 0x12;
    return control.kind == layer::Kind::Button ? (control.style & 0xF) == GroupBox
                                               : control.kind == layer::Kind::Static && etched;
}

// A dialog's controls have ids of their own, stand inside it and on no other, and one at most is what Enter presses.
void expectWellFormed(const layer::Window& dialog) {
    // Dialog units are rounded to pixels.
    const QRect client = QRect(QPoint(), layer::clientSize(dialog)).adjusted(0, 0, 1, 1);
    std::set<int> ids;
    int defaults = 0;
    for (const layer::Window* control : dialog.children) {
        // A line is two pixels longer than its template says.
        const bool line = control->kind == layer::Kind::Static && (control->style & 0x1F) == SS_ETCHEDHORZ;
        const QRect area = control->outer->geometry().adjusted(0, 0, line ? -2 : 0, 0);
        const bool nameless = (control->id & 0xFFFF) == 0xFFFF;
        EXPECT_TRUE(nameless || ids.insert(control->id).second) << control->id << " twice";
        EXPECT_TRUE(client.contains(area) && !area.isEmpty()) << control->id << " stands out or cannot be seen";
        defaults += control->kind == layer::Kind::Button && (control->style & 0xF) == 1;
        for (const layer::Window* other : dialog.children) {
            EXPECT_FALSE(other != control && !isFrame(*control) && !isFrame(*other) &&
                         area.adjusted(0, 0, -1, -1).intersects(other->outer->geometry()))
                << control->id << " overlaps " << other->id;
        }
    }
    EXPECT_LE(defaults, 1);
}

}  // namespace

TEST_F(Layer, MenuItemsSendTheirCommandsAndTakeTheirMarks) {
    const HWND frame = openFrame();
    const HMENU menu = LoadMenuA(nullptr, MAKEINTRESOURCEA(IDM_MENU_ENGLISH));
    ASSERT_TRUE(SetMenu(frame, menu));
    QMenuBar& bar = *widgetOf(frame)->findChild<QMenuBar*>();
    // What the user's choice of each item sends, and its text.
    const std::function<std::string(const QList<QAction*>&)> describe = [&](const auto& items) {
        std::string all;
        for (QAction* item : items) {
            seen.clear();
            item->trigger();
            settle();
            all += seen.empty() ? "" : std::to_string(seen.front().wParam) + " ";
            all += item->isSeparator() ? "-" : textOf(*item);
            all += item->menu() ? " [" + describe(item->menu()->actions()) + "], " : ", ";
        }
        return all;
    };
    EXPECT_EQ(describe(bar.actions()),
              "File [40014 Open..., 40015 Save As..., -, 40002 Exit, ], "
              "Port [40019 COM 1, 40020 COM 2, 40021 COM 3, 40022 COM 4, 40055 COM 5, 40056 COM 6, 40067 COM 7, "
              "40068 COM 8, 40069 COM 9, -, 40086 ..., ], "
              "Size [40028 640x480, 40029 800x600, 40030 1024x768, 40032 1280x960, 40031 1280x1024, ], "
              "Language [40035 Polish, 40036 English, 40038 Russian, 40039 Lithuanian, 40065 Czech, ], "
              "40005 Readings, 40006 Configuration, 40007 Options, 40013 Diagram, 40008 Reset, 40010 Oscilloscope, "
              "Information [40003 Program information..., 40048 Device information, ], ");
    const QAction& com3 = *bar.actions().at(PortMenu)->menu()->actions().at(2);
    for (const UINT mark : {MF_CHECKED, MF_UNCHECKED}) {
        EXPECT_EQ(CheckMenuItem(menu, IDM_COM3, mark), mark ^ MF_CHECKED);
        EXPECT_EQ(com3.isChecked(), mark == MF_CHECKED);
        EXPECT_EQ(EnableMenuItem(menu, IDM_COM3, mark ? MF_GRAYED : MF_ENABLED), mark ? MF_ENABLED : MF_GRAYED);
        EXPECT_EQ(com3.isEnabled(), mark == MF_UNCHECKED);
    }
    const QRect place = bar.actionGeometry(bar.actions().at(FirstPageItem + 2));
    const QImage plain = bar.grab().toImage();
    EXPECT_TRUE(HiliteMenuItem(frame, menu, IDM_OPTIONS, MF_HILITE));
    EXPECT_NE(plain.copy(place), bar.grab(place).toImage());
    EXPECT_TRUE(HiliteMenuItem(frame, menu, IDM_OPTIONS, MF_UNHILITE));
    EXPECT_EQ(bar.grab().toImage(), plain);

    EXPECT_TRUE(SetMenu(frame, nullptr) && DestroyMenu(menu));
    EXPECT_FALSE(SetMenu(frame, menu) || DestroyMenu(menu) || ModifyMenuA(menu, IDM_COM3, MF_STRING, 9, "x"));
    EXPECT_TRUE(CheckMenuItem(menu, IDM_COM3, MF_CHECKED) == 0xFFFFFFFF && EnableMenuItem(menu, IDM_COM3, 0) == -1);
    EXPECT_FALSE(LoadMenuA(nullptr, MAKEINTRESOURCEA(147)) || LoadBitmapA(nullptr, MAKEINTRESOURCEA(1)));
    std::array<char, 4> title{};
    EXPECT_EQ(LoadStringA(nullptr, IDS_TITLE, title.data(), 4), 3);
    EXPECT_STREQ(title.data(), "Tar") << "cut to its buffer";
}

TEST_F(Layer, EachLanguageHasATagOfItsOwn) {
    const auto lettersOf = [](unsigned tag) {
        return layer::imageOf(LoadBitmapA(nullptr, MAKEINTRESOURCEA(tag))).createMaskFromColor(QColor(Qt::white).rgb());
    };
    QList<QImage> known;
    for (const auto& [plain, chosen] : {std::pair{1014u, 204u}, {203, 205}, {1015, 209}, {1017, 1016}, {230, 229}}) {
        EXPECT_EQ(lettersOf(plain), lettersOf(chosen));
        EXPECT_FALSE(known.contains(lettersOf(plain))) << plain << " is that of another language";
        known.append(lettersOf(plain));
    }
}

TEST_F(Layer, EveryDialogIsWellFormed) {
    const HWND frame = openFrame();
    int dialogs = 0;
    handler = [&](HWND window, UINT message) {
        if (message == WM_INITDIALOG) {
            expectWellFormed(*layer::find(window));
            EndDialog(window, ++dialogs);
        }
        return false;
    };
    for (unsigned number = 1; number <= 0xFFFF; ++number) {
        const std::span<const BYTE> data = layer::findResource(layer::DialogResource, number);
        if (data.empty()) {
            continue;
        }
        SCOPED_TRACE(number);
        // The style stands first, but fourth in the extended kind, whose second word is this.
        if (data[data[2] == 0xFF && data[3] == 0xFF ? 15 : 3] & WS_CHILD >> 24) {
            DestroyWindow(CreateDialogParamA(nullptr, MAKEINTRESOURCEA(number), frame, recordDialog, 0));
        } else {
            DialogBoxParamA(nullptr, MAKEINTRESOURCEA(number), frame, recordDialog, 0);
        }
    }
    EXPECT_GE(dialogs, 19);
}
