#include "readings/ReadingsDrawing.h"

#include <array>
#include <cstddef>
#include <cstring>

#include "model/Blocks.h"
#include "readings/GaugeTables.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

unsigned NeedleIndex = 0;

namespace {

constexpr std::array FrameShapes{
    ShapeRow{ShapeKind::Box, Colour::Grey, Colour::Grey, 0, 0, 800, 570},
    // The panels of Lambda, throttle, actuator, status, temperature and fuel, and the gauge's.
    ShapeRow{ShapeKind::RoundBox, Colour::Black, Colour::Silver, 20, 20, 450, 110},
    ShapeRow{ShapeKind::RoundBox, Colour::Black, Colour::Silver, 20, 130, 450, 220},
    ShapeRow{ShapeKind::RoundBox, Colour::Black, Colour::Silver, 20, 240, 450, 370},
    ShapeRow{ShapeKind::RoundBox, Colour::Black, Colour::Silver, 20, 390, 450, 520},
    ShapeRow{ShapeKind::RoundBox, Colour::Black, Colour::Silver, 470, 340, 780, 430},
    ShapeRow{ShapeKind::RoundBox, Colour::Black, Colour::Silver, 470, 450, 780, 520},
    ShapeRow{ShapeKind::RoundBox, Colour::Black, Colour::Black, 470, 20, 780, 320},
    // What stands in the panels: the frames of the Lambda bar, the segments, the actuator and its bar, the status box.
    ShapeRow{ShapeKind::Box, Colour::Black, Colour::Silver, 135, 45, 440, 80},
    ShapeRow{ShapeKind::Box, Colour::Black, Colour::Silver, 135, 155, 440, 190},
    ShapeRow{ShapeKind::Box, Colour::Black, Colour::Silver, 135, 265, 440, 315},
    ShapeRow{ShapeKind::Box, Colour::Grey, Colour::Silver, 159, 268, 419, 292},
    ShapeRow{ShapeKind::Box, Colour::Black, Colour::White, 29, 399, 442, 511},
};

// With the degree sign, byte 0xB0 in both code pages.
constexpr const char* DegreesText = "\260C";

constexpr std::array SmallLabels{
    LabelRow{0, nullptr, 170, 25},
    LabelRow{3, nullptr, 270, 135},
    LabelRow{5, nullptr, 165, 245},
    LabelRow{4, nullptr, 135, 196},
    LabelRow{LiteralText, "V", 345, 196},
    LabelRow{LiteralText, "LPG ON:", 630, 385},
    LabelRow{LiteralText, DegreesText, 730, 385},
    LabelRow{11, nullptr, 520, 345},
    LabelRow{1, nullptr, 150, 86},
    LabelRow{2, nullptr, 360, 86},
};

constexpr std::array LargeLabels{
    LabelRow{LiteralText, "V", 110, 45},
    LabelRow{LiteralText, "V", 110, 155},
    LabelRow{LiteralText, DegreesText, 550, 375},
};

// The throttle segments from the left, from the closed throttle to the open one.
constexpr std::array SegmentColours{Colour::Cyan, Colour::DarkGreen, Colour::Yellow, Colour::Red};

// Where the switch state of a throttle sensor is wiped before it is drawn: it is shorter than a voltage.
struct SwitchClearing {
    int tpsType;
    int right;
};
constexpr std::array SwitchClearings{
    SwitchClearing{TpsSensor::Switch6, 105},
    SwitchClearing{TpsSensor::Switch7, 110},
};

// The strips of the actuator panel.
struct RangeStrip {
    Colour colour;
    int top;
    int bottom;
};
constexpr RangeStrip IdleStrip{Colour::Cyan, 300, 305};
constexpr RangeStrip DriveStrip{Colour::Red, 307, 312};

constexpr int StatusLeft = 40;
constexpr int StatusRight = 440;
constexpr int StatusTop = 385;
constexpr int StatusRowHeight = 20;
constexpr unsigned NoticeRow = StatusLineCount;

struct FuelRow {
    Colour colour;
    int line;
    int x;
};
constexpr FuelRow PetrolRow{Colour::Green, 14, 515};
constexpr FuelRow GasRow{Colour::Cyan, 15, 535};

struct ScaleDigit {
    const char* text;
    int x;
    int y;
};
constexpr std::array ScaleDigits{
    ScaleDigit{"0", 540, 205}, ScaleDigit{"1", 525, 155}, ScaleDigit{"2", 540, 110},
    ScaleDigit{"3", 570, 80},  ScaleDigit{"4", 617, 65},  ScaleDigit{"5", 664, 80},
    ScaleDigit{"6", 699, 110}, ScaleDigit{"7", 714, 155}, ScaleDigit{"8", 699, 205},
};
static_assert(ScaleDigits.size() == LongTicks);

const char* LineText(int line) {
    return line == BlankLine ? " " : LangTable[static_cast<std::size_t>(line)].data();
}

// Segments lie in pixels of the profile and take no scale.
void DrawSegment(Canvas& canvas, std::size_t i, Colour fill) {
    UseShapeColours(canvas, ColourPen(SegmentColours[i]), fill);
    Rectangle(canvas.shapes, PanelX[i] + PanelLeft, PanelTop, PanelX[i] + PanelRight, PanelBottom);
}

// lit is 1 to 4, or 0 for none.
void DrawSegments(Canvas& canvas, int lit) {
    const std::size_t litIndex = lit == 0 ? SegmentColours.size() : static_cast<std::size_t>(lit - 1);
    if (litIndex < SegmentColours.size()) {
        DrawSegment(canvas, litIndex, SegmentColours[litIndex]);
    }
    for (std::size_t i = 0; i < SegmentColours.size(); ++i) {
        if (i != litIndex) {
            DrawSegment(canvas, i, Colour::Silver);
        }
    }
}

// The gauge follows ScaleX on both axes, so that it stays round in every profile. Its table space begins here.
constexpr int GaugeLeft = 495;
constexpr int GaugeTop = 40;

int GaugeX(int tableX) {
    return static_cast<int>(GaugeLeft * ScaleX + tableX * ScaleX);
}

int GaugeY(int tableY) {
    return static_cast<int>(GaugeTop * ScaleX + tableY * ScaleX);
}

void DrawGaugeLine(HDC dc, int fromX, int fromY, int toX, int toY) {
    const std::array points{POINT{GaugeX(fromX), GaugeY(fromY)}, POINT{GaugeX(toX), GaugeY(toY)}};
    Polyline(dc, points.data(), static_cast<int>(points.size()));
}

void DrawNeedle(HDC dc, unsigned index) {
    DrawGaugeLine(dc, NeedleBaseX[index], NeedleBaseY[index], NeedleTipX[index], NeedleTipY[index]);
}

void DrawHub(HDC dc) {
    Ellipse(dc, DesignX(605), DesignX(150), DesignX(645), DesignX(190));
}

struct TickScale {
    unsigned ticks;
    unsigned rpmPerTick;
    const int* innerX;
    const int* innerY;
};

void DrawTicks(Canvas& canvas, const TickScale& scale, unsigned limitRpm) {
    const unsigned pointStep = scale.rpmPerTick / GaugeRpmStep;
    for (unsigned i = 0; i < scale.ticks; ++i) {
        const bool red = GaugeTickRed(i, scale.rpmPerTick, limitRpm);
        UseShapeColours(canvas, ColourPen(red ? Colour::Red : Colour::PaleGrey, PenWidth::Double), Colour::Red);
        const unsigned outer = i * pointStep;
        DrawGaugeLine(canvas.shapes, TickOuterX[outer], TickOuterY[outer], scale.innerX[i], scale.innerY[i]);
    }
}

void DrawLambda(Canvas& canvas, const ReadingsModel& model) {
    UseText(canvas, LargeFont, Colour::Black, Colour::White);
    DrawTextAt(canvas, 40, 45, model.LambdaText.data());
    const int left = model.LambdaBarPos + 140;
    const int right = model.LambdaBarPos + 180;
    FillBox(canvas, model.LambdaBarColour, left, 52, right, 73);
    FillBox(canvas, Colour::Silver, 140, 52, left, 73);
    FillBox(canvas, Colour::Silver, 436, 52, right, 73);
}

void DrawThrottle(Canvas& canvas, const ReadingsModel& model) {
    DrawSegments(canvas, model.TpsSegment);
    for (const SwitchClearing& row : SwitchClearings) {
        if (row.tpsType == model.TpsType) {
            FillBox(canvas, Colour::Silver, 30, 155, row.right, 195);
        }
    }
    UseText(canvas, LargeFont, Colour::Black, Colour::White);
    DrawTextAt(canvas, 40, 155, model.TpsText.data());
    UseText(canvas, SmallFont, Colour::Black, Colour::White);
    DrawTextAt(canvas, 305, 196, model.TpsInertText.data());
}

void DrawBaseMarker(Canvas& canvas, const ReadingsModel& model) {
    if (model.AttBaseMoved) {
        FillBox(canvas, Colour::Silver, 140, 316, 440, 360);
    }
    UseText(canvas, SmallFont, Colour::Black, Colour::Silver);
    DrawTextAt(canvas, model.AttBase + 157, 315, "^");
    DrawTextAt(canvas, model.AttBase + 144, 345, LineText(6));
    UseText(canvas, SmallFont, Colour::Black, Colour::White);
    DrawTextAt(canvas, model.AttBase + 147, 326, model.AttBaseText.data());
}

void DrawRanges(Canvas& canvas, const ReadingsModel& model) {
    const RangeStrip& idle = IdleStrip;
    const RangeStrip& drive = DriveStrip;
    FillBox(canvas, idle.colour, model.IdleRangeLeft, idle.top, model.IdleRangeRight, idle.bottom);
    FillBox(canvas, drive.colour, model.DriveRangeLeft, drive.top, model.DriveRangeRight, drive.bottom);
    FillBox(canvas, Colour::Silver, ActuatorLeft - 1, idle.top, model.IdleRangeLeft, idle.bottom);
    FillBox(canvas, Colour::Silver, model.IdleRangeRight, idle.top, ActuatorRight, idle.bottom);
    FillBox(canvas, Colour::Silver, ActuatorLeft - 1, drive.top, model.DriveRangeLeft, drive.bottom);
    FillBox(canvas, Colour::Silver, model.DriveRangeRight, drive.top, ActuatorRight, drive.bottom);
}

void DrawActuator(Canvas& canvas, const ReadingsModel& model) {
    UseText(canvas, LargeFont, Colour::Black, Colour::White);
    DrawTextAt(canvas, 40, 265, model.AttText.data());
    const int position = model.AttBar + ActuatorLeft;
    FillBox(canvas, Colour::Navy, ActuatorLeft, 270, position, 290);
    FillBox(canvas, Colour::Silver, position, 270, 417, 290);
    DrawBaseMarker(canvas, model);
    DrawRanges(canvas, model);
    const int jumpLeft = model.AttJumpPos + 160;
    const int jumpRight = model.AttJumpPos + 162;
    if (model.AttJumpShown) {
        FillBox(canvas, Colour::Black, jumpLeft, 293, jumpRight, 298);
    }
    FillBox(canvas, Colour::Silver, 150, 293, jumpLeft, 298);
    FillBox(canvas, Colour::Silver, jumpRight, 293, 425, 298);
}

void DrawSpeed(Canvas& canvas, const ReadingsModel& model) {
    UseText(canvas, LargeFont, Colour::Black, Colour::White);
    DrawTextAt(canvas, 590, 210, model.RpmText.data());
    if (model.GaugeDueForSpeed) {
        DrawRpmGauge(canvas, model.GaugeLimitBefore);
    }
    UseText(canvas, SmallFont, model.CutOffColour, Colour::White);
    DrawTextAt(canvas, 510, 265, model.CutOffText.data());
    UseText(canvas, SmallFont, Colour::Black, Colour::White);
    DrawTextAt(canvas, 605, 265, model.LPGOnText.data());
    if (model.GaugeDueForLimit) {
        DrawRpmGauge(canvas, GaugeLimitRPM);
    }
    UseText(canvas, SmallFont, model.LPGOffColour, Colour::White);
    DrawTextAt(canvas, 705, 265, model.LPGOffText.data());
}

void DrawSwitchLabels(Canvas& canvas, const ReadingsModel& model) {
    UseText(canvas, SmallFont, model.LpgOnLabelColour, Colour::Silver);
    DrawTextAt(canvas, 590, 290, " LPG ON ");
    UseText(canvas, SmallFont, model.LpgOffLabelColour, Colour::Silver);
    DrawTextAt(canvas, 685, 290, " LPG OFF ");
    UseText(canvas, SmallFont, model.CutOffLabelColour, Colour::Silver);
    DrawTextAt(canvas, 485, 290, " CUT-OFF ");
}

void DrawTemperature(Canvas& canvas, const ReadingsModel& model) {
    UseText(canvas, LargeFont, Colour::Black, Colour::White);
    DrawTextAt(canvas, 490, 375, model.TempNowText.data());
    UseText(canvas, SmallFont, model.LPGOnTempColour, Colour::White);
    DrawTextAt(canvas, 705, 385, model.LPGOnTempText.data());
}

// row is 1 to 5. The rest of the row turns white with the text.
void DrawStatusRow(Canvas& canvas, unsigned row, int line, bool red) {
    const int top = StatusTop + StatusRowHeight * static_cast<int>(row);
    const RECT area{DesignX(StatusLeft), DesignY(top), DesignX(StatusRight), DesignY(top + StatusRowHeight)};
    const char* text = LineText(line);
    UseText(canvas, SmallFont, red ? Colour::Red : Colour::Black, Colour::White);
    ExtTextOutA(canvas.text, area.left, area.top, ETO_OPAQUE, &area, text, static_cast<UINT>(std::strlen(text)),
                nullptr);
}

void DrawFuelBox(Canvas& canvas, const FuelRow& row) {
    DrawShape(canvas, {ShapeKind::Box, Colour::Black, row.colour, 490, 465, 615, 505});
    UseText(canvas, SmallFont, Colour::Black, row.colour);
    DrawTextAt(canvas, row.x, 475, LineText(row.line));
}

void DrawStatusPanel(Canvas& canvas, const ReadingsModel& model) {
    for (unsigned row = 1; row <= StatusLineCount; ++row) {
        const StatusLine& status = model.StatusLines[row - 1];
        if (status.written) {
            DrawStatusRow(canvas, row, status.line, status.red);
        }
    }
    if (model.FuelBox != Fuel::Unwritten) {
        DrawFuelBox(canvas, model.FuelBox == Fuel::Gas ? GasRow : PetrolRow);
    }
}

// The outline takes the pen in use: that of the fuel box, or of an earlier step when the box was left alone.
void DrawLearnLamp(Canvas& canvas, Colour colour) {
    const int left = DesignX(635);
    const int top = DesignY(470);
    UseShapeColours(canvas, canvas.pen, colour);
    Ellipse(canvas.shapes, left, top, left + IndicatorSize, top + IndicatorSize);
}

}  // namespace

void DrawReadingsFrame() {
    Canvas canvas = OpenCanvas(PageWindow);
    DrawShapes(canvas, FrameShapes);
    DrawSegments(canvas, 0);
    SetWindowTextA(GetDlgItem(PageWindow, IDC_LEARN), LineText(33));
    UseText(canvas, SmallFont, Colour::Black, Colour::Silver);
    DrawLabels(canvas, SmallLabels);
    UseText(canvas, LargeFont, Colour::Black, Colour::Silver);
    DrawLabels(canvas, LargeLabels);
    DrawRpmGauge(canvas, GaugeLimitRPM);
    CloseCanvas(canvas);
}

void DrawRpmGauge(Canvas& canvas, unsigned limitRpm) {
    HPEN needlePen = ColourPen(Colour::Red, PenWidth::Needle);
    UseShapeColours(canvas, ColourPen(Colour::Black, PenWidth::Needle), Colour::Red);
    DrawNeedle(canvas.shapes, NeedleIndex);

    const unsigned index = GaugeIndex(EngineRPM);
    UseShapeColours(canvas, needlePen, Colour::Red);
    DrawNeedle(canvas.shapes, index);
    DrawHub(canvas.shapes);
    DrawTicks(canvas, {LongTicks, LongTickRpm, LongTickX.data(), LongTickY.data()}, limitRpm);
    DrawTicks(canvas, {ShortTicks, ShortTickRpm, ShortTickX.data(), ShortTickY.data()}, limitRpm);

    UseText(canvas, SmallFont, Colour::White, Colour::Black);
    for (const ScaleDigit& digit : ScaleDigits) {
        DrawTextAtPixel(canvas, DesignX(digit.x), DesignX(digit.y), digit.text);
    }
    UseText(canvas, SmallFont, Colour::PaleGrey, Colour::Black);
    DrawTextAtPixel(canvas, DesignX(575), DesignX(115), "RPM x 1000");

    UseShapeColours(canvas, needlePen, Colour::Red);
    DrawHub(canvas.shapes);
    DrawNeedle(canvas.shapes, index);
    NeedleIndex = index;
}

void DrawReadings(const ReadingsModel& model) {
    Canvas canvas = OpenCanvas(PageWindow);
    DrawLambda(canvas, model);
    DrawThrottle(canvas, model);
    DrawActuator(canvas, model);
    DrawSpeed(canvas, model);
    DrawSwitchLabels(canvas, model);
    DrawTemperature(canvas, model);
    DrawStatusPanel(canvas, model);
    DrawLearnLamp(canvas, model.LearnLamp);
    CloseCanvas(canvas);
}

void DrawStatusNotice(int line) {
    Canvas canvas = OpenCanvas(PageWindow);
    DrawStatusRow(canvas, NoticeRow, line, true);
    CloseCanvas(canvas);
}
