#include "scope/ScopeDrawing.h"

#include <algorithm>
#include <array>

#include "drawing/Canvas.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Codecs.h"
#include "model/Text.h"
#include "resources/Ids.h"
#include "scope/OscilloscopePage.h"
#include "shell/AppState.h"

namespace {

constexpr ShapeRow Panel(int top, int bottom) {
    return {ShapeKind::Box, Colour::Black, Colour::White, 198, top, 600, bottom};
}
constexpr std::array Panels{Panel(40, 140), Panel(150, 250), Panel(260, 360), Panel(370, 470)};

// The inner height of a panel, which the sweep touches.
struct Band {
    int top;
    int bottom;
};
constexpr std::array<Band, Panels.size()> Bands = {{{43, 137}, {153, 247}, {263, 357}, {373, 467}}};

// The labels beside the panels; those without a colour of their own are black.
struct ScopeLabel {
    int line;
    int x;
    int y;
    Colour colour;
};
constexpr ScopeLabel Labels[] = {
    {143, 50, 60, Colour::Olive},      {145, 50, 190, Colour::Black},  {148, 50, 320, Colour::Black},
    {152, 710, 190, Colour::Black},    {153, 710, 300, Colour::Black}, {144, 50, 170, Colour::Green},
    {146, 50, 210, Colour::DarkGreen}, {147, 50, 300, Colour::Blue},   {149, 50, 400, Colour::Navy},
    {150, 130, 490, Colour::Black},
};
constexpr ScopeLabel LargeLabel = {151, 700, 70, Colour::Black};
constexpr int BoxLine = 142;

// By LambdaSensorType, as long as the longest, so that one covers another. A type past them has no text.
constexpr std::array LambdaTexts{"0 - 1 V       ", "0 - 5 V  '-'  ", "0 - 5 V  '+'  ",
                                 "5 - 0 V  '-'  ", "5 - 0 V  '+'  ", "0,8 - 1,6 V   "};
// The line of each TPSType, as the Configuration page's list has them; the last one holds for all above.
constexpr std::array TpsLines{84, 85, 86, 86, 86, 86, 87, 88, 89};

constexpr int AxisMarks = 9;
constexpr int AxisStep = 46;
constexpr int AxisUnit = 2;

void DrawSensorTexts(Canvas& canvas) {
    const auto sensor = static_cast<size_t>(LambdaSensorType());
    if (sensor < LambdaTexts.size()) {
        DrawTextAt(canvas, 50, 90, LambdaTexts[sensor]);
    }
    const auto tps = std::min(static_cast<size_t>(TPSType()), TpsLines.size() - 1);
    DrawTextAt(canvas, 50, 420, LangTable[static_cast<size_t>(TpsLines[tps])].data());
}

void DrawLabel(Canvas& canvas, HFONT font, const ScopeLabel& label) {
    UseText(canvas, font, label.colour, Colour::DialogFace);
    DrawTextAt(canvas, label.x, label.y, LangTable[static_cast<size_t>(label.line)].data());
}

void DrawTimeAxis(Canvas& canvas) {
    std::array<char, 3> number{};
    UseText(canvas, SmallFont, Colour::Black, Colour::DialogFace);
    for (int mark = 0; mark < AxisMarks; ++mark) {
        DrawTextAt(canvas, 203 + AxisStep * mark, 470, ".");
        FormatText(number, "%02d", AxisUnit * mark);
        DrawTextAt(canvas, 196 + AxisStep * mark, 490, number.data());
    }
}

void SetUpControls() {
    const HWND bar = GetDlgItem(PageWindow, IDC_SCOPE_CURSOR_BAR);
    SendDlgItemMessageA(PageWindow, IDC_SCOPE_CURSOR, BM_SETCHECK, CursorMode != 0 ? BST_CHECKED : BST_UNCHECKED, 0);
    ShowWindow(bar, CursorMode != 0 ? SW_SHOW : SW_HIDE);
    SetDlgItemTextA(PageWindow, IDC_SCOPE_CURSOR, LangTable[BoxLine].data());
    SetScrollRange(bar, SB_CTL, LowestCursor, HighestCursor, TRUE);
}

// A rectangle in every band, from one pixel column to before another.
void FillBands(Canvas& canvas, Colour colour, int left, int right) {
    UseShapeColours(canvas, ColourPen(colour), Colour::White);
    for (const Band& band : Bands) {
        Rectangle(canvas.shapes, left, DesignY(band.top), right, DesignY(band.bottom));
    }
}

void DrawTrace(Canvas& canvas, size_t trace, const POINT* points, int count) {
    const ScopeTraceRow& row = ScopeTraces[trace];
    UseShapeColours(canvas, ColourPen(row.colour, row.width), Colour::White);
    Polyline(canvas.shapes, points, count);
}

// The sweep's marker stands two columns ahead of the trace.
void DrawMarker(Canvas& canvas, unsigned column) {
    const int left = DesignX(static_cast<int>(column) + 2);
    FillBands(canvas, Colour::Red, left, left + 1);
}

int CursorX(unsigned index) {
    return DesignX(static_cast<int>(index) + StoredX);
}

// What the cursor covered, and one column to each side.
void RepairTraces(Canvas& canvas, unsigned index) {
    for (const ScopeTrace trace : HistoryOrder) {
        const auto& points = ScopePoints[trace];
        const std::array around{points[index == 0 ? 0 : index - 1], points[index], points[index + 1]};
        DrawTrace(canvas, trace, around.data(), static_cast<int>(around.size()));
    }
}

// A read-out's characters are counted, which cuts its text; sizes are one more.
constexpr int ReadoutX = 630;
constexpr int LambdaY = 70;
constexpr int AttY = 180;
constexpr int SpeedY = 290;
constexpr int TpsY = 400;
constexpr int TpsBottom = 436;
constexpr int TpsUnitX = 700;
constexpr double SupplyVolts = 5.0;
using ThreeCharacters = std::array<char, 4>;
using FourCharacters = std::array<char, 5>;

void DrawVolts(Canvas& canvas, int y, double volts) {
    FourCharacters text{};
    RealText(text, volts);
    UseText(canvas, LargeFont, Colour::Black, Colour::White);
    DrawTextAt(canvas, ReadoutX, y, text.data());
}

void DrawLambda(Canvas& canvas, const ScopeSample& sample) {
    const int type = LambdaSensorType();
    const bool falling = type == LambdaSensor::Volts5To0Lean || type == LambdaSensor::Volts5To0Rich;
    const double volts = SignalVolts(static_cast<BYTE>(sample.Lambda));
    DrawVolts(canvas, LambdaY, falling ? SupplyVolts - volts : volts);
}

void DrawAtt(Canvas& canvas, const ScopeSample& sample) {
    ThreeCharacters text{};
    FormatText(text, "%03u", sample.Att);
    DrawTextAt(canvas, ReadoutX, AttY, text.data());
}

void DrawSpeed(Canvas& canvas, const ScopeSample& sample, ScopeMoment moment) {
    constexpr unsigned StoppedBits = 0xFF00;
    const bool stopped = moment == ScopeMoment::Stored && (sample.Rpm & StoppedBits) == StoppedBits;
    EngineRPM = stopped ? 0 : sample.Rpm;
    FourCharacters text{};
    FormatText(text, "%04u", EngineRPM);
    DrawTextAt(canvas, ReadoutX, SpeedY, text.data());
}

void DrawTpsVolts(Canvas& canvas, double volts) {
    UseText(canvas, LargeFont, Colour::Black, Colour::DialogFace);
    DrawTextAt(canvas, TpsUnitX, TpsY, "V");
    DrawVolts(canvas, TpsY, volts);
}

// Shorter than the voltages, so what may have stood behind it is covered.
void DrawTpsSwitch(Canvas& canvas, const ScopeSample& sample, ScopeMoment moment) {
    const bool now = moment == ScopeMoment::Now;
    UseShapeColours(canvas, ColourPen(Colour::White), Colour::White);
    Rectangle(canvas.shapes, DesignX(now ? 676 : 686), DesignY(TpsY), DesignX(now ? 698 : 695),
              now ? RoundHalfDown(TpsBottom * ScaleY) : DesignY(TpsBottom));
    DrawTextAt(canvas, ReadoutX, TpsY, sample.TpsSwitch != 0 ? "OFF" : " ON");
}

void DrawTps(Canvas& canvas, const ScopeSample& sample, ScopeMoment moment) {
    const double volts = SignalVolts(static_cast<BYTE>(sample.Tps));
    switch (sample.LambdaType & LambdaTypeField::TpsMask) {
        case 1:
            DrawTpsVolts(canvas, SupplyVolts - volts);
            return;
        case 2:
        case 3:
            DrawTextAt(canvas, ReadoutX, TpsY, "_.__");
            return;
        case 6:
        case 7:
            DrawTpsSwitch(canvas, sample, moment);
            return;
        default:
            DrawTpsVolts(canvas, volts);
            return;
    }
}

struct FuelBox {
    Colour colour;
    int line;
    int x;
};
constexpr FuelBox PetrolBox = {Colour::Green, 14, 655};
constexpr FuelBox GasBox = {Colour::Cyan, 15, 675};

void DrawFuel(Canvas& canvas, const ScopeSample& sample) {
    const FuelBox& box = (sample.Status & GasStateBit::OnGas) != 0 ? GasBox : PetrolBox;
    DrawShape(canvas, {ShapeKind::Box, Colour::Black, box.colour, 630, 465, 755, 505});
    UseText(canvas, SmallFont, Colour::Black, box.colour);
    DrawTextAt(canvas, box.x, 475, LangTable[static_cast<size_t>(box.line)].data());
}

}  // namespace

void DrawScopeFrame() {
    SetUpControls();
    ReadParamBlockA();
    Canvas canvas = OpenCanvas(PageWindow);
    DrawShapes(canvas, Panels);
    UseText(canvas, SmallFont, Colour::Black, Colour::DialogFace);
    DrawSensorTexts(canvas);
    DrawLabel(canvas, LargeFont, LargeLabel);
    for (const ScopeLabel& label : Labels) {
        DrawLabel(canvas, SmallFont, label);
    }
    DrawTimeAxis(canvas);
    CloseCanvas(canvas);
}

void DrawScopeTraces() {
    Canvas canvas = OpenCanvas(PageWindow);
    DrawShapes(canvas, Panels);
    for (const ScopeTrace trace : HistoryOrder) {
        auto& points = ScopePoints[trace];
        // No line comes from the columns that no sweep has stored.
        points[0] = points[1] = points[2] = points[3];
        DrawTrace(canvas, trace, points.data(), static_cast<int>(HighestCursor + 1));
    }
    CloseCanvas(canvas);
}

// In the smallest size the wipes begin a little later, since its columns are narrower than a pixel.
void DrawSweptColumn(const SweptColumn& swept) {
    const int late = SizeProfile == 1 ? 1 : 0;
    const int column = static_cast<int>(swept.column);
    Canvas canvas = OpenCanvas(PageWindow);
    if (swept.column > FirstColumn + 1) {
        FillBands(canvas, Colour::White, DesignX(199 - late) + late, DesignX(204));
    }
    DrawMarker(canvas, swept.column);
    FillBands(canvas, Colour::White, DesignX(column + late), DesignX(column + 2));
    for (size_t trace = 0; trace < ScopeTraceCount; ++trace) {
        DrawTrace(canvas, trace, ScopeSegment[trace].data(), static_cast<int>(ScopeSegment[trace].size()));
    }
    if (swept.wraps) {
        FillBands(canvas, Colour::White, DesignX(598), DesignX(599));
        FillBands(canvas, Colour::White, DesignX(199) + late, DesignX(203));
    }
    CloseCanvas(canvas);
}

void DrawScopeCursor() {
    Canvas canvas = OpenCanvas(PageWindow);
    FillBands(canvas, Colour::Black, CursorX(CursorPos), CursorX(CursorPos) + 1);
    if (CursorPrevPos != CursorPos) {
        FillBands(canvas, Colour::White, CursorX(CursorPrevPos), CursorX(CursorPrevPos) + 1);
        RepairTraces(canvas, CursorPrevPos);
        CursorPrevPos = CursorPos;
    }
    DrawMarker(canvas, SweepPos);
    CloseCanvas(canvas);
}

void ScopeReadouts(const ScopeSample& sample, ScopeMoment moment) {
    Canvas canvas = OpenCanvas(PageWindow);
    DrawLambda(canvas, sample);
    DrawAtt(canvas, sample);
    DrawSpeed(canvas, sample, moment);
    DrawTps(canvas, sample, moment);
    DrawFuel(canvas, sample);
    CloseCanvas(canvas);
}
