// Combo boxes: drop-down lists, unsorted. Qt paints the box and the list, what they do is decided here.
//
// A box tells its parent what the user does and nothing of what the program does:
//
//   the list opens                       DROPDOWN
//   a choice with the mouse, or Enter    SELENDOK, CLOSEUP, then SELCHANGE if it came by the mouse
//   the list is left                     SELENDCANCEL, CLOSEUP
//   a key moves the selection            SELCHANGE at once; on the closed list after SELENDOK
//   the focus goes                       SELENDCANCEL, CLOSEUP if the list was open, KILLFOCUS
#include <QComboBox>

#include "platform/linux/DropList.h"

namespace layer {

namespace {

constexpr DWORD ComboTypeMask = 0x03;
constexpr DWORD DropDownList = 0x03;
constexpr DWORD Sorted = 0x0100;
// The closed box stands this much over its font's cell; the template's height is that of the box with its list.
constexpr int BoxMargin = 8;
constexpr int FewestRows = 3;
constexpr int ListBorders = 2;
constexpr int RowsPerNotch = 3;
constexpr int Notch = 120;
// A poll of a lost link holds the letters of a search in a list up for a good quarter of a second.
constexpr Moment LongestPauseInSearch = Second;
constexpr UINT_PTR ScrollTimer = 1;
constexpr UINT ScrollDelay = 400;
constexpr UINT ScrollPeriod = 50;

class ComboBox : public QComboBox {
public:
    ComboBox(QWidget* parent, HWND shown, int dropHeight) : QComboBox(parent), window(shown), listHeight(dropHeight) {
        // With a placeholder a first entry is not chosen by itself.
        setPlaceholderText(QStringLiteral(" "));
        setModel(&model);
        setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    }

    // As a screen reader asks for it.
    void showPopup() override {
        open();
    }
    void hidePopup() override {
        close(false);
    }

    bool isOpen() const {
        return list && list->isVisible();
    }
    void open();
    // Closes the list with its choice or without one; false if the box has gone by then.
    bool close(bool chosen);
    // A selection by the program also moves the one in the open list.
    void select(int row);
    LRESULT takeMouse(UINT message, QPoint place);
    void takeKey(WPARAM key, bool alt);
    void takeLetter(const QString& letter);
    void roll(int turned);
    void scrollOn(UINT pause);
    void leave();
    DropList* dropped() const {
        return isOpen() ? list : nullptr;
    }

    EntryModel model;

private:
    void highlight(int row);
    int highlighted() const {
        return list->view.currentIndex().row();
    }
    void moveTo(int row);
    int rows() const;
    int search(const QString& letter, int from);
    void pressBar();
    void drag();

    enum class Held { Nothing, Box, Row, Bar };

    HWND window;
    int listHeight;
    DropList* list = nullptr;
    Held held = Held::Nothing;
    bool dragged = false;  // from the box into the list
    QPoint mouse;          // on the screen, while the bar is held
    QString typed;
    Moment lastTyped = 0;
};

void CALLBACK scrollHeld(HWND window, UINT, UINT_PTR, DWORD) {
    if (const Window* combo = find(window)) {
        static_cast<ComboBox&>(*combo->outer).scrollOn(ScrollPeriod);
    }
}

int ComboBox::rows() const {
    const int fit = std::max(FewestRows, (listHeight - ListBorders) / list->rowHeight());
    return std::clamp(model.rowCount(), 1, fit);
}

void ComboBox::open() {
    const Window* self = layer::find(window);
    if (isOpen() || !self || !self->enabled || !reallyVisible(*self) || !notifyParent(window, CBN_DROPDOWN)) {
        return;
    }
    if (!list) {
        list = new DropList(this, model);
    }
    list->showAt({mapToGlobal(QPoint()), size()}, rows());
    highlight(currentIndex());
    list->view.scrollTo(list->view.currentIndex(), QAbstractItemView::PositionAtTop);
    setCapture(window);
}

bool ComboBox::close(bool chosen) {
    if (!isOpen()) {
        return true;
    }
    held = Held::Nothing;
    KillTimer(window, ScrollTimer);
    const HWND handle = window;
    if (!notifyParent(handle, chosen ? CBN_SELENDOK : CBN_SELENDCANCEL) || !isOpen()) {
        return layer::find(handle) != nullptr;
    }
    list->hide();
    if (capture() == handle) {
        releaseCapture();
    }
    return notifyParent(handle, CBN_CLOSEUP);
}

void ComboBox::select(int row) {
    setCurrentIndex(row);
    if (isOpen()) {
        highlight(row);
    }
}

void ComboBox::highlight(int row) {
    list->view.setCurrentIndex(model.index(row, 0));
    if (row < 0) {
        list->view.clearSelection();
    }
}

// A key's choice; none at the ends of the list.
void ComboBox::moveTo(int row) {
    row = std::clamp(row, 0, model.rowCount() - 1);
    if (row == currentIndex() || model.rowCount() == 0) {
        if (isOpen()) {
            highlight(row);
        }
        return;
    }
    setCurrentIndex(row);
    if (isOpen()) {
        highlight(row);
        list->view.scrollTo(model.index(row, 0));
    } else if (!notifyParent(window, CBN_SELENDOK)) {
        return;
    }
    notifyParent(window, CBN_SELCHANGE);
}

void ComboBox::takeKey(WPARAM key, bool alt) {
    if ((key == VK_F4 && !alt) || (alt && (key == VK_UP || key == VK_DOWN))) {
        isOpen() ? static_cast<void>(close(false)) : open();
        return;
    }
    const int at = isOpen() ? highlighted() : currentIndex();
    const int page = (list ? rows() : std::max(FewestRows, listHeight / (fontMetrics().height() + 2))) - 1;
    switch (key) {
        case VK_UP:
        case VK_LEFT:
            moveTo(at - 1);
            break;
        case VK_DOWN:
        case VK_RIGHT:
            moveTo(at + 1);
            break;
        case VK_PRIOR:
            moveTo(at - page);
            break;
        case VK_NEXT:
            moveTo(at + page);
            break;
        case VK_HOME:
            moveTo(0);
            break;
        case VK_END:
            moveTo(model.rowCount() - 1);
            break;
        case VK_RETURN: {
            // What the user sees marked is what he gets, be it by the mouse that rests on it.
            const int row = isOpen() ? highlighted() : currentIndex();
            const bool news = row != currentIndex();
            setCurrentIndex(row);
            if (close(true) && news) {
                notifyParent(window, CBN_SELCHANGE);
            }
            break;
        }
        case VK_ESCAPE:
            close(false);
            break;
        default:
            break;
    }
}

// The row that begins with what was typed in one go, from the given one on and round; that one if none does. A first
// letter, or the same one again, goes on to the next row.
int ComboBox::search(const QString& letter, int from) {
    const Moment now = theClock().now();
    const bool goesOn = !typed.isEmpty() && now - lastTyped < LongestPauseInSearch;
    lastTyped = now;
    typed = goesOn && typed != letter ? typed + letter : letter;
    const int count = model.rowCount();
    const int first = std::max(from, 0) + (typed.size() > 1 || from < 0 ? 0 : 1);
    for (int step = 0; step < count; ++step) {
        const int row = (first + step) % count;
        if (model.text(row).startsWith(typed, Qt::CaseInsensitive)) {
            return row;
        }
    }
    return from;
}

void ComboBox::takeLetter(const QString& letter) {
    const bool goesOn = !typed.isEmpty() && theClock().now() - lastTyped < LongestPauseInSearch;
    if (!letter.at(0).isPrint() || (letter.at(0).isSpace() && !goesOn)) {
        return;
    }
    const int from = isOpen() ? highlighted() : currentIndex();
    const int found = search(letter, from);
    if (found >= 0 && found != currentIndex()) {
        moveTo(found);
    }
}

void ComboBox::roll(int turned) {
    list->bar->setValue(list->bar->value() - turned * RowsPerNotch / Notch);
}

void ComboBox::pressBar() {
    const QPoint inside = list->bar->mapFromGlobal(mouse);
    if (list->bar->isVisible() && list->bar->rect().contains(inside)) {
        held = Held::Bar;
        list->bar->grip(inside);
        scrollOn(ScrollDelay);
    }
}

// By a row or by what the list shows, as long as the mouse holds the arrow or the groove and is over it.
void ComboBox::scrollOn(UINT pause) {
    if (!isOpen() || held != Held::Bar) {
        return;
    }
    const QStyle::SubControl part = list->bar->heldPart();
    const bool back = part == QStyle::SC_ScrollBarSubLine || part == QStyle::SC_ScrollBarSubPage;
    const bool onArrow = part == QStyle::SC_ScrollBarSubLine || part == QStyle::SC_ScrollBarAddLine;
    if (part != QStyle::SC_ScrollBarSlider && list->bar->isOnHeldPart(list->bar->mapFromGlobal(mouse))) {
        list->bar->setValue(list->bar->value() + (back ? -1 : 1) * (onArrow ? 1 : rows()));
    }
    SetTimer(window, ScrollTimer, pause, scrollHeld);
}

void ComboBox::drag() {
    if (list->bar->heldPart() == QStyle::SC_ScrollBarSlider) {
        list->bar->setValue(list->bar->positionAt(list->bar->mapFromGlobal(mouse)));
    }
}

// The press that opens the list may go on into it; a press outside leaves it and does nothing else.
LRESULT ComboBox::takeMouse(UINT message, QPoint place) {
    const int row = isOpen() ? list->rowAt(place) : -1;
    const bool onRow = row >= 0;
    mouse = place;
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            if (!isOpen()) {
                SetFocus(window);
                held = Held::Box;
                dragged = false;
                open();
            } else if (onRow) {
                held = Held::Row;
                highlight(row);
            } else if (list->contains(place)) {
                pressBar();
            } else {
                close(false);
            }
            break;
        case WM_MOUSEMOVE:
            if (held == Held::Bar) {
                drag();
            } else if (onRow) {
                dragged = held == Held::Box;
                highlight(row);
            }
            break;
        case WM_LBUTTONUP: {
            const Held before = std::exchange(held, Held::Nothing);
            KillTimer(window, ScrollTimer);
            if (onRow && (before == Held::Row || (before == Held::Box && dragged))) {
                setCurrentIndex(row);
                if (close(true)) {
                    notifyParent(window, CBN_SELCHANGE);
                }
            } else if (before == Held::Row || (before == Held::Box && dragged)) {
                close(false);
            }
            break;
        }
        default:
            break;
    }
    return 0;
}

void ComboBox::leave() {
    const HWND handle = window;
    const bool still = isOpen() ? close(false) : notifyParent(handle, CBN_SELENDCANCEL);
    if (still) {
        notifyParent(handle, CBN_KILLFOCUS);
    }
}

ComboBox& boxOf(const Window& window) {
    return static_cast<ComboBox&>(*window.outer);
}

LRESULT entryText(const ComboBox& box, WPARAM index, char* buffer) {
    if (index >= box.model.entries.size()) {
        return CB_ERR;
    }
    const QByteArray& text = box.model.entries[index];
    if (buffer) {
        std::copy_n(text.constData(), text.size() + 1, buffer);
    }
    return text.size();
}

LRESULT select(ComboBox& box, WPARAM index) {
    const bool known = index < box.model.entries.size();
    box.select(known ? static_cast<int>(index) : -1);
    return known ? static_cast<LRESULT>(index) : CB_ERR;
}

LRESULT listMessage(ComboBox& box, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case CB_ADDSTRING:
            return box.model.add(reinterpret_cast<const char*>(lParam));
        case CB_RESETCONTENT:
            box.model.clear();
            box.select(-1);
            return 0;
        case CB_GETCOUNT:
            return static_cast<LRESULT>(box.model.entries.size());
        case CB_GETCURSEL:
            return box.currentIndex();
        case CB_SETCURSEL:
            return select(box, wParam);
        case CB_GETLBTEXT:
            return entryText(box, wParam, reinterpret_cast<char*>(lParam));
        case CB_GETLBTEXTLEN:
            return entryText(box, wParam, nullptr);
        case CB_SHOWDROPDOWN:
            wParam ? box.open() : static_cast<void>(box.close(false));
            return TRUE;
        default:
            return box.isOpen();
    }
}

}  // namespace

QWidget* makeComboWidget(Window& window) {
    if ((window.style & ComboTypeMask) != DropDownList || (window.style & Sorted)) {
        reportUnsupported("combo box style", QString::number(window.style, 16));
    }
    const int whole = window.place.height();
    window.place.setHeight(window.parent->baseUnits.height() + BoxMargin);
    auto* box = new ComboBox(window.parent->client, window.handle, whole - window.place.height());
    box->model.rowHeight = window.parent->baseUnits.height();
    return box;
}

LRESULT comboMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    ComboBox& box = boxOf(window);
    switch (message) {
        case CB_ADDSTRING:
        case CB_RESETCONTENT:
        case CB_GETCOUNT:
        case CB_GETCURSEL:
        case CB_SETCURSEL:
        case CB_GETLBTEXT:
        case CB_GETLBTEXTLEN:
        case CB_SHOWDROPDOWN:
        case CB_GETDROPPEDSTATE:
            return listMessage(box, message, wParam, lParam);
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
        case WM_LBUTTONUP:
        case WM_MOUSEMOVE:
            return box.takeMouse(message, box.mapToGlobal(QPoint(static_cast<short>(LOWORD(lParam)),
                                                                 static_cast<short>(HIWORD(lParam)))));
        case WM_MOUSEWHEEL:
            if (box.isOpen()) {
                box.roll(static_cast<short>(HIWORD(wParam)));
                return 0;
            }
            // A choice writes to a car, so rolling over a closed list must not choose.
            return DefWindowProcA(window.handle, message, wParam, lParam);
        case WM_KEYDOWN:
            box.takeKey(wParam, false);
            return 0;
        case WM_SYSKEYDOWN:
            box.takeKey(wParam, true);
            return box.isOpen() ? 0 : DefWindowProcA(window.handle, message, wParam, lParam);
        case WM_CHAR:
            box.takeLetter(decode(QByteArray(1, static_cast<char>(wParam)), controlCodePage()));
            return 0;
        case WM_SETFOCUS:
            notifyParent(window.handle, CBN_SETFOCUS);
            return 0;
        case WM_KILLFOCUS:
            box.leave();
            return 0;
        case WM_CAPTURECHANGED:
        case WM_CANCELMODE:
            box.close(false);
            return 0;
        default:
            return DefWindowProcA(window.handle, message, wParam, lParam);
    }
}

HWND openList() {
    const Window* holder = find(capture());
    return holder && holder->kind == Kind::Combo && boxOf(*holder).isOpen() ? holder->handle : nullptr;
}

QAbstractItemView* openListView() {
    const Window* holder = find(openList());
    return holder ? &boxOf(*holder).dropped()->view : nullptr;
}

}  // namespace layer
