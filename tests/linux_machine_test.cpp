// The machine made from sysfs: which block devices become entries, and what is said of them;
// and the answer in the registers that a drive returns.
#include <sys/sysmacros.h>

#include "machines/linux/ata_commands.h"
#include "machines/linux/host_machine.h"
#include "machines/linux/udev_database.h"
#include "tests/support.h"

// Stands for udev, which has asked the disk of this number.
bool machines::IsATAByUdev(dev_t number) { return number == makedev(8, 32); }

namespace test {

using namespace std::string_literals;

// A block device as sysfs has it; an attribute without a value is not there.
struct BlockDevice {
  std::string name = "sda";
  std::string at = "pci0000:00/0000:00:1f.2/ata12/host3/target3:0:1/3:0:1:0";
  std::string hostDriver = "ahci\n";
  std::string type = "0\n";
  std::string vendor = "ATA     \n";
  std::string model = "EXAMPLE DISK 200\n";
  std::string page = {}, serialPage = {};
  std::string size = "8\n";
  std::string number = "8:16\n";
  std::string hidden = {};
};

void Add(const fs::path& sysfs, const BlockDevice& device) {
  const fs::path scsi = sysfs / "devices" / device.at;
  const fs::path block = scsi / "block" / device.name;
  const std::size_t endOfHost = device.at.find('/', device.at.find("/host") + 1);
  const fs::path host = sysfs / "devices" / device.at.substr(0, endOfHost);
  WriteFile(host / "scsi_host" / host.filename() / "proc_name", device.hostDriver);
  WriteFile(scsi / "type", device.type);
  WriteFile(scsi / "vendor", device.vendor);
  WriteFile(scsi / "model", device.model);
  WriteFile(scsi / "vpd_pg89", device.page);
  WriteFile(scsi / "vpd_pg80", device.serialPage);
  WriteFile(block / "size", device.size);
  WriteFile(block / "dev", device.number);
  WriteFile(block / "hidden", device.hidden);
  fs::create_directory_symlink(scsi, block / "device");
  fs::create_directories(sysfs / "block");
  fs::create_directory_symlink(block, sysfs / "block" / device.name);
}

std::string Leaves(const platform::Property& property) {
  if (const auto* text = std::get_if<std::string>(&property.value)) return ", " + *text;
  const auto* number = std::get_if<platform::Number>(&property.value);
  if (number != nullptr) return ", " + std::to_string(number->bits);
  std::string leaves;
  for (const auto& [key, value] : std::get<platform::Dictionary>(property.value)) {
    leaves += Leaves(value);
  }
  return leaves;
}

// "class, features, product, serial number, BSD name, size" of each disk.
std::string DisksIn(const fs::path& sysfs) {
  std::string disks;
  const platform::Machine machine = machines::AskDisks(machines::ListDisks(sysfs), "no nodes");
  for (const platform::Entry& device : machine.roots.at(0).children) {
    disks +=
        device.className + Leaves({device.properties}) + Leaves({device.children.at(0).properties});
  }
  return disks;
}

struct Identify {
  std::string model = "Example 4000 with 40 characters, all used";
  char word82 = 0x6B, word83High = 0x40, pageCode = '\x89', serial = ' ';
};

std::string Page(Identify identify = {}) {
  std::string page(60 + 512, '\0');
  page[1] = identify.pageCode;
  page[56] = '\xEC';
  identify.model.resize(40, ' ');
  for (std::size_t i = 0; i < 40; i++) page[60 + 54 + (i ^ 1)] = identify.model[i];
  page[60 + 21] = identify.serial;
  page[60 + 164] = identify.word82;
  page[60 + 167] = identify.word83High;
  return page;
}

TEST(LinuxMachine, DisksAreEntriesWithWhatIsKnownOfThem) {
  const char* const kSas =
      "pci0/0000:03:00.0/host0/port-0:0:4/end_device-0:0:4/target0:0:4/0:0:4:0";
  const char* const kUsb = "pci0/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0";
  const std::string kModel = "Example 4000 with 40 characters, all use";
  const std::string kAhci = "IOAHCIBlockStorageDevice, 32, ";
  const std::string kAta = "IOATABlockStorageDevice, 32, ";
  const std::string kEnd = ", sda, 4096";
  const std::string kWithoutPage = kAhci + "EXAMPLE DISK 200" + kEnd;
  const std::string kOther = "IOBlockStorageDevice, EXAMPLE DISK 200, ";
  const auto on = [](const char* driver, const Identify& identify) {
    return BlockDevice{.hostDriver = driver, .page = Page(identify)};
  };
  const std::pair<BlockDevice, std::string> kCases[] = {
      {{}, kWithoutPage},
      {{.page = Page().substr(0, 571)}, kWithoutPage},
      {{.page = Page({.pageCode = '\x83'})}, kWithoutPage},
      {on("brcm-ahci\n", {.word82 = 0x6A}), "IOAHCIBlockStorageDevice, 0, " + kModel + kEnd},
      {on("ata_piix\n", {}), kAta + kModel + kEnd},
      {on("ata_piix\n", {.word82 = 0, .word83High = 0}), kAta + kModel + kEnd},
      {on("ata_piix\n", {.word82 = 0, .word83High = '\xFF'}), kAta + kModel + kEnd},
      {{.hostDriver = "", .model = "", .size = ""}, kAta + ", sda"},
      {on("ahci\n", {.model = "  A\0B\x1B\xC3\xA9\x7F"s + std::string(31, '\0')}),
       kAhci + "A?B????" + kEnd},
      {{.name = "sd\xFF\n1", .model = "\xFFMODEL \n", .size = "5860533168\n"},
       kAhci + "?MODEL, sd??1, 3000592982016"},
      {{.type = "20\n"}, kWithoutPage},
      {{.page = Page({.serial = 'S'}), .serialPage = "\0\x80\0\x01T"s},
       kAhci + kModel + ", S" + kEnd},
      {{.serialPage = "\0\x80\0\x04 W\x1B "s}, kAhci + "EXAMPLE DISK 200, W?" + kEnd},
      {{.type = "5\n"}, ""},
      // Elsewhere than on a libata port, AHCI is no matter
      {{.at = kSas}, kAta + "EXAMPLE DISK 200" + kEnd},
      {{.at = kSas, .vendor = "SEAGATE", .page = Page()}, kAta + kModel + kEnd},
      {{.at = kUsb, .vendor = "Bridge", .serialPage = "\0\x80\0\x01B"s, .number = "8:32\n"},
       kAta + kEnd},
      // Not ATA, and no disks at all
      {{.at = kSas, .vendor = "ATAPI", .page = Page().substr(0, 60) + std::string(512, '\0')},
       "IOBlockStorageDevice, ATAPI EXAMPLE DISK 200, sda, 4096"},
      {{.at = kUsb, .type = "7\n", .number = "8:32\n"}, kOther + "sda, 4096"},
      {{.at = "pci0/ata1x/host1x/0:0:0:0"}, kOther + "sda, 4096"},
      {{.name = "nvme0n1", .at = "pci0/nvme/nvme0", .type = ""}, kOther + "nvme0n1, 4096"},
      {{.name = "nvme0c0n1", .at = "pci0/nvme/nvme0", .type = "", .hidden = "1\n"}, ""},
      {{.name = "mmcblk0boot1", .at = "pci0/mmc0", .type = ""}, ""},
      {{.name = "sr0", .at = "pci0/ide0", .type = ""}, ""},
      {{.name = "fd0", .at = "floppy.0", .type = ""}, ""},
  };
  for (const auto& [device, disk] : kCases) {
    const fs::path folder = EmptyFolder();
    fs::create_directories(folder / "block" / "loop0");
    EXPECT_EQ(DisksIn(folder), "");
    fs::create_symlink("../gone", folder / "block" / "sdb");
    Add(folder, device);
    EXPECT_EQ(DisksIn(folder), disk) << device.at << device.name;
  }
}

// Folders are listed in any order, and ports do not count.
TEST(LinuxMachine, TheReportFollowsTheKernelsOrderOfNames) {
  const fs::path folder = EmptyFolder();
  std::string expected;
  for (const std::string name : {"sda", "sdb", "sdz", "sdaa", "sdab", "sdba"}) {
    Add(folder,
        {.name = name, .at = "pci0/ata" + std::to_string(999 - expected.size()) + "/host3/t/l"});
    expected += "GetSMARTFailed:/dev/r" + name + ":0\n";
  }
  EXPECT_EQ(ReportOf(machines::AskDisks(machines::ListDisks(folder), "no nodes")), expected);
}

using machines::StatusAnswer;

// A success whose registers say that no threshold is exceeded, unless they are changed.
struct Fields {
  std::uint8_t key = 1, status = 0x50, lbaMid = 0x4F, lbaHigh = 0xC2, count = 0;
};

Data Descriptors(Fields f = {}) {
  return {0x72, f.key, 0,       0x1D, 0, 0, 0,        14, 0x09,      12, 0,
          0,    0,     f.count, 0,    0, 0, f.lbaMid, 0,  f.lbaHigh, 0,  f.status};
}

Data Fixed(Fields f = {}) {
  return {0xF0, 0, f.key, 0, f.status, 0, f.count, 10, 0, 0, f.lbaMid, f.lbaHigh, 0, 0x1D};
}

TEST(Registers, OnlyDefinedAnswersOfASuccessCountInEitherFormat) {
  using enum StatusAnswer;
  // The answer to RETURN STATUS, and whether CHECK POWER MODE says standby.
  const std::tuple<Fields, StatusAnswer, bool> kCases[] = {
      {{}, kNotExceeded, true},
      {{.key = 0, .count = 1}, kNotExceeded, true},
      {{.count = 2}, kNotExceeded, false},
      {{.lbaMid = 0xF4, .lbaHigh = 0x2C}, kExceeded, true},
      {{.key = 0x0B}, kNone, false},
      {{.lbaHigh = 0x2C}, kNone, true},
      {{.lbaMid = 0xF4}, kNone, true},
      {{.status = 0x00}, kNotExceeded, false},  // not ready
      {{.status = 0x51}, kNone, false},         // error
      {{.status = 0x70}, kNone, false},         // device fault
      {{.status = 0x58}, kNone, false},         // still wants to transfer data
      {{.status = 0xD0}, kNone, false},         // busy
  };
  for (const auto& [fields, answer, isAsleep] : kCases) {
    for (const Data& sense : {Descriptors(fields), Fixed(fields)}) {
      const machines::CommandResult result = machines::ParseSense(sense);
      EXPECT_EQ(machines::ParseReturnStatus(result), answer) << testing::PrintToString(sense);
      EXPECT_EQ(machines::IsInStandby(result), isAsleep);
    }
  }
  EXPECT_FALSE(machines::IsInStandby({machines::CommandEnd::kSucceeded})) << "no registers";
  Data second = Descriptors();  // after another descriptor
  second.insert(second.begin() + 8, {0x00, 0x0A, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  const std::tuple<Data, std::size_t, std::uint8_t, StatusAnswer> kChanges[] = {
      {second, 7, 26, kNotExceeded},
      // Deferred: of another command
      {Descriptors(), 0, 0x73, kNone},
      {Fixed(), 0, 0x71, kNone},
      // Not announced
      {Descriptors(), 8, 0x00, kUnsaid},
      {Fixed(), 13, 0x00, kUnsaid},
      {Fixed(), 12, 1, kUnsaid},
      // Cut inside the registers
      {Descriptors(), 7, 13, kNone},
      {Fixed(), 7, 5, kNone},
      {Descriptors(), 9, 0xFF, kNone},
  };
  for (auto [sense, changed, byte, answer] : kChanges) {
    sense[changed] = byte;
    EXPECT_EQ(machines::ParseReturnStatus(machines::ParseSense(sense)), answer)
        << testing::PrintToString(sense);
  }
}

}  // namespace test
