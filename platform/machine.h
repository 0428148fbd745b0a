// A Machine is what the platform layer answers from: plain values for the registry, the
// system and what its drives answer. A machine source builds one. No file format and no
// device access lives here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/block.h"

namespace platform {

struct Property;

using Data = std::vector<std::uint8_t>;
using Array = std::vector<Property>;
using Dictionary = std::map<std::string, Property, std::less<>>;

// A number keeps the type that it was created with. `bits` holds the value: a
// signed integer extended to 64 bits, a 32- or 64-bit float in its own width.
struct Number {
  CFNumberType type = kCFNumberSInt32Type;
  std::uint64_t bits = 0;
  bool operator==(const Number&) const = default;
};

// Of booleans, arrays and dates the probe only ever sees the type.
struct Property {
  std::variant<std::string, Number, Data, Dictionary, bool, Array, std::chrono::sys_seconds> value;
  bool operator==(const Property&) const;
};

// The smallest of the platform's two usual types that holds `value`: signed 32-bit, else 64-bit.
Number IntegerNumber(std::int64_t value);
Number Float64Number(double value);

// The value under `key`, or null; the text under it, or null where it is none. Both are
// borrowed from `dictionary`.
const Property* Find(const Dictionary& dictionary, std::string_view key);
const std::string* FindText(const Dictionary& dictionary, std::string_view key);

// What the reading of a block came to.
struct BlockAnswer {
  // At most base::kBlockSize. Of a success the block, whose missing end is zeros; of a failure what
  // it leaves in the caller's buffer: nothing, a part or all of a block.
  Data bytes;
  bool succeeds = false;

  // The block of a success.
  std::optional<base::Block> Block() const;
};

// All that a drive answers. A source must have no answer rather than a guess: the probe takes
// each for what the drive said.
struct DriveAnswers {
  // Why there is no S.M.A.R.T. interface, in words for a person; empty: there is one. What came
  // before the failure may stand in the rest.
  std::string whyNotOpened;
  bool enables = true;  // SMART ENABLE OPERATIONS
  // SMART RETURN STATUS: true when a threshold is exceeded. nullopt: it failed. The probe reports
  // the drive as not exceeded all the same, so it should not have been opened.
  std::optional<bool> exceeded;
  BlockAnswer data;        // SMART READ DATA. Where it fails the probe does not ask for the next
  BlockAnswer thresholds;  // SMART READ THRESHOLDS
  BlockAnswer identify;    // IDENTIFY DEVICE: 256 words, low byte first
  std::optional<std::chrono::sys_seconds> date;  // when it answered, if that is known
};

// Asks the drive. Called for each S.M.A.R.T. user client that is opened, at its first
// S.M.A.R.T. interface; what the interface is called for is answered from the result.
using Drive = std::function<DriveAnswers()>;

// The probe finds ATA devices by `name` and AHCI devices by `className`; each is compared whole.
struct Entry {
  std::string name;
  std::string className;
  Dictionary properties;
  std::vector<Entry> children;
  Drive drive;  // empty: the entry has no S.M.A.R.T. user client
};

struct Machine {
  SInt32 systemVersion = 0x1068;  // 0xMMmb, binary-coded decimal
  // Searched in this order, an entry before its children. The report has the same order.
  std::vector<Entry> roots;
  // Key to translation. A key that is missing gets the caller's own text.
  std::map<std::string, std::string, std::less<>> mainBundleStrings;
};

// What the platform's calls answer from: an empty machine before the first SetMachine, which takes
// back all that the probe holds of the machine before (EndProcess in ledger.h). Of a function that
// makes the machine, the first call takes the time; what it throws passes through that call. The
// machine stays as it is until the next SetMachine.
void SetMachine(Machine machine);
void SetMachine(std::function<Machine()> source);
const Machine& ThisMachine();

// From now on the searches for services hand out this one entry of the machine alone, where it
// matches; null: all that match, as after SetMachine. So a pass can be run for each device by
// itself.
void SetOnlyDevice(const Entry* device);
const Entry* OnlyDevice();

}  // namespace platform
