// What a report says, as values. report_reader.h reads it, health.h and check.h judge it,
// form.h writes it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace report {

// All texts are valid UTF-8 for one line, without control characters (text.h).

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

// Takes what a report says, in its order.
class Listener {
 public:
  Listener() = default;
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  virtual ~Listener() = default;

  virtual void OnDrive(const Drive& drive) = 0;
  // A device that could not be read.
  virtual void OnFailed(const std::string& device) = 0;
};

}  // namespace report
