// One style, palette and font on every desktop, so that a layout is the same everywhere.
#include <QApplication>
#include <QDialogButtonBox>
#include <QMenuBar>
#include <QPixmapCache>
#include <QProxyStyle>
#include <QSettings>
#include <QStyleFactory>
#include <QStyleOptionMenuItem>
#include <cstdio>
#include <cstdlib>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr int WidestMenuPadding = 8;
constexpr int NarrowestMenuPadding = 2;
constexpr int PictureCacheKilobytes = 1024;

class FixedStyle : public QProxyStyle {
public:
    FixedStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {
    }

    // A page item on the bar can be highlighted without being under the mouse.
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
        const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
        const auto* bar = qobject_cast<const QMenuBar*>(widget);
        if (element != CE_MenuBarItem || !item || !bar) {
            QProxyStyle::drawControl(element, option, painter, widget);
            return;
        }
        const QAction* action = bar->actionAt(item->rect.center());
        const bool highlighted = action && action->property(HighlightProperty).toBool();
        const bool active = action && action->property(SelectProperty).toBool();
        const QColor ground = active        ? item->palette.color(QPalette::Highlight)
                              : highlighted ? QColor(0xCC, 0xDD, 0xF2)
                                            : item->palette.color(QPalette::Window);
        painter->fillRect(item->rect, ground);
        if (highlighted && !active) {
            painter->setPen(QColor(0x7A, 0xA0, 0xD0));
            painter->drawRect(item->rect.adjusted(0, 0, -1, -1));
        }
        drawItemText(painter, item->rect, Qt::AlignCenter | Qt::TextHideMnemonic, item->palette,
                     item->state & State_Enabled, item->text,
                     active ? QPalette::HighlightedText : QPalette::WindowText);
    }

    // The bar is one row: its items stand closer where they would not fit.
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override {
        const auto* bar = qobject_cast<const QMenuBar*>(widget);
        if (type != CT_MenuBarItem || !bar) {
            return QProxyStyle::sizeFromContents(type, option, size, widget);
        }
        int texts = 0;
        for (const QAction* action : bar->actions()) {
            texts += bar->fontMetrics().size(Qt::TextShowMnemonic, action->text()).width();
        }
        const int items = std::max<int>(1, static_cast<int>(bar->actions().size()));
        const int padding = std::clamp((bar->width() - texts) / (2 * items), NarrowestMenuPadding, WidestMenuPadding);
        return {size.width() + 2 * padding, bar->height()};
    }

    // Value lists drop down under their box and open at the selection; the menu bar is reached by Alt. The buttons of
    // message boxes and file dialogs stand in one order and are text alone.
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override {
        switch (hint) {
            case SH_ComboBox_Popup:
            case SH_UnderlineShortcut:
            case SH_DialogButtonBox_ButtonsHaveIcons:
                return 0;
            case SH_DialogButtonLayout:
                return QDialogButtonBox::WinLayout;
            case SH_MenuBar_AltKeyNavigation:
                return 1;
            default:
                return QProxyStyle::styleHint(hint, option, widget, returned);
        }
    }

    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override {
        switch (metric) {
            case PM_MenuBarItemSpacing:
            case PM_MenuBarHMargin:
            case PM_MenuBarVMargin:
            case PM_MenuBarPanelWidth:
                return 0;
            case PM_TextCursorWidth:
                return caretShown(option ? option->styleObject : nullptr)
                           ? QProxyStyle::pixelMetric(metric, option, widget)
                           : 0;
            default:
                return QProxyStyle::pixelMetric(metric, option, widget);
        }
    }
};

QPalette lightPalette() {
    const QColor face(240, 240, 240);
    const QColor faded(120, 120, 120);
    QPalette palette(face, face);
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Highlight, QColor(0, 96, 180));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(role, Qt::black);
        palette.setColor(QPalette::Disabled, role, faded);
    }
    return palette;
}

}  // namespace

void installStyle() {
    QApplication::setStyle(new FixedStyle);
    QApplication::setPalette(lightPalette());
    QApplication::setFont(uiFont(9));
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    // What other programs' file dialogs left behind is not read, and ours leave nothing.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
    // The style keeps its pictures of controls apart for each widget, which pages make anew again and again.
    QPixmapCache::setCacheLimit(PictureCacheKilobytes);
    QApplication::setCursorFlashTime(0);
    watchCaret();
}

// What the layer does not know is a fault of the program, not of its user.
void reportUnsupported(const char* what, const QString& detail) {
    std::fprintf(stderr, "%s '%s': not supported\n", what, qPrintable(detail));
    std::abort();
}

}  // namespace layer
