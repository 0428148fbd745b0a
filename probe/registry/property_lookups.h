// Typed lookups of one property of a registry entry, above or below it too. What a property means
// is not known here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

// Each searches the entry and its ancestors. Only if that finds nothing, it searches the entry and
// its descendants. A value of another type ends the search. `entry` and `key` are borrowed. Any
// failure leaves the output empty: "" or null.

// Writes ASCII text of at most 256 bytes with the NUL. A text that is longer or not ASCII is a
// failure.
void IOKitGetThisKeyCStr(io_registry_entry_t entry, CFStringRef key, char *text);

// Store an object that the caller releases with CFRelease, or null.
void IOKitGetThisKeyCFNumber(io_registry_entry_t entry, CFStringRef key, CFNumberRef *number);
void IOKitGetThisKeyCFDictionary(io_registry_entry_t entry, CFStringRef key,
                                 CFDictionaryRef *dictionary);
