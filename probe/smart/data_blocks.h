// The layout of the two 512-byte S.M.A.R.T. blocks, as far as they are read, and the byte-order
// pass over the data block. What the entries mean is not known here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/storage/ata/ATASMARTLib.h>

enum { kSMARTEntryCount = 30 };

// Offsets in an entry of the data block.
enum { kAttributeId = 0, kAttributeFlags = 1, kAttributeCurrentValue = 3 };

// Offsets in an entry of the threshold block.
enum { kThresholdId = 0, kThresholdValue = 1 };

// Entry `index`, 0 to 29, of a block: 12 bytes within it, borrowed. An entry with identifier 0 is
// empty. The index is not checked.
UInt8 *AttributeEntry(ATASMARTData *data, int index);
const UInt8 *ThresholdEntry(const ATASMARTDataThresholds *thresholds, int index);

// Exchanges the two bytes of 33 words of the data block in place, whatever the
// processor's byte order: the flags words of all entries, empty ones too, the
// revision and two words after the entries. A second call undoes the first.
void SwapSMARTDataBytes(ATASMARTData *data);

// The flags word of an attribute entry after SwapSMARTDataBytes: the first flags byte that the
// drive delivered is its high byte, whatever the processor's byte order.
UInt16 AttributeFlags(const UInt8 *entry);
