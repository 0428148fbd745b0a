// Start-up and the probe pass: the version gate, the setting of the process-wide state, one
// pass and the release of what it kept open. Nothing here looks for drives or prints.
#pragma once

#include <Carbon/Carbon.h>

extern ICInstance gICInstance;  // started for form's sake; nothing uses it

// The whole run. It reads no arguments and prints the report on standard output,
// without flushing it. False where it looks at nothing, which prints nothing either: on a system
// before 10.2, or without memory for the table. Each call allocates a table of its own and forgets
// the one before.
Boolean RunProbe();

// Runs one pass. Despite its name it reads no preferences.
void GetApplicationPrefs();

// One pass: finds, reads and reports every drive, then releases the objects of the
// counted ones. Neither argument is read: they are those of a timer's callback. The records keep
// the released pointers, which the next pass clears.
void SMARTPollingRoutine(void *unusedTimer, void *unusedData);
