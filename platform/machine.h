// A Machine is what the platform layer answers from: plain values for the registry, the system and
// the answers of its drives. A machine source builds one. No file format and no device access lives
// here.
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

// Find gives the value under `key`, or null. FindText gives the text under `key`, or null if there
// is no value or it is no text. Both are borrowed from `dictionary`.
const Property* Find(const Dictionary& dictionary, std::string_view key);
template <typename Value>
const Value* FindValue(const Dictionary& dictionary, std::string_view key) {
  const Property* found = Find(dictionary, key);
  return found == nullptr ? nullptr : std::get_if<Value>(&found->value);
}
inline const std::string* FindText(const Dictionary& dictionary, std::string_view key) {
  return FindValue<std::string>(dictionary, key);
}

// The result of reading a block.
struct BlockAnswer {
  // At most base::kBlockSize bytes. After a success they are the block, and a missing end stands
  // for zeros. After a failure they are what is left in the caller's buffer: nothing, a part or all
  // of a block.
  Data bytes;
  bool succeeds = false;

  // The whole block after a success, else nullopt.
  std::optional<base::Block> Block() const;

  bool operator==(const BlockAnswer&) const = default;
};

// All that a drive answers. A source must leave an answer out rather than guess it, because the
// probe takes each answer for the drive's own.
struct DriveAnswers {
  // Why there is no S.M.A.R.T. interface, in words for a person. Empty: there is one. The other
  // members may hold answers that came before the failure.
  std::string whyNotOpened;
  bool enables = true;  // SMART ENABLE OPERATIONS
  // SMART RETURN STATUS: true if a threshold is exceeded. nullopt: it failed. The probe would still
  // report the drive as not exceeded, so a source should then say why it was not opened.
  std::optional<bool> exceeded;
  BlockAnswer data;        // SMART READ DATA; if it fails, the probe does not ask for thresholds
  BlockAnswer thresholds;  // SMART READ THRESHOLDS
  BlockAnswer identify;    // IDENTIFY DEVICE: 256 words, low byte first
  std::optional<std::chrono::sys_seconds> date;  // when it answered, if that is known
  // What the platform's calls do not ask for: blocks as the drive sent them, by the names that
  // machines/entries/drive_logs.h gives them.
  std::map<std::string, Data, std::less<>> logs;

  std::string whyNoLogs =
      {};  // why logs that it should have are missing, in words; empty: none are

  bool operator==(const DriveAnswers&) const = default;
};

// Asks the drive. It is called once for each S.M.A.R.T. user client that is opened, when the first
// S.M.A.R.T. interface is asked for. The calls of the interface are answered from the result.
using Drive = std::function<DriveAnswers()>;

// The probe finds ATA devices by `name` and AHCI devices by `className`; each is compared whole.
struct Entry {
  std::string name;
  std::string className;
  Dictionary properties;
  std::vector<Entry> children;
  Drive drive;  // empty: the entry has no S.M.A.R.T. user client
  // What the platform's calls do not ask for: what the drive answered before, the oldest first,
  // each with its date; and since when a drive is gone whose last answers these are.
  std::vector<DriveAnswers> earlier = {};
  std::optional<std::chrono::sys_seconds> goneSince = {};
};

struct Machine {
  SInt32 systemVersion = 0x1068;  // 0xMMmb, binary-coded decimal
  // Searched in this order, an entry before its children. The report has the same order.
  std::vector<Entry> roots;
  // From key to translation. For a key that is missing, the caller gets its own text.
  std::map<std::string, std::string, std::less<>> mainBundleStrings;
};

// The machine that the platform's calls answer from. It is empty before the first SetMachine, and
// stays as it is until the next. SetMachine takes back all that the probe holds of the machine
// before (EndProcess in ledger.h). The first call that needs the machine calls `source` and takes
// as long. Exceptions of `source` pass through that call, and leave the machine empty.
void SetMachine(Machine machine);
void SetMachine(std::function<Machine()> source);
const Machine& ThisMachine();

// Limits the searches for services to this one entry of the machine, so that a pass can be run for
// each device by itself. They find the entry only if it matches. Null removes the limit, as does
// SetMachine.
void SetOnlyDevice(const Entry* device);
const Entry* OnlyDevice();

}  // namespace platform
