// The two commands of the File menu that keep a controller's parameters in a file and load them. Both run from any page
// and keep nothing between two runs; the page goes on polling behind their dialogs and boxes, but never between two
// writes or reads of theirs.
#pragma once

// Ask for a file of the controller's generation, then do the one below.
void OpenSettings();
void SaveSettings();

// Writes the values of a file to the controller, cell by cell. A file that does not match sends nothing; the first
// write that is not confirmed ends the load, and the cells before it stay written. A box tells what failed.
void LoadSettingsFile(const char* path);
// Reads the controller's blocks and writes them to a file. One that cannot be written keeps what it held, and a box
// tells so.
void SaveSettingsFile(const char* path);
