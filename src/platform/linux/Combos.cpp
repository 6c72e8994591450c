// Combo boxes: drop-down lists, unsorted.
#include <QAbstractItemView>
#include <QAbstractListModel>
#include <QComboBox>
#include <QFocusEvent>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr DWORD ComboTypeMask = 0x03;
constexpr DWORD DropDownList = 0x03;
constexpr DWORD Sorted = 0x0100;
// The closed box stands this much over its font's cell; the template's height is that of the box with its list.
constexpr int BoxMargin = 8;
// A poll of a lost link holds the letters of a search in a list up for a good quarter of a second.
constexpr Moment LongestPauseInSearch = Second;

// The entries as the program gave them; the letters are made when one is shown, since a list may have hundreds.
class EntryModel : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(entries.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole)) {
            return {};
        }
        return decode(entries[static_cast<size_t>(index.row())], controlCodePage());
    }
    int add(const char* text) {
        const int row = rowCount();
        beginInsertRows({}, row, row);
        entries.emplace_back(text);
        endInsertRows();
        return row;
    }
    void clear() {
        beginResetModel();
        entries.clear();
        endResetModel();
    }
    std::vector<QByteArray> entries;
};

// Tells its parent what the user does and nothing of what the program does. A choice with the mouse tells SELENDOK,
// CLOSEUP, SELCHANGE; leaving the list without one SELENDCANCEL, CLOSEUP. A key that moves the selection tells
// SELCHANGE at once, on the closed list after SELENDOK; Enter on the open list tells SELENDOK, CLOSEUP.
class ComboBox : public QComboBox {
public:
    ComboBox(QWidget* parent, HWND shown, int dropHeight) : QComboBox(parent), window(shown), listHeight(dropHeight) {
        // With a placeholder a first entry is not chosen by itself.
        setPlaceholderText(QStringLiteral(" "));
        setModel(&model);
        setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        connect(this, &QComboBox::activated, this, [this] { tellChoice(); });
        connect(this, &QComboBox::highlighted, this, [this](int row) { tellKeyMove(row); });
        view()->installEventFilter(this);
        view()->viewport()->installEventFilter(this);
    }

    void showPopup() override {
        if (dropped || !isEnabled()) {
            return;
        }
        dropped = true;
        byKey = false;
        told = currentIndex();
        notifyParent(window, CBN_DROPDOWN);
        const int row = std::max(1, view()->sizeHintForRow(0));
        setMaxVisibleItems(std::max(3, listHeight / row));
        QComboBox::showPopup();
        view()->window()->installEventFilter(this);
    }

    void hidePopup() override {
        QComboBox::hidePopup();
        noteHidden();
    }

    bool isDropped() const {
        return dropped;
    }

    // A selection by the program also moves the one in the open list.
    void select(int row) {
        setCurrentIndex(row);
        told = row;
        if (dropped) {
            view()->setCurrentIndex(model.index(row, 0));
        }
    }

    EntryModel model;

protected:
    // Whether a key or the mouse moves the selection in the list. The keys that open it leave it again.
    bool eventFilter(QObject* receiver, QEvent* event) override {
        // A dialog that opens takes an open list away without asking.
        if (event->type() == QEvent::Hide && receiver == view()->window()) {
            noteHidden();
        }
        if (event->type() == QEvent::MouseMove || event->type() == QEvent::MouseButtonPress) {
            byKey = false;
        } else if (event->type() == QEvent::ShortcutOverride) {
            byKey = true;
        } else if (event->type() == QEvent::KeyPress) {
            byKey = true;
            const auto& key = static_cast<const QKeyEvent&>(*event);
            const bool arrow = key.key() == Qt::Key_Up || key.key() == Qt::Key_Down;
            if (key.key() == Qt::Key_F4 || (arrow && key.modifiers() & Qt::AltModifier)) {
                hidePopup();
                return true;
            }
            if (isLetter(key)) {
                view()->setCurrentIndex(model.index(search(key.text(), view()->currentIndex().row()), 0));
                return true;
            }
        }
        return QComboBox::eventFilter(receiver, event);
    }
    void keyPressEvent(QKeyEvent* event) override {
        byKey = true;
        if (event->key() == Qt::Key_Space) {
            event->ignore();
        } else if (isLetter(*event)) {
            const int row = search(event->text(), currentIndex());
            if (row != currentIndex()) {
                setCurrentIndex(row);
                tellChoice();
            }
        } else {
            QComboBox::keyPressEvent(event);
        }
    }
    // A choice writes to a car, so rolling over a closed list must not choose.
    void wheelEvent(QWheelEvent* event) override {
        event->ignore();
    }
    // The open list may take the keyboard for itself; to the program it stays with the box.
    void focusInEvent(QFocusEvent* event) override {
        QComboBox::focusInEvent(event);
        if (!focused) {
            focused = true;
            notifyParent(window, CBN_SETFOCUS);
        }
    }
    void focusOutEvent(QFocusEvent* event) override {
        QComboBox::focusOutEvent(event);
        if (event->reason() != Qt::PopupFocusReason && !dropped) {
            focused = false;
            notifyParent(window, CBN_KILLFOCUS);
        }
    }

private:
    static bool isLetter(const QKeyEvent& key) {
        return !key.text().isEmpty() && key.text().at(0).isPrint() && !key.text().at(0).isSpace() &&
               !(key.modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    }

    // The row that begins with what was typed in one go, from the given one on and round; that one if none does. A
    // first letter, or the same one again, goes on to the next row.
    int search(const QString& letter, int from) {
        const Moment now = theClock().now();
        const bool goesOn = !typed.isEmpty() && now - lastTyped < LongestPauseInSearch;
        lastTyped = now;
        const bool repeats = goesOn && typed == letter;
        typed = goesOn && !repeats ? typed + letter : letter;
        const int count = model.rowCount();
        const int first = from + (typed.size() > 1 ? 0 : 1);
        for (int step = 0; step < count; ++step) {
            const int row = (std::max(first, 0) + step) % count;
            if (model.data(model.index(row, 0), Qt::DisplayRole).toString().startsWith(typed, Qt::CaseInsensitive)) {
                return row;
            }
        }
        return from;
    }

    // A choice follows at once in the same event; without one the list was left.
    void noteHidden() {
        if (!dropped) {
            return;
        }
        dropped = false;
        leaving = true;
        const auto tellLeft = [this] {
            if (leaving) {
                leaving = false;
                notifyParent(window, CBN_SELENDCANCEL);
                notifyParent(window, CBN_CLOSEUP);
            }
        };
        QMetaObject::invokeMethod(this, tellLeft, Qt::QueuedConnection);
    }

    void tellChoice() {
        const QPointer<ComboBox> self(this);
        const bool news = !byKey || currentIndex() != told;
        told = currentIndex();
        notifyParent(window, CBN_SELENDOK);
        if (self && leaving) {
            leaving = false;
            notifyParent(window, CBN_CLOSEUP);
        }
        if (self && news) {
            notifyParent(window, CBN_SELCHANGE);
        }
    }

    void tellKeyMove(int row) {
        if (dropped && byKey && row != told) {
            told = row;
            setCurrentIndex(row);
            notifyParent(window, CBN_SELCHANGE);
        }
    }

    HWND window;
    int listHeight;
    int told = -1;  // the selection that the program knows of
    bool dropped = false;
    bool leaving = false;
    bool byKey = false;
    bool focused = false;
    QString typed;
    Moment lastTyped = 0;
};

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

}  // namespace

QWidget* makeComboWidget(Window& window) {
    if ((window.style & ComboTypeMask) != DropDownList || (window.style & Sorted)) {
        reportUnsupported("combo box style", QString::number(window.style, 16));
    }
    const int whole = window.place.height();
    window.place.setHeight(window.parent->baseUnits.height() + BoxMargin);
    return new ComboBox(window.parent->client, window.handle, whole - window.place.height());
}

LRESULT comboMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    ComboBox& box = boxOf(window);
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
            wParam ? box.showPopup() : box.hidePopup();
            return TRUE;
        case CB_GETDROPPEDSTATE:
            return box.isDropped();
        default:
            return DefWindowProcA(window.handle, message, wParam, lParam);
    }
}

}  // namespace layer
