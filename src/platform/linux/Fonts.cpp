// Fonts by cell height and average width, and text drawn with them glyph by glyph on whole pixels.
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetrics>
#include <QGlyphRun>
#include <algorithm>
#include <cmath>

#include "platform/linux/Context.h"

namespace layer {

namespace {

const QString Face = QStringLiteral("Liberation Sans");
// Of Arial, in parts of the em: the cell above and below the base line, and the average character. Liberation Sans has
// the same cell and the same characters, but states another average.
constexpr double CellAscent = 0.905;
constexpr double CellDescent = 0.212;
constexpr double AverageWidth = 0.4414;
constexpr double AverageBoldWidth = 0.48;
// The weight from which the bold face is the nearer one.
constexpr int BoldFrom = 550;

// Cells of the faces that most dialog templates name, MS Sans Serif and its kin of 8, 10, 12, 14 and 18 points, which
// are a little higher than ours; those templates were laid out for them. Arial's cells are ours.
const QString OwnFace = QStringLiteral("Arial");
struct DialogCell {
    int em;
    int height;
};
constexpr DialogCell DialogCells[] = {{11, 13}, {13, 16}, {16, 20}, {19, 24}, {24, 29}};

QFont scaledFont(double em, double stretch, bool bold) {
    QFont font(Face);
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(em))));
    font.setWeight(bold ? QFont::Bold : QFont::Normal);
    font.setStretch(static_cast<int>(std::lround(stretch * 100)));
    font.setHintingPreference(QFont::PreferVerticalHinting);
    font.setStyleStrategy(
        static_cast<QFont::StyleStrategy>(QFont::PreferAntialias | QFont::NoSubpixelAntialias | QFont::NoFontMerging));
    return font;
}

std::shared_ptr<const DrawnFont> makeDrawnFont(const LOGFONTA& description) {
    auto drawn = std::make_shared<DrawnFont>();
    const double em = description.lfHeight > 0 ? description.lfHeight / (CellAscent + CellDescent)
                                               : std::abs(static_cast<double>(description.lfHeight));
    const bool bold = description.lfWeight >= BoldFrom;
    const double average = std::round(em) * (bold ? AverageBoldWidth : AverageWidth);
    const double stretch = description.lfWidth > 0 ? description.lfWidth / average : 1.0;
    drawn->face = QRawFont::fromFont(scaledFont(em, stretch, bold));
    drawn->height = description.lfHeight > 0 ? description.lfHeight
                                             : static_cast<int>(std::lround(em * (CellAscent + CellDescent)));
    drawn->ascent = static_cast<int>(std::lround(drawn->height * CellAscent / (CellAscent + CellDescent)));
    const auto& table = codePageTable(description.lfCharSet == RUSSIAN_CHARSET ? 1251 : 1250);
    const QString letters(reinterpret_cast<const QChar*>(table.data()), static_cast<qsizetype>(table.size()));
    const QList<quint32> glyphs = drawn->face.glyphIndexesForString(letters);
    std::copy_n(glyphs.begin(), std::min(glyphs.size(), letters.size()), drawn->glyphs.begin());
    drawn->advances.fill(-1);
    return drawn;
}

LOGFONTA systemFont() {
    LOGFONTA description{};
    description.lfHeight = 16;
    description.lfWeight = 400;
    description.lfCharSet = EASTEUROPE_CHARSET;
    return description;
}

const DrawnFont& fontOf(const DeviceContext& context) {
    static const std::shared_ptr<const DrawnFont> fallback = makeDrawnFont(systemFont());
    GdiObject* object = findObject(context.font);
    return object ? drawnFont(*object) : *fallback;
}

int advanceOf(const DrawnFont& font, char letter) {
    const auto byte = static_cast<BYTE>(letter);
    int& known = font.advances[byte];
    if (known < 0) {
        const QList<QPointF> advances = font.face.advancesForGlyphIndexes({font.glyphs[byte]});
        known = advances.isEmpty() ? 0 : static_cast<int>(std::lround(advances.first().x()));
    }
    return known;
}

int textWidth(const DrawnFont& font, std::span<const char> text) {
    int width = 0;
    for (const char letter : text) {
        width += advanceOf(font, letter);
    }
    return width;
}

// Each letter at a whole pixel of its own.
QGlyphRun glyphRun(const DrawnFont& font, std::span<const char> letters, QPoint corner) {
    QList<quint32> glyphs;
    QList<QPointF> positions;
    glyphs.reserve(static_cast<qsizetype>(letters.size()));
    positions.reserve(static_cast<qsizetype>(letters.size()));
    QPoint at = corner + QPoint(0, font.ascent);
    for (const char letter : letters) {
        glyphs.append(font.glyphs[static_cast<BYTE>(letter)]);
        positions.append(at);
        at.rx() += advanceOf(font, letter);
    }
    QGlyphRun run;
    run.setRawFont(font.face);
    run.setGlyphIndexes(glyphs);
    run.setPositions(positions);
    return run;
}

}  // namespace

const DrawnFont& drawnFont(GdiObject& object) {
    if (!object.font) {
        object.font = makeDrawnFont(object.description);
    }
    return *object.font;
}

QFont uiFont(int points) {
    QFont font = scaledFont(points * 96.0 / 72.0, 1.0, false);
    font.setHintingPreference(QFont::PreferDefaultHinting);
    return font;
}

QSize dialogBaseUnits(const QFont& font, const QString& face) {
    const QFontMetrics metrics(font);
    const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    const int average = (metrics.horizontalAdvance(letters) / 26 + 1) / 2;
    const auto* known = std::ranges::find(DialogCells, font.pixelSize(), &DialogCell::em);
    const int height = face != OwnFace && known != std::end(DialogCells)
                           ? known->height
                           : static_cast<int>(std::ceil(font.pixelSize() * (CellAscent + CellDescent)));
    return {average, height};
}

}  // namespace layer

using namespace layer;

HFONT CreateFontIndirectA(const LOGFONTA* description) {
    GdiObject font;
    font.type = GdiObject::Type::Font;
    font.description = *description;
    return static_cast<HFONT>(addObject(std::move(font)));
}

COLORREF SetTextColor(HDC dc, COLORREF colour) {
    DeviceContext* context = findContext(dc);
    return context ? std::exchange(context->textColour, colour) : CLR_INVALID;
}

COLORREF SetBkColor(HDC dc, COLORREF colour) {
    DeviceContext* context = findContext(dc);
    return context ? std::exchange(context->backColour, colour) : CLR_INVALID;
}

BOOL GetTextExtentPoint32A(HDC dc, LPCSTR text, int count, SIZE* size) {
    const DeviceContext* context = findContext(dc);
    if (!context) {
        return FALSE;
    }
    const DrawnFont& font = fontOf(*context);
    *size = {textWidth(font, {text, static_cast<size_t>(count)}), font.height};
    return TRUE;
}

BOOL ExtTextOutA(HDC dc, int x, int y, UINT options, const RECT* rect, LPCSTR text, UINT count, const INT* spacing) {
    if (spacing || (options & ~ETO_OPAQUE)) {
        reportUnsupported("text option", QString::number(options));
    }
    DeviceContext* context = findContext(dc);
    if (!context) {
        return FALSE;
    }
    const DrawnFont& font = fontOf(*context);
    const std::span<const char> letters(text, count);
    const QRect cells(x, y, textWidth(font, letters), font.height);
    const QRect area = rect && (options & ETO_OPAQUE)
                           ? QRect(rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top)
                           : QRect();
    Drawing drawing{Drawing::Kind::Text,
                    cells,
                    area,
                    context->textColour,
                    context->backColour,
                    reinterpret_cast<std::uintptr_t>(context->font),
                    QByteArray(text, static_cast<qsizetype>(count))};
    QPainter* painter = drawsAnew(*context, drawing) ? painterOf(*context) : nullptr;
    if (!painter) {
        return TRUE;
    }
    // The background fills the cells and the rectangle, if one is given.
    painter->fillRect(cells, toColour(context->backColour));
    painter->fillRect(area, toColour(context->backColour));
    // A smoothed edge that reached out of the cells to the side would stay when another text takes their place.
    painter->save();
    painter->setClipRect(cells.adjusted(0, -cells.height(), 0, cells.height()) | area, Qt::IntersectClip);
    painter->setPen(toColour(context->textColour));
    painter->drawGlyphRun(QPointF(), glyphRun(font, letters, QPoint(x, y)));
    painter->restore();
    markDrawn(*context, cells | area, std::move(drawing));
    return TRUE;
}
