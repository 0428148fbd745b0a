// A Machine is what the platform layer answers from: plain values for the
// registry and the system, and a Drive for whatever answers S.M.A.R.T. commands.
// A machine source builds one. No file format and no device access lives here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace platform {

struct Property;
struct KeyedProperty;

using Data = std::vector<std::uint8_t>;
using Array = std::vector<Property>;
using Dictionary = std::vector<KeyedProperty>;  // keys are unique; not checked here

// A number keeps the type that it was created with. `bits` holds the value: a
// signed integer extended to 64 bits, a 32- or 64-bit float in its own width.
struct Number {
  CFNumberType type = kCFNumberSInt32Type;
  std::uint64_t bits = 0;
  bool operator==(const Number&) const = default;
};

struct Date {
  std::int64_t seconds = 0;  // since 2001-01-01 00:00:00 UTC
  bool operator==(const Date&) const = default;
};

// Of booleans, arrays and dates the probe only ever sees the type.
struct Property {
  std::variant<std::string, Number, Data, Dictionary, bool, Array, Date> value;
  bool operator==(const Property&) const;
};

struct KeyedProperty {
  std::string key;
  Property value;
  bool operator==(const KeyedProperty&) const = default;
};

// The smallest of the platform's two usual types that holds `value`: signed 32-bit, else 64-bit.
Number IntegerNumber(std::int64_t value);
Number Float64Number(double value);

// The value under `key`, or null. Borrowed from `dictionary`. Looks at one key after the
// other: the dictionaries of a registry are short.
const Property* Find(const Dictionary& dictionary, std::string_view key);

// The drive that an entry's S.M.A.R.T. user client asks. An operation that
// fails returns false or nothing, and the probe's buffers stay as they were. A source must
// answer nothing rather than a guess: the probe takes each answer for what the drive said.
class Drive {
 public:
  static constexpr std::size_t kBlockSize = 512;
  using Block = std::array<std::uint8_t, kBlockSize>;

  Drive() = default;
  Drive(const Drive&) = delete;
  Drive& operator=(const Drive&) = delete;
  virtual ~Drive() = default;

  // Called before any other operation, for each S.M.A.R.T. interface that is asked for.
  // False: there is none. Nothing stays open between the operations.
  virtual bool Open() = 0;
  // What made the last Open fail, in words for a person. What came before the failure can
  // still be read.
  virtual std::string OpenFailure() const { return "it cannot be opened for S.M.A.R.T. commands"; }
  // SMART ENABLE OPERATIONS, or DISABLE. False: the drive refused.
  virtual bool Enable(bool enable) = 0;
  // SMART RETURN STATUS: true when a threshold is exceeded. Nothing: the probe reports the
  // drive as not exceeded all the same, so Open should have failed before.
  virtual std::optional<bool> ReturnStatus() = 0;
  // Without the data the probe does not ask for the thresholds, and prints no attribute.
  virtual std::optional<Block> ReadData() = 0;
  virtual std::optional<Block> ReadThresholds() = 0;
  // IDENTIFY DEVICE: 256 words, low byte first.
  virtual std::optional<Block> Identify() = 0;
};

// The probe finds ATA devices by `name` and AHCI devices by `className`; each is compared whole.
struct Entry {
  std::string name;
  std::string className;
  Dictionary properties;
  std::vector<Entry> children;
  std::shared_ptr<Drive> drive;  // null: the entry has no S.M.A.R.T. user client
};

struct Machine {
  SInt32 systemVersion = 0x1068;  // 0xMMmb, binary-coded decimal
  // Searched in this order, an entry before its children. The report has the same order.
  std::vector<Entry> roots;
  // Key to translation. A key that is missing gets the caller's own text.
  std::map<std::string, std::string> mainBundleStrings;
};

// The machine that the platform's calls answer from. Each program defines this
// once. It stays unchanged and alive while the probe holds anything from it. The first call
// may take the time that building it takes.
Machine& ThisMachine();

}  // namespace platform
