// The simulated controller as a library: the header for tests and for whoever embeds it. A Server answers on a
// pseudo-terminal from a thread of its own; a Controller alone is a state machine without clock and device.
#pragma once

#include "simulator/Cells.h"
#include "simulator/Config.h"
#include "simulator/Controller.h"
#include "simulator/Faults.h"
#include "simulator/Server.h"
#include "simulator/Wire.h"
