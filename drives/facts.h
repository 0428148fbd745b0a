// The facts of a host's drives, as values. What takes them out of blocks and reports, what judges
// them and what shows them lives elsewhere.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drives {

// All texts are valid UTF-8 and may hold any character: drives and registries choose them.

struct Counts {
  std::uint8_t worst = 0;  // the lowest normalized value so far
  std::uint64_t raw = 0;   // 48 bits, which each maker uses in its own way
};

struct Attribute {
  std::uint8_t id = 0;  // from 1 in a report
  std::string name;
  std::uint16_t flags = 0;  // the first byte that the drive delivers is the high byte
  std::uint8_t value = 0;
  std::uint8_t threshold = 0;
  bool valid = true;  // false: the report calls value or threshold invalid
  bool preFailure = false;
  bool warns = false;                 // the report's status says that the threshold is reached
  std::optional<Counts> counts = {};  // from a recording
};

// How many sectors a drive has lost in one way.
struct SectorCount {
  std::string_view state;              // "reallocated", "pending" or "uncorrectable"
  std::optional<std::uint32_t> count;  // nullopt: the raw value is no clear count
};

// What a recording knows of a drive that was read, and a report does not.
struct RecordedFacts {
  std::optional<int> temperature = {};                // in degrees Celsius, from 1 to 100
  std::vector<SectorCount> sectors = {};              // of the attributes that the drive has
  std::optional<std::chrono::sys_seconds> date = {};  // when it answered
};

// A drive that was read. Any text may be empty, where it could not be found out, and padded with
// blanks.
struct Drive {
  std::string device;  // its path
  std::string product;
  std::string revision;
  std::string capacity;  // a label with its unit, "232.89 GB"
  std::string serial;
  bool thresholdExceeded = false;  // false also where the drive gave no answer
  std::vector<Attribute> attributes;
  std::optional<RecordedFacts> recorded = {};
};

// A drive that could not be read. Only a recording has its names, as far as they were known.
struct UnreadDrive {
  std::string device, product = {}, serial = {};
};

// Where a report cannot be read any further.
struct Damage {
  std::size_t line = 0;  // from 1
  std::string what;      // words of the reader's own, with nothing of the line in them
};

// Disks that a report does not mention, by the names of their block devices; from a recording.
struct OtherDisks {
  std::vector<std::string> withoutSMART;
  std::vector<std::string> notATA;
};

struct Host {
  std::vector<Drive> drives = {};         // those that were read, in order
  std::vector<UnreadDrive> notRead = {};  // in order
  std::optional<Damage> damage = {};      // of a report; then the rest is what came before it
  std::optional<OtherDisks> others = {};  // known from a recording alone
};

}  // namespace drives
