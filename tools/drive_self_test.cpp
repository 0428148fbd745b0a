#include "tools/drive_self_test.h"

#include <linux/capability.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/descriptor.h"
#include "base/printable_text.h"
#include "machines/linux/disk_node.h"
#include "machines/linux/sysfs_files.h"

namespace tools {

volatile std::sig_atomic_t isInterrupted = 0;

namespace {

using machines::SelfTester;
using machines::SelfTestKind;
using machines::SelfTestState;
using Clock = std::chrono::steady_clock;

constexpr const char* kNoTests = "it has no self-tests";
constexpr const char* kUnsaid = "the drive does not say how the self-test ended";

class Watch {
 public:
  Watch(const machines::Disk& disk, const SelfTestOrder& order, std::function<void()> beat)
      : name_(base::PrintableASCII(disk.name)), order_(order), beat_(std::move(beat)) {}

  SelfTestStatus Test(SelfTester& tester) {
    const machines::SelfTestSupport support = tester.Support();
    beat_();
    if (!support.failure.empty()) return Say(support.failure, kNotDone);
    if (!support.hasTests) return Say(kNoTests, kHasNone);
    const SelfTestState before = tester.State();
    if (!before.failure.empty()) return Say(before.failure, kNotDone);
    if (before.isRunning) return Say("a self-test runs already" + DoneText(before), kNotDone);
    const std::optional<int> minutes = tester.Minutes(order_.kind);
    if (isInterrupted != 0) return Say("no self-test was started", kNotDone);
    const std::string failure = tester.Start(order_.kind);
    beat_();
    if (!failure.empty()) return Say(failure, kNotDone);
    Say(Kind() + " self-test started" + TimeText(minutes), kStarted);
    return order_.waits ? WaitFor(tester, before, minutes) : kStarted;
  }

  SelfTestStatus Say(const std::string& text, SelfTestStatus status) const {
    if (isatty(STDERR_FILENO) != 0) std::fprintf(stderr, "\r%-40s\r", "");
    std::printf("%s: %s\n", name_.c_str(), text.c_str());
    std::fflush(stdout);
    return status;
  }

 private:
  std::string Kind() const { return order_.kind == SelfTestKind::kShort ? "short" : "extended"; }

  static std::string DoneText(const SelfTestState& state) {
    return state.percentDone ? ", " + std::to_string(*state.percentDone) + " % done" : "";
  }

  static std::string TimeText(std::optional<int> minutes) {
    if (!minutes) return "; the drive does not say how long it takes";
    return "; the drive expects it to take " + std::to_string(*minutes) +
           (*minutes == 1 ? " minute" : " minutes");
  }

  void ShowProgress(const SelfTestState& state) const {
    if (isatty(STDERR_FILENO) == 0) return;
    std::fprintf(stderr, "\r%-40.40s\r", (name_ + ": running" + DoneText(state)).c_str());
  }

  // A signal ends it early.
  void Sleep() const {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(order_.interval);
    const std::chrono::nanoseconds rest = order_.interval - seconds;
    const timespec time = {static_cast<std::time_t>(seconds.count()), rest.count()};
    nanosleep(&time, nullptr);
  }

  // Whether the last test is not the one that was the last before.
  static bool IsNew(const SelfTestState& state, const SelfTestState& before) {
    return state.logged != before.logged || state.last != before.last;
  }

  // A drive in use takes longer than it expects. A test that never ends must not hold up those of
  // other drives.
  static std::chrono::minutes Patience(std::optional<int> minutes) {
    constexpr std::chrono::minutes kLeast = std::chrono::hours(1);
    return minutes ? kLeast + 5 * std::chrono::minutes(*minutes) : std::chrono::hours(48);
  }

  // Some drives do not answer each time while they test themselves.
  SelfTestStatus WaitFor(SelfTester& tester, const SelfTestState& before,
                         std::optional<int> minutes) {
    constexpr int kMaxFailures = 5;
    const Clock::time_point end = Clock::now() + Patience(minutes);
    int failures = 0;
    bool hasRun = false;
    while (true) {
      Sleep();
      if (isInterrupted != 0) return Say("the self-test goes on", kNotDone);
      const SelfTestState state = tester.State();
      beat_();
      failures = state.failure.empty() ? 0 : failures + 1;
      if (failures == kMaxFailures) return Say(state.failure + "; the test may go on", kNotDone);
      if (failures == 0 && !state.isRunning) {
        return hasRun || IsNew(state, before) ? SayEnd(state) : Say(kUnsaid, kNotDone);
      }
      hasRun |= state.isRunning;
      if (Clock::now() > end) return Say("the self-test has not ended in time", kNotDone);
      ShowProgress(state);
    }
  }

  SelfTestStatus SayEnd(const SelfTestState& state) const {
    if (!state.last) return Say(kUnsaid, kNotDone);
    std::string text = Kind() + " self-test: " + state.last->status;
    if (state.last->lba) text += " at sector " + std::to_string(*state.last->lba);
    const auto passed = state.last->passed;
    return Say(text, !passed ? kNotDone : *passed ? kStarted : kFoundFault);
  }

  std::string name_;
  SelfTestOrder order_;
  std::function<void()> beat_;
};

// Starting the test of a SCSI disk takes more than asking it.
std::vector<int> Capabilities(const machines::Disk& disk) {
  const bool isSCSI = disk.kind == machines::DiskKind::kSCSI;
  return isSCSI ? std::vector<int>{CAP_SYS_RAWIO} : CapabilitiesFor(disk);
}

}  // namespace

SelfTestStatus TestDrive(const machines::Disk& disk, const std::filesystem::path& dev,
                         const SelfTestOrder& order, const std::function<void()>& beat) {
  Watch watch(disk, order, beat);
  const bool hasKind = disk.kind != machines::DiskKind::kOther;
  if (!hasKind) return watch.Say(kNoTests, kHasNone);
  std::string why;
  const base::Descriptor node = machines::OpenNode(
      {dev / disk.name, machines::ReadDeviceNumber(disk.folder / "dev"), Capabilities(disk)}, why);
  if (!node.IsOpen()) return watch.Say(why, kNotDone);
  return watch.Test(*machines::MakeSelfTester(disk, node.Number()));
}

}  // namespace tools
