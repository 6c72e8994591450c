// The dialog of what the controller stores about itself and its installation: version, registration number, hours on
// gas and installation date, of which the last three can be changed in family 4.
#pragma once

#include "platform/Win32.h"

// Whether the registration number or the date is being edited, 0 or 1; both 0 when the dialog opens.
extern int RegEditOpen;
extern int DateEditOpen;

// Runs the dialog over the page, which leaves the link to it meanwhile.
void RunControllerDialog();
