#include <cstdint>

#include "base/block.h"
#include "drives/identify_data.h"
#include "drives/self_tests.h"
#include "machines/linux/ata_commands.h"
#include "machines/linux/ata_logs.h"
#include "machines/linux/self_testers.h"

namespace machines {
namespace {

class AtaSelfTester : public SelfTester {
 public:
  AtaSelfTester(int node, bool readsLog) : node_(node), readsLog_(readsLog) {}

  // Older drives say so in their S.M.A.R.T. data alone.
  SelfTestSupport Support() override {
    const auto identify = ReadAnswer(node_, kIdentifyDevice);
    if (!identify) return {.failure = "IDENTIFY DEVICE failed"};
    if (drives::LacksSMART(*identify)) return {.hasTests = false};
    if (SendCommand(node_, kEnableOperations).end != CommandEnd::kSucceeded) {
      return {.failure = "S.M.A.R.T. cannot be enabled"};
    }
    if (drives::HasSelfTests(*identify)) return {.hasTests = true};
    const auto data = ReadAnswer(node_, kReadData);
    if (!data) return {.failure = kNoData};
    return {.hasTests = drives::HasSelfTestRoutine(*data)};
  }

  SelfTestState State() override {
    const auto data = ReadAnswer(node_, kReadData);
    if (!data) return {.failure = kNoData};
    const auto [status, percentDone] = drives::SelfTestStatusOf(*data);
    SelfTestState state;
    state.isRunning = status == drives::kATASelfTestRuns;
    if (state.isRunning) {
      state.percentDone = percentDone;
      return state;
    }
    state.last = drives::ATASelfTestOf(status);
    const auto log = readsLog_ ? ReadSelfTestLog(node_, *data) : std::nullopt;
    const auto tests = log ? drives::ParseATASelfTests(*log) : std::nullopt;
    if (!tests || tests->empty()) return state;
    // The log has the sector too.
    state.logged = tests->size();
    if (tests->front().status == state.last->status) state.last = tests->front();
    return state;
  }

  std::optional<int> Minutes(SelfTestKind kind) override {
    const auto data = ReadAnswer(node_, kReadData);
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

  int node_;
  bool readsLog_;
};

}  // namespace

std::unique_ptr<SelfTester> MakeAtaSelfTester(int node, bool readsLog) {
  return std::make_unique<AtaSelfTester>(node, readsLog);
}

}  // namespace machines
