// The report's lines: the one place that knows their tags, fields and separators.
// Nothing here decides which line is printed, or makes a field's text.
#pragma once

#include "probe/state/drive_table.h"

// Each prints one line on standard output. A field is printed as it stands, and a
// failed write is not noticed: the stream keeps the error for whoever owns the output.

// Of the IDENTIFY data, whose texts are in reading order by now, at most 8
// characters of revision and 20 of serial number are printed, each to its first NUL.
void PrintStartLine(const SavedATADriveInfo *drive);

void PrintAttributeLine(const char *attribId, const char *attribName, UInt16 flags,
                        const char *currentValue, const char *threshold, const char *status);

// "True" only where the drive said that a threshold is exceeded; no answer is "False" too.
void PrintEndLine(const SavedATADriveInfo *drive);

// For a device of that BSD path whose S.M.A.R.T. user client could not be opened, or for
// which the table has no record.
void PrintFailureLine(const char *bsdName);
