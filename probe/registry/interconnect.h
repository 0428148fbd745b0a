// The description of how a drive is attached: its bus and its address there.
// Nothing else about the drive is looked up here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

// Writes the description of `entry`, which is borrowed, into `info` and turns it into a
// length-prefixed string there: a length byte and at most 255 characters. Before that the text
// takes up to 777 bytes with its NUL. If a property is missing or unusable, the description is
// shorter or empty. It belongs to the drive record, but is not printed.
void IOKitUtilsGetDeviceInterfaceInfo(io_registry_entry_t entry, char *info);
