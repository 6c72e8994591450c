// From a port's name to the device behind it. For the serial calls of this folder only.
//
// COM7 is the entry "COM7" of the port directory, if there is one; a link to a device is what belongs there. Without an
// entry, it is the device of this table:
//
//     COM1  to COM4    /dev/ttyS0   to ttyS3        COM17  to COM44   /dev/ttyS4   to ttyS31
//     COM5  to COM8    /dev/ttyUSB0 to ttyUSB3      COM45  to COM72   /dev/ttyUSB4 to ttyUSB31
//     COM9  to COM12   /dev/ttyACM0 to ttyACM3      COM73  to COM100  /dev/ttyACM4 to ttyACM31
//     COM13 to COM16   /dev/rfcomm0 to rfcomm3      COM101 to COM128  /dev/rfcomm4 to rfcomm31
#pragma once

#include <string>
#include <string_view>

namespace layer {

constexpr int PortCount = 128;

// Number of the port that a name in either spelling, "COM7:" or "\\.\COM7", speaks of; 0 if it speaks of none.
int portNumber(std::string_view name);

// Path of the device for a name in either spelling; empty for any other name. An entry that leads nowhere still counts,
// so that a device that was unplugged is not mistaken for one of the table.
std::string portDevice(std::string_view name);

// The port directory: "ports" in the directory that the process was started in, until it is set to another one.
const std::string& portDirectory();
void setPortDirectory(std::string path);

// Working directory of the process when it was started; empty if it had none that could be named.
const std::string& startDirectory();

}  // namespace layer
