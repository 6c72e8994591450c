// Dialogs from templates.
#include <QApplication>
#include <cmath>

#include "platform/linux/Layer.h"
#include "platform/linux/ResourceReader.h"

namespace layer {

namespace {

constexpr DWORD DialogSetsFont = 0x40;
constexpr DWORD TabStop = 0x00010000;
constexpr WORD ExtendedSignature = 0xFFFF;
constexpr WORD AtomMark = 0xFFFF;
const QColor FaceColour(240, 240, 240);

struct TemplateItem {
    DWORD style = 0;
    DWORD exStyle = 0;
    QRect units;
    int id = 0;
    unsigned classAtom = 0;
    QString className;
    QString text;
};

struct Template {
    bool extended = false;
    DWORD style = 0;
    DWORD exStyle = 0;
    QRect units;
    QString title;
    int points = 8;
    unsigned count = 0;
};

// A control's class is given by a number or by its name.
struct ItemKind {
    unsigned atom;
    const char* name;
    Kind kind;
};

constexpr ItemKind ItemKinds[] = {{0x80, "button", Kind::Button}, {0x82, "static", Kind::Static}};

QRect readUnits(ResourceReader& in) {
    const int x = static_cast<std::int16_t>(in.word());
    const int y = static_cast<std::int16_t>(in.word());
    const int width = in.word();
    const int height = in.word();
    return {x, y, width, height};
}

// A zero-terminated text, or an id behind a mark.
QString readTextOrId(ResourceReader& in, unsigned* id) {
    if (in.peekWord() == AtomMark) {
        in.word();
        *id = in.word();
        return {};
    }
    return in.text();
}

Template readHeader(ResourceReader& in) {
    Template header;
    header.extended = in.peekWord(1) == ExtendedSignature;
    if (header.extended) {
        in.skip(8);
        header.exStyle = in.dword();
        header.style = in.dword();
    } else {
        header.style = in.dword();
        header.exStyle = in.dword();
    }
    header.count = in.word();
    header.units = readUnits(in);
    unsigned ignored = 0;
    if (readTextOrId(in, &ignored); ignored != 0) {
        reportUnsupported("dialog menu", QString::number(ignored));
    }
    if (const QString windowClass = readTextOrId(in, &ignored); !windowClass.isEmpty()) {
        reportUnsupported("dialog class", windowClass);
    }
    header.title = in.text();
    if (header.style & DialogSetsFont) {
        header.points = in.word();
        if (header.extended) {
            in.skip(4);
        }
        in.text();
    }
    return header;
}

TemplateItem readItem(ResourceReader& in, bool extended) {
    TemplateItem item;
    in.align(4);
    if (extended) {
        in.dword();
        item.exStyle = in.dword();
        item.style = in.dword();
    } else {
        item.style = in.dword();
        item.exStyle = in.dword();
    }
    item.units = readUnits(in);
    item.id = extended ? static_cast<int>(in.dword()) : in.word();
    item.className = readTextOrId(in, &item.classAtom);
    unsigned imageId = 0;
    item.text = readTextOrId(in, &imageId);
    in.skip(in.word());
    return item;
}

Kind kindOf(const TemplateItem& item) {
    for (const ItemKind& known : ItemKinds) {
        if (item.className.isEmpty() ? known.atom == item.classAtom
                                     : item.className.compare(QLatin1String(known.name), Qt::CaseInsensitive) == 0) {
            return known.kind;
        }
    }
    reportUnsupported("control class", item.className.isEmpty() ? QString::number(item.classAtom) : item.className);
    return Kind::Static;
}

// Dialog units are a quarter of the base width and an eighth of the base height, rounded as the real desktop rounds.
QRect toPixels(const QRect& units, QSize base) {
    const auto across = [&](int value) { return static_cast<int>(std::lround(value * base.width() / 4.0)); };
    const auto down = [&](int value) { return static_cast<int>(std::lround(value * base.height() / 8.0)); };
    return {across(units.x()), down(units.y()), across(units.width()), down(units.height())};
}

void makeControl(Window& dialog, const TemplateItem& item) {
    Window& control = makeWindow(kindOf(item), &dialog);
    control.style = item.style;
    control.exStyle = item.exStyle;
    control.id = item.id;
    control.place = toPixels(item.units, dialog.baseUnits);
    control.text = encode(item.text, controlCodePage());
    makeControlWidget(control);
    control.outer->setGeometry(control.place);
    applyText(control);
    control.visible = item.style & WS_VISIBLE;
    control.outer->setVisible(control.visible);
    control.enabled = !(item.style & WS_DISABLED);
    control.outer->setEnabled(control.enabled);
}

Window& makeDialog(const Template& header, Window& parent, DLGPROC procedure) {
    if (!(header.style & WS_CHILD)) {
        reportUnsupported("dialog", QStringLiteral("as a window of its own"));
    }
    Window& dialog = makeWindow(Kind::Dialog, &parent);
    dialog.style = header.style;
    dialog.exStyle = header.exStyle;
    dialog.dialogProcedure = procedure;
    dialog.background = FaceColour;
    dialog.font = uiFont(header.points);
    dialog.baseUnits = dialogBaseUnits(dialog.font);
    dialog.place = toPixels(header.units, dialog.baseUnits);
    dialog.text = encode(header.title, controlCodePage());
    dialog.outer = new Canvas(parent.client, dialog.handle);
    dialog.client = dialog.outer;
    dialog.outer->setGeometry(dialog.place);
    resizeSurface(dialog);
    return dialog;
}

void focusFirst(const Window& dialog) {
    for (const Window* control : dialog.children) {
        if ((control->style & TabStop) && control->visible && control->enabled) {
            control->outer->setFocus();
            return;
        }
    }
}

}  // namespace

LRESULT defaultDialogProcedure(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND handle = window.handle;
    INT_PTR taken = 0;
    if (window.dialogProcedure) {
        taken = window.dialogProcedure(handle, message, wParam, lParam);
    }
    if (message == WM_INITDIALOG) {
        return taken;
    }
    return taken ? 0 : DefWindowProcA(handle, message, wParam, lParam);
}

LRESULT controlMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcA(window.handle, message, wParam, lParam);
}

}  // namespace layer

using namespace layer;

HWND CreateDialogParamA(HINSTANCE, LPCSTR name, HWND parentHandle, DLGPROC procedure, LPARAM parameter) {
    Window* parent = find(parentHandle);
    const std::span<const BYTE> data = findResource(DialogResource, resourceId(name));
    if (!parent || data.empty()) {
        return nullptr;
    }
    ResourceReader in(data);
    const Template header = readHeader(in);
    Window& dialog = makeDialog(header, *parent, procedure);
    const HWND handle = dialog.handle;
    for (unsigned index = 0; index < header.count; ++index) {
        makeControl(dialog, readItem(in, header.extended));
    }
    const bool wantsFocus = callProcedure(dialog, WM_INITDIALOG, 0, parameter) != 0;
    Window* made = find(handle);
    if (made && (header.style & WS_VISIBLE)) {
        ShowWindow(handle, SW_SHOW);
        if (wantsFocus && reallyVisible(*made)) {
            focusFirst(*made);
        }
    }
    return find(handle) ? handle : nullptr;
}
