// Display names of S.M.A.R.T. attributes, and the maker test that some of them
// depend on. Values and thresholds are not looked at here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

// Room for every name of the table; the longest takes 33 bytes with its NUL.
enum { kAttribNameSize = 35 };

// Writes the name of attribute `attribId` and its NUL, at most 33 bytes. Any
// `isMaxtor` but 0 selects the names that the maker gives six identifiers. An
// identifier without a name gives "Unknown Attribute". Names are 8-bit text: in
// some, a byte 0xCA (a no-break space) stands between the words.
void GetSmartAttribName(UInt8 attribId, Boolean isMaxtor, char *name);

// 1 when the product name of gActiveATADrive holds "MAXTOR" or "Maxtor", else 0. No other
// spelling counts. There has to be an active drive.
Boolean IsMaxtorDrive();
