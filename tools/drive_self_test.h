// One self-test of one drive: starts it, and watches it if that is wanted.
#pragma once

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>

#include "machines/linux/host_disks.h"
#include "machines/linux/self_tester.h"

namespace tools {

struct SelfTestOrder {
  machines::SelfTestKind kind = machines::SelfTestKind::kShort;
  bool waits = false;
  std::chrono::milliseconds interval = std::chrono::seconds(10);  // between looks at a test
};

// What becomes of a test. The program ends with the first three as its statuses, of which the
// largest is the worst.
enum SelfTestStatus {
  kStarted = 0,  // and passed, if it was waited for
  kNotDone = 1,  // it could not be started, or not be watched to its end
  kFoundFault = 3,
  kHasNone = 4,  // the drive has no self-tests
};

// Set by a signal: the watching ends, and the test goes on.
extern volatile std::sig_atomic_t isInterrupted;

// Tests the disk through its node in `dev`. Says on standard output what becomes of it, each line
// after the disk's name. `beat` is called each time the drive has answered.
SelfTestStatus TestDrive(const machines::Disk& disk, const std::filesystem::path& dev,
                         const SelfTestOrder& order, const std::function<void()>& beat);

}  // namespace tools
