#include "scope/ScopeCapture.h"

#include <algorithm>

#include "model/Blocks.h"
#include "model/Codecs.h"
#include "shell/AppState.h"

std::array<ScopeSample, ScopeRoom> ScopeSamples{};
std::array<std::array<POINT, ScopeRoom>, ScopeTraceCount> ScopePoints{};
std::array<std::array<POINT, 2>, ScopeTraceCount> ScopeSegment{};
unsigned SweepPos = FirstColumn;

namespace {

// At this column a page's first piece of a trace lies flat.
constexpr unsigned FlatColumn = FirstColumn + 1;
constexpr unsigned FullPanel = 80;
constexpr unsigned ByteRange = 255;

// The 0-1 V sensor has five times the gain of the others.
unsigned ScaledLambda() {
    const unsigned scaled = LiveBlock[LiveByte::Lambda] * 15u / 10;
    return std::min(LambdaSensorType() == LambdaSensor::Volts0To1 ? scaled : scaled / 5, FullPanel);
}

unsigned ScaledAtt() {
    return LiveBlock[LiveByte::Att] / 3u;
}

unsigned ScaledAttInit() {
    return LiveBlock[LiveByte::AttInit] / 3u;
}

unsigned ScaledRpm() {
    return std::min(EngineSpeed() / 100, FullPanel);
}

// Odd types are reversed, but for those with all three low bits set.
unsigned ScaledTps() {
    constexpr unsigned ReversedBit = 1;
    constexpr unsigned LowBits = 7;
    const unsigned type = static_cast<unsigned>(TPSType());
    const bool reversed = (type & ReversedBit) != 0 && (type & LowBits) != LowBits;
    const unsigned raw = LiveBlock[LiveByte::Tps];
    return static_cast<unsigned>(RoundHalfDown((reversed ? ByteRange - raw : raw) / 3.1));
}

int ScaledY(int design) {
    return static_cast<int>(design * ScaleY);
}

int ScaledX(unsigned design) {
    return static_cast<int>(design * ScaleX);
}

void CaptureTrace(size_t trace) {
    const ScopeTraceRow& row = ScopeTraces[trace];
    auto& [from, to] = ScopeSegment[trace];
    from = {ScaledX(SweepPos - 1), to.y};
    to = {ScaledX(SweepPos), ScaledY(row.baseline - static_cast<int>(row.scaled()))};
    if (SweepPos == FlatColumn) {
        from.y = to.y;
    }
    ScopePoints[trace][SweepPos - ColumnOfIndex0].y = to.y;
}

}  // namespace

constexpr std::array<ScopeTraceRow, ScopeTraceCount> ScopeTraces = {{
    {ScaledLambda, 130, Colour::Ochre, PenWidth::Double},
    {ScaledAtt, 240, Colour::Green, PenWidth::Double},
    {ScaledAttInit, 240, Colour::DarkGreen, PenWidth::Thin},
    {ScaledRpm, 350, Colour::Blue, PenWidth::Double},
    {ScaledTps, 460, Colour::Navy, PenWidth::Double},
}};

void ResetScopeBuffers() {
    ScopeSamples = {};
    for (size_t trace = 0; trace < ScopeTraceCount; ++trace) {
        const int y = ScaledY(ScopeTraces[trace].baseline);
        for (unsigned index = 0; index < ScopeRoom; ++index) {
            ScopePoints[trace][index] = {ScaledX(index + unsigned{StoredX}), y};
        }
    }
}

ScopeSample SampleNow() {
    return {
        .Lambda = LiveBlock[LiveByte::Lambda],
        .Att = LiveBlock[LiveByte::Att],
        .Rpm = EngineSpeed(),
        .Tps = LiveBlock[LiveByte::Tps],
        .LambdaType = ParamBlockA[ParamAByte::LambdaType],
        .TpsSwitch = static_cast<BYTE>(LiveBlock[LiveByte::EngineState] & EngineStateBit::TpsSwitchOff),
        .Status = LiveBlock[LiveByte::GasState],
    };
}

SweptColumn CaptureColumn() {
    ++SweepPos;
    for (size_t trace = 0; trace < ScopeTraceCount; ++trace) {
        CaptureTrace(trace);
    }
    const SweptColumn swept = {SweepPos, SweepPos >= LastColumn};
    if (swept.wraps) {
        SweepPos = FirstColumn - 1;
    }
    ScopeSamples[SweepPos - ColumnOfIndex0] = SampleNow();
    return swept;
}
