// Threshold rows: each threshold of the active drive beside its attribute's value,
// and the texts of their columns. data_blocks.h knows the layout of the blocks,
// report_lines.h the form of the printed line.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "probe/smart/attribute_names.h"
#include "probe/smart/data_blocks.h"

struct SavedThresholdRec {
  UInt16 flags;  // 0 if no attribute entry matches, like currentValue
  char attribName[kAttribNameSize];
  UInt8 attribId;
  UInt8 threshold;
  UInt8 currentValue;
};

// The rows of the drive evaluated last, one for each threshold that its block
// holds, from the first row on; the rows after them are zero.
extern SavedThresholdRec gSavedThresholds[kSMARTEntryCount];

enum {
  kItemAttribName = 0,
  kItemAttribId = 1,
  kItemThreshold = 2,
  kItemCurrentValue = 3,
  kItemThresholdPercent = 4,  // the threshold in percent of the value; no line prints it
  kItemStatus = 5
};

// Fills the rows from the blocks of gActiveATADrive and prints a line for each threshold whose
// attribute has a value. A threshold whose attribute is missing or has no value gets a row and no
// line. It exchanges bytes of the data block in place, so it must be called only once for a drive,
// after both blocks are read. The checksums of the blocks are not checked.
void SyncThresholdData();

// Writes the text of column `item` of row `rowIndex` (0 to 29), at most 77 bytes
// with its NUL. Another item leaves `text` as it is.
void ThresholdsGetSetItemData(SInt16 rowIndex, SInt16 item, char *text);
