// What a report says, as values. report_reader.h reads it, health.h and check.h judge it,
// forms.h writes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace report {

// All texts are valid UTF-8 (text.h) and may hold any character but the line feed; who
// shows them has to make them fit for that.

struct Attribute {
  std::uint8_t id = 0;
  std::string name;
  std::uint16_t flags = 0;  // the first byte that the drive delivers is the high byte
  std::uint8_t value = 0;
  std::uint8_t threshold = 0;
  bool valid = true;  // neither value nor threshold is marked as one that cannot be
  bool preFailure = false;
  bool reached = false;
};

struct Drive {
  std::string device;
  std::string product;
  std::string revision;
  std::string capacity;
  std::string serial;
  bool thresholdExceeded = false;
  std::vector<Attribute> attributes;
};

struct Damage {
  std::size_t line = 0;  // from 1
  std::string what;
};

struct Report {
  std::vector<Drive> drives;         // those that were read, in order
  std::vector<std::string> notRead;  // the devices that could not be read, in order
  std::optional<Damage> damage;      // then the rest is what came before it
};

}  // namespace report
