// The commands of the menu and of the accelerators.
#pragma once

// Runs a command by its id; false for an id that has none.
bool RunCommand(unsigned id);
