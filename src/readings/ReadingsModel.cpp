#include "readings/ReadingsModel.h"

#include <algorithm>
#include <span>

#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Codecs.h"
#include "model/Text.h"
#include "shell/AppState.h"

int OnGas = 0;
int LearnRunning = 0;
int LearnRequested = 0;
unsigned StatusHold = 0;
int UpperSegmentLit = 0;
unsigned BlinkTicks = 0;
int BlinkPhase = 0;
unsigned GaugeRPM = 0;
unsigned GaugeLimitRPM = 0;
unsigned DrawnAttBase = 0;

namespace {

// Language lines of the status panel.
enum StatusText : int {
    OnPetrolText = 12,
    OnGasText = 13,
    LearningText = 16,
    LearningThrottleText = 17,
    LearnFailedText = 18,
    LearnPendingText = 19,
    LearnDoneText = 20,
    LpgOffText = 21,
    WarmMissingText = 22,
    CutOffStatusText = 23,
    WaitingText = 24,
    SpeedTooLowText = 25,
    SpeedTooHighText = 26,
    NotOnGasText = 27,
    EngineOffText = 28,
    FamilyUnknownText = 29,
    LinkLostText = 30,
    LinkHintText = 31,
};

bool OptionSet(unsigned mask) {
    return (ParamBlockA[ParamAByte::Options] & mask) != 0;
}

bool GasState(unsigned mask) {
    return (LiveBlock[LiveByte::GasState] & mask) != 0;
}

Colour BlackIf(bool condition, Colour otherwise) {
    return condition ? Colour::Black : otherwise;
}

void ThreeDigits(std::span<char> text, unsigned value) {
    FormatText(text, "%03ld", static_cast<long>(value));
}

void FourDigits(std::span<char> text, unsigned value) {
    FormatText(text, "%04ld", static_cast<long>(value));
}

void EvaluateLambda(ReadingsModel& model) {
    const BYTE raw = LiveBlock[LiveByte::Lambda];
    const int sensor = LambdaSensorType();
    const bool mirrored = sensor == LambdaSensor::Volts5To0Lean || sensor == LambdaSensor::Volts5To0Rich;
    RealText(model.LambdaText, mirrored ? 5.0 - SignalVolts(raw) : SignalVolts(raw));
    model.LambdaBarPos = std::min(sensor == LambdaSensor::Volts0To1 ? raw * 5 : raw, 255);
    switch (LiveBlock[LiveByte::EngineState] & EngineStateBit::MixtureMask) {
        case EngineStateBit::MixtureGreen:
            model.LambdaBarColour = Colour::DarkGreen;
            break;
        case EngineStateBit::MixtureRed:
            model.LambdaBarColour = Colour::Red;
            break;
        default:
            model.LambdaBarColour = Colour::Yellow;
            break;
    }
}

int LitSegment() {
    switch (LiveBlock[LiveByte::EngineState] & EngineStateBit::ThrottleMask) {
        case EngineStateBit::ThrottleSegment1:
            return 1;
        case EngineStateBit::ThrottleSegment2:
            return 2;
        case EngineStateBit::ThrottleSegment3:
            return 3;
        case EngineStateBit::ThrottleSegment4:
            return 4;
        default:
            return 0;
    }
}

void EvaluateThrottle(ReadingsModel& model) {
    model.TpsSegment = LitSegment();
    UpperSegmentLit = model.TpsSegment >= 2 ? 1 : 0;

    const double volts = SignalVolts(LiveBlock[LiveByte::Tps]);
    model.TpsType = TPSType();
    switch (model.TpsType) {
        case TpsSensor::Reversed:
            RealText(model.TpsText, 5.0 - volts);
            break;
        case TpsSensor::None:
        case 3:
            CopyText(model.TpsText, "_.__");
            break;
        case TpsSensor::Switch6:
        case TpsSensor::Switch7:
            CopyText(model.TpsText,
                     (LiveBlock[LiveByte::EngineState] & EngineStateBit::TpsSwitchOff) == 0 ? " ON" : "OFF");
            break;
        default:
            RealText(model.TpsText, volts);
            break;
    }
    RealText(model.TpsInertText, ParamBlockA[ParamAByte::TPSInert] / 50.0 + 0.02);
}

void EvaluateActuator(ReadingsModel& model) {
    const int base = LiveBlock[LiveByte::AttInit];
    const int middle = base + ActuatorLeft;
    model.AttBar = LiveBlock[LiveByte::Att];
    ThreeDigits(model.AttText, LiveBlock[LiveByte::Att]);
    model.AttBase = base;
    ThreeDigits(model.AttBaseText, LiveBlock[LiveByte::AttInit]);
    model.AttBaseMoved = DrawnAttBase != LiveBlock[LiveByte::AttInit];
    DrawnAttBase = LiveBlock[LiveByte::AttInit];

    model.IdleRangeLeft = std::max(middle - ParamBlockB[ParamBByte::AttMin_BJ], ActuatorLeft);
    model.IdleRangeRight = std::min(middle + ParamBlockB[ParamBByte::AttMax_BJ], ActuatorRight);
    model.DriveRangeLeft = std::max(middle - ParamBlockB[ParamBByte::AttMin], ActuatorLeft);
    model.DriveRangeRight = std::min(middle + ParamBlockB[ParamBByte::AttMax], ActuatorRight);

    const int jump = ParamBlockB[ParamBByte::AttJump];
    model.AttJumpPos = AttJumpIsPercent(ControllerFamily) ? std::min(base + base * jump / 100, 255) : jump;
    model.AttJumpShown = TpsHasVoltage(TPSType()) && OptionSet(OptionsBit::TpsJump);
}

void EvaluateSpeed(ReadingsModel& model) {
    EngineRPM = EngineSpeed();
    FourDigits(model.RpmText, EngineRPM);
    model.GaugeDueForSpeed = GaugeRPM != EngineRPM;
    model.GaugeLimitBefore = GaugeLimitRPM;
    GaugeRPM = EngineRPM;

    const auto& b = ParamBlockB;
    const unsigned limit = PeriodToRPM(b[ParamBByte::LPGOffRPMHi], b[ParamBByte::LPGOffRPMLo]);
    FourDigits(model.CutOffText, PeriodToRPM(b[ParamBByte::CutOffRPMHi], b[ParamBByte::CutOffRPMLo]));
    model.CutOffColour = BlackIf(OptionSet(OptionsBit::CutOff), Colour::Grey);
    FourDigits(model.LPGOnText, PeriodToRPM(b[ParamBByte::LPGOnRPMHi], b[ParamBByte::LPGOnRPMLo]));
    FourDigits(model.LPGOffText, limit);
    model.LPGOffColour = BlackIf(OptionSet(OptionsBit::LpgOffLimit), Colour::Grey);
    model.GaugeDueForLimit = GaugeLimitRPM != limit;
    GaugeLimitRPM = limit;
}

// OnGas is that of the previous evaluation here: the status panel comes later.
void EvaluateLabels(ReadingsModel& model) {
    model.LpgOnLabelColour = BlackIf(OnGas == 0, Colour::DarkGreen);
    model.LpgOffLabelColour = BlackIf(!GasState(GasStateBit::LpgOff), Colour::Red);
    model.CutOffLabelColour = BlackIf(!GasState(GasStateBit::CutOff), Colour::Red);
}

void EvaluateTemperature(ReadingsModel& model) {
    ThreeDigits(model.TempNowText, static_cast<unsigned>(RawToTemperature(LiveBlock[LiveByte::Temperature])));
    CopyText(model.LPGOnTempText, TemperatureText(ParamBlockA[ParamAByte::LPGOnTemp]));
    model.LPGOnTempColour = BlackIf(OptionSet(OptionsBit::TemperatureCondition), Colour::Grey);
}

void PutLine(ReadingsModel& model, unsigned row, int line, bool red = false) {
    model.StatusLines[row - 1] = {.written = true, .line = line, .red = red};
}

void PutRedLine(ReadingsModel& model, unsigned row, int line) {
    PutLine(model, row, line, true);
}

void PutFuel(ReadingsModel& model, bool gas) {
    OnGas = gas ? 1 : 0;
    model.FuelBox = gas ? Fuel::Gas : Fuel::Petrol;
}

// A panel that is written as a whole: rows 1 and 3 have a text or are blank, the others are blank.
struct ShortForm {
    int line1;
    bool red1;
    int line3;
    bool red3;
    Fuel fuel;
};

constexpr ShortForm LinkLostForm{LinkLostText, true, LinkHintText, false, Fuel::Petrol};
constexpr ShortForm FamilyUnknownForm{FamilyUnknownText, true, BlankLine, false, Fuel::Unwritten};
constexpr ShortForm EngineOffForm{OnPetrolText, false, EngineOffText, true, Fuel::Petrol};
constexpr ShortForm OnGasForm{OnGasText, false, BlankLine, false, Fuel::Gas};
constexpr ShortForm OnPetrolForm{OnPetrolText, false, NotOnGasText, true, Fuel::Petrol};

// Null for the long form.
const ShortForm* ChooseShortForm() {
    if (LinkLost != 0) {
        return &LinkLostForm;
    }
    if (!FamilyServed()) {
        return &FamilyUnknownForm;
    }
    if ((LiveBlock[LiveByte::EngineState] & EngineStateBit::EngineOn) == 0) {
        return &EngineOffForm;
    }
    if ((ParamBlockA[ParamAByte::EmulType] & EmulTypeBit::LongStatus) == 0) {
        return GasState(GasStateBit::OnGas) ? &OnGasForm : &OnPetrolForm;
    }
    return nullptr;
}

void PutShortForm(ReadingsModel& model, const ShortForm& form) {
    PutLine(model, 1, form.line1, form.red1);
    PutLine(model, 2, BlankLine);
    PutLine(model, 3, form.line3, form.red3);
    PutLine(model, 4, BlankLine);
    PutLine(model, 5, BlankLine);
    if (form.fuel != Fuel::Unwritten) {
        PutFuel(model, form.fuel == Fuel::Gas);
    }
}

void TellLearnResult(ReadingsModel& model) {
    StatusHold = 0;
    if (!GasState(GasStateBit::LearnDone)) {
        PutRedLine(model, 5, LearnFailedText);
        LearnRequested = 0;
    } else if (GasState(GasStateBit::LearnPending)) {
        PutRedLine(model, 5, LearnPendingText);
    } else {
        PutRedLine(model, 5, LearnDoneText);
        LearnRequested = 0;
    }
}

// The conditions for gas are met: the last line shows the cut-off, or what it showed for some time longer.
void PutReadyLines(ReadingsModel& model) {
    PutLine(model, 2, BlankLine);
    if (GasState(GasStateBit::CutOff)) {
        PutRedLine(model, 5, CutOffStatusText);
        return;
    }
    if (++StatusHold > StatusHoldLimit) {
        PutLine(model, 5, BlankLine);
        StatusHold = StatusHoldLimit;
    }
    PutLine(model, 3, BlankLine);
}

void PutLongForm(ReadingsModel& model) {
    const bool gas = GasState(GasStateBit::OnGas);
    PutLine(model, 1, gas ? OnGasText : OnPetrolText);
    PutFuel(model, gas);

    LearnRunning = GasState(GasStateBit::Learning) ? 1 : 0;
    if (LearnRunning != 0) {
        PutLine(model, 3, BlankLine);
        if (UpperSegmentLit != 0) {
            PutLine(model, 5, LearningText);
        } else {
            PutRedLine(model, 5, LearningThrottleText);
        }
        return;
    }
    if (LearnRequested != 0) {
        TellLearnResult(model);
    }

    const bool warm = GasState(GasStateBit::WarmReady);
    if (GasState(GasStateBit::LpgOff)) {
        PutRedLine(model, 3, LpgOffText);
        PutLine(model, 4, warm ? BlankLine : WarmMissingText, !warm);
    } else if (!warm) {
        PutLine(model, 3, WaitingText);
        PutRedLine(model, 4, WarmMissingText);
    } else if (!GasState(GasStateBit::SpeedReady)) {
        const unsigned lpgOn = PeriodToRPM(ParamBlockB[ParamBByte::LPGOnRPMHi], ParamBlockB[ParamBByte::LPGOnRPMLo]);
        const bool tooHigh = !OptionSet(OptionsBit::SpeedChange) && EngineRPM > lpgOn;
        PutLine(model, 3, WaitingText);
        PutRedLine(model, 4, tooHigh ? SpeedTooHighText : SpeedTooLowText);
    } else {
        PutLine(model, 4, BlankLine);
        PutReadyLines(model);
    }
}

void EvaluateStatusPanel(ReadingsModel& model) {
    model.StatusLines = {};
    model.FuelBox = Fuel::Unwritten;
    if (const ShortForm* form = ChooseShortForm()) {
        PutShortForm(model, *form);
    } else {
        PutLongForm(model);
    }
}

void EvaluateLearnLamp(ReadingsModel& model) {
    if (++BlinkTicks > 1) {
        BlinkPhase = 1 - BlinkPhase;
        BlinkTicks = 0;
    }
    const bool lit = LearnRunning != 0 && (UpperSegmentLit == 0 || BlinkPhase != 0);
    model.LearnLamp = lit ? Colour::Yellow : Colour::Olive;
}

}  // namespace

ReadingsModel EvaluateReadings() {
    ReadingsModel model{};
    EvaluateLambda(model);
    EvaluateThrottle(model);
    EvaluateActuator(model);
    EvaluateSpeed(model);
    EvaluateLabels(model);
    EvaluateTemperature(model);
    EvaluateStatusPanel(model);
    EvaluateLearnLamp(model);
    return model;
}

bool GaugeTickRed(unsigned tick, unsigned rpmPerTick, unsigned limitRpm) {
    return OptionSet(OptionsBit::LpgOffLimit) && tick > limitRpm / rpmPerTick;
}
