// The link to the controller: the serial port and the request and reply frames on it. Any page may include this header.
// What the bytes of a block mean is told in model/Blocks.h, what a cell means in model/Cells.h.
//
// The controller only answers: every exchange is one request and one reply, and blocks its caller until the reply has
// come or the read has timed out (100 ms + 40 ms a byte, or 200 ms of silence after a byte). The port is opened by the
// first exchange that needs it. No operation reports a failure: it shows in LinkLost, LastByteCount or a mirror that
// keeps its old bytes.
//
// A new exchange is declared here and written in Frames.cpp; what concerns the port alone goes to SerialPort.cpp.
#pragma once

#include <array>

#include "platform/Win32.h"

// The port. All state here lives from process start to exit; the port choice writes the name and the number after it
// has closed the port.
//
// Device name as CreateFileA takes it, "COM7:" or "\\.\COM7"; points to a text that outlives every use.
extern const char* PortName;
// 1 to 128; 0 until the ini file is read, or as a faulty ini file gives it.
extern unsigned PortNumber;
// Meaningful while PortOpen is 1, and even then unusable if the device could not be opened: every call on it fails
// then.
extern HANDLE PortHandle;
// 1 from the first try to open the port until the handle is closed, 0 else.
extern int PortOpen;

// The health of the link, on which ReadIdentBlock alone decides.
//
// 1 until the first good identity reply, and again after the third failed one in a row; 0 else.
extern int LinkLost;
// Identity replies without a marker since the last good one, 0 to MostLinkRetries between exchanges.
constexpr int MostLinkRetries = 2;
extern int LinkRetries;
// Poll period in milliseconds: TimerPeriod is what the link wants, one of the two constants, unless a page wants a
// shorter one and writes it at each tick; ActiveTimerPeriod is what the showing page last armed at the end of a tick,
// which is who writes it.
constexpr UINT GoodLinkPeriod = 50;
constexpr UINT LostLinkPeriod = 500;
extern UINT TimerPeriod;
extern UINT ActiveTimerPeriod;
// The timers that poll: that of the showing page and that of a dialog over it.
constexpr UINT_PTR PageTimer = 1;
constexpr UINT_PTR DialogTimer = 2;

// Bytes moved by the latest write or read on the port.
extern DWORD LastByteCount;
// Reply to the last WriteCell: byte 1 is the value that the controller took. Keeps its bytes when no reply comes.
extern std::array<BYTE, 3> WriteReply;
// Milliseconds between the request and the read of WriteCell: 0, unless a factory reset asks for more and puts 0 back.
extern DWORD WriteDelay;

// From byte 2 of IdentBlock, at each DecodeIdentity: family 1 to 8 (bits 7 to 5, plus 1), version 0 to 31 (bits 4 to
// 0). Both are 0 before the first one.
extern int ControllerFamily;
extern int FirmwareVersion;

// Opens and configures PortName; PortHandle is unusable if that fails. The caller sets PortOpen, also then.
void OpenPort();
// Closes the port if PortOpen is 1: for a change of port and the end of the program.
void ClosePort();
// What the third failed identity reply in a row entails: purges and closes the port, zeroes all mirrors, polls slower.
void LoseLink();

// Asks for the identity block; the one exchange that decides whether the link is good. A reply without the marker
// counts towards the loss of the link, one with a bad sum closes the port, a good one goes to IdentBlock.
void ReadIdentBlock();
// Ask for a block; a reply with marker and good sum goes to the mirror of that name, any other leaves it as it was.
// ParamBlockA is taken in the length of ControllerFamily as last decoded. ParamBlockC is for family 4 only.
void ReadLiveBlock();
void ReadParamBlockA();
void ReadParamBlockB();
void ReadParamBlockC();

// Sets ControllerFamily and FirmwareVersion from IdentBlock and returns the family; a zeroed block gives family 1.
int DecodeIdentity();

// The head of every tick: ReadIdentBlock and DecodeIdentity.
void PollIdentity();
// The end of every tick: starts the window's timer anew if TimerPeriod is no longer what is armed.
void KeepTimer(HWND window, UINT_PTR timer);

// Writes value to a ParamCell or CommandCell by its number in model/Cells.h, alike for both families. Sends nothing,
// and leaves LastByteCount alone, unless the identity as last read is of a served family. The reply goes to WriteReply
// unjudged, its length to LastByteCount; no mirror changes.
void WriteCell(unsigned cell, BYTE value);

// Whether the family as last decoded is one that the tool serves.
bool FamilyServed();
// Whether blocks may be read: the link is good and the family served.
bool LinkServed();
