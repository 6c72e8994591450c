// Menus, their pictures and the dialog templates, as the compiled resources hold them.
#include <QAction>
#include <QIcon>
#include <QImage>
#include <QMenuBar>
#include <QPixmap>
#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "LayerWindows.h"
#include "platform/linux/Layer.h"
#include "platform/linux/ResourceReader.h"
#include "resources/Ids.h"

namespace {

constexpr UINT Languages[] = {IDM_MENU_POLISH, IDM_MENU_ENGLISH, IDM_MENU_RUSSIAN, IDM_MENU_LITHUANIAN, IDM_MENU_CZECH};

// A row of a menu: depth 0 on the bar, 1 in a popup; command 0 opens a popup. Texts by language; one stands for all.
struct MenuRow {
    int depth;
    UINT command;
    std::vector<const char*> texts;
};

const MenuRow MenuRows[] = {
    {0, 0, {"Plik", "File", "Файл", "Failas", "Soubor"}},
    {1, 40014, {"Otwórz...", "Open...", "Открыть...", "Atidaryti...", "Otevři..."}},
    {1, 40015, {"Zapisz jako...", "Save As...", "Сохранить как...", "Išsaugoti kaip...", "Ulož jako…"}},
    {1, 0, {"-"}},
    {1, 40002, {"Wyjscie", "Exit", "Выход", "Išejimas", "Výstup"}},
    {0, 0, {"Port", "Port", "Порт", "Portas", "Port"}},
    {1, 40019, {"COM 1"}},
    {1, 40020, {"COM 2"}},
    {1, 40021, {"COM 3"}},
    {1, 40022, {"COM 4"}},
    {1, 40055, {"COM 5"}},
    {1, 40056, {"COM 6"}},
    {1, 40067, {"COM 7"}},
    {1, 40068, {"COM 8"}},
    {1, 40069, {"COM 9"}},
    {1, 0, {"-"}},
    {1, 40086, {"..."}},
    {0, 0, {"Rozmiar", "Size", "Размер", "Dydis", "Velikost"}},
    {1, 40028, {"640x480"}},
    {1, 40029, {"800x600"}},
    {1, 40030, {"1024x768"}},
    {1, 40032, {"1280x960"}},
    {1, 40031, {"1280x1024"}},
    {0, 0, {"Język", "Language", "Язык", "Kalba", "Jazyk"}},
    {1, 40035, {"Polski", "Polish", "Польский", "Lenku", "Polski"}},
    {1, 40036, {"Angielski", "English", "Английский", "Anglu", "Angielski"}},
    {1, 40038, {"Rosyjski", "Russian", "Русский", "Rusu", "Rosyjski"}},
    {1, 40039, {"Litewski", "Lithuanian", "Литовский", "Lietuvu", "Litewski"}},
    {1, 40065, {"Czeski", "Czech", "Ч'ешский", "Čeku ", "Czesky"}},
    {0, 40005, {"Odczyty", "Readings", "Чтение", "Skaitymas", "Odečty"}},
    {0, 40006, {"Konfiguracja", "Configuration", "Конфигурация", "Konfiguracija", "Konfigurace"}},
    {0, 40007, {"Opcje", "Options", "Опции", "Opcijos", "Další"}},
    {0, 40013, {"Schemat", "Diagram", "Схема", "Schema", "Schéma"}},
    {0, 40008, {"Reset", "Reset", "Сброс", "Atstatymas", "Reset zařízení"}},
    {0, 40010, {"Oscyloskop", "Oscilloscope", "Осцилограф", "Osciloskopas", "Osciloskop"}},
    {0, 0, {"Informacje", "Information", "Информация", "Informacija", "Informace"}},
    {1, 40003, {"O Programie...", "Program information...", "О программе...", "apie programą", "O Programu..."}},
    {1, 40048, {"O Sterowniku...", "Device information", "О приборе", "apie prietaisa", "O řídící jednotce..."}},
};

struct ShownItem {
    int depth;
    QAction* action;
};

void collect(const QList<QAction*>& actions, int depth, std::vector<ShownItem>& items) {
    for (QAction* action : actions) {
        items.push_back({depth, action});
        if (action->menu()) {
            collect(action->menu()->actions(), depth + 1, items);
        }
    }
}

std::vector<ShownItem> shownItems(HWND frame) {
    std::vector<ShownItem> items;
    collect(widgetOf(frame)->findChild<QMenuBar*>()->actions(), 0, items);
    return items;
}

// Without the marks of the letters that choose an item by the keyboard.
std::string plainText(const QAction& action) {
    QString text = action.text();
    text.replace(QStringLiteral("&&"), QChar(1)).remove(QLatin1Char('&')).replace(QChar(1), QLatin1Char('&'));
    return text.toStdString();
}

QAction* shownItem(HWND frame, const char* text) {
    for (const ShownItem& item : shownItems(frame)) {
        if (plainText(*item.action) == text) {
            return item.action;
        }
    }
    return nullptr;
}

QColor groundOf(const QAction& action) {
    const QImage picture = action.icon().pixmap(14, 12).toImage();
    return picture.isNull() ? QColor() : picture.pixelColor(0, 0);
}

// Of a template, in dialog units.
struct Control {
    DWORD id;
    std::string kind;
    DWORD style;
    RECT area;
};

constexpr DWORD GroupBoxStyle = 7;
constexpr DWORD FirstEtchedStyle = 0x10;
constexpr DWORD LastEtchedStyle = 0x12;
constexpr const char* KindsByAtom[] = {"button", "edit", "static", "listbox", "scrollbar", "combobox"};
const std::set<std::string> KnownKinds{"button", "edit", "static", "scrollbar", "combobox", "msctls_progress32"};

std::string nameOrAtom(layer::ResourceReader& in) {
    if (in.peekWord() != 0xFFFF) {
        return in.text().toLower().toStdString();
    }
    in.word();
    const unsigned atom = in.word();
    return atom >= 0x80 && atom <= 0x85 ? KindsByAtom[atom - 0x80] : std::to_string(atom);
}

// Of the plain or the extended kind: the latter begins with the words 1 and 0xFFFF, has longer fields and orders the
// two styles the other way round.
std::vector<Control> readTemplate(std::span<const BYTE> data, RECT& client) {
    layer::ResourceReader in(data);
    const bool extended = in.peekWord(1) == 0xFFFF;
    in.skip(extended ? 12 : 0);
    const DWORD style = in.dword();
    in.skip(extended ? 0 : 4);
    const int count = in.word();
    in.skip(4);
    client = {0, 0, in.word(), in.word()};
    nameOrAtom(in);
    nameOrAtom(in);
    in.text();
    if (style & 0x40) {
        in.skip(extended ? 6 : 2);
        in.text();
    }
    std::vector<Control> controls;
    for (int index = 0; index < count; ++index) {
        in.align(4);
        in.skip(extended ? 8 : 0);
        Control control{};
        control.style = in.dword();
        in.skip(extended ? 0 : 4);
        const LONG x = static_cast<std::int16_t>(in.word());
        const LONG y = static_cast<std::int16_t>(in.word());
        const LONG width = in.word();
        const LONG height = in.word();
        control.id = extended ? in.dword() : in.word();
        control.kind = nameOrAtom(in);
        // A combo box's height is that of its dropped-down list.
        control.area = {x, y, x + width, y + (control.kind == "combobox" ? std::min<LONG>(height, 13) : height)};
        nameOrAtom(in);
        in.skip(in.word());
        controls.push_back(std::move(control));
    }
    EXPECT_EQ(in.offset(), data.size()) << "the template is not what it was read as";
    return controls;
}

// What stands round others or between them.
bool isFrame(const Control& control) {
    const DWORD type = control.style & 0x1F;
    return control.kind == "button" ? (type & 0xF) == GroupBoxStyle
                                    : control.kind == "static" && type >= FirstEtchedStyle && type <= LastEtchedStyle;
}

bool overlap(const RECT& one, const RECT& other) {
    return one.left < other.right && other.left < one.right && one.top < other.bottom && other.top < one.bottom;
}

}  // namespace

TEST_F(Layer, AllMenusHaveOneStructureInTheirLanguage) {
    const HWND frame = openFrame();
    for (size_t language = 0; language < std::size(Languages); ++language) {
        const HMENU menu = LoadMenuA(nullptr, MAKEINTRESOURCEA(Languages[language]));
        ASSERT_TRUE(SetMenu(frame, menu)) << Languages[language];
        EXPECT_EQ(GetMenu(frame), menu);
        const std::vector<ShownItem> items = shownItems(frame);
        ASSERT_EQ(items.size(), std::size(MenuRows)) << Languages[language];
        for (size_t row = 0; row < items.size(); ++row) {
            const MenuRow& expected = MenuRows[row];
            QAction& action = *items[row].action;
            const char* text = expected.texts[expected.texts.size() == 1 ? 0 : language];
            EXPECT_EQ(items[row].depth, expected.depth) << text;
            EXPECT_EQ(action.isSeparator() ? "-" : plainText(action), text);
            seen.clear();
            if (expected.command) {
                action.trigger();
                runDry(frame);
                ASSERT_EQ(count(WM_COMMAND), 1) << text;
                const auto sent = std::ranges::find(seen, WM_COMMAND, &Seen::message);
                EXPECT_EQ(sent->wParam, expected.command) << text;
            } else {
                EXPECT_EQ(action.menu() != nullptr, !action.isSeparator()) << text;
            }
        }
        EXPECT_TRUE(SetMenu(frame, nullptr));
        EXPECT_TRUE(DestroyMenu(menu));
        EXPECT_FALSE(DestroyMenu(menu));
    }
}

TEST_F(Layer, MenuItemsTakeTheirMarks) {
    const HWND frame = openFrame();
    const HMENU menu = LoadMenuA(nullptr, MAKEINTRESOURCEA(IDM_MENU_ENGLISH));
    SetMenu(frame, menu);
    QAction& port = *shownItem(frame, "COM 3");
    EXPECT_EQ(CheckMenuItem(menu, IDM_COM3, MF_CHECKED), 0u);
    EXPECT_TRUE(port.isChecked());
    EXPECT_EQ(CheckMenuItem(menu, IDM_COM3, MF_UNCHECKED), MF_CHECKED);
    EXPECT_FALSE(port.isChecked());

    QAction& size = *shownItem(frame, "1024x768");
    EXPECT_EQ(EnableMenuItem(menu, IDM_SIZE_1024X768, MF_GRAYED), 0);
    EXPECT_FALSE(size.isEnabled());
    size.trigger();
    runDry(frame);
    EXPECT_EQ(count(WM_COMMAND), 0) << "a grey item cannot be chosen";
    EXPECT_EQ(EnableMenuItem(menu, IDM_SIZE_1024X768, MF_ENABLED), static_cast<BOOL>(MF_GRAYED));
    EXPECT_TRUE(size.isEnabled());

    QMenuBar& bar = *widgetOf(frame)->findChild<QMenuBar*>();
    const QImage plain = bar.grab().toImage();
    EXPECT_TRUE(HiliteMenuItem(frame, menu, IDM_OPTIONS, MF_HILITE));
    const QImage lit = bar.grab().toImage();
    const QRect item = bar.actionGeometry(shownItem(frame, "Options"));
    EXPECT_NE(plain.copy(item), lit.copy(item));
    EXPECT_EQ(GetMenuState(menu, IDM_OPTIONS, MF_BYCOMMAND) & MF_HILITE, MF_HILITE);
    EXPECT_TRUE(HiliteMenuItem(frame, menu, IDM_OPTIONS, MF_UNHILITE));
    EXPECT_EQ(bar.grab().toImage(), plain);

    EXPECT_TRUE(ModifyMenuA(menu, IDM_COM_OTHER, MF_STRING, IDM_COM_OTHER, "...COM 77"));
    EXPECT_NE(shownItem(frame, "...COM 77"), nullptr);
    EXPECT_EQ(shownItem(frame, "..."), nullptr);
    std::array<char, 16> text{};
    EXPECT_EQ(GetMenuStringA(menu, IDM_COM_OTHER, text.data(), 8, MF_BYCOMMAND), 7);
    EXPECT_STREQ(text.data(), "...COM ");

    EXPECT_EQ(CheckMenuItem(menu, 9, MF_CHECKED), 0xFFFFFFFF);
    EXPECT_EQ(EnableMenuItem(menu, 9, MF_GRAYED), -1);
    EXPECT_FALSE(ModifyMenuA(menu, 9, MF_STRING, 9, "x"));
    EXPECT_FALSE(HiliteMenuItem(frame, menu, 9, MF_HILITE));
    EXPECT_EQ(CheckMenuItem(nullptr, IDM_COM3, MF_CHECKED), 0xFFFFFFFF);
    EXPECT_EQ(LoadMenuA(nullptr, MAKEINTRESOURCEA(147)), nullptr);
}

TEST_F(Layer, TextsOfControlsFollowTheLanguagesCodePage) {
    const HWND frame = openFrame();
    const HMENU menu = LoadMenuA(nullptr, MAKEINTRESOURCEA(IDM_MENU_ENGLISH));
    SetMenu(frame, menu);
    struct Row {
        WORD language;
        const char* shown;
    };
    for (const Row& row : {Row{LANG_RUSSIAN, "жЯ"}, Row{LANG_POLISH, "ćß"}, Row{LANG_LITHUANIAN, "ćß"}}) {
        SetThreadLocale(MAKELCID(MAKELANGID(row.language, SUBLANG_DEFAULT), SORT_DEFAULT));
        SetWindowTextA(frame, "\xE6\xDF");
        EXPECT_EQ(widgetOf(frame)->windowTitle(), QString::fromUtf8(row.shown));
        std::array<char, 4> back{};
        EXPECT_EQ(GetWindowTextA(frame, back.data(), 4), 2);
        EXPECT_STREQ(back.data(), "\xE6\xDF");
        ModifyMenuA(menu, IDM_OPEN, MF_STRING, IDM_OPEN, "\xE6\xDF");
        EXPECT_NE(shownItem(frame, row.shown), nullptr);
    }
}

TEST_F(Layer, TagsShowTheLanguageOnTheColourOfTheChoice) {
    const HWND frame = openFrame();
    const HMENU menu = LoadMenuA(nullptr, MAKEINTRESOURCEA(IDM_MENU_ENGLISH));
    SetMenu(frame, menu);
    const HDC memory = CreateCompatibleDC(nullptr);
    std::set<std::vector<bool>> pictures;
    for (const auto& [plain, chosen] : {std::pair{1014, 204}, {203, 205}, {1015, 209}, {1017, 1016}, {230, 229}}) {
        std::vector<bool> letters[2];
        for (const bool isChosen : {false, true}) {
            const HBITMAP tag =
                LoadBitmapA(nullptr, MAKEINTRESOURCEA(static_cast<unsigned>(isChosen ? chosen : plain)));
            ASSERT_NE(tag, nullptr) << plain;
            SelectObject(memory, tag);
            int width = 0;
            while (GetPixel(memory, width, 11) != CLR_INVALID) {
                ++width;
            }
            EXPECT_TRUE(width >= 12 && width <= 14) << width;
            EXPECT_EQ(GetPixel(memory, 0, 12), CLR_INVALID) << "12 pixels high";
            for (int at = 0; at < 12 * width; ++at) {
                const COLORREF colour = GetPixel(memory, at % width, at / width);
                EXPECT_TRUE(colour == White || colour == (isChosen ? Blue : Grey)) << std::hex << colour;
                letters[isChosen].push_back(colour == White);
            }
            EXPECT_GT(std::ranges::count(letters[isChosen], true), 10);
        }
        EXPECT_EQ(letters[0], letters[1]) << plain;
        EXPECT_TRUE(pictures.insert(letters[0]).second) << "languages differ";
    }
    EXPECT_EQ(LoadBitmapA(nullptr, MAKEINTRESOURCEA(1)), nullptr);

    const HBITMAP plain = LoadBitmapA(nullptr, MAKEINTRESOURCEA(IDB_TAG_CZECH));
    const HBITMAP chosen = LoadBitmapA(nullptr, MAKEINTRESOURCEA(IDB_TAG_CZECH_CHOSEN));
    EXPECT_TRUE(SetMenuItemBitmaps(menu, IDM_LANGUAGE_CZECH, MF_BYCOMMAND, plain, chosen));
    const QAction& item = *shownItem(frame, "Czech");
    EXPECT_EQ(groundOf(item), QColor(128, 128, 128));
    CheckMenuItem(menu, IDM_LANGUAGE_CZECH, MF_CHECKED);
    EXPECT_EQ(groundOf(item), QColor(0, 0, 255));
    CheckMenuItem(menu, IDM_LANGUAGE_CZECH, MF_UNCHECKED);
    EXPECT_EQ(groundOf(item), QColor(128, 128, 128));
}

TEST(LayerTemplates, EveryDialogIsWellFormed) {
    int dialogs = 0;
    for (unsigned number = 1; number <= 0xFFFF; ++number) {
        const std::span<const BYTE> data = layer::findResource(layer::DialogResource, number);
        if (data.empty()) {
            continue;
        }
        ++dialogs;
        RECT client{};
        const std::vector<Control> controls = readTemplate(data, client);
        EXPECT_TRUE(number != IDD_READINGS || controls.size() == 1);
        std::set<DWORD> ids;
        int defaults = 0;
        for (size_t at = 0; at < controls.size(); ++at) {
            const Control& control = controls[at];
            const std::string what = "dialog " + std::to_string(number) + ", control " + std::to_string(control.id);
            EXPECT_TRUE(KnownKinds.contains(control.kind)) << what << " " << control.kind;
            const bool nameless = control.id == 0xFFFF || control.id == 0xFFFFFFFF;
            EXPECT_TRUE(nameless || ids.insert(control.id).second) << what << " twice";
            EXPECT_TRUE(control.area.left >= 0 && control.area.top >= 0 && control.area.right <= client.right &&
                        control.area.bottom <= client.bottom)
                << what << " stands out";
            EXPECT_TRUE(control.area.right > control.area.left && control.area.bottom > control.area.top) << what;
            defaults += control.kind == "button" && (control.style & 0xF) == 1;
            for (size_t before = 0; before < at; ++before) {
                const bool encloses = isFrame(control) || isFrame(controls[before]);
                EXPECT_FALSE(!encloses && overlap(control.area, controls[before].area))
                    << what << " overlaps " << controls[before].id;
            }
        }
        EXPECT_LE(defaults, 1) << number;
    }
    EXPECT_GE(dialogs, 1);
}
