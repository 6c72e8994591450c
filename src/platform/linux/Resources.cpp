// The compiled resource script, embedded as it is, and the pictures, strings and accelerators in it.
#include <QPixmap>
#include <QResource>
#include <map>
#include <unordered_map>

#include "platform/linux/Context.h"
#include "platform/linux/ResourceReader.h"

static void initResources() {
    Q_INIT_RESOURCE(resources);
}

namespace layer {

namespace {

constexpr unsigned StringsPerBlock = 16;

using ResourceKey = std::pair<unsigned, unsigned>;

// The bytes lie in the program, not compressed, so that a page of them is only read when it is used.
std::span<const BYTE> resourceFile() {
    initResources();
    const QResource file(QStringLiteral(":/Tarvex.res"));
    if (!file.isValid() || file.compressionAlgorithm() != QResource::NoCompression) {
        reportUnsupported("resources", file.fileName());
    }
    return {file.data(), static_cast<size_t>(file.size())};
}

unsigned readId(ResourceReader& in) {
    if (in.peekWord() == 0xFFFF) {
        in.word();
        return in.word();
    }
    in.text();
    return 0;
}

// An entry is: its data's size, its header's size, type, name, padding, 16 bytes that do not matter here, the data,
// padding. All resources are named by number.
const std::map<ResourceKey, std::span<const BYTE>>& allResources() {
    static const auto table = [] {
        std::map<ResourceKey, std::span<const BYTE>> found;
        ResourceReader in(resourceFile());
        while (!in.atEnd()) {
            const size_t start = in.offset();
            const DWORD dataSize = in.dword();
            const DWORD headerSize = in.dword();
            const unsigned type = readId(in);
            const unsigned id = readId(in);
            in.skip(start + headerSize - in.offset());
            found[{type, id}] = in.bytes(dataSize);
            in.align(4);
        }
        return found;
    }();
    return table;
}

QImage readBitmap(unsigned id) {
    const std::span<const BYTE> data = findResource(BitmapResource, id);
    if (data.size() < 40) {
        return {};
    }
    // A bitmap resource is a bitmap file without its first 14 bytes, which tell where the pixels begin.
    ResourceReader in(data);
    const DWORD headerSize = in.dword();
    in.skip(10);
    const unsigned depth = in.word();
    in.skip(16);
    const DWORD coloursUsed = in.dword();
    const DWORD colours = depth > 8 ? 0 : coloursUsed ? coloursUsed : 1u << depth;
    const DWORD pixels = 14 + headerSize + 4 * colours;
    const auto size = static_cast<DWORD>(data.size() + 14);
    QByteArray file("BM");
    for (const DWORD field : {size, DWORD{0}, pixels}) {
        for (int shift = 0; shift < 32; shift += 8) {
            file.append(static_cast<char>(field >> shift & 0xFF));
        }
    }
    file.append(reinterpret_cast<const char*>(data.data()), static_cast<qsizetype>(data.size()));
    return QImage::fromData(file, "BMP");
}

}  // namespace

std::span<const BYTE> findResource(unsigned type, unsigned id) {
    const auto found = allResources().find({type, id});
    return found == allResources().end() ? std::span<const BYTE>() : found->second;
}

unsigned resourceId(LPCSTR name) {
    const auto id = reinterpret_cast<std::uintptr_t>(name);
    if (id > 0xFFFF) {
        reportUnsupported("resource name", QString::fromLatin1(name));
    }
    return static_cast<unsigned>(id);
}

// The group lists the pictures of one icon; each is one resource of its own, a bitmap or a PNG.
QIcon iconOf(HICON icon) {
    QIcon result;
    const auto group = findResource(GroupIconResource, static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(icon)));
    ResourceReader in(group);
    in.skip(4);
    const unsigned count = in.word();
    for (unsigned index = 0; index < count; ++index) {
        const std::span<const BYTE> entry = in.bytes(12);
        const std::span<const BYTE> picture = findResource(IconResource, in.word());
        QByteArray file = QByteArray::fromHex("000001000100");
        file.append(reinterpret_cast<const char*>(entry.data()), static_cast<qsizetype>(entry.size()));
        file.append(QByteArray::fromHex("16000000"));
        file.append(reinterpret_cast<const char*>(picture.data()), static_cast<qsizetype>(picture.size()));
        result.addPixmap(QPixmap::fromImage(QImage::fromData(file, "ICO")));
    }
    return result;
}

}  // namespace layer

using namespace layer;

HBITMAP LoadBitmapA(HINSTANCE, LPCSTR name) {
    GdiObject bitmap;
    bitmap.type = GdiObject::Type::Bitmap;
    bitmap.image = readBitmap(resourceId(name));
    return bitmap.image.isNull() ? nullptr : static_cast<HBITMAP>(addObject(std::move(bitmap)));
}

HICON LoadIconA(HINSTANCE, LPCSTR name) {
    const unsigned id = resourceId(name);
    return findResource(GroupIconResource, id).empty() ? nullptr
                                                       : reinterpret_cast<HICON>(static_cast<std::uintptr_t>(id));
}

// Strings stand in blocks of 16, each a count of letters and the letters.
int LoadStringA(HINSTANCE, UINT id, LPSTR buffer, int size) {
    if (size <= 0) {
        return 0;
    }
    ResourceReader in(findResource(StringResource, id / StringsPerBlock + 1));
    QString text;
    for (unsigned index = 0; index <= id % StringsPerBlock; ++index) {
        text.clear();
        for (unsigned left = in.word(); left > 0; --left) {
            text.append(QChar(in.word()));
        }
    }
    const QByteArray bytes = encode(text, controlCodePage()).left(size - 1);
    std::copy_n(bytes.constData(), bytes.size() + 1, buffer);
    return static_cast<int>(bytes.size());
}

HACCEL LoadAcceleratorsA(HINSTANCE, LPCSTR name) {
    const unsigned id = resourceId(name);
    return findResource(AcceleratorResource, id).empty() ? nullptr
                                                         : reinterpret_cast<HACCEL>(static_cast<std::uintptr_t>(id));
}

// A row is: flags, the key or character, the command, padding. Characters match WM_CHAR, or WM_SYSCHAR with Alt.
int TranslateAcceleratorA(HWND window, HACCEL table, MSG* message) {
    ResourceReader in(
        findResource(AcceleratorResource, static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(table))));
    const bool alt = message->lParam & (1 << 29);
    while (!in.atEnd()) {
        const auto flags = static_cast<BYTE>(in.word());
        const WORD key = in.word();
        const WORD command = in.word();
        in.word();
        const bool virtualKey = flags & FVIRTKEY;
        const bool down = message->message == WM_KEYDOWN || message->message == WM_SYSKEYDOWN;
        const bool letter = message->message == WM_CHAR || message->message == WM_SYSCHAR;
        if ((virtualKey ? down : letter) && message->wParam == key && alt == ((flags & FALT) != 0)) {
            SendMessageA(window, WM_COMMAND, MAKEWPARAM(command, 1), 0);
            return 1;
        }
    }
    return 0;
}
