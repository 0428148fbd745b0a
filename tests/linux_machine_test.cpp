// The machine made from sysfs: which block devices become entries, and which; the device
// nodes that are refused; and the answer in a drive's registers.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "machines/linux/attributes.h"
#include "machines/linux/device_node.h"
#include "machines/linux/return_status.h"
#include "machines/linux/sysfs_machine.h"
#include "tests/support.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

fs::path EmptyFolder() {
  fs::path folder =
      fs::path(testing::TempDir()) / ("linux_machine_test." + std::to_string(getpid()));
  fs::remove_all(folder);
  fs::create_directory(folder);
  return folder;
}

// A block device as sysfs has it; an attribute without a value is not there.
struct BlockDevice {
  std::string name = "sda";
  std::string at = "pci0000:00/0000:00:1f.2/ata12/host3/target3:0:1/3:0:1:0";
  std::optional<std::string> hostDriver = "ahci\n";
  std::optional<std::string> type = "0\n";
  std::optional<std::string> model = "EXAMPLE DISK 200\n";
  std::optional<std::string> page = std::nullopt;
  std::optional<std::string> size = "8\n";
};

void Write(const fs::path& file, const std::optional<std::string>& content) {
  fs::create_directories(file.parent_path());
  if (content) std::ofstream(file, std::ios::binary) << *content;
}

void Add(const fs::path& sysfs, const BlockDevice& device) {
  const fs::path scsi = sysfs / "devices" / device.at;
  const fs::path host = scsi.parent_path().parent_path();
  const fs::path block = scsi / "block" / device.name;
  Write(host / "scsi_host" / host.filename() / "proc_name", device.hostDriver);
  Write(scsi / "type", device.type);
  Write(scsi / "model", device.model);
  Write(scsi / "vpd_pg89", device.page);
  Write(block / "size", device.size);
  fs::create_directory_symlink("../../../" + scsi.filename().string(), block / "device");
  fs::create_directories(sysfs / "block");
  fs::create_symlink(fs::path("../devices") / device.at / "block" / device.name,
                     sysfs / "block" / device.name);
}

std::string ValueOf(const platform::Dictionary& values, std::string_view key) {
  const platform::Property* found = platform::Find(values, key);
  if (found == nullptr) return ", -";
  const auto* text = std::get_if<std::string>(&found->value);
  return ", " +
         (text != nullptr ? *text : std::to_string(std::get<platform::Number>(found->value).bits));
}

// "class, product, features, interconnect, BSD name, size" of each disk.
std::string DisksIn(const fs::path& sysfs) {
  std::string disks;
  const platform::Machine machine = machines::ReadLinuxMachine(sysfs);
  for (const platform::Entry& port : machine.roots.at(0).children) {
    const platform::Entry& device = port.children.at(0);
    const auto value = [&device](std::string_view group, std::string_view key) {
      const platform::Property* found = platform::Find(device.properties, group);
      return ValueOf(std::get<platform::Dictionary>(found->value), key);
    };
    const platform::Dictionary& medium = device.children.at(0).properties;
    disks += device.className + value("Device Characteristics", "Product Name") +
             value("Device Characteristics", "ATA Features") +
             value("Protocol Characteristics", "Physical Interconnect") +
             ValueOf(medium, "BSD Name") + ValueOf(medium, "Size");
  }
  return disks;
}

struct Identify {
  std::string model = "Example 4000 with 40 characters, all used";
  unsigned char serial = 1, supported = 0x6B, command = 0xEC;
};

std::string Page(Identify identify = {}) {
  std::string page(60 + 512, '\0');
  page[56] = static_cast<char>(identify.command);
  identify.model.resize(40, ' ');
  for (std::size_t i = 0; i < 40; i++) page[60 + 54 + (i ^ 1)] = identify.model[i];
  page[60 + 152] = page[60 + 153] = static_cast<char>(identify.serial);
  page[60 + 164] = static_cast<char>(identify.supported);
  return page;
}

TEST(LinuxMachine, DisksOfAtaPortsAreEntriesWithWhatIsKnownOfThem) {
  const std::string kModel = "Example 4000 with 40 characters, all use";
  const std::string kAhci = "IOAHCIBlockStorageDevice, ";
  const std::string kWithoutPage = kAhci + "EXAMPLE DISK 200, 32, SATA, sda, 4096";
  const std::string kAta = "IOATABlockStorageDevice, ";
  const auto on = [](const std::string& driver, const std::string& page) {
    return BlockDevice{.hostDriver = driver + "\n", .page = page};
  };
  const struct {
    BlockDevice device;
    std::string disk;
  } kCases[] = {
      {{}, kWithoutPage},
      {{.page = Page().substr(0, 571)}, kWithoutPage},
      {{.page = Page({.command = 0xA1})}, kWithoutPage},
      {{.hostDriver = "ahci_platform\n", .page = Page({.serial = 0})},
       kAhci + kModel + ", 32, SATA, sda, 4096"},
      {on("ata_piix", Page({.serial = 0})), kAta + kModel + ", 32, ATA, sda, 4096"},
      {on("ata_piix", Page({.serial = 0xFF})), kAta + kModel + ", 32, ATA, sda, 4096"},
      {on("ata_piix", Page({.supported = 0x6A})), kAta + kModel + ", 0, SATA, sda, 4096"},
      {on("sata_nv", ""), kAta + "EXAMPLE DISK 200, 32, SATA, sda, 4096"},
      {{.hostDriver = {}, .model = {}, .size = {}}, kAta + ", 32, ATA, sda, -"},
      {{.page = Page({.model = "  A\0B\x1B\xC3\xA9\x7F"s + std::string(31, '\0')})},
       kAhci + "A?B????, 32, SATA, sda, 4096"},
      {{.name = "sd\xFF\n1", .model = "\xFFMODEL \n", .size = "5860533168\n"},
       kAhci + "?MODEL, 32, SATA, sd??1, 3000592982016"},
      {{.size = "18014398509481984\n"}, kAhci + "EXAMPLE DISK 200, 32, SATA, sda, -"},
      {{.at = "pci0/host0/port-0:0/end_device-0:0/target0:0:0/0:0:0:0"}, ""},
      {{.name = "nvme0n1", .at = "pci0/0000:01:00.0/nvme/nvme0", .hostDriver = {}}, ""},
      {{.at = "pci0/ata1x/host0/target0:0:0/0:0:0:0"}, ""},
      {{.type = "20\n"}, ""},
      {{.type = {}}, ""},
  };
  for (const auto& [device, disk] : kCases) {
    const fs::path folder = EmptyFolder();
    EXPECT_EQ(DisksIn(folder), "");
    Write(folder / "block" / "sdc", "");
    fs::create_symlink("../gone", folder / "block" / "sdb");
    Add(folder, device);
    EXPECT_EQ(DisksIn(folder), disk) << device.at << device.name;
  }
}

// Folders are listed in any order, and ports do not count.
TEST(LinuxMachine, TheReportFollowsTheKernelsOrderOfNames) {
  const fs::path folder = EmptyFolder();
  const std::vector<std::string> names{"sda", "sdb", "sdy", "sdz", "sdaa", "sdab", "sdba"};
  std::string expected;
  for (std::size_t i = 0; i < names.size(); i++) {
    const std::string at = "pci0/ata" + std::to_string(9 - i) + "/host0/target0:0:0/0:0:0:0";
    Add(folder, {.name = names[i], .at = at});
    expected += "GetSMARTFailed:/dev/r" + names[i] + ":0\n";
  }
  test::Install(machines::ReadLinuxMachine(folder, folder / "no nodes").roots);
  EXPECT_EQ(test::Report(), expected);
}

// Loop devices are there on most systems; opening one that has no file does nothing.
TEST(DeviceNode, OnlyTheBlockDeviceOfThatNumberIsOpened) {
  const fs::path folder = EmptyFolder();
  ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
  EXPECT_FALSE(machines::OpenBlockDevice(folder / "fifo", 0).IsOpen());
  const char* const node = "/dev/loop0";
  const auto number = machines::ReadDeviceNumber("/sys/block/loop0/dev");
  if (!number || access(node, R_OK) != 0) GTEST_SKIP() << "no " << node << " to read";
  EXPECT_TRUE(machines::OpenBlockDevice(node, *number).IsOpen());
  EXPECT_FALSE(machines::OpenBlockDevice(node, makedev(7, 1)).IsOpen());
}

// Sense data in descriptor format whose last descriptor is that of the registers.
struct Sense {
  std::uint8_t format = 0x72, key = 0x01, length = 14, code = 0x09, descriptorLength = 12;
  std::uint8_t lbaMid = 0x4F, lbaHigh = 0xC2, status = 0x50;
};

std::vector<std::uint8_t> Bytes(const Sense& sense) {
  std::vector<std::uint8_t> bytes{sense.format, sense.key, 0x00, 0x1D, 0, 0, 0, sense.length};
  bytes.insert(bytes.end(), {sense.code, sense.descriptorLength, 0, 0, 0, 0, 0, 0, 0, sense.lbaMid,
                             0, sense.lbaHigh, 0, sense.status});
  return bytes;
}

TEST(ReturnStatus, OnlyTheTwoDefinedAnswersOfASuccessCount) {
  EXPECT_EQ(machines::ReadReturnStatus(Bytes({})), false);
  EXPECT_EQ(machines::ReadReturnStatus(Bytes({.key = 0x00})), false);
  EXPECT_EQ(machines::ReadReturnStatus(Bytes({.lbaMid = 0xF4, .lbaHigh = 0x2C})), true);
  const Sense kNoAnswers[] = {
      {.format = 0x70},
      {.key = 0x0B},  // aborted
      {.code = 0x00},
      {.length = 13},
      {.descriptorLength = 0xFF},
      {.lbaMid = 0x4F, .lbaHigh = 0x2C},
      {.lbaMid = 0xF4, .lbaHigh = 0xC2},
      {.status = 0x51},  // error
      {.status = 0x70},  // device fault
      {.status = 0x58},  // still wants to transfer data
      {.status = 0xD0},  // busy
  };
  for (const Sense& sense : kNoAnswers) {
    EXPECT_EQ(machines::ReadReturnStatus(Bytes(sense)), std::nullopt)
        << testing::PrintToString(Bytes(sense));
  }
}

TEST(ReturnStatus, TheRegistersAreFoundBehindOtherDescriptorsAndNeverBehindTheEnd) {
  std::vector<std::uint8_t> sense = Bytes({.length = 26});
  const std::array<std::uint8_t, 12> information{0x00, 0x0A};
  sense.insert(sense.begin() + 8, information.begin(), information.end());
  EXPECT_EQ(machines::ReadReturnStatus(sense), false);
  for (; !sense.empty(); sense.pop_back()) {
    const std::vector<std::uint8_t> cut(sense.begin(), sense.end() - 1);
    EXPECT_EQ(machines::ReadReturnStatus(cut), std::nullopt) << cut.size();
  }
}

}  // namespace
