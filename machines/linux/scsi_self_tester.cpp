#include <scsi/sg_cmds_basic.h>
#include <scsi/sg_cmds_extra.h>

#include <cstddef>
#include <cstdint>

#include "drives/self_tests.h"
#include "machines/linux/scsi_commands.h"
#include "machines/linux/self_testers.h"
#include "platform/machine.h"

namespace machines {
namespace {

using platform::Data;

class ScsiSelfTester : public SelfTester {
 public:
  explicit ScsiSelfTester(int node) : node_(node) {}

  // Without the page of results nobody could tell how a test ends.
  SelfTestSupport Support() override {
    Data page;
    const int status = ReadLogPage(node_, kResultsPage, page);
    if (IsScsiRefusal(status)) return {.hasTests = false};
    if (status != SG_LIB_CAT_CLEAN) return {.failure = kNoResults};
    return {.hasTests = true};
  }

  SelfTestState State() override {
    Data page;
    if (ReadLogPage(node_, kResultsPage, page) != SG_LIB_CAT_CLEAN) {
      return {.failure = kNoResults};
    }
    const auto tests = drives::ParseSCSISelfTests(page);
    if (!tests || tests->empty()) return {};
    if (tests->front().status != drives::kSelfTestRuns) {
      return {.last = tests->front(), .logged = tests->size()};
    }
    return {.isRunning = true, .percentDone = PercentDone()};
  }

  // The standard has a short test end within two minutes; the control mode page says how many
  // seconds an extended one takes.
  std::optional<int> Minutes(SelfTestKind kind) override {
    constexpr int kControlPage = 0x0A;
    constexpr std::size_t kHeaderSize = 8;
    constexpr std::size_t kSeconds = kHeaderSize + 10;
    if (kind == SelfTestKind::kShort) return 2;
    Data page(64);
    const int status = SendScsi([&] {
      return sg_ll_mode_sense10(node_, false, true, 0, kControlPage, 0, page.data(),
                                static_cast<int>(page.size()), false, 0);
    });
    const bool isThePage = (page[kHeaderSize] & 0x3F) == kControlPage;
    const int seconds = page[kSeconds] << 8 | page[kSeconds + 1];
    const bool isKnown = seconds != 0 && seconds != 0xFFFF;
    if (status != SG_LIB_CAT_CLEAN || !isThePage || !isKnown) return std::nullopt;
    return (seconds + 59) / 60;
  }

  std::string Start(SelfTestKind kind) override {
    const int test = kind == SelfTestKind::kShort ? 1 : 2;  // in the background
    const int status = SendScsi([&] {
      return sg_ll_send_diag(node_, test, false, false, false, false, 0, nullptr, 0, false, 0);
    });
    if (status == SG_LIB_CAT_CLEAN) return "";
    return IsScsiRefusal(status) ? "the disk refused to start it" : "SEND DIAGNOSTIC failed";
  }

 private:
  static constexpr const char* kNoResults = "LOG SENSE failed";
  static constexpr std::uint8_t kResultsPage = 0x10;

  std::optional<int> PercentDone() const {
    const Data sense = ReadSense(node_);
    int progress = 0;
    if (!sg_get_sense_progress_fld(sense.data(), static_cast<int>(sense.size()), &progress)) {
      return std::nullopt;
    }
    return progress * 100 / 0x10000;
  }

  int node_;
};

}  // namespace

std::unique_ptr<SelfTester> MakeScsiSelfTester(int node) {
  return std::make_unique<ScsiSelfTester>(node);
}

}  // namespace machines
