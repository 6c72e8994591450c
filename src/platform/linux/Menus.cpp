// Menus: records that stand for themselves, shown by a Qt menu bar while attached to a window.
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <algorithm>
#include <functional>
#include <unordered_map>

#include "platform/linux/Layer.h"
#include "platform/linux/ResourceReader.h"

namespace layer {

namespace {

constexpr WORD LastItem = 0x80;

struct MenuItem {
    UINT id = 0;
    UINT flags = 0;
    QByteArray text;
    HMENU popup = nullptr;
    QIcon unchecked;
    QIcon checked;
    QPointer<QAction> action;
};

struct Menu {
    std::vector<MenuItem> items;
    int codePage = 1250;  // of the texts as they were loaded
};

std::unordered_map<HMENU, Menu>& menus() {
    static std::unordered_map<HMENU, Menu> living;
    return living;
}

Menu* findMenu(HMENU handle) {
    const auto found = menus().find(handle);
    return found == menus().end() ? nullptr : &found->second;
}

HMENU addMenu() {
    static std::uintptr_t lastHandle = 0x40000;
    lastHandle += 2;
    const auto handle = reinterpret_cast<HMENU>(lastHandle);
    menus()[handle] = {};
    return handle;
}

// A template is a list of rows: flags, the id unless it opens a popup, the text; a popup's rows follow it.
HMENU readMenu(ResourceReader& in) {
    const HMENU handle = addMenu();
    bool last = false;
    while (!last && !in.atEnd()) {
        MenuItem item;
        item.flags = in.word();
        last = item.flags & LastItem;
        item.flags &= ~static_cast<UINT>(LastItem);
        item.id = item.flags & MF_POPUP ? 0 : in.word();
        item.text = in.text().toUtf8();
        if (item.flags & MF_POPUP) {
            item.popup = readMenu(in);
        } else if (item.id == 0 && item.text.isEmpty()) {
            item.flags |= MF_SEPARATOR;
        }
        findMenu(handle)->items.push_back(std::move(item));
    }
    return handle;
}

MenuItem* findItem(HMENU handle, UINT id, UINT flags) {
    Menu* menu = findMenu(handle);
    if (!menu) {
        return nullptr;
    }
    if (flags & MF_BYPOSITION) {
        return id < menu->items.size() ? &menu->items[id] : nullptr;
    }
    for (MenuItem& item : menu->items) {
        if (!item.popup && !(item.flags & MF_SEPARATOR) && item.id == id) {
            return &item;
        }
        MenuItem* inner = item.popup ? findItem(item.popup, id, flags) : nullptr;
        if (inner) {
            return inner;
        }
    }
    return nullptr;
}

// Brings the shown item into line with its record. An item with pictures shows one of them in place of a check mark.
void showItem(MenuItem& item) {
    if (!item.action) {
        return;
    }
    const bool checked = item.flags & MF_CHECKED;
    const bool pictured = !item.unchecked.isNull() || !item.checked.isNull();
    const QString text = QString::fromUtf8(item.text).replace(QLatin1Char('&'), QStringLiteral("&&"));
    item.action->setText(text);
    item.action->setEnabled(!(item.flags & MF_GRAYED));
    item.action->setIcon(checked ? item.checked : item.unchecked);
    item.action->setCheckable(checked && !pictured);
    item.action->setChecked(checked && !pictured);
    item.action->setProperty(HighlightProperty, (item.flags & MF_HILITE) != 0);
}

void fillPopup(QMenu& popup, HMENU handle, HWND window);

// Qt paints bar and popups; what mouse and keys do in them is decided in MenuTracking.cpp.
QAction* makeAction(MenuItem& item, QWidget& parent, HWND window) {
    auto* action = new QAction(&parent);
    if (item.flags & MF_SEPARATOR) {
        action->setSeparator(true);
    } else if (item.popup) {
        auto* popup = new QMenu(&parent);
        popup->setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
        popup->setFont(parent.font());
        fillPopup(*popup, item.popup, window);
        action->setMenu(popup);
    } else {
        QObject::connect(action, &QAction::triggered,
                         [window, id = item.id] { PostMessageA(window, WM_COMMAND, MAKEWPARAM(id, 0), 0); });
    }
    item.action = action;
    showItem(item);
    return action;
}

void fillPopup(QMenu& popup, HMENU handle, HWND window) {
    if (Menu* menu = findMenu(handle)) {
        for (MenuItem& item : menu->items) {
            popup.addAction(makeAction(item, popup, window));
        }
    }
}

void repaintBar(const Window& window) {
    if (QMenuBar* bar = window.outer ? window.outer->findChild<QMenuBar*>() : nullptr) {
        bar->update();
    }
}

void repaintBars() {
    for (const Window* window : topLevels()) {
        repaintBar(*window);
    }
}

MenuItem* change(HMENU menu, UINT id, UINT flags, const std::function<void(MenuItem&)>& how) {
    MenuItem* item = findItem(menu, id, flags);
    if (item) {
        how(*item);
        showItem(*item);
    }
    return item;
}

}  // namespace

void attachMenu(Window& window) {
    leaveMenu();
    delete window.outer->findChild<QMenuBar*>();
    Menu* menu = findMenu(window.menu);
    if (!menu) {
        return;
    }
    auto* bar = new QMenuBar(window.outer);
    bar->setNativeMenuBar(false);
    bar->setFont(uiFont(9));
    for (MenuItem& item : menu->items) {
        bar->addAction(makeAction(item, *bar, window.handle));
    }
    bar->setGeometry(0, 0, clientSize(window).width(), menuBarHeight(window));
    bar->show();
}

size_t livingMenus() {
    return menus().size();
}

}  // namespace layer

using namespace layer;

HMENU LoadMenuA(HINSTANCE, LPCSTR name) {
    const std::span<const BYTE> data = findResource(MenuResource, resourceId(name));
    if (data.empty()) {
        return nullptr;
    }
    ResourceReader in(data);
    in.skip(4);
    return readMenu(in);
}

HMENU GetMenu(HWND handle) {
    const Window* window = find(handle);
    return window ? window->menu : nullptr;
}

BOOL SetMenu(HWND handle, HMENU menu) {
    Window* window = find(handle);
    if (!window || (menu && !findMenu(menu))) {
        return FALSE;
    }
    window->menu = menu;
    attachMenu(*window);
    placeFrame(*window);
    resizeSurface(*window);
    return TRUE;
}

BOOL DestroyMenu(HMENU handle) {
    Menu* menu = findMenu(handle);
    if (!menu) {
        return FALSE;
    }
    for (const MenuItem& item : menu->items) {
        if (item.popup) {
            DestroyMenu(item.popup);
        }
    }
    menus().erase(handle);
    return TRUE;
}

BOOL DrawMenuBar(HWND handle) {
    if (const Window* window = find(handle)) {
        repaintBar(*window);
        return TRUE;
    }
    return FALSE;
}

DWORD CheckMenuItem(HMENU menu, UINT id, UINT check) {
    UINT before = 0;
    const MenuItem* item = change(menu, id, check, [&](MenuItem& changed) {
        before = changed.flags & MF_CHECKED;
        changed.flags = (changed.flags & ~MF_CHECKED) | (check & MF_CHECKED);
    });
    return item ? before : 0xFFFFFFFF;
}

BOOL EnableMenuItem(HMENU menu, UINT id, UINT enable) {
    UINT before = 0;
    const MenuItem* item = change(menu, id, enable, [&](MenuItem& changed) {
        before = changed.flags & MF_GRAYED;
        changed.flags = (changed.flags & ~MF_GRAYED) | (enable & MF_GRAYED);
    });
    return item ? static_cast<BOOL>(before) : -1;
}

BOOL ModifyMenuA(HMENU menu, UINT id, UINT flags, UINT_PTR newId, LPCSTR text) {
    return change(menu, id, flags, [&](MenuItem& changed) {
               changed.id = static_cast<UINT>(newId);
               changed.flags = flags & (MF_GRAYED | MF_CHECKED);
               changed.text = decode(text, controlCodePage()).toUtf8();
           }) != nullptr;
}

BOOL HiliteMenuItem(HWND, HMENU menu, UINT id, UINT hilite) {
    MenuItem* item = findItem(menu, id, hilite & ~MF_HILITE);
    if (item && (item->flags & MF_HILITE) != (hilite & MF_HILITE)) {
        item->flags ^= MF_HILITE;
        // Nothing else of the action is set, since that would lay the whole bar out anew.
        if (item->action) {
            item->action->setProperty(HighlightProperty, (item->flags & MF_HILITE) != 0);
        }
        repaintBars();
    }
    return item != nullptr;
}

BOOL SetMenuItemBitmaps(HMENU menu, UINT id, UINT flags, HBITMAP unchecked, HBITMAP checked) {
    return change(menu, id, flags, [&](MenuItem& changed) {
               changed.unchecked = QIcon(QPixmap::fromImage(imageOf(unchecked)));
               changed.checked = QIcon(QPixmap::fromImage(imageOf(checked)));
           }) != nullptr;
}

UINT GetMenuState(HMENU menu, UINT id, UINT flags) {
    const MenuItem* item = findItem(menu, id, flags);
    return item ? item->flags : 0xFFFFFFFF;
}

int GetMenuStringA(HMENU menu, UINT id, LPSTR buffer, int size, UINT flags) {
    const MenuItem* item = findItem(menu, id, flags);
    if (size <= 0) {
        return 0;
    }
    const QByteArray text = item ? encode(QString::fromUtf8(item->text), controlCodePage()).left(size - 1) : "";
    std::copy_n(text.constData(), text.size() + 1, buffer);
    return static_cast<int>(text.size());
}
