// The machine made from sysfs: which block devices become entries, and what is said of them;
// and the answer in the registers that a drive returns.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "machines/linux/ata_commands.h"
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

const std::string kAhciPort = "pci0000:00/0000:00:1f.2/ata12/host3/target3:0:1/3:0:1:0";
const std::string kUsb = "pci0/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0";
const std::string kSas =
    "pci0/0000:03:00.0/host0/port-0:0/expander-0:0/port-0:0:4/end_device-0:0:4/target0:0:4/0:0:4:0";

// A block device as sysfs has it; an attribute without a value is not there.
struct BlockDevice {
  std::string name = "sda";
  std::string at = kAhciPort;
  std::string host = "host3";
  std::optional<std::string> hostDriver = "ahci\n";
  std::optional<std::string> type = "0\n";
  std::optional<std::string> vendor = "ATA     \n";
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
  const fs::path block = scsi / "block" / device.name;
  const fs::path host =
      sysfs / "devices" / device.at.substr(0, device.at.find(device.host)) / device.host;
  Write(host / "scsi_host" / device.host / "proc_name", device.hostDriver);
  Write(scsi / "type", device.type);
  Write(scsi / "vendor", device.vendor);
  Write(scsi / "model", device.model);
  Write(scsi / "vpd_pg89", device.page);
  Write(block / "size", device.size);
  fs::create_directory_symlink("../../../" + scsi.filename().string(), block / "device");
  fs::create_directories(sysfs / "block");
  fs::create_symlink(fs::path("../devices") / device.at / "block" / device.name,
                     sysfs / "block" / device.name);
}

std::string Leaves(const platform::Dictionary& values) {
  std::string leaves;
  for (const auto& [key, property] : values) {
    if (const auto* inner = std::get_if<platform::Dictionary>(&property.value)) {
      leaves += Leaves(*inner);
    } else if (const auto* text = std::get_if<std::string>(&property.value)) {
      leaves += ", " + *text;
    } else {
      leaves += ", " + std::to_string(std::get<platform::Number>(property.value).bits);
    }
  }
  return leaves;
}

// "port, class, product, features, interconnect, location, BSD name, size" of each disk.
std::string DisksIn(const fs::path& sysfs) {
  std::string disks;
  const platform::Machine machine = machines::ReadLinuxMachine(sysfs);
  for (const platform::Entry& port : machine.roots.at(0).children) {
    const platform::Entry& device = port.children.at(0);
    disks += port.name + ", " + device.className + Leaves(device.properties) +
             Leaves(device.children.at(0).properties);
  }
  return disks;
}

struct Identify {
  std::string model = "Example 4000 with 40 characters, all used";
  unsigned char serial = 1, word82 = 0x6B, word83High = 0x40, command = 0xEC, pageCode = 0x89;
};

std::string Page(Identify identify = {}) {
  std::string page(60 + 512, '\0');
  page[1] = static_cast<char>(identify.pageCode);
  page[56] = static_cast<char>(identify.command);
  identify.model.resize(40, ' ');
  for (std::size_t i = 0; i < 40; i++) page[60 + 54 + (i ^ 1)] = identify.model[i];
  page[60 + 152] = page[60 + 153] = static_cast<char>(identify.serial);
  page[60 + 164] = static_cast<char>(identify.word82);
  page[60 + 167] = static_cast<char>(identify.word83High);
  return page;
}

TEST(LinuxMachine, DisksThatSpeakAtaAreEntriesWithWhatIsKnownOfThem) {
  const std::string kModel = "Example 4000 with 40 characters, all use";
  const std::string kEnd = "Internal, sda, 4096";
  const std::string kAhci = "ata12, IOAHCIBlockStorageDevice, ";
  const std::string kWithoutPage = kAhci + "EXAMPLE DISK 200, 32, SATA, " + kEnd;
  const std::string kAta = "ata12, IOATABlockStorageDevice, ";
  const auto on = [](const std::string& driver, const std::string& page) {
    return BlockDevice{.hostDriver = driver + "\n", .page = page};
  };
  const auto behind = [](const std::string& at, const char* host, const char* vendor,
                         std::optional<std::string> page) {
    return BlockDevice{
        .at = at, .host = host, .hostDriver = "mpt3sas", .vendor = vendor, .page = std::move(page)};
  };
  const struct {
    BlockDevice device;
    std::string disk;
  } kCases[] = {
      {{}, kWithoutPage},
      {{.page = Page().substr(0, 571)}, kWithoutPage},
      {{.page = Page({.pageCode = 0x83})}, kWithoutPage},
      {on("brcm-ahci", Page({.serial = 0})), kAhci + kModel + ", 32, SATA, " + kEnd},
      {on("ata_piix", Page({.serial = 0})), kAta + kModel + ", 32, ATA, " + kEnd},
      {on("ata_piix", Page({.word82 = 0x6A})), kAta + kModel + ", 0, SATA, " + kEnd},
      {on("ata_piix", Page({.word82 = 0, .word83High = 0})), kAta + kModel + ", 32, SATA, " + kEnd},
      {on("ata_piix", Page({.word82 = 0xFE, .word83High = 0xFF})),
       kAta + kModel + ", 32, SATA, " + kEnd},
      {{.hostDriver = {}, .model = {}, .size = {}}, kAta + ", 32, ATA, Internal, sda"},
      {{.page = Page({.model = "  A\0B\x1B\xC3\xA9\x7F"s + std::string(31, '\0')})},
       kAhci + "A?B????, 32, SATA, " + kEnd},
      {{.name = "sd\xFF\n1", .model = "\xFFMODEL \n", .size = "5860533168\n"},
       kAhci + "?MODEL, 32, SATA, Internal, sd??1, 3000592982016"},
      {{.at = "pci0/ata7/link7/dev7.2/host6/target6:2:0/6:2:0:0", .host = "host6"},
       "ata7, IOAHCIBlockStorageDevice, EXAMPLE DISK 200, 32, SATA, " + kEnd},
      {{.type = "20\n"}, kWithoutPage},
      {{.type = "5\n"}, ""},
      // Elsewhere than on a libata port, AHCI is no matter
      {behind(kSas, "host0", "ATA", std::nullopt),
       "host0, IOATABlockStorageDevice, EXAMPLE DISK 200, 32, ATA, " + kEnd},
      {behind(kSas, "host0", "SEAGATE", Page()),
       "host0, IOATABlockStorageDevice, " + kModel + ", 32, SATA, " + kEnd},
      {behind(kSas, "host0", "SEAGATE", std::nullopt), ""},
      {behind(kSas, "host0", "ATAPI", Page().substr(0, 60) + std::string(512, '\0')), ""},
      {behind("pci0/0000:03:00.0/host0/target0:2:0/0:2:0:0", "host0", "LSI", std::nullopt), ""},
      {{.at = kUsb, .host = "host6", .vendor = "Bridge", .page = Page()},
       "host6, IOATABlockStorageDevice, " + kModel + ", 32, SATA, External, sda, 4096"},
      {{.at = "pci0/ata1x/scsi1/0:0:0:0", .host = "scsi1"}, ""},
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
  std::string expected;
  for (const std::string name : {"sda", "sdb", "sdz", "sdaa", "sdab", "sdba"}) {
    Add(folder,
        {.name = name, .at = "pci0/ata" + std::to_string(999 - expected.size()) + "/host3/t/l"});
    expected += "GetSMARTFailed:/dev/r" + name + ":0\n";
  }
  test::Install(machines::ReadLinuxMachine(folder, folder / "no nodes").roots);
  EXPECT_EQ(test::Report(), expected);
}

using machines::StatusAnswer;
using SenseBytes = std::vector<std::uint8_t>;

// A success whose registers say that no threshold is exceeded, in both formats.
const SenseBytes kDescriptors = {0x72, 1, 0, 0x1D, 0, 0, 0,    14, 0x09, 12, 0,
                                 0,    0, 0, 0,    0, 0, 0x4F, 0,  0xC2, 0,  0x50};
const SenseBytes kFixed = {0xF0, 0, 1, 0, 0x50, 0, 0, 10, 0, 0, 0x4F, 0xC2, 0, 0x1D};

StatusAnswer AnswerOf(const SenseBytes& sense) {
  return machines::ReadReturnStatus(machines::ReadSense(sense));
}

// The same with bytes changed; each position is given for both formats, -1 for none.
TEST(ReturnStatus, OnlyTheTwoDefinedAnswersOfASuccessCountInEitherFormat) {
  constexpr auto kNone = StatusAnswer::kNone;
  constexpr auto kUnsaid = StatusAnswer::kUnsaid;
  struct Change {
    int inDescriptors, inFixed;
    std::uint8_t byte;
  };
  const auto key = [](std::uint8_t byte) { return Change{1, 2, byte}; };
  const auto status = [](std::uint8_t byte) { return Change{21, 4, byte}; };
  const auto mid = [](std::uint8_t byte) { return Change{17, 10, byte}; };
  const auto high = [](std::uint8_t byte) { return Change{19, 11, byte}; };
  const std::pair<std::vector<Change>, StatusAnswer> kCases[] = {
      {{}, StatusAnswer::kNotExceeded},
      {{key(0)}, StatusAnswer::kNotExceeded},
      {{mid(0xF4), high(0x2C)}, StatusAnswer::kExceeded},
      {{key(0x0B)}, kNone},
      {{key(0x03)}, kNone},
      {{high(0x2C)}, kNone},
      {{mid(0xF4)}, kNone},
      {{status(0x51)}, kNone},                  // error
      {{status(0x70)}, kNone},                  // device fault
      {{status(0x58)}, kNone},                  // still wants to transfer data
      {{status(0xD0)}, kNone},                  // busy
      {{{0, -1, 0x73}, {-1, 0, 0x71}}, kNone},  // deferred: of another command
      {{{8, -1, 0x00}, {-1, 13, 0x00}}, kUnsaid},
      {{{7, -1, 0}, {-1, 12, 1}}, kUnsaid},
      {{{7, -1, 13}, {-1, 7, 5}}, kNone},  // cut inside the registers
      {{{9, -1, 0xFF}, {-1, 7, 0}}, kNone},
  };
  for (const auto& [changes, answer] : kCases) {
    SenseBytes descriptors = kDescriptors;
    SenseBytes fixed = kFixed;
    for (const auto& [inDescriptors, inFixed, byte] : changes) {
      if (inDescriptors >= 0) descriptors[static_cast<std::size_t>(inDescriptors)] = byte;
      if (inFixed >= 0) fixed[static_cast<std::size_t>(inFixed)] = byte;
    }
    EXPECT_EQ(AnswerOf(descriptors), answer) << testing::PrintToString(descriptors);
    EXPECT_EQ(AnswerOf(fixed), answer) << testing::PrintToString(fixed);
  }
}

TEST(ReturnStatus, NothingIsReadBeyondTheEnd) {
  SenseBytes second = kDescriptors;  // after another descriptor
  second[7] = 26;
  second.insert(second.begin() + 8, {0x00, 0x0A, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(AnswerOf(second), StatusAnswer::kNotExceeded);
  for (SenseBytes cut : {kDescriptors, second, kFixed}) {
    for (; !cut.empty(); cut.pop_back()) {
      const SenseBytes shorter(cut.begin(), cut.end() - 1);
      EXPECT_NE(AnswerOf(shorter), StatusAnswer::kNotExceeded) << shorter.size();
    }
  }
}

}  // namespace
