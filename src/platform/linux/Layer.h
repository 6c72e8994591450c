// What the files of the layer share: the window behind an HWND, the registry, and the calls from one area to another.
// Only files of this folder include it.
#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QPointer>
#include <QRegion>
#include <QString>
#include <QWidget>
#include <array>
#include <memory>
#include <span>
#include <vector>

#include "platform/Win32.h"
#include "platform/linux/Clock.h"
#include "platform/linux/Input.h"
#include "platform/linux/Standing.h"

class QAbstractItemView;

namespace layer {

// The pixels of a window's client area: kept, so that what is drawn stays until it is painted over. There is no image
// until something other than a fill of the whole area has been drawn.
class Surface {
public:
    void resize(QSize size, qreal ratio);
    // Opened by the first drawing and kept open, since opening one costs more than a rectangle.
    QPainter& painter();
    bool fillAll(QColor colour);
    void markDirty(const QRect& rect);
    // The changed area since the last call, in coarse tiles.
    QRegion takeDirty();
    void paintOn(QPainter& target, const QRegion& region) const;
    StandingDrawings standing;
    QColor pixel(int x, int y) const;
    QSize size() const {
        return logicalSize;
    }

private:
    void allocate();
    size_t tileIndex(int row, int column) const {
        return static_cast<size_t>(row) * static_cast<size_t>(tileColumns) + static_cast<size_t>(column);
    }

    static constexpr int TileSize = 32;
    QSize logicalSize;
    qreal pixelRatio = 1.0;
    QColor fill = Qt::black;
    QImage image;
    std::unique_ptr<QPainter> open;
    int tileColumns = 0;
    int tileRows = 0;
    std::vector<bool> dirtyTiles;
    bool anyDirty = false;
};

enum class Kind { Desktop, Frame, Dialog, Button, Static, Combo, Edit, ScrollBar, Progress };

// Behind the controls of a dialog.
constexpr QRgb FaceColour = 0xFFF0F0F0;

struct Window {
    HWND handle = nullptr;
    Kind kind = Kind::Frame;
    Window* parent = nullptr;
    std::vector<Window*> children;  // the last is on top
    HWND owner = nullptr;           // of a dialog that is a window of its own
    HWND lastFocus = nullptr;       // of a frame or dialog, while it is not the active one
    DWORD style = 0;
    DWORD exStyle = 0;
    int id = 0;
    WNDPROC procedure = nullptr;
    DLGPROC dialogProcedure = nullptr;
    QColor background;
    HMENU menu = nullptr;
    QRect place;  // the outer rectangle, in the parent's client area or on the desktop
    bool visible = false;
    bool enabled = true;
    bool painting = false;  // between BeginPaint and EndPaint
    bool dying = false;
    bool modal = false;  // run by DialogBoxParamA until ended
    bool ended = false;
    INT_PTR result = 0;
    QByteArray text;
    unsigned imageId = 0;      // of a picture's control
    QPointer<QWidget> outer;   // the Qt window or child
    QPointer<QWidget> client;  // where the surface shows and children live; the outer one for all but a frame
    QRegion invalid;           // client coordinates
    bool erase = false;
    Surface surface;
    // Dialogs: the size of a dialog unit in quarters and eighths of these, and the controls' font.
    QSize baseUnits;
    QFont font;
};

// Null for a handle that is no living window.
Window* find(HWND handle);
Window& desktop();
const std::vector<Window*>& topLevels();
// Makes the record and its handle; the caller makes the widgets.
Window& makeWindow(Kind kind, Window* parent);

QSize clientSize(const Window& window);
// The window itself or the one that it is a child of.
Window& rootOf(Window& window);
bool reallyVisible(const Window& window);
void applyText(Window& window);
LRESULT callProcedure(Window& window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT defaultDialogProcedure(Window& window, UINT message, WPARAM wParam, LPARAM lParam);
// Deletes the widgets of destroyed windows, if no window procedure is running.
void buryWidgets();
LRESULT controlMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam);

// Widgets.
// Shows a window's surface; it is the whole widget of a dialog and the client area of a frame.
class Canvas : public QWidget {
public:
    Canvas(QWidget* parent, HWND shown, Qt::WindowFlags flags = {}) : QWidget(parent, flags), window(shown) {
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

private:
    HWND window;
};

QWidget* makeFrameWidget(Window& window);
// The widget of a dialog that is a window of its own.
QWidget* makeDialogWidget(Window& window);
void makeControlWidget(Window& window);
QWidget* makeComboWidget(Window& window);
LRESULT comboMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam);
QWidget* makeButtonWidget(const Window& window);
LRESULT buttonMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam);
QWidget* makeEditWidget(const Window& window);
LRESULT editMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam);
QWidget* makeScrollBarWidget(const Window& window);
LRESULT scrollBarMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam);
// Tells WM_COMMAND, or WM_HSCROLL and the like; false if the control has gone by its end.
bool notifyParent(HWND control, unsigned code);
// Whether the mouse does not see it: texts, pictures, frames.
bool isTransparent(const Window& window);
// From the first key on the control that has the keyboard is marked.
void showCues(Window& root);
QWidget* makeProgressWidget(const Window& window);
LRESULT progressMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam);
// Stops a top-level widget from closing by itself; the program is told in its turn, unless the window is disabled then.
// A drag by the user moves the record.
void askToClose(HWND window, QCloseEvent& event);
void noteMove(HWND window, const QWidget& widget);
void placeFrame(Window& window);
// Outer size less the borders, the caption and the menu bar of the real desktop, and the outer size for a client area.
QSize frameClientSize(const Window& window);
QSize outerSizeFor(QSize client);

// Painting.
void invalidate(Window& window, const QRegion& region, bool erase);
void invalidateAll(Window& window);
void erase(Window& window);
void resizeSurface(Window& window);
// Hands all that was drawn since the last call to the screen: whoever is about to wait calls it, for a message, for the
// line or for time to pass. So a tick that follows at once on another is drawn while the line is busy anyway.
void showAllDrawing();
// The topmost window in need of WM_PAINT, null if none.
Window* nextToPaint();
void forgetContexts(const Window& window);

// Timers.
void killTimers(HWND window);
// Never if there is none.
Moment nextTimerDue();
bool takeDueTimer(MSG& message);

// Messages.
void forgetMessages(HWND window);
void installLoops();
// The first control that Tab goes to, but for one; null if there is none.
HWND firstTabStop(const Window& dialog, const Window* but = nullptr);
// Whether a dialog takes a message's key for itself: Enter, Escape, Tab, arrows.
bool dialogTakesKey(HWND dialog, const MSG& message);
// Runs messages until done() says so or the quit message comes, which is left for the outer loop.
void runNestedLoop(bool (*done)(void*), void* argument);

// Menus. An item of a bar that is highlighted, or that mouse or keyboard are at, carries this property on its action.
constexpr const char* HighlightProperty = "highlighted";
constexpr const char* SelectProperty = "selected";
void attachMenu(Window& window);
int menuBarHeight(const Window& window);
// What the menu bar does with a letter typed with Alt, with Alt alone or F10, and with a press of the mouse on it.
void openMenuByLetter(Window& window, const QString& letter);
void enterMenuBar(Window& window);
void pressMenuBar(Window& window, QPoint onScreen);
// Closes what is open of a menu.
void leaveMenu();

// The combo box whose list is open, and what shows it; null if none is.
HWND openList();
QAbstractItemView* openListView();

// Resources: raw data by type and id; empty if there is none.
enum ResourceType : unsigned {
    BitmapResource = 2,
    MenuResource = 4,
    DialogResource = 5,
    StringResource = 6,
    AcceleratorResource = 9,
    IconResource = 3,
    GroupIconResource = 14,
};
std::span<const BYTE> findResource(unsigned type, unsigned id);
unsigned resourceId(LPCSTR name);
QColor colourOf(HBRUSH brush);
QIcon iconOf(HICON icon);
QImage imageOf(HBITMAP bitmap);

// Text: the code page of controls, and conversions of one byte each.
int controlCodePage();
QString decode(QByteArrayView text, int codePage);
QByteArray encode(const QString& text, int codePage);
const std::array<char16_t, 256>& codePageTable(int codePage);
// The face, style and size that dialogs and menus use: points at 96 dots an inch.
QFont uiFont(int points);
QSize dialogBaseUnits(const QFont& font, const QString& face);

// How many of each there are now; what is made must also be freed.
size_t livingWindows();
size_t livingMenus();
size_t livingObjects();
size_t livingContexts();
size_t livingTimers();

void installStyle();
// The carets of all text fields blink by the layer's clock; the style asks whether one shows just now.
void watchCaret();
bool caretShown(const QObject* field);
void reportUnsupported(const char* what, const QString& detail);

}  // namespace layer
