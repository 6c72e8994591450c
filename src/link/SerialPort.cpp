#include "link/Link.h"
#include "model/Blocks.h"

const char* PortName = "COM1:";
unsigned PortNumber = 0;
HANDLE PortHandle = nullptr;
int PortOpen = 0;
int LinkLost = 1;
int LinkRetries = 0;
UINT TimerPeriod = GoodLinkPeriod;
UINT ActiveTimerPeriod = 0;

namespace {

constexpr DWORD BitsPerSecond = 9600;

// 9600 baud, 8 data bits, no parity, one stop bit; both control lines dropped and no handshake by wires. fInX is the
// one flag that is set.
DCB PortSettings() {
    DCB settings{};
    settings.DCBlength = sizeof settings;
    settings.BaudRate = BitsPerSecond;
    settings.fDtrControl = DTR_CONTROL_DISABLE;
    settings.fInX = 1;
    settings.fRtsControl = RTS_CONTROL_DISABLE;
    settings.ByteSize = 8;
    settings.Parity = NOPARITY;
    settings.StopBits = ONESTOPBIT;
    return settings;
}

// The bounds of a read: 260 ms for the identity, 940 ms for the longest block.
COMMTIMEOUTS PortTimeouts() {
    COMMTIMEOUTS timeouts{};
    timeouts.ReadIntervalTimeout = 200;
    timeouts.ReadTotalTimeoutMultiplier = 40;
    timeouts.ReadTotalTimeoutConstant = 100;
    timeouts.WriteTotalTimeoutMultiplier = 40;
    timeouts.WriteTotalTimeoutConstant = 100;
    return timeouts;
}

}  // namespace

// No result is looked at: with an unusable handle the next exchange moves no byte, and that is what counts.
void OpenPort() {
    PortHandle = CreateFileA(PortName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    DCB settings = PortSettings();
    SetCommState(PortHandle, &settings);
    COMMTIMEOUTS timeouts = PortTimeouts();
    SetCommTimeouts(PortHandle, &timeouts);
}

void ClosePort() {
    if (PortOpen == 0) {
        return;
    }
    CloseHandle(PortHandle);
    PortOpen = 0;
}

void LoseLink() {
    PurgeComm(PortHandle, PURGE_RXCLEAR);
    PurgeComm(PortHandle, PURGE_TXCLEAR);
    ClosePort();
    LinkLost = 1;
    LinkRetries = MostLinkRetries;
    TimerPeriod = LostLinkPeriod;
    IdentBlock.fill(0);
    LiveBlock.fill(0);
    ParamBlockA.fill(0);
    ParamBlockB.fill(0);
    ParamBlockC.fill(0);
}
