// Menus, their pictures and the dialog templates, as the compiled resources hold them.
#include <QAction>
#include <QImage>
#include <QMenuBar>
#include <algorithm>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "LayerWindows.h"
#include "platform/linux/Layer.h"
#include "resources/Ids.h"

namespace {

constexpr UINT MenusByLanguage[] = {IDM_MENU_POLISH, IDM_MENU_ENGLISH, IDM_MENU_RUSSIAN, IDM_MENU_LITHUANIAN,
                                    IDM_MENU_CZECH};

// The English one: the command and the text of each item, those of a popup in brackets.
const std::string EnglishMenu =
    "0 File [40014 Open..., 40015 Save As..., -, 40002 Exit], "
    "0 Port [40019 COM 1, 40020 COM 2, 40021 COM 3, 40022 COM 4, 40055 COM 5, 40056 COM 6, 40067 COM 7, "
    "40068 COM 8, 40069 COM 9, -, 40086 ...], "
    "0 Size [40028 640x480, 40029 800x600, 40030 1024x768, 40032 1280x960, 40031 1280x1024], "
    "0 Language [40035 Polish, 40036 English, 40038 Russian, 40039 Lithuanian, 40065 Czech], "
    "40005 Readings, 40006 Configuration, 40007 Options, 40013 Diagram, 40008 Reset, 40010 Oscilloscope, "
    "0 Information [40003 Program information..., 40048 Device information]";
// A word of each that shows its alphabet.
constexpr const char* WordByLanguage[] = {"Język", "Language", "Ч'ешский", "Išsaugoti kaip...", "Ulož jako…"};

// Without the marks of the letters that choose an item by the keyboard.
std::string plainText(const QAction& action) {
    QString text = action.text();
    text.replace(QStringLiteral("&&"), QChar(1)).remove(QLatin1Char('&')).replace(QChar(1), QLatin1Char('&'));
    return text.toStdString();
}

QList<QAction*> bar(HWND frame) {
    return widgetOf(frame)->findChild<QMenuBar*>()->actions();
}

// The item with a text, on the bar or in one of its popups.
QAction* shownItem(HWND frame, const std::string& text) {
    QList<QAction*> items = bar(frame);
    for (qsizetype at = 0; at < items.size(); ++at) {
        if (plainText(*items[at]) == text) {
            return items[at];
        }
        items += items[at]->menu() ? items[at]->menu()->actions() : QList<QAction*>();
    }
    return nullptr;
}

// What stands round others or between them.
bool isFrame(const layer::Window& control) {
    constexpr DWORD GroupBoxStyle = 7;
    constexpr DWORD FirstEtchedStyle = 0x10;
    constexpr DWORD LastEtchedStyle = 0x12;
    const DWORD type = control.style & 0x1F;
    return control.kind == layer::Kind::Button
               ? (type & 0xF) == GroupBoxStyle
               : control.kind == layer::Kind::Static && type >= FirstEtchedStyle && type <= LastEtchedStyle;
}

// A dialog's controls have ids of their own, stand inside it and on no other, and one at most is what Enter presses.
void expectWellFormed(const layer::Window& dialog) {
    // Dialog units are rounded to pixels.
    const QRect client = QRect(QPoint(), layer::clientSize(dialog)).adjusted(0, 0, 1, 1);
    std::set<int> ids;
    int defaults = 0;
    for (auto at = dialog.children.begin(); at != dialog.children.end(); ++at) {
        const layer::Window& control = **at;
        // A line is two pixels longer than its template says.
        const bool line = control.kind == layer::Kind::Static && (control.style & 0x1F) == SS_ETCHEDHORZ;
        const QRect area = control.outer->geometry().adjusted(0, 0, line ? -2 : 0, 0);
        const bool nameless = (control.id & 0xFFFF) == 0xFFFF;
        EXPECT_TRUE(nameless || ids.insert(control.id).second) << control.id << " twice";
        EXPECT_TRUE(client.contains(area) && !area.isEmpty()) << control.id << " stands out or cannot be seen";
        defaults += control.kind == layer::Kind::Button && (control.style & 0xF) == 1;
        for (auto before = dialog.children.begin(); before != at && !isFrame(control); ++before) {
            const QRect other = (*before)->outer->geometry();
            EXPECT_FALSE(!isFrame(**before) && area.adjusted(0, 0, -1, -1).intersects(other))
                << control.id << " overlaps " << (*before)->id;
        }
    }
    EXPECT_LE(defaults, 1);
}

}  // namespace

TEST_F(Layer, AllMenusHaveOneStructureInTheirLanguage) {
    const HWND frame = openFrame();
    // What the user's choice of each item sends.
    const std::function<std::string(const QList<QAction*>&, bool)> describe = [&](const auto& items, bool texts) {
        std::string all;
        for (QAction* item : items) {
            seen.clear();
            item->trigger();
            runDry(frame);
            const auto command = std::ranges::find(seen, WM_COMMAND, &Seen::message);
            all += all.empty() ? "" : ", ";
            all += item->isSeparator() ? "-" : std::to_string(command == seen.end() ? 0 : command->wParam);
            all += item->isSeparator() || !texts ? "" : " " + plainText(*item);
            all += item->menu() ? " [" + describe(item->menu()->actions(), texts) + "]" : "";
        }
        return all;
    };
    std::string structure;
    for (const size_t language : {1, 0, 2, 3, 4}) {
        const HMENU menu = LoadMenuA(nullptr, MAKEINTRESOURCEA(MenusByLanguage[language]));
        ASSERT_TRUE(SetMenu(frame, menu)) << language;
        if (structure.empty()) {
            EXPECT_EQ(describe(bar(frame), true), EnglishMenu);
            structure = describe(bar(frame), false);
        }
        EXPECT_EQ(describe(bar(frame), false), structure) << language;
        EXPECT_NE(shownItem(frame, WordByLanguage[language]), nullptr) << language;
        EXPECT_TRUE(SetMenu(frame, nullptr));
        EXPECT_TRUE(DestroyMenu(menu));
        EXPECT_FALSE(DestroyMenu(menu));
    }
}

TEST_F(Layer, MenuItemsTakeTheirMarks) {
    const HWND frame = openFrame();
    const HMENU menu = LoadMenuA(nullptr, MAKEINTRESOURCEA(IDM_MENU_ENGLISH));
    SetMenu(frame, menu);
    EXPECT_EQ(CheckMenuItem(menu, IDM_COM3, MF_CHECKED), 0u);
    EXPECT_TRUE(shownItem(frame, "COM 3")->isChecked());
    EXPECT_EQ(CheckMenuItem(menu, IDM_COM3, MF_UNCHECKED), MF_CHECKED);
    EXPECT_FALSE(shownItem(frame, "COM 3")->isChecked());
    EXPECT_EQ(EnableMenuItem(menu, IDM_SIZE_1024X768, MF_GRAYED), 0);
    EXPECT_EQ(EnableMenuItem(menu, IDM_SIZE_1024X768, MF_ENABLED), static_cast<BOOL>(MF_GRAYED));

    QMenuBar& shown = *widgetOf(frame)->findChild<QMenuBar*>();
    const QImage plain = shown.grab().toImage();
    EXPECT_TRUE(HiliteMenuItem(frame, menu, IDM_OPTIONS, MF_HILITE));
    const QRect item = shown.actionGeometry(shownItem(frame, "Options"));
    EXPECT_NE(plain.copy(item), shown.grab().toImage().copy(item));
    EXPECT_TRUE(HiliteMenuItem(frame, menu, IDM_OPTIONS, MF_UNHILITE));
    EXPECT_EQ(shown.grab().toImage(), plain);

    EXPECT_TRUE(ModifyMenuA(menu, IDM_COM_OTHER, MF_STRING, IDM_COM_OTHER, "...COM 77"));
    EXPECT_EQ(shownItem(frame, "..."), nullptr);
    EXPECT_EQ(CheckMenuItem(menu, 9, MF_CHECKED), 0xFFFFFFFF);
    EXPECT_EQ(EnableMenuItem(menu, 9, MF_GRAYED), -1);
    EXPECT_FALSE(ModifyMenuA(menu, 9, MF_STRING, 9, "x"));
    EXPECT_FALSE(HiliteMenuItem(frame, menu, 9, MF_HILITE));
    EXPECT_EQ(CheckMenuItem(nullptr, IDM_COM3, MF_CHECKED), 0xFFFFFFFF);
    EXPECT_EQ(LoadMenuA(nullptr, MAKEINTRESOURCEA(147)), nullptr);
}

TEST_F(Layer, TagsShowTheLanguageOnTheColourOfTheChoice) {
    const HDC memory = CreateCompatibleDC(nullptr);
    // White where the picture has its letters.
    const auto lettersOf = [&](int tag, COLORREF ground) {
        std::vector<bool> letters;
        SelectObject(memory, LoadBitmapA(nullptr, MAKEINTRESOURCEA(static_cast<unsigned>(tag))));
        for (int at = 0; GetPixel(memory, at / 12, 11) != CLR_INVALID; ++at) {
            const COLORREF colour = GetPixel(memory, at / 12, at % 12);
            EXPECT_TRUE(colour == White || colour == ground) << std::hex << colour;
            letters.push_back(colour == White);
        }
        EXPECT_TRUE(letters.size() >= 12 * 12 && letters.size() <= 14 * 12) << letters.size();
        EXPECT_EQ(GetPixel(memory, 0, 12), CLR_INVALID) << "12 pixels high";
        return letters;
    };
    std::set<std::vector<bool>> pictures;
    for (const auto& [plain, chosen] : {std::pair{1014, 204}, {203, 205}, {1015, 209}, {1017, 1016}, {230, 229}}) {
        const std::vector<bool> letters = lettersOf(plain, Grey);
        EXPECT_EQ(letters, lettersOf(chosen, Blue)) << plain;
        EXPECT_TRUE(pictures.insert(letters).second) << "languages differ";
    }
    EXPECT_EQ(LoadBitmapA(nullptr, MAKEINTRESOURCEA(1)), nullptr);
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

TEST_F(Layer, PicturesAndLinesStandAsOnTheRealDesktop) {
    const HWND frame = openFrame();
    std::string sizes;
    QImage picture;
    handler = [&](HWND dialog, UINT message) {
        if (message != WM_INITDIALOG) {
            return false;
        }
        for (const layer::Window* control : layer::find(dialog)->children) {
            const DWORD type = control->style & 0x1F;
            if (control->kind == layer::Kind::Static && (type == SS_ICON || type == SS_ETCHEDHORZ)) {
                RECT area{};
                GetWindowRect(control->handle, &area);
                sizes += " " + std::to_string(area.right - area.left) + "x" + std::to_string(area.bottom - area.top);
            } else if (control->kind == layer::Kind::Static && type == SS_BITMAP) {
                picture = control->outer->grab().toImage();
            }
        }
        return EndDialog(dialog, 0) == FALSE;
    };
    DialogBoxParamA(nullptr, MAKEINTRESOURCEA(IDD_ABOUT), frame, recordDialog, 0);
    EXPECT_EQ(sizes, " 32x32 382x2 384x2");
    // The picture is 208 wide in 238.
    ASSERT_EQ(picture.width(), 238);
    EXPECT_EQ(picture.pixel(0, 30), picture.pixel(237, 30));
    EXPECT_NE(picture.pixel(222, 30), picture.pixel(223, 30));
}
