// Start-up and the probe pass: checks the system's version, sets the process-wide state, makes one
// pass and releases what it kept open. Nothing here looks for drives or prints.
#pragma once

#include <Carbon/Carbon.h>

extern ICInstance gICInstance;  // started, but never used

// The whole run. It reads no arguments and prints the report on standard output, without flushing
// it. Returns false, and looks at no drive and prints nothing, on a system before 10.2 or without
// memory for the table. Each call allocates a table of its own and does not free the one before.
Boolean RunProbe();

// Runs one pass. Despite its name it reads no preferences.
void GetApplicationPrefs();

// One pass: finds, reads and reports every drive, then releases the objects of the counted ones.
// Neither argument is read; they are those of a timer's callback. The records keep the released
// pointers until the next pass clears them.
void SMARTPollingRoutine(void *unusedTimer, void *unusedData);
