// Serial ports, directories and the clock. Include platform/Win32.h, not this.
#pragma once

#include "platform/linux/WinTypes.h"

constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD PURGE_TXCLEAR = 4;
constexpr DWORD PURGE_RXCLEAR = 8;
constexpr BYTE NOPARITY = 0;
constexpr BYTE ONESTOPBIT = 0;
constexpr DWORD DTR_CONTROL_DISABLE = 0;
constexpr DWORD RTS_CONTROL_DISABLE = 0;

inline HANDLE const INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<INT_PTR>(-1));

struct DCB {
    DWORD DCBlength;
    DWORD BaudRate;
    DWORD fBinary : 1;
    DWORD fParity : 1;
    DWORD fOutxCtsFlow : 1;
    DWORD fOutxDsrFlow : 1;
    DWORD fDtrControl : 2;
    DWORD fDsrSensitivity : 1;
    DWORD fTXContinueOnXoff : 1;
    DWORD fOutX : 1;
    DWORD fInX : 1;
    DWORD fErrorChar : 1;
    DWORD fNull : 1;
    DWORD fRtsControl : 2;
    DWORD fAbortOnError : 1;
    DWORD fDummy2 : 17;
    WORD wReserved;
    WORD XonLim;
    WORD XoffLim;
    BYTE ByteSize;
    BYTE Parity;
    BYTE StopBits;
    char XonChar;
    char XoffChar;
    char ErrorChar;
    char EofChar;
    char EvtChar;
    WORD wReserved1;
};

struct COMMTIMEOUTS {
    DWORD ReadIntervalTimeout;
    DWORD ReadTotalTimeoutMultiplier;
    DWORD ReadTotalTimeoutConstant;
    DWORD WriteTotalTimeoutMultiplier;
    DWORD WriteTotalTimeoutConstant;
};

struct SECURITY_ATTRIBUTES;
struct OVERLAPPED;

// Opens serial ports only: "COMn:" or "\\.\COMn" with n from 1 to 128, mapped as told in PortTable.h. A port that is
// missing, not a terminal device, held by another program or forbidden gives INVALID_HANDLE_VALUE. The time-outs of a
// fresh port are one second a call.
HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD creation, DWORD flags,
                   HANDLE templateFile);
// Drops bytes that have not gone out yet.
BOOL CloseHandle(HANDLE handle);

// Makes the line raw at the asked speed, 8N1, with both control lines dropped; FALSE if asked for anything else. fInX
// asks for XOFF and XON characters towards the device when the receive buffer runs full; they would be stray bytes in a
// binary protocol, and no reply comes near that size, so it is ignored.
BOOL SetCommState(HANDLE port, DCB* state);
// FALSE, and nothing changes, for what could wait without end or not at all: a total time-out of 0, or an interval of
// MAXDWORD.
BOOL SetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts);
BOOL PurgeComm(HANDLE port, DWORD flags);

// Both return FALSE with a count of 0 on a handle that is no open port. A device that has gone away ends a call at
// once, with FALSE and what came so far. A call that times out returns TRUE and what it moved. overlapped is null.
BOOL ReadFile(HANDLE port, LPVOID buffer, DWORD bytes, LPDWORD bytesRead, OVERLAPPED* overlapped);
BOOL WriteFile(HANDLE port, LPCVOID buffer, DWORD bytes, LPDWORD bytesWritten, OVERLAPPED* overlapped);

void Sleep(DWORD milliseconds);

// Paths are the file system's bytes. The first returns the length without its end, the size that it needs if that is
// more than given, or 0.
DWORD GetCurrentDirectoryA(DWORD size, LPSTR buffer);
BOOL SetCurrentDirectoryA(LPCSTR path);
