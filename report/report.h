// What a report says, as values. report_reader.h reads it, health.h judges it,
// forms.h writes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace report {

// All texts are valid UTF-8 and may hold any character but the line feed; who shows them has to
// make them fit for that.

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
};

struct Damage {
  std::size_t line = 0;  // from 1
  std::string what;      // words of the reader's own, with nothing of the line in them
};

struct Report {
  std::vector<Drive> drives;         // those that were read, in order
  std::vector<std::string> notRead;  // the devices that could not be read, in order
  std::optional<Damage> damage;      // then the rest is what came before it
};

}  // namespace report
