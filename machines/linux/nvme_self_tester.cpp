#include <cstdint>

#include "drives/nvme_logs.h"
#include "drives/self_tests.h"
#include "machines/entries/drive_logs.h"
#include "machines/linux/nvme_commands.h"
#include "machines/linux/self_testers.h"
#include "platform/machine.h"

namespace machines {
namespace {

using platform::Data;

class NvmeSelfTester : public SelfTester {
 public:
  explicit NvmeSelfTester(int node) : node_(node) {}

  SelfTestSupport Support() override {
    controller_.resize(kControllerSize);
    const std::string why = SendNvme(node_, kIdentifyNvmeController, controller_);
    if (!why.empty()) return {.failure = "Identify Controller failed: " + why};
    return {.hasTests = drives::HasNVMeSelfTests(controller_)};
  }

  SelfTestState State() override {
    Data log(kNvmeSelfTestLogSize);
    const std::string why = SendNvme(node_, GetNvmeLog(kNvmeSelfTestPage, log.size()), log);
    if (!why.empty()) return {.failure = "cannot read its self-test log: " + why};
    if (const auto percentDone = drives::NVMeSelfTestPercent(log)) {
      return {.isRunning = true, .percentDone = percentDone};
    }
    const auto tests = drives::ParseNVMeSelfTests(log);
    if (!tests || tests->empty()) return {};
    return {.last = tests->front(), .logged = tests->size()};
  }

  std::optional<int> Minutes(SelfTestKind kind) override {
    return drives::NVMeSelfTestMinutes(controller_, kind == SelfTestKind::kExtended);
  }

  std::string Start(SelfTestKind kind) override {
    constexpr std::uint8_t kDeviceSelfTest = 0x14;
    const std::uint32_t test = kind == SelfTestKind::kShort ? 1 : 2;
    return SendNvme(node_, {kDeviceSelfTest, kAllNamespaces, test}, {});
  }

 private:
  int node_;
  Data controller_;
};

}  // namespace

std::unique_ptr<SelfTester> MakeNvmeSelfTester(int node) {
  return std::make_unique<NvmeSelfTester>(node);
}

}  // namespace machines
