#include "readings/GaugeTables.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "model/Codecs.h"

std::array<int, GaugePoints> NeedleTipX;
std::array<int, GaugePoints> NeedleTipY;
std::array<int, GaugePoints> NeedleBaseX;
std::array<int, GaugePoints> NeedleBaseY;
std::array<int, GaugePoints> TickOuterX;
std::array<int, GaugePoints> TickOuterY;
std::array<int, LongTicks> LongTickX;
std::array<int, LongTicks> LongTickY;
std::array<int, ShortTicks> ShortTickX;
std::array<int, ShortTicks> ShortTickY;

namespace {

// The arc in hand while the tables are built.
int GaugeRadius;
std::array<int, GaugePoints> GaugeArcX;
std::array<int, GaugePoints> GaugeArcY;

constexpr double DegreesPerStep = 1.5;
// The points are fixed with this value; a more exact one would move some of them.
constexpr double GaugePi = 3.14159;

// The coordinate that is rounded from the angle; the other one follows from it, so that the point lies on the circle.
enum class First { X, Y };

// A run of neighbouring arc points. The angle goes from the horizontal in steps, by one a point; signs say on which
// side of the centre the point lies.
struct ArcRun {
    unsigned from;
    unsigned to;
    int firstStep;
    int stepChange;
    First first;
    int signX;
    int signY;
};

constexpr std::array ArcRuns{
    ArcRun{0, 20, 20, -1, First::Y, -1, 1},    ArcRun{21, 49, 1, 1, First::Y, -1, -1},
    ArcRun{50, 80, 30, 1, First::X, -1, -1},   ArcRun{81, 110, 59, -1, First::X, 1, -1},
    ArcRun{111, 140, 29, -1, First::Y, 1, -1}, ArcRun{141, 160, 1, 1, First::Y, 1, 1},
};

// Distance from the centre, along the other axis, of the point of the circle with this coordinate.
double CircleSpan(int coordinate) {
    const int offset = GaugeCentre - coordinate;
    return std::sqrt(static_cast<double>(GaugeRadius * GaugeRadius - offset * offset));
}

void TraceGaugeArc() {
    for (const ArcRun& run : ArcRuns) {
        int step = run.firstStep;
        for (std::size_t i = run.from; i <= run.to; ++i, step += run.stepChange) {
            const double angle = step * DegreesPerStep * GaugePi / 180.0;
            if (run.first == First::Y) {
                GaugeArcY[i] = GaugeCentre + run.signY * RoundHalfDown(GaugeRadius * std::sin(angle));
                GaugeArcX[i] = GaugeCentre + run.signX * RoundHalfDown(CircleSpan(GaugeArcY[i]));
            } else {
                GaugeArcX[i] = GaugeCentre + run.signX * RoundHalfDown(GaugeRadius * std::cos(angle));
                GaugeArcY[i] = GaugeCentre + run.signY * RoundHalfDown(CircleSpan(GaugeArcX[i]));
            }
        }
    }
}

struct GaugeTable {
    int radius;
    unsigned pointStep;
    std::span<int> x;
    std::span<int> y;
};

}  // namespace

void BuildGaugeTables() {
    const std::array tables{
        GaugeTable{115, 1, NeedleTipX, NeedleTipY},          GaugeTable{124, 1, TickOuterX, TickOuterY},
        GaugeTable{110, LongTickStep, LongTickX, LongTickY}, GaugeTable{115, ShortTickStep, ShortTickX, ShortTickY},
        GaugeTable{20, 1, NeedleBaseX, NeedleBaseY},
    };
    for (const GaugeTable& table : tables) {
        GaugeRadius = table.radius;
        TraceGaugeArc();
        for (std::size_t i = 0; i < table.x.size(); ++i) {
            table.x[i] = GaugeArcX[i * table.pointStep];
            table.y[i] = GaugeArcY[i * table.pointStep];
        }
    }
}

unsigned GaugeIndex(unsigned rpm) {
    return std::min(rpm / GaugeRpmStep, GaugePoints - 1);
}
