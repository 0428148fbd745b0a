#include "probe/smart/data_blocks.h"

enum {
  kRevisionWord = 0,
  kFirstEntry = 2,
  kEntrySize = 12,
  kOfflineCollectionTimeWord = 364,
  kCapabilityWord = 368
};

UInt8 *AttributeEntry(ATASMARTData *data, int index) {
  return (UInt8 *)data + kFirstEntry + index * kEntrySize;
}

const UInt8 *ThresholdEntry(const ATASMARTDataThresholds *thresholds, int index) {
  return (const UInt8 *)thresholds + kFirstEntry + index * kEntrySize;
}

static void SwapWord(UInt8 *word) {
  UInt8 first = word[0];
  word[0] = word[1];
  word[1] = first;
}

void SwapSMARTDataBytes(ATASMARTData *data) {
  UInt8 *block = (UInt8 *)data;
  SwapWord(block + kRevisionWord);
  SwapWord(block + kOfflineCollectionTimeWord);
  SwapWord(block + kCapabilityWord);
  for (int i = 0; i < kSMARTEntryCount; i++) SwapWord(AttributeEntry(data, i) + kAttributeFlags);
}

UInt16 AttributeFlags(const UInt8 *entry) {
  return (UInt16)(entry[kAttributeFlags + 1] << 8 | entry[kAttributeFlags]);
}
