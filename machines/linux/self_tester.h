// A drive of this host that tests itself when it is asked to. These are the only commands of this
// system that make a drive do anything but answer.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "drives/facts.h"
#include "machines/linux/host_disks.h"

namespace machines {

enum class SelfTestKind { kShort, kExtended };

struct SelfTestSupport {
  bool hasTests = false;
  std::string failure = {};  // why that is not known, in words; empty: it is
};

// How a self-test goes on.
struct SelfTestState {
  std::string failure = {};  // why the drive does not say, in words; empty: it does
  bool isRunning = false;
  std::optional<int> percentDone = {};        // of one that runs, if the drive says
  std::optional<drives::SelfTest> last = {};  // of those that have ended
  std::size_t logged = 0;                     // how many tests are in the drive's log
};

// For one open device node, which must stay open as long as this is used.
class SelfTester {
 public:
  SelfTester() = default;
  SelfTester(const SelfTester&) = delete;
  SelfTester& operator=(const SelfTester&) = delete;
  virtual ~SelfTester() = default;

  // Whether the drive has self-tests. To be called first.
  virtual SelfTestSupport Support() = 0;
  virtual SelfTestState State() = 0;
  // How long the drive expects the test to take, in minutes, if it says.
  virtual std::optional<int> Minutes(SelfTestKind kind) = 0;
  // Starts the test, which then runs by itself. Returns why it did not, or an empty text. One that
  // runs already would end.
  virtual std::string Start(SelfTestKind kind) = 0;
};

// For the disk behind the open `node`. Null for one of kind kOther.
std::unique_ptr<SelfTester> MakeSelfTester(const Disk& disk, int node);

}  // namespace machines
