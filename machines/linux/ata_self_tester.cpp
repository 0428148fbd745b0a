#include <cstdint>

#include "base/block.h"
#include "drives/identify_data.h"
#include "drives/self_tests.h"
#include "machines/linux/ata_commands.h"
#include "machines/linux/ata_logs.h"
#include "machines/linux/self_testers.h"

namespace machines {
namespace {

using base::Block;
using drives::SelfTest;

class AtaSelfTester : public SelfTester {
 public:
  AtaSelfTester(int node, bool readsLog) : node_(node), readsLog_(readsLog) {}

  // Older drives say so in their S.M.A.R.T. data alone.
  SelfTestSupport Support() override {
    const auto identify = ReadBlock(node_, kIdentifyDevice).block;
    if (!identify) return {.failure = "IDENTIFY DEVICE failed"};
    if (drives::LacksSMART(*identify)) return {.hasTests = false};
    if (SendCommand(node_, kEnableOperations).end != CommandEnd::kSucceeded) {
      return {.failure = "S.M.A.R.T. cannot be enabled"};
    }
    if (drives::HasSelfTests(*identify)) return {.hasTests = true};
    readsLog_ = false;  // it does not say that it has that either
    const auto data = ReadBlock(node_, kReadData).block;
    if (!data) return {.failure = kNoData};
    return {.hasTests = drives::HasSelfTestRoutine(*data)};
  }

  SelfTestState State() override {
    const auto data = ReadBlock(node_, kReadData).block;
    if (!data) return {.failure = kNoData};
    const auto [status, percentDone] = drives::SelfTestStatusOf(*data);
    if (status == drives::kATASelfTestRuns) return {.isRunning = true, .percentDone = percentDone};
    return {.last = LastOf(status)};
  }

  std::optional<int> Minutes(SelfTestKind kind) override {
    const auto data = ReadBlock(node_, kReadData).block;
    if (!data) return std::nullopt;
    return drives::SelfTestMinutes(*data, kind == SelfTestKind::kExtended);
  }

  std::string Start(SelfTestKind kind) override {
    constexpr std::uint8_t kExecuteOffLine = 0xD4;
    const std::uint8_t test = kind == SelfTestKind::kShort ? 1 : 2;
    const CommandEnd end = SendCommand(node_, SMARTCommand(kExecuteOffLine, test)).end;
    if (end == CommandEnd::kSucceeded) return "";
    return end == CommandEnd::kRefused ? "the drive refused to start it" : "starting it failed";
  }

 private:
  static constexpr const char* kNoData = "SMART READ DATA failed";

  // By the log, which has the sector too, or else by the status alone.
  SelfTest LastOf(int status) const {
    SelfTest last = drives::ATASelfTestOf(status);
    if (!readsLog_) return last;
    const auto log = ReadSelfTestLog(node_);
    const auto tests = log ? drives::ParseATASelfTests(*log) : std::nullopt;
    const bool isThatOne = tests && !tests->empty() && tests->front().status == last.status;
    return isThatOne ? tests->front() : last;
  }

  int node_;
  bool readsLog_;
};

}  // namespace

std::unique_ptr<SelfTester> MakeAtaSelfTester(int node, bool readsLog) {
  return std::make_unique<AtaSelfTester>(node, readsLog);
}

}  // namespace machines
