#include "machines/linux/ata_drive.h"

#include <cstdint>
#include <utility>

#include "base/descriptor.h"
#include "machines/linux/device_node.h"
#include "machines/linux/pass_through.h"
#include "machines/linux/return_status.h"

namespace machines {
namespace {

constexpr AtaRegisters kIdentifyDevice = {.command = 0xEC};

// Every S.M.A.R.T. command carries the same signature.
constexpr AtaRegisters SMARTCommand(std::uint8_t operation) {
  return {.command = 0xB0, .features = operation, .lbaMid = 0x4F, .lbaHigh = 0xC2};
}

constexpr AtaRegisters kReadData = SMARTCommand(0xD0);
constexpr AtaRegisters kReadThresholds = SMARTCommand(0xD1);
constexpr AtaRegisters kEnableOperations = SMARTCommand(0xD8);
constexpr AtaRegisters kDisableOperations = SMARTCommand(0xD9);
constexpr AtaRegisters kReturnStatus = SMARTCommand(0xDA);

class AtaDrive : public platform::Drive {
 public:
  AtaDrive(std::filesystem::path node, std::optional<dev_t> number)
      : path_(std::move(node)), number_(number) {}

  bool Open() override {
    if (!number_) return false;
    node_ = OpenBlockDevice(path_, *number_);
    if (!node_.IsOpen()) return false;
    identify_ = ReadBlock(node_.number(), kIdentifyDevice);
    if (!identify_) Close();
    return identify_.has_value();
  }
  bool Enable(bool enable) override {
    return SendCommand(node_.number(), enable ? kEnableOperations : kDisableOperations);
  }
  std::optional<bool> ReturnStatus() override {
    return ReadReturnStatus(SendForRegisters(node_.number(), kReturnStatus));
  }
  std::optional<Block> ReadData() override { return ReadBlock(node_.number(), kReadData); }
  std::optional<Block> ReadThresholds() override {
    return ReadBlock(node_.number(), kReadThresholds);
  }
  std::optional<Block> Identify() override { return identify_; }
  void Close() override { node_ = base::Descriptor(); }

 private:
  std::filesystem::path path_;
  std::optional<dev_t> number_;
  base::Descriptor node_;
  std::optional<Block> identify_;
};

}  // namespace

std::shared_ptr<platform::Drive> MakeAtaDrive(std::filesystem::path node,
                                              std::optional<dev_t> number) {
  return std::make_shared<AtaDrive>(std::move(node), number);
}

}  // namespace machines
