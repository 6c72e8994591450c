// What the Oscilloscope page records: one column a tick, with the values of that moment and the points of the five
// traces. Capturing draws nothing; ScopeDrawing.h draws what stands here. A new trace is a row of ScopeTraces.
#pragma once

#include <array>

#include "drawing/Palette.h"
#include "platform/Win32.h"

enum ScopeTrace : unsigned {
    TraceLambda,
    TraceAtt,
    TraceAttInit,
    TraceRpm,
    TraceTps,
};
constexpr size_t ScopeTraceCount = 5;

struct ScopeTraceRow {
    // The value in the mirrors now, in design units above the baseline.
    unsigned (*scaled)();
    int baseline;  // design y of value 0
    Colour colour;
    PenWidth width;
};
// By ScopeTrace, which is also the order in which a sweep draws; a history draws AttInit under Att.
extern const std::array<ScopeTraceRow, ScopeTraceCount> ScopeTraces;
inline constexpr std::array HistoryOrder{TraceLambda, TraceAttInit, TraceAtt, TraceRpm, TraceTps};

// The raw values of one capture.
struct ScopeSample {
    unsigned Lambda;  // byte of LiveBlock
    unsigned Att;     // byte of LiveBlock
    unsigned Rpm;     // RPM
    unsigned Tps;     // byte of LiveBlock
    BYTE LambdaType;  // byte of ParamBlockA
    BYTE TpsSwitch;   // EngineStateBit::TpsSwitchOff or 0
    BYTE Status;      // GasState byte of LiveBlock
};

// A sweep runs over the columns 203 to 596 of the design, later ones from 202; index 0 of the tables is column 200.
constexpr unsigned FirstColumn = 202;
constexpr unsigned LastColumn = 596;
constexpr unsigned ColumnOfIndex0 = 200;
constexpr size_t ScopeRoom = 400;
// Design x of index 0 in a history, which stands one column to the right of where the sweep drew it.
constexpr int StoredX = 201;

// All of it lives from process start to exit; ResetScopeBuffers and CaptureColumn write it unless a line says
// otherwise.
extern std::array<ScopeSample, ScopeRoom> ScopeSamples;
// In pixels of the page; x changes only with a reset, but for the first three points, which every drawing of the
// history moves onto the fourth.
extern std::array<std::array<POINT, ScopeRoom>, ScopeTraceCount> ScopePoints;
// The piece of each trace that the newest column adds; the next one begins where it ends.
extern std::array<std::array<POINT, 2>, ScopeTraceCount> ScopeSegment;
// Column of the newest sample; each making of the page sets it to FirstColumn.
extern unsigned SweepPos;

// Zeroes all samples and lays every trace on its baseline, in the scale of the showing profile.
void ResetScopeBuffers();

struct SweptColumn {
    unsigned column;
    bool wraps;  // the next one begins at the left again
};
// Takes the mirrors as the next column.
SweptColumn CaptureColumn();

// The mirrors as a sample.
ScopeSample SampleNow();
