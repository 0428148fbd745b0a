#include "probe/smart/threshold_rows.h"

#include <cfloat>
#include <cstdio>
#include <cstring>

#include "probe/state/drive_table.h"
#include "probe/state/process_state.h"
#include "probe/state/report_lines.h"

// Percentages are computed in single precision. A higher precision, as 32-bit x86 has without SSE,
// would give other decimals.
static_assert(FLT_EVAL_METHOD == 0, "Float32 arithmetic must be in single precision");

// Values and thresholds that are no measurement.
enum { kNoDataValue = 100, kInvalidValue = 254, kAlwaysFailing = 255 };

// The pre-failure bit of the flags word after the byte-order pass, by the processor's byte order.
enum { kPreFailureBitLittleEndian = 0x0100, kPreFailureBitBigEndian = 0x0001 };

SavedThresholdRec gSavedThresholds[kSMARTEntryCount];

static void ThresholdToCStr(UInt8 threshold, char *text) {
  switch (threshold) {
    case 0:
      strcpy(text, "Always Passing");
      break;
    case kInvalidValue:
      strcpy(text, "254 (Invalid)");
      break;
    case kAlwaysFailing:
      strcpy(text, "Always Failing");
      break;
    default:
      sprintf(text, "%1d", threshold);
  }
}

static void CurrentValueToCStr(UInt8 value, char *text) {
  switch (value) {
    case 0:
    case kInvalidValue:
    case kAlwaysFailing:
      sprintf(text, "%1d (Invalid)", value);
      break;
    case kNoDataValue:
      strcpy(text, "No Data");
      break;
    default:
      sprintf(text, "%1d", value);
  }
}

static void ThresholdPercentToCStr(const SavedThresholdRec *row, char *text) {
  Float32 threshold = row->threshold;
  Float32 value = row->currentValue;
  if (row->threshold == 0 || row->currentValue == 0 || row->currentValue == kNoDataValue) {
    strcpy(text, "n/a");
    return;
  }
  Float32 product = threshold * 100.0F;
  Float32 percent = product / value;
  sprintf(text, "%.2f%%", (Float64)percent);
}

static const char *StatusCStr(const SavedThresholdRec *row) {
  Boolean bReached = row->currentValue != 0 && row->currentValue <= row->threshold;
  int preFailureBit = bLittleEndianCPU ? kPreFailureBitLittleEndian : kPreFailureBitBigEndian;
  if ((row->flags & preFailureBit) != 0) {
    return bReached ? "Pre-Fail:Pre-Failure Warning: Imminent loss of data predicted"
                    : "Pre-Fail:OK";
  }
  return bReached ? "Life-Span:Advisory Condition: Attribute has exeeded intended life expectancy"
                  : "Life-Span:OK";
}

void ThresholdsGetSetItemData(SInt16 rowIndex, SInt16 item, char *text) {
  const SavedThresholdRec *row = &gSavedThresholds[rowIndex];
  switch (item) {
    case kItemAttribName:
      strcpy(text, row->attribName);
      break;
    case kItemAttribId:
      sprintf(text, "%1d", row->attribId);
      break;
    case kItemThreshold:
      ThresholdToCStr(row->threshold, text);
      break;
    case kItemCurrentValue:
      CurrentValueToCStr(row->currentValue, text);
      break;
    case kItemThresholdPercent:
      ThresholdPercentToCStr(row, text);
      break;
    case kItemStatus:
      strcpy(text, StatusCStr(row));
      break;
    default:
      break;
  }
}

// The first attribute entry that has this identifier and a value other than 0, or null.
static const UInt8 *FindAttributeWithValue(ATASMARTData *data, UInt8 attribId) {
  for (int i = 0; i < kSMARTEntryCount; i++) {
    const UInt8 *entry = AttributeEntry(data, i);
    if (entry[kAttributeId] == attribId && entry[kAttributeCurrentValue] != 0) return entry;
  }
  return nullptr;
}

static void PrintRow(SInt16 rowIndex) {
  char attribName[256];
  char attribId[256];
  char threshold[256];
  char currentValue[256];
  char status[256];
  ThresholdsGetSetItemData(rowIndex, kItemAttribName, attribName);
  ThresholdsGetSetItemData(rowIndex, kItemAttribId, attribId);
  ThresholdsGetSetItemData(rowIndex, kItemThreshold, threshold);
  ThresholdsGetSetItemData(rowIndex, kItemCurrentValue, currentValue);
  ThresholdsGetSetItemData(rowIndex, kItemStatus, status);
  PrintAttributeLine(attribId, attribName, gSavedThresholds[rowIndex].flags, currentValue,
                     threshold, status);
}

static void SyncThresholdRow(SInt16 rowIndex, const UInt8 *thresholdEntry) {
  SavedThresholdRec *row = &gSavedThresholds[rowIndex];
  row->attribId = thresholdEntry[kThresholdId];
  row->threshold = thresholdEntry[kThresholdValue];
  GetSmartAttribName(row->attribId, IsMaxtorDrive(), row->attribName);

  const UInt8 *attribute = FindAttributeWithValue(&gActiveATADrive->smartData, row->attribId);
  if (attribute == nullptr) return;

  row->flags = AttributeFlags(attribute);
  row->currentValue = attribute[kAttributeCurrentValue];
  PrintRow(rowIndex);
}

void SyncThresholdData() {
  BlockZero(gSavedThresholds, (Size)sizeof gSavedThresholds);
  SwapSMARTDataBytes(&gActiveATADrive->smartData);

  SInt16 rowIndex = 0;
  for (int i = 0; i < kSMARTEntryCount; i++) {
    const UInt8 *entry = ThresholdEntry(&gActiveATADrive->smartThresholds, i);
    if (entry[kThresholdId] == 0) continue;
    SyncThresholdRow(rowIndex, entry);
    rowIndex++;
  }
}
