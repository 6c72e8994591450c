// Serial ports, plain files, directories and the clock. Include platform/Win32.h, not this.
#pragma once

#include "platform/linux/WinTypes.h"

constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD MOVEFILE_REPLACE_EXISTING = 1;
constexpr DWORD MOVEFILE_WRITE_THROUGH = 8;
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

// Opens a serial port for both directions, or a plain file that exists; share and flags are 0, the two pointers null.
// "COMn:" or "\\.\COMn" with n from 1 to 128 is a port, mapped as told in PortTable.h; one that is missing, not a
// terminal device, held by another program or forbidden gives INVALID_HANDLE_VALUE. The time-outs of a fresh port are
// one second a call. Any other name is that of a file: the same for a directory, a missing file, or one that may not be
// read or written as asked. Its handle serves FlushFileBuffers and CloseHandle, and others are not kept from it.
HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD creation, DWORD flags,
                   HANDLE templateFile);
// Drops bytes to a port that have not gone out yet.
BOOL CloseHandle(HANDLE handle);

// What was written to the file, by whatever way, is on the disk after that. Plain files only; FALSE for one that was
// not opened for writing.
BOOL FlushFileBuffers(HANDLE file);
// In one step: whoever looks finds the old file or the new one, whole. MOVEFILE_REPLACE_EXISTING is always given.
// FALSE, and nothing has changed, if `to` is a directory or may not be written, or lies on another disk.
BOOL MoveFileExA(LPCSTR from, LPCSTR to, DWORD flags);
// FALSE for a file that is missing, a directory or one that may not be written.
BOOL DeleteFileA(LPCSTR path);

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

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;  // from 1
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
void GetLocalTime(SYSTEMTIME* time);

// Paths are the file system's bytes. The first returns the length without its end, the size that it needs if that is
// more than given, or 0.
DWORD GetCurrentDirectoryA(DWORD size, LPSTR buffer);
BOOL SetCurrentDirectoryA(LPCSTR path);
