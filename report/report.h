// What a report says, as values, and what a recording of the machine tells besides.
// report_reader.h reads it, health.h judges it, forms.h writes it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace report {

// All texts are valid UTF-8 and may hold any character but the line feed; who shows them has to
// make them fit for that.

struct Counts {
  std::uint8_t worst = 0;  // the least value so far
  std::uint64_t raw = 0;   // 48 bits, which each maker uses in its own way
};

struct Attribute {
  std::uint8_t id = 0;  // from 1 in a report
  std::string name;
  std::uint16_t flags = 0;  // the first byte that the drive delivers is the high byte
  std::uint8_t value = 0;
  std::uint8_t threshold = 0;
  bool valid = true;  // false: the report calls value or threshold invalid
  // These two are what the line's status says, whatever flags, value and threshold are.
  bool preFailure = false;
  bool reached = false;
  std::optional<Counts> counts = {};  // from a recording
};

// How many sectors the drive has lost in one way; from a recording.
struct SectorCount {
  std::string_view state;  // "reallocated", "pending" or "uncorrectable"
  std::uint32_t count = 0;
};

// Any text may be empty, where the probe could not find it out, and padded with blanks.
struct Drive {
  std::string device;
  std::string product;
  std::string revision;
  std::string capacity;  // a label with its unit, "232.89 GB"
  std::string serial;
  bool thresholdExceeded = false;  // false also where the drive gave no answer
  std::vector<Attribute> attributes;
  // From a recording.
  std::optional<int> temperature = {};    // in degrees Celsius, from 1 to 100
  std::vector<SectorCount> sectors = {};  // in that order, without those that it does not count
  std::optional<std::chrono::sys_seconds> date = {};  // when it answered
};

// A device that could not be read. Only a recording has its names, as far as they were known.
struct UnreadDrive {
  std::string device, product = {}, serial = {};
};

struct Damage {
  std::size_t line = 0;  // from 1
  std::string what;      // words of the reader's own, with nothing of the line in them
};

struct Report {
  std::vector<Drive> drives;          // those that were read, in order
  std::vector<UnreadDrive> notRead;   // in order
  std::optional<Damage> damage = {};  // then the rest is what came before it
  // The names of disks that the report does not have; from a recording.
  std::vector<std::string> withoutSMART = {};
  std::optional<std::vector<std::string>> notATA = {};  // nullopt: nothing is known of any
};

}  // namespace report
