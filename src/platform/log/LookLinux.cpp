#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QScrollBar>
#include <QStyleOptionSlider>
#include <algorithm>
#include <string>

#include "platform/linux/Context.h"
#include "platform/linux/DropList.h"
#include "platform/log/Look.h"
#include "platform/log/MessageLog.h"

namespace message_log {

namespace {

using layer::Kind;
using layer::Window;

constexpr const char* ClassNames[] = {"desktop",  "frame", "#32770",    "Button",           "Static",
                                      "ComboBox", "Edit",  "ScrollBar", "msctls_progress32"};

RECT asRect(const QRect& area) {
    return {area.left(), area.top(), area.left() + area.width(), area.top() + area.height()};
}

RECT onScreen(const QWidget& widget) {
    return asRect({widget.mapToGlobal(QPoint()), widget.size()});
}

std::string bytes(const QString& text) {
    return layer::encode(text, layer::controlCodePage()).toStdString();
}

std::string entriesOf(Window& box) {
    std::string all;
    const LRESULT count = layer::controlMessage(box, CB_GETCOUNT, 0, 0);
    for (LRESULT index = 0; index < count; ++index) {
        char entry[512] = "";
        layer::controlMessage(box, CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(entry));
        all += (index ? "|" : "") + std::string(entry);
    }
    return all;
}

long long stateOf(Window& window) {
    switch (window.kind) {
        case Kind::Button:
            return layer::controlMessage(window, BM_GETCHECK, 0, 0);
        case Kind::Combo:
            return layer::controlMessage(window, CB_GETCURSEL, 0, 0);
        case Kind::ScrollBar:
            return layer::controlMessage(window, SBM_GETPOS, 0, 0);
        case Kind::Progress:
            return std::max(0, static_cast<const QProgressBar&>(*window.outer).value());
        default:
            return 0;
    }
}

// The style's own view of the bar; a bar's own way to it is not public.
class ThumbOf : public QScrollBar {
public:
    static QRect of(const QScrollBar& bar) {
        QStyleOptionSlider option;
        (bar.*&ThumbOf::initStyleOption)(&option);
        return bar.style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, &bar);
    }
};

void writeWindow(Window& window, const std::string& name, const std::string& parent) {
    RECT place{};
    GetWindowRect(window.handle, &place);
    const auto* edit = qobject_cast<const QLineEdit*>(window.outer.data());
    const std::string shown = window.kind == Kind::Combo ? entriesOf(window)
                              : edit                     ? bytes(edit->text())
                                                         : window.text.toStdString();
    Line("win")
        .text(name.c_str())
        .text(ClassNames[static_cast<size_t>(window.kind)])
        .number(parent.empty() ? 0 : window.id)
        .text(parent.c_str())
        .rect(place)
        .rect(onScreen(*window.client))
        .number(IsWindowVisible(window.handle))
        .number(window.enabled)
        .number(GetFocus() == window.handle)
        .number(stateOf(window))
        .text(shown.c_str())
        .write();
    if (window.kind == Kind::ScrollBar) {
        const auto& bar = static_cast<const QScrollBar&>(*window.outer);
        const QRect thumb = ThumbOf::of(bar);
        Line("part")
            .text(name.c_str())
            .text("thumb")
            .rect(asRect({bar.mapToGlobal(thumb.topLeft()), thumb.size()}))
            .write();
    }
}

void writeTree(Window& window, const std::string& name, const std::string& parent) {
    writeWindow(window, name, parent);
    for (Window* child : window.children) {
        const std::string own = nameOf(child->handle);
        writeTree(*child, own.empty() ? name + "/" + std::to_string(child->id) : own, name);
    }
}

bool isMarked(const QAction& action) {
    return action.property(layer::HighlightProperty).toBool() || action.property(layer::SelectProperty).toBool();
}

template <typename Holder>
void writeItems(const Holder& holder, int level, const QAction* active) {
    int index = 0;
    for (const QAction* action : holder.actions()) {
        const QRect place = holder.actionGeometry(const_cast<QAction*>(action));
        const UINT state = (action->isEnabled() ? 0 : MF_GRAYED) | (action->isChecked() ? MF_CHECKED : 0) |
                           (action == active || isMarked(*action) ? MF_HILITE : 0);
        Line("menu")
            .number(level)
            .number(index++)
            .rect(asRect({holder.mapToGlobal(place.topLeft()), place.size()}))
            .number(state)
            .text(bytes(action->text().replace(QStringLiteral("&&"), QStringLiteral("&"))).c_str())
            .write();
    }
}

void writeEntries(const QAbstractItemView& view) {
    for (int row = 0; row < view.model()->rowCount(); ++row) {
        const QRect place = view.visualRect(view.model()->index(row, 0));
        if (place.top() >= view.viewport()->height() || place.top() < 0) {
            continue;
        }
        Line("entry")
            .number(row)
            .rect(asRect({view.viewport()->mapToGlobal(place.topLeft()), place.size()}))
            .number(view.currentIndex().row() == row)
            .text(bytes(view.model()->index(row, 0).data().toString()).c_str())
            .write();
    }
}

int idOf(QDialogButtonBox::StandardButton button) {
    return button == QDialogButtonBox::Yes ? IDYES : button == QDialogButtonBox::No ? IDNO : IDOK;
}

// A message box or file dialog of Qt's own. Its buttons are found as those of the real desktop.
void writeForeign(const QWidget& dialog) {
    const auto line = [](const QWidget& widget, const char* name, const char* kind, int id, const char* parent) {
        Line("win")
            .text(name)
            .text(kind)
            .number(id)
            .text(parent)
            .rect(onScreen(widget))
            .rect(onScreen(widget))
            .number(widget.isVisible())
            .number(widget.isEnabled())
            .number(widget.hasFocus())
            .number(0)
            .text("")
            .write();
    };
    line(dialog, "foreign", "#32770", 0, "");
    if (const auto* box = qobject_cast<const QMessageBox*>(&dialog)) {
        for (const QAbstractButton* button : box->buttons()) {
            const int id = idOf(static_cast<QDialogButtonBox::StandardButton>(
                box->standardButton(const_cast<QAbstractButton*>(button))));
            line(*button, ("foreign/" + std::to_string(id)).c_str(), "Button", id, "foreign");
        }
    }
}

}  // namespace

void writeWindows() {
    for (Window* window : layer::topLevels()) {
        if (!window->visible) {
            continue;
        }
        writeTree(*window, nameOf(window->handle), "");
        if (const auto* bar = window->outer->findChild<QMenuBar*>()) {
            writeItems(*bar, 0, nullptr);
        }
    }
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        if (const auto* menu = qobject_cast<const QMenu*>(widget); menu && menu->isVisible()) {
            writeItems(*menu, 1, menu->activeAction());
        }
    }
    if (const QAbstractItemView* view = layer::openListView()) {
        writeEntries(*view);
    }
    if (const QWidget* dialog = layer::foreignDialog()) {
        writeForeign(*dialog);
    }
}

HWND windowOf(HDC dc) {
    const layer::DeviceContext* context = layer::findContext(dc);
    return context ? context->window : nullptr;
}

int controlIdOf(HWND window) {
    const Window* control = layer::find(window);
    return control ? control->id : -1;
}

}  // namespace message_log
