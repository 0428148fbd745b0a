// Prints the report's lines. Only this file knows their tags, fields and separators. It does not
// decide which line is printed, and does not make the text of a field.
#pragma once

#include "probe/state/drive_table.h"

// Each prints one line on standard output. Fields are printed as they are. A failed write is not
// noticed here: the stream keeps the error for the owner of the output.

// The IDENTIFY data must have their texts in reading order. At most 8 characters of the revision
// and 20 of the serial number are printed, each up to its first NUL.
void PrintStartLine(const SavedATADriveInfo *drive);

void PrintAttributeLine(const char *attribId, const char *attribName, UInt16 flags,
                        const char *currentValue, const char *threshold, const char *status);

// Prints "True" only if the drive said that a threshold is exceeded. Without an answer it prints
// "False" too.
void PrintEndLine(const SavedATADriveInfo *drive);

// For a device of that BSD path whose S.M.A.R.T. user client could not be opened, or for
// which the table has no record.
void PrintFailureLine(const char *bsdName);
