// Dialogs from templates: modeless children and modal windows of their own.
#include <cmath>

#include "platform/linux/DialogTemplate.h"
#include "platform/linux/Layer.h"

namespace layer {

namespace {

// A control's class is given by a number or by its name.
struct ItemKind {
    unsigned atom;
    const char* name;
    Kind kind;
};

constexpr ItemKind ItemKinds[] = {
    {0x80, "button", Kind::Button},       {0x81, "edit", Kind::Edit},      {0x82, "static", Kind::Static},
    {0x84, "scrollbar", Kind::ScrollBar}, {0x85, "combobox", Kind::Combo}, {0, "msctls_progress32", Kind::Progress},
};

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
    control.imageId = item.imageId;
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

// A child of `parent`, or a window of its own if that is null, then placed against its owner's client area.
Window& makeDialog(const DialogTemplate& header, Window* parent, Window* owner, DLGPROC procedure) {
    Window& dialog = makeWindow(Kind::Dialog, parent);
    dialog.owner = owner ? owner->handle : nullptr;
    dialog.style = header.style;
    dialog.exStyle = header.exStyle;
    dialog.dialogProcedure = procedure;
    dialog.background = QColor(FaceColour);
    dialog.font = uiFont(header.points);
    dialog.baseUnits = dialogBaseUnits(dialog.font, header.face);
    dialog.text = encode(header.title, controlCodePage());
    QRect place = toPixels(header.units, dialog.baseUnits);
    if (parent) {
        dialog.outer = new Canvas(parent->client, dialog.handle);
        dialog.client = dialog.outer;
        dialog.place = place;
        dialog.outer->setGeometry(place);
    } else {
        dialog.outer = makeDialogWidget(dialog);
        dialog.client = dialog.outer;
        place.setSize(outerSizeFor(place.size()));
        dialog.place = owner ? place.translated(owner->place.topLeft()) : place;
        placeFrame(dialog);
        applyText(dialog);
    }
    resizeSurface(dialog);
    return dialog;
}

// Makes the dialog with its controls and runs WM_INITDIALOG; null if there is no such template.
HWND openDialog(LPCSTR name, Window* parent, Window* owner, DLGPROC procedure, LPARAM parameter) {
    const std::span<const BYTE> data = findResource(DialogResource, resourceId(name));
    if (data.empty()) {
        return nullptr;
    }
    ResourceReader in(data);
    const DialogTemplate header = readDialogTemplate(in);
    if (((header.style & WS_CHILD) != 0) != (parent != nullptr)) {
        reportUnsupported(
            "dialog", parent ? QStringLiteral("modeless as a window of its own") : QStringLiteral("modal as a child"));
    }
    Window& dialog = makeDialog(header, parent, owner, procedure);
    const HWND handle = dialog.handle;
    for (unsigned index = 0; index < header.count; ++index) {
        makeControl(dialog, readTemplateItem(in, header.extended));
    }
    dialog.modal = !parent;
    const bool wantsFocus = callProcedure(dialog, WM_INITDIALOG, 0, parameter) != 0;
    Window* made = find(handle);
    if (!made || made->ended || !((header.style & WS_VISIBLE) || !parent)) {
        return made ? handle : nullptr;
    }
    ShowWindow(handle, SW_SHOW);
    made = find(handle);
    if (made && wantsFocus) {
        if (const HWND first = firstTabStop(*made)) {
            SetFocus(first);
        }
    }
    return handle;
}

void runModal(HWND handle) {
    MSG message;
    for (const Window* dialog = find(handle); dialog && !dialog->ended; dialog = find(handle)) {
        if (!GetMessageA(&message, nullptr, 0, 0)) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        if (!dialogTakesKey(handle, message)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
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
    const Window* still = find(handle);
    if (!taken && still && still->modal && message == WM_CLOSE) {
        PostMessageA(handle, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
                     reinterpret_cast<LPARAM>(GetDlgItem(handle, IDCANCEL)));
        return 0;
    }
    return taken ? 0 : DefWindowProcA(handle, message, wParam, lParam);
}

LRESULT controlMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (window.kind) {
        case Kind::Button:
            return buttonMessage(window, message, wParam, lParam);
        case Kind::Combo:
            return comboMessage(window, message, wParam, lParam);
        case Kind::Edit:
            return editMessage(window, message, wParam, lParam);
        case Kind::ScrollBar:
            return scrollBarMessage(window, message, wParam, lParam);
        case Kind::Progress:
            return progressMessage(window, message, wParam, lParam);
        default:
            return DefWindowProcA(window.handle, message, wParam, lParam);
    }
}

}  // namespace layer

using namespace layer;

HWND CreateDialogParamA(HINSTANCE, LPCSTR name, HWND parentHandle, DLGPROC procedure, LPARAM parameter) {
    Window* parent = find(parentHandle);
    return parent ? openDialog(name, parent, nullptr, procedure, parameter) : nullptr;
}

INT_PTR DialogBoxParamA(HINSTANCE, LPCSTR name, HWND ownerHandle, DLGPROC procedure, LPARAM parameter) {
    Window* asked = find(ownerHandle);
    const HWND owner = asked ? rootOf(*asked).handle : nullptr;
    Window* ownerWindow = find(owner);
    const HWND handle = openDialog(name, nullptr, ownerWindow, procedure, parameter);
    if (!handle) {
        return -1;
    }
    const bool ownerWasEnabled = IsWindowEnabled(owner);
    EnableWindow(owner, FALSE);
    runModal(handle);
    const Window* dialog = find(handle);
    const INT_PTR result = dialog && dialog->ended ? dialog->result : 0;
    if (ownerWasEnabled) {
        EnableWindow(owner, TRUE);
    }
    DestroyWindow(handle);
    if (find(owner)) {
        activate(owner);
    }
    return result;
}

BOOL EndDialog(HWND handle, INT_PTR result) {
    Window* dialog = find(handle);
    if (!dialog || !dialog->modal) {
        return FALSE;
    }
    dialog->ended = true;
    dialog->result = result;
    ShowWindow(handle, SW_HIDE);
    // The end may come from within the desktop's own events; the dialog's loop must notice it all the same.
    PostMessageA(handle, WM_NULL, 0, 0);
    return TRUE;
}
