#include "machines/linux/ata_drive.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <utility>

#include "base/descriptor.h"
#include "machines/linux/ata_commands.h"
#include "machines/linux/drive_blocks.h"

namespace machines {
namespace {

using Block = platform::Drive::Block;

// The node, opened for reading without waiting for a medium. Not open: it cannot be
// opened, or is not the block device of that number. The name of a disk that went away
// may by now be another's, and what lies in the folder may be anything.
base::Descriptor OpenBlockDevice(const std::filesystem::path& node, dev_t number) {
  base::Descriptor opened(open(node.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  if (!opened.IsOpen() || fstat(opened.Number(), &status) != 0) return {};
  if (!S_ISBLK(status.st_mode) || status.st_rdev != number) return {};
  return opened;
}

constexpr AtaRegisters kIdentifyDevice = {.command = 0xEC};

// Every S.M.A.R.T. command carries the same signature.
constexpr AtaRegisters SMARTCommand(std::uint8_t operation) {
  return {.command = 0xB0, .features = operation, .lbaMid = 0x4F, .lbaHigh = 0xC2};
}

constexpr AtaRegisters kReadData = SMARTCommand(0xD0);
constexpr AtaRegisters kReadThresholds = SMARTCommand(0xD1);
constexpr AtaRegisters kEnableOperations = SMARTCommand(0xD8);
constexpr AtaRegisters kReturnStatus = SMARTCommand(0xDA);

// What a drive told. What did not come has no value.
struct Answers {
  std::optional<Block> identify = {}, data = {}, thresholds = {};
  std::optional<bool> exceeded = {};
  bool hasSMART = true;
  std::string failure;  // in words; empty: the drive told all that it must
};

// Asks an open node, up to the first failure.
class Questions {
 public:
  explicit Questions(int node) : node_(node) {}

  Answers Ask() {
    if (Identify() && answers_.hasSMART && Enable() && ReturnStatus() && ReadData()) {
      ReadThresholds();
    }
    return std::move(answers_);
  }

 private:
  bool Fail(const char* what) {
    answers_.failure = what;
    return false;
  }

  // An adapter that has not asked the drive hands out zeros.
  std::optional<Block> ReadAnswer(const AtaRegisters& command) const {
    const std::optional<Block> block = ReadBlock(node_, command).block;
    return block == Block{} ? std::nullopt : block;
  }

  bool Identify() {
    answers_.identify = ReadAnswer(kIdentifyDevice);
    if (!answers_.identify) return Fail("IDENTIFY DEVICE failed");
    answers_.hasSMART = !LacksSMART(*answers_.identify);
    MakePrintable(*answers_.identify);
    return true;
  }

  bool Enable() {
    const CommandEnd end = SendCommand(node_, kEnableOperations).end;
    return end == CommandEnd::kSucceeded || Fail("S.M.A.R.T. cannot be enabled");
  }

  bool ReturnStatus() {
    status_ = ParseReturnStatus(SendCommand(node_, kReturnStatus, Registers::kWanted));
    if (status_ == StatusAnswer::kNone) return Fail("SMART RETURN STATUS gave no answer");
    if (status_ != StatusAnswer::kUnsaid) answers_.exceeded = status_ == StatusAnswer::kExceeded;
    return true;
  }

  bool ReadData() {
    answers_.data = ReadAnswer(kReadData);
    return answers_.data || Fail("SMART READ DATA failed");
  }

  // Newer standards let a drive do without them. One that is gone has refused nothing.
  bool ReadThresholds() {
    const BlockResult result = ReadBlock(node_, kReadThresholds);
    if (result.end == CommandEnd::kFailed) return Fail("SMART READ THRESHOLDS failed");
    answers_.thresholds = result.block;
    if (status_ != StatusAnswer::kUnsaid) return true;
    if (result.block) answers_.exceeded = ExceededCondition(*answers_.data, *result.block);
    return answers_.exceeded ||
           Fail("SMART RETURN STATUS gave no registers, and no thresholds tell");
  }

  int node_;
  Answers answers_;
  StatusAnswer status_ = StatusAnswer::kNone;
};

class AtaDrive : public platform::Drive {
 public:
  AtaDrive(std::filesystem::path node, std::optional<dev_t> number)
      : path_(std::move(node)), number_(number) {}

  bool Open() override {
    answers_ = {.failure = "its device node cannot be opened"};
    if (!number_) return false;
    const base::Descriptor node = OpenBlockDevice(path_, *number_);
    if (node.IsOpen()) answers_ = Questions(node.Number()).Ask();
    return answers_.failure.empty();
  }
  std::string OpenFailure() const override { return answers_.failure; }
  bool Enable(bool enable) override { return enable && answers_.hasSMART; }
  std::optional<bool> ReturnStatus() override { return answers_.exceeded; }
  std::optional<Block> ReadData() override { return answers_.data; }
  std::optional<Block> ReadThresholds() override { return answers_.thresholds; }
  std::optional<Block> Identify() override { return answers_.identify; }

 private:
  std::filesystem::path path_;
  std::optional<dev_t> number_;
  Answers answers_;
};

}  // namespace

std::shared_ptr<platform::Drive> MakeAtaDrive(std::filesystem::path node,
                                              std::optional<dev_t> number) {
  return std::make_shared<AtaDrive>(std::move(node), number);
}

}  // namespace machines
