#include "platform/linux/DialogTemplate.h"

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr DWORD DialogSetsFont = 0x40;
constexpr WORD ExtendedSignature = 0xFFFF;
constexpr WORD AtomMark = 0xFFFF;

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

}  // namespace

DialogTemplate readDialogTemplate(ResourceReader& in) {
    DialogTemplate header;
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
        header.face = in.text();
    }
    return header;
}

TemplateItem readTemplateItem(ResourceReader& in, bool extended) {
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
    item.text = readTextOrId(in, &item.imageId);
    in.skip(in.word());
    return item;
}

}  // namespace layer
