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

class Folder {
 public:
  Folder() {
    std::string name = fs::temp_directory_path() / "linux_machine_test.XXXXXX";
    path = mkdtemp(name.data());
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { fs::remove_all(path); }

  fs::path path;
};

// A block device as sysfs has it; an attribute without a value is not there.
struct BlockDevice {
  std::string name = "sda";
  std::string at = "pci0000:00/0000:00:1f.2/ata1/host0/target0:0:0/0:0:0:0";
  std::optional<std::string> hostDriver = "ahci\n";
  std::optional<std::string> type = "0\n";
  std::optional<std::string> model = "EXAMPLE DISK 200\n";
  std::optional<std::string> page = std::nullopt;
  std::optional<std::string> size = "8\n";
  std::optional<std::string> number = "8:0\n";
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
  Write(block / "dev", device.number);
  fs::create_directory_symlink("../../../" + scsi.filename().string(), block / "device");
  fs::create_directories(sysfs / "block");
  fs::create_symlink(fs::path("../devices") / device.at / "block" / device.name,
                     sysfs / "block" / device.name);
}

std::string ValueOf(const platform::Dictionary& values, std::string_view key) {
  const platform::Property* found = platform::Find(values, key);
  if (found == nullptr) return "-";
  if (const auto* text = std::get_if<std::string>(&found->value)) return *text;
  return std::to_string(std::get<platform::Number>(found->value).bits);
}

const platform::Dictionary& Group(const platform::Entry& entry, std::string_view key) {
  return std::get<platform::Dictionary>(platform::Find(entry.properties, key)->value);
}

// "class: product, features, interconnect, BSD name, size" of each disk.
std::vector<std::string> DisksIn(const fs::path& sysfs) {
  std::vector<std::string> disks;
  const platform::Machine machine = machines::ReadLinuxMachine(sysfs);
  for (const platform::Entry& port : machine.roots.at(0).children) {
    const platform::Entry& device = port.children.at(0);
    const platform::Dictionary& characteristics = Group(device, "Device Characteristics");
    const platform::Dictionary& medium = device.children.at(0).properties;
    EXPECT_EQ(device.name, device.className);
    disks.push_back(device.className + ": " + ValueOf(characteristics, "Product Name") + ", " +
                    ValueOf(characteristics, "ATA Features") + ", " +
                    ValueOf(Group(device, "Protocol Characteristics"), "Physical Interconnect") +
                    ", " + ValueOf(medium, "BSD Name") + ", " + ValueOf(medium, "Size"));
  }
  return disks;
}

struct Words {
  unsigned int serial = 0x0100, supported = 0x746B;  // 76, 82
};

std::string Page(const Words& words = {},
                 std::string model = "Example 4000 with 40 characters, all used",
                 char command = '\xEC') {
  std::string page = "\0\x89\x02\x38"s + std::string(52, '\0') + command + "\0\0\0"s;
  page.resize(60 + 512, '\0');
  const auto put = [&page](std::size_t word, unsigned int value) {
    page[60 + 2 * word] = static_cast<char>(value & 0xFF);
    page[61 + 2 * word] = static_cast<char>(value >> 8);
  };
  model.resize(40, ' ');
  for (std::size_t i = 0; i < 40; i++) page[60 + 54 + (i ^ 1)] = model[i];
  put(76, words.serial);
  put(82, words.supported);
  return page;
}

const std::string kParallelPort = "pci0/0000:00:01.1/ata12/host3/target3:0:1/3:0:1:0";

TEST(LinuxMachine, DisksOfAtaPortsAreEntriesWithWhatIsKnownOfThem) {
  const std::string kModel = "Example 4000 with 40 characters, all use";
  const std::string kAhci = "IOAHCIBlockStorageDevice: ";
  const std::string kWithoutPage = kAhci + "EXAMPLE DISK 200, 32, SATA, sda, 4096";
  const std::string kAta = "IOATABlockStorageDevice: ";
  const auto on = [](const std::string& driver, const std::string& page) {
    return BlockDevice{.at = kParallelPort, .hostDriver = driver + "\n", .page = page};
  };
  const struct {
    BlockDevice device;
    std::string disk;
  } kCases[] = {
      {{.page = Page()}, kAhci + kModel + ", 32, SATA, sda, 4096"},
      {{}, kWithoutPage},
      {{.page = Page().substr(0, 571)}, kWithoutPage},
      {{.page = Page({}, "CD", '\xA1')}, kWithoutPage},
      {{.hostDriver = "ahci_platform\n", .page = Page({.serial = 0})},
       kAhci + kModel + ", 32, SATA, sda, 4096"},
      {on("ata_piix", Page({.serial = 0})), kAta + kModel + ", 32, ATA, sda, 4096"},
      {on("ata_piix", Page({.serial = 0xFFFF})), kAta + kModel + ", 32, ATA, sda, 4096"},
      {on("ata_piix", Page()), kAta + kModel + ", 32, SATA, sda, 4096"},
      {on("sata_nv", ""), kAta + "EXAMPLE DISK 200, 32, SATA, sda, 4096"},
      {on("pata_via", ""), kAta + "EXAMPLE DISK 200, 32, ATA, sda, 4096"},
      {on("ata_piix", Page({.supported = 0x746A})), kAta + kModel + ", 0, SATA, sda, 4096"},
      {{.hostDriver = {}, .model = {}, .size = {}, .number = {}}, kAta + ", 32, ATA, sda, -"},
      {{.page = Page({}, "  A\0B\x1B\xC3\xA9\x7F"s + std::string(31, '\0'))},
       kAhci + "A?B????, 32, SATA, sda, 4096"},
      {{.name = "sd\xFF\n1", .model = "\xFFMODEL \n", .size = "5860533168\n", .number = "8\n"},
       kAhci + "?MODEL, 32, SATA, sd??1, 3000592982016"},
      {{.size = "18014398509481984\n"}, kAhci + "EXAMPLE DISK 200, 32, SATA, sda, -"},
      {{.size = "8 KiB\n"}, kAhci + "EXAMPLE DISK 200, 32, SATA, sda, -"},
  };
  for (const auto& [device, disk] : kCases) {
    const Folder folder;
    Add(folder.path, device);
    EXPECT_EQ(DisksIn(folder.path), std::vector{disk});
  }
}

TEST(LinuxMachine, OtherDevicesAreNoEntries) {
  const BlockDevice kCases[] = {
      {.at = "pci0/usb1/1-1/1-1:1.0/host6/target6:0:0/6:0:0:0", .hostDriver = "usb-storage\n"},
      {.at = "pci0/host0/port-0:0/end_device-0:0/target0:0:0/0:0:0:0", .hostDriver = "mpt3sas\n"},
      {.at = "pci0/virtio2/host2/target2:0:0/2:0:0:0", .hostDriver = "virtio_scsi\n"},
      {.name = "nvme0n1", .at = "pci0/0000:01:00.0/nvme/nvme0", .hostDriver = {}},
      {.name = "vda", .at = "pci0/0000:00:02.0/virtio1", .hostDriver = {}},
      {.name = "loop0", .at = "virtual", .hostDriver = {}},
      {.at = "pci0/ata/host0/target0:0:0/0:0:0:0"},
      {.at = "pci0/ata1x/host0/target0:0:0/0:0:0:0"},
      {.name = "sr0", .type = "5\n"},
      {.type = "20\n"},
      {.type = {}},
  };
  for (const BlockDevice& device : kCases) {
    const Folder folder;
    Add(folder.path, device);
    EXPECT_EQ(DisksIn(folder.path), std::vector<std::string>()) << device.at << device.name;
  }
}

TEST(LinuxMachine, ASystemWithoutUsableSysfsHasNoDisks) {
  const Folder folder;
  EXPECT_TRUE(DisksIn(folder.path / "missing").empty());
  EXPECT_TRUE(DisksIn(folder.path).empty());
  Write(folder.path / "block" / "sdb", "");
  fs::create_symlink("../gone", folder.path / "block" / "sda");
  EXPECT_TRUE(DisksIn(folder.path).empty());
  fs::remove_all(folder.path / "block");
  Write(folder.path / "block", "");
  EXPECT_TRUE(DisksIn(folder.path).empty());
}

// Folders are listed in any order, and ports do not count.
TEST(LinuxMachine, TheReportFollowsTheKernelsOrderOfNames) {
  const Folder folder;
  std::vector<std::string> names;
  for (char last = 'a'; last <= 'z'; last++) names.push_back("sd"s + last);
  names.insert(names.end(), {"sdaa", "sdab", "sdba"});
  for (std::size_t i = names.size(); i-- > 0;) {
    const std::string host = std::to_string(names.size() - i);
    std::string at = "pci0/ata";
    at.append(host).append("/host").append(host).append("/target0:0:0/0:0:0:0");
    Add(folder.path,
        {.name = names[i], .at = at, .hostDriver = i % 2 == 0 ? "ahci\n" : "ata_piix\n"});
  }
  std::string expected;
  for (const std::size_t pass : {1U, 0U}) {  // first the ATA disks
    for (std::size_t i = pass; i < names.size(); i += 2) {
      expected += "GetSMARTFailed:/dev/r" + names[i] + ":0\n";
    }
  }
  test::Install(machines::ReadLinuxMachine(folder.path, folder.path / "no nodes").roots);
  EXPECT_EQ(test::Report(), expected);
}

TEST(DeviceNode, OnlyTheBlockDeviceOfThatNumberIsOpened) {
  const Folder folder;
  Write(folder.path / "sda", "");
  struct stat null {};
  ASSERT_EQ(stat("/dev/null", &null), 0);
  EXPECT_FALSE(machines::OpenBlockDevice(folder.path / "missing", 0).IsOpen());
  EXPECT_FALSE(machines::OpenBlockDevice(folder.path / "sda", 0).IsOpen());
  EXPECT_FALSE(machines::OpenBlockDevice("/dev/null", null.st_rdev).IsOpen());
  ASSERT_EQ(mkfifo((folder.path / "fifo").c_str(), 0600), 0);
  EXPECT_FALSE(machines::OpenBlockDevice(folder.path / "fifo", 0).IsOpen());
}

// Loop devices are there on most systems; opening one that has no file does nothing.
TEST(DeviceNode, ABlockDeviceOfAnotherNumberIsRefused) {
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
  const struct {
    Sense sense;
    std::optional<bool> answer;
  } kCases[] = {
      {{}, false},
      {{.lbaMid = 0xF4, .lbaHigh = 0x2C}, true},
      {{.key = 0x00}, false},
      {{.format = 0xF2}, std::nullopt},
      {{.format = 0x70}, std::nullopt},
      {{.key = 0x0B}, std::nullopt},  // aborted
      {{.code = 0x00}, std::nullopt},
      {{.length = 0}, std::nullopt},
      {{.length = 13}, std::nullopt},
      {{.descriptorLength = 0xFF}, std::nullopt},
      {{.lbaMid = 0x4F, .lbaHigh = 0x2C}, std::nullopt},
      {{.lbaMid = 0xF4, .lbaHigh = 0xC2}, std::nullopt},
      {{.lbaMid = 0, .lbaHigh = 0}, std::nullopt},
      {{.status = 0x51}, std::nullopt},  // error
      {{.status = 0x70}, std::nullopt},  // device fault
      {{.status = 0x58}, std::nullopt},  // still wants to transfer data
      {{.status = 0xD0}, std::nullopt},  // busy
  };
  for (const auto& [sense, answer] : kCases) {
    EXPECT_EQ(machines::ReadReturnStatus(Bytes(sense)), answer)
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
  EXPECT_EQ(machines::ReadReturnStatus(std::array<std::uint8_t, 64>{}), std::nullopt);
}

}  // namespace
