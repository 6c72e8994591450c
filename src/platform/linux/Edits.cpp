// Text fields of one line. Qt keeps, measures and paints the text; what mouse and keys do with it is decided here.
#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>
#include <QRegularExpressionValidator>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr DWORD Centred = 0x0001;
constexpr DWORD UpperCase = 0x0008;
constexpr DWORD ReadOnly = 0x0800;
constexpr DWORD Number = 0x2000;
constexpr DWORD Known = 0x0080 | Centred | UpperCase | ReadOnly | Number;
constexpr DWORD ControlStyleMask = 0xFFFF;
constexpr int LongestText = 32767;

// Letter by letter, so that none becomes two and a limited text grows past its limit.
QString inCapitals(QString text) {
    for (QChar& letter : text) {
        letter = letter.toUpper();
    }
    return text;
}

class Edit : public QLineEdit {
public:
    Edit(QWidget* parent, HWND shown, DWORD style) : QLineEdit(parent), window(shown), capitals(style & UpperCase) {
        setContextMenuPolicy(Qt::NoContextMenu);
        setAlignment(Qt::AlignVCenter | (style & Centred ? Qt::AlignHCenter : Qt::AlignLeft));
        makeReadOnly(style & ReadOnly);
        if (style & Number) {
            setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), this));
        }
        if (capitals) {
            // What comes by its menu.
            connect(this, &QLineEdit::textEdited, this, [this](const QString& edited) {
                if (edited != inCapitals(edited)) {
                    const int caret = cursorPosition();
                    setText(inCapitals(edited));
                    setCursorPosition(caret);
                }
            });
        }
        connect(this, &QLineEdit::textChanged, this, [shown](const QString& now) {
            if (Window* edit = layer::find(shown)) {
                edit->text = encode(now, controlCodePage());
            }
            if (notifyParent(shown, EN_UPDATE)) {
                notifyParent(shown, EN_CHANGE);
            }
        });
    }

    // What cannot be typed into has the colour of the dialog.
    void makeReadOnly(bool readOnly) {
        setReadOnly(readOnly);
        QPalette colours = palette();
        const QColor face = colours.color(QPalette::Window);
        colours.setColor(QPalette::Base, readOnly ? face : QColor(Qt::white));
        colours.setColor(QPalette::Disabled, QPalette::Base, face);
        setPalette(colours);
    }

    void press(QPoint place, bool extends) {
        const int caret = cursorPositionAt(place);
        anchor = extends ? anchorNow() : caret;
        selectTo(caret);
    }
    void dragTo(QPoint place) {
        selectTo(cursorPositionAt(place));
    }
    // The word under the mouse with the blanks behind it.
    void selectWord(QPoint place) {
        const QString all = text();
        int from = std::min<int>(cursorPositionAt(place), static_cast<int>(all.size()) - 1);
        if (from < 0) {
            return;
        }
        const auto isBlank = [&](int at) { return all.at(at).isSpace(); };
        int to = from;
        while (from > 0 && (isBlank(from) || !isBlank(from - 1))) {
            --from;
        }
        while (to < all.size() && !isBlank(to)) {
            ++to;
        }
        while (to < all.size() && isBlank(to)) {
            ++to;
        }
        setSelection(from, to - from);
    }

    void takeKey(WPARAM key, Qt::KeyboardModifiers modifiers) {
        const bool shift = modifiers & Qt::ShiftModifier;
        const bool control = modifiers & Qt::ControlModifier;
        switch (key) {
            case VK_LEFT:
            case VK_UP:
                control ? cursorWordBackward(shift) : cursorBackward(shift);
                break;
            case VK_RIGHT:
            case VK_DOWN:
                control ? cursorWordForward(shift) : cursorForward(shift);
                break;
            case VK_HOME:
                home(shift);
                break;
            case VK_END:
                end(shift);
                break;
            case VK_DELETE:
                if (!isReadOnly()) {
                    shift ? cut() : del();
                }
                break;
            case VK_INSERT:
                if (control) {
                    copy();
                } else if (shift) {
                    pasteText();
                }
                break;
            default:
                break;
        }
    }

    void takeLetter(QChar letter) {
        constexpr char16_t all = 1, copies = 3, backspace = 8, pastes = 22, cuts = 24, undoes = 26;
        switch (letter.unicode()) {
            case all:
                selectAll();
                break;
            case copies:
                copy();
                break;
            case pastes:
                pasteText();
                break;
            case cuts:
                if (!isReadOnly()) {
                    cut();
                }
                break;
            case undoes:
                undo();
                break;
            case backspace:
                if (!isReadOnly()) {
                    QLineEdit::backspace();
                }
                break;
            default:
                if (letter.isPrint() && !isReadOnly()) {
                    insertText(letter);
                }
        }
    }

private:
    int anchorNow() const {
        return !hasSelectedText()                     ? cursorPosition()
               : cursorPosition() == selectionStart() ? selectionEnd()
                                                      : selectionStart();
    }
    void selectTo(int caret) {
        caret == anchor ? (deselect(), setCursorPosition(caret)) : setSelection(anchor, caret - anchor);
    }
    void insertText(const QString& letters) {
        const bool fits = text().size() - selectedText().size() + letters.size() <= maxLength();
        insert(capitals ? inCapitals(letters) : letters);
        if (!fits) {
            notifyParent(window, EN_MAXTEXT);
        }
    }
    void pasteText() {
        if (!isReadOnly()) {
            insertText(QGuiApplication::clipboard()->text().section(QLatin1Char('\n'), 0, 0));
        }
    }

    HWND window;
    bool capitals;
    int anchor = 0;
};

Edit& editOf(const Window& window) {
    return static_cast<Edit&>(*window.outer);
}

LRESULT takeEditMouse(Window& window, UINT message, LPARAM lParam) {
    const QPoint place(static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam)));
    const HWND handle = window.handle;
    switch (message) {
        case WM_LBUTTONDOWN: {
            SetFocus(handle);
            Window* still = find(handle);
            if (still && still->enabled) {
                setCapture(handle);
                editOf(*still).press(place, QGuiApplication::keyboardModifiers() & Qt::ShiftModifier);
            }
            break;
        }
        case WM_LBUTTONDBLCLK:
            editOf(window).selectWord(place);
            break;
        case WM_MOUSEMOVE:
            if (capture() == handle) {
                editOf(window).dragTo(place);
            }
            break;
        default:
            if (capture() == handle) {
                releaseCapture();
            }
    }
    return 0;
}

}  // namespace

QWidget* makeEditWidget(const Window& window) {
    if (window.style & ControlStyleMask & ~Known) {
        reportUnsupported("edit style", QString::number(window.style, 16));
    }
    return new Edit(window.parent->client, window.handle, window.style);
}

LRESULT editMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    Edit& edit = editOf(window);
    switch (message) {
        case EM_SETLIMITTEXT:
            edit.setMaxLength(wParam ? static_cast<int>(wParam) : LongestText);
            return 0;
        case EM_SETREADONLY:
            if (edit.isReadOnly() != (wParam != 0)) {
                edit.makeReadOnly(wParam != 0);
            }
            return TRUE;
        case EM_SETSEL:
            edit.setSelection(0, static_cast<int>(edit.text().size()));
            return TRUE;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
        case WM_LBUTTONUP:
        case WM_MOUSEMOVE:
            return takeEditMouse(window, message, lParam);
        case WM_KEYDOWN:
            edit.takeKey(wParam, keyInHand().modifiers);
            return 0;
        case WM_CHAR:
            for (const QChar letter : decode(QByteArray(1, static_cast<char>(wParam)), controlCodePage())) {
                edit.takeLetter(letter);
            }
            return 0;
        case WM_RBUTTONUP: {
            const HWND handle = window.handle;
            SetFocus(handle);
            if (find(handle)) {
                showForeignMenu(
                    edit.createStandardContextMenu(),
                    edit.mapToGlobal(QPoint(static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam)))));
            }
            return 0;
        }
        case WM_SETFOCUS:
            notifyParent(window.handle, EN_SETFOCUS);
            return 0;
        case WM_KILLFOCUS:
            notifyParent(window.handle, EN_KILLFOCUS);
            return 0;
        default:
            return DefWindowProcA(window.handle, message, wParam, lParam);
    }
}

}  // namespace layer

using namespace layer;

BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned) {
    const QByteArray text = isSigned ? QByteArray::number(static_cast<INT>(value)) : QByteArray::number(value);
    return SetDlgItemTextA(dialog, id, text.constData());
}
