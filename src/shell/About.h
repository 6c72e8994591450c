// The About dialog.
#pragma once

// Runs the dialog over the page, whose polling stops meanwhile.
void RunAboutDialog();
