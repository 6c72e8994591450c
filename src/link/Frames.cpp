#include <algorithm>
#include <span>

#include "link/Link.h"
#include "model/Blocks.h"

DWORD LastByteCount = 0;
std::array<BYTE, 3> WriteReply{};
DWORD WriteDelay = 0;
int ControllerFamily = 0;
int FirmwareVersion = 0;

namespace {

// A request to read:          A request to write:         The reply to a write:
// byte 0  marker 65           byte 0  marker 65           byte 0  not examined
//      1  command, 1 to 5          1  cell on the wire         1  value as taken
//      2  command again            2  value                    2  not examined
//      3  sum of bytes 0 to 2      3  sum of bytes 0 to 2
using Request = std::array<BYTE, 4>;

// The reply to a read, of n bytes in all; a mirror holds it whole:
// byte 0         marker 65
//      1 to n-2  what model/Blocks.h tells of the block
//      n-1       sum of bytes 0 to n-2, its low 8 bits
constexpr DWORD LongestReply = 21;
static_assert(std::tuple_size_v<decltype(ParamBlockC)> == LongestReply);

enum ReadCommand : BYTE {
    IdentCommand = 1,
    LiveCommand = 2,
    ParamACommand = 3,
    ParamBCommand = 4,
    ParamCCommand = 5,
};

// Where the families differ on the wire.
struct FamilyWire {
    int family;
    DWORD paramBlockALength;
    // From a cell's number in model/Cells.h to that on the wire.
    unsigned cellOffset;
};
constexpr std::array<FamilyWire, 2> FamilyWires{{
    {Family2, 15, 0},
    {Family4, 14, 1},
}};
constexpr FamilyWire UnservedFamily{0, 14, 0};

const FamilyWire& CurrentFamily() {
    for (const FamilyWire& row : FamilyWires) {
        if (row.family == ControllerFamily) {
            return row;
        }
    }
    return UnservedFamily;
}

constexpr BYTE ByteSum(std::span<const BYTE> bytes) {
    unsigned sum = 0;
    for (const BYTE byte : bytes) {
        sum += byte;
    }
    return static_cast<BYTE>(sum);
}

constexpr Request MakeRequest(BYTE second, BYTE third) {
    Request request{BlockMarker, second, third, 0};
    request[3] = ByteSum(std::span(request).first<3>());
    return request;
}

void EnsurePortOpen() {
    if (PortOpen == 0) {
        OpenPort();
        PortOpen = 1;
    }
}

void Send(const Request& request) {
    WriteFile(PortHandle, request.data(), static_cast<DWORD>(request.size()), &LastByteCount, nullptr);
}

void Receive(std::span<BYTE> reply) {
    ReadFile(PortHandle, reply.data(), static_cast<DWORD>(reply.size()), &LastByteCount, nullptr);
}

bool SumIsGood(std::span<const BYTE> reply) {
    return ByteSum(reply.first(reply.size() - 1)) == reply.back();
}

// A short reply is not refused for its length: its missing bytes are zeroes here, and the sum tells. A mirror that is
// longer than the reply ends in zeroes. The receive side was purged by the identity exchange that began the tick.
void ReadBlock(BYTE command, DWORD replyLength, std::span<BYTE> mirror) {
    std::array<BYTE, LongestReply> buffer{};
    const std::span<BYTE> reply = std::span(buffer).first(replyLength);
    EnsurePortOpen();
    PurgeComm(PortHandle, PURGE_TXCLEAR);
    Send(MakeRequest(command, command));
    Receive(reply);
    if (LastByteCount != replyLength) {
        PurgeComm(PortHandle, PURGE_RXCLEAR);
    }
    if (reply[0] != BlockMarker) {
        return;
    }
    if (!SumIsGood(reply)) {
        PurgeComm(PortHandle, PURGE_RXCLEAR);
        return;
    }
    std::copy_n(buffer.begin(), mirror.size(), mirror.begin());
}

void ReadWholeBlock(BYTE command, std::span<BYTE> mirror) {
    ReadBlock(command, static_cast<DWORD>(mirror.size()), mirror);
}

}  // namespace

void ReadIdentBlock() {
    std::array<BYTE, 4> reply{};
    EnsurePortOpen();
    PurgeComm(PortHandle, PURGE_TXCLEAR);
    PurgeComm(PortHandle, PURGE_RXCLEAR);
    Send(MakeRequest(IdentCommand, IdentCommand));
    Receive(reply);
    if (LastByteCount != reply.size()) {
        PurgeComm(PortHandle, PURGE_RXCLEAR);
    }
    if (reply[0] != BlockMarker) {
        ++LinkRetries;
        if (LinkRetries > MostLinkRetries) {
            LoseLink();
        }
        return;
    }
    if (!SumIsGood(reply)) {
        PurgeComm(PortHandle, PURGE_RXCLEAR);
        ClosePort();
        return;
    }
    LinkLost = 0;
    LinkRetries = 0;
    TimerPeriod = GoodLinkPeriod;
    IdentBlock = reply;
}

void ReadLiveBlock() {
    ReadWholeBlock(LiveCommand, LiveBlock);
}

void ReadParamBlockA() {
    ReadBlock(ParamACommand, CurrentFamily().paramBlockALength, ParamBlockA);
}

void ReadParamBlockB() {
    ReadWholeBlock(ParamBCommand, ParamBlockB);
}

void ReadParamBlockC() {
    ReadWholeBlock(ParamCCommand, ParamBlockC);
}

int DecodeIdentity() {
    const BYTE identity = IdentBlock[IdentByte::Identity];
    ControllerFamily = (identity >> IdentityField::FamilyShift) + 1;
    FirmwareVersion = static_cast<int>(identity & IdentityField::VersionMask);
    return ControllerFamily;
}

void PollIdentity() {
    ReadIdentBlock();
    DecodeIdentity();
}

void KeepTimer(HWND window, UINT_PTR timer) {
    if (TimerPeriod != ActiveTimerPeriod) {
        SetTimer(window, timer, TimerPeriod, nullptr);
        ActiveTimerPeriod = TimerPeriod;
    }
}

void WriteCell(unsigned cell, BYTE value) {
    DecodeIdentity();
    if (!FamilyServed()) {
        return;
    }
    const Request request = MakeRequest(static_cast<BYTE>(cell + CurrentFamily().cellOffset), value);
    EnsurePortOpen();
    PurgeComm(PortHandle, PURGE_RXCLEAR);
    PurgeComm(PortHandle, PURGE_TXCLEAR);
    Send(request);
    Sleep(WriteDelay);
    Receive(WriteReply);
    PurgeComm(PortHandle, PURGE_RXCLEAR);
}

bool FamilyServed() {
    return CurrentFamily().family != UnservedFamily.family;
}

bool LinkServed() {
    return LinkLost == 0 && FamilyServed();
}
