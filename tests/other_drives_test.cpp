// NVMe drives and SCSI disks of a host: what they are sent, what becomes of each answer, and which
// are not asked at all.
#include <linux/nvme_ioctl.h>
#include <scsi/sg_lib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cstdarg>

#include "machines/entries/device_entries.h"
#include "machines/linux/block_device.h"
#include "machines/linux/host_machine.h"
#include "machines/linux/nvme_drive.h"
#include "machines/linux/scsi_drive.h"
#include "machines/linux/udev_database.h"
#include "tests/support.h"

std::optional<dev_t> machines::BlockDeviceNumber(int descriptor) {
  struct stat status {};
  fstat(descriptor, &status);
  return S_ISCHR(status.st_mode) ? std::optional(makedev(8, 16)) : std::nullopt;
}
bool machines::IsATAByUdev(dev_t /*number*/) { return false; }

namespace test {

const machines::DiskNode kNode = {"/dev/null", makedev(8, 16)};

// The answers of all drives: a status and the bytes that come. By "log" and "identify", by "sense"
// and "defects", and by the code of a log page.
struct Answer {
  int status = 0;
  Data bytes = {};
};
std::map<std::string, Answer> answers;
std::string sent;

int Take(const std::string& command, void* bytes, std::size_t size) {
  sent += command + " ";
  const Answer& answer = answers[command];
  std::copy_n(answer.bytes.begin(), std::min(size, answer.bytes.size()),
              static_cast<std::uint8_t*>(bytes));
  return answer.status;
}

extern "C" {
int __wrap_ioctl(int /*node*/, unsigned long request, ...) {
  va_list rest;
  va_start(rest, request);
  const nvme_admin_cmd& command = *va_arg(rest, nvme_admin_cmd*);
  va_end(rest);
  const bool isLog = command.opcode == 2 && command.nsid == 0xFFFFFFFF && command.data_len == 512 &&
                     command.cdw10 == 0x007F0002;
  const bool isSelfTests = command.opcode == 2 && command.nsid == 0xFFFFFFFF &&
                           command.data_len == 564 && command.cdw10 == 0x008C0006;
  const bool isIdentify = command.opcode == 6 && command.data_len == 4096 && command.cdw10 == 1;
  EXPECT_TRUE(request == NVME_IOCTL_ADMIN_CMD && (isLog || isIdentify || isSelfTests) &&
              command.timeout_ms > 0);
  const auto address = static_cast<std::uintptr_t>(command.addr);
  void* const bytes = reinterpret_cast<void*>(address);  // NOLINT(performance-no-int-to-ptr)
  const int status = Take(isLog         ? "log"
                          : isSelfTests ? "tests"
                                        : "identify",
                          bytes, command.data_len);
  if (status < 0) errno = -status;
  return status < 0 ? -1 : status;
}
int __wrap_sg_ll_log_sense_v2(int /*node*/, bool /*ppc*/, bool isSaved, int control, int page,
                              int subpage, int /*parameter*/, std::uint8_t* bytes, int size,
                              int /*timeout*/, int* missing, bool /*noisy*/, int /*verbose*/) {
  EXPECT_TRUE(!isSaved && control == 1 && subpage == 0);
  const std::string name = std::to_string(page);
  *missing = size - static_cast<int>(answers[name].bytes.size());
  return Take(name, bytes, static_cast<std::size_t>(size));
}
int __wrap_sg_ll_request_sense(int /*node*/, bool /*descriptors*/, void* bytes, int size,
                               bool /*noisy*/, int /*verbose*/) {
  return Take("sense", bytes, static_cast<std::size_t>(size));
}
int __wrap_sg_ll_read_defect10(int /*node*/, bool isPrimary, bool isGrown, int /*format*/,
                               void* bytes, int size, bool /*noisy*/, int /*verbose*/) {
  EXPECT_TRUE(!isPrimary && isGrown);
  return Take("defects", bytes, static_cast<std::size_t>(size));
}
}

// "name name", or why there are no answers.
std::string Told(const Drive& drive) {
  sent.clear();
  const DriveAnswers told = drive();
  std::string names = told.date ? "" : "undated ";
  for (const auto& [name, bytes] : told.logs) {
    names += name + ":" + std::to_string(bytes.size()) + " ";
  }
  return told.whyNotOpened + names;
}

TEST(OtherDrives, AnNVMeDriveIsAskedForItsLogAndItsLimits) {
  const Answer kLog = {0, Data(512, 1)};
  const std::tuple<Answer, Answer, std::string, std::string> kCases[] = {
      {kLog, {0, Data(4096, 0x0F)}, "HealthLog:512 IdentifyController:512 ", "log identify "},
      {kLog,
       {0, Data(4096, 0x10)},
       "HealthLog:512 IdentifyController:512 SelfTestLog:564 ",
       "log identify tests "},
      {kLog, {0x4002}, "HealthLog:512 ", "log identify "},
      {{0x4002},
       {},
       "cannot read its health log: the drive refused, NVMe status 4002hundated ",
       "log "},
      {{-EACCES},
       {},
       "cannot read its health log: Permission denied (run as root)undated ",
       "log "},
      {{-ENODEV}, {}, "cannot read its health log: No such deviceundated ", "log "},
      {{0, Data(512)}, {}, "its health log is emptyundated ", "log "}};
  for (const auto& [log, identify, told, commands] : kCases) {
    answers = {{"log", log}, {"identify", identify}};
    const auto ask = [] {
      DriveAnswers asked = machines::MakeNvmeDrive(kNode)();
      machines::AddNvmeLogs(kNode, asked);
      return asked;
    };
    EXPECT_EQ(Told(ask), told);
    EXPECT_EQ(sent, commands);
  }
}

const Data kNoException = {0x70, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

TEST(OtherDrives, ASCSIDiskIsAskedForThePagesThatItHas) {
  const Answer kList = {0, {0, 0, 0, 5, 0x00, 0x02, 0x0D, 0x10, 0x2F}};
  const Answer kWithout2F = {0, {0, 0, 0, 2, 0x00, 0x0D}};
  const Answer kPage2 = {0, {2, 0, 0, 1, 9, 8, 7}};  // what follows the page is not the page's
  const Answer kHeat = {0, {0x4D, 0, 0, 0}};
  const Answer kPage2F = {0, {0x2F, 0, 0, 9, 1, 2}};  // cut short
  const Answer kDefects = {SG_LIB_CAT_RECOVERED, {0, 0x0C, 0, 8}};
  const std::string kFailed = "LOG SENSE failed";
  struct Case {
    std::map<std::string, Answer> answers;
    std::string told, commands;
  };
  const Case kCases[] = {
      {{{"0", kList},
        {"2", kPage2},
        {"13", kHeat},
        {"16", {SG_LIB_CAT_ILLEGAL_REQ}},
        {"47", kPage2F},
        {"defects", kDefects}},
       "DefectListHeader:4 LogPage02:5 LogPage0D:4 LogPage2F:6 ",
       "0 47 2 13 16 defects "},
      {{{"0", kWithout2F},
        {"13", kHeat},
        {"sense", {0, kNoException}},
        {"defects", {SG_LIB_CAT_INVALID_OP}}},
       "LogPage0D:4 Sense:18 ",
       "0 13 sense defects "},
      // A list of primary defects alone, and no sense data.
      {{{"0", kWithout2F}, {"13", kHeat}, {"sense", {-1}}, {"defects", {0, {0, 0x14, 0, 8}}}},
       "LogPage0D:4 ",
       "0 13 sense defects "},
      {{{"0", kWithout2F}, {"13", {SG_LIB_CAT_ILLEGAL_REQ}}, {"sense", {0, kNoException}}},
       "Sense:18 ",
       "0 13 sense defects "},
      {{{"0", kWithout2F}, {"13", {SG_LIB_CAT_MEDIUM_HARD}}},
       kFailed + " for LogPage0Dundated ",
       "0 13 "},
      {{{"0", kWithout2F}, {"13", kPage2}, {"sense", {0, kNoException}}},
       "Sense:18 ",
       "0 13 sense defects "},
      {{{"0", {SG_LIB_CAT_INVALID_OP}}}, "undated ", "0 "},
      {{{"0", {SG_LIB_CAT_ILLEGAL_REQ}}}, "undated ", "0 "},
      {{{"0", {SG_LIB_CAT_UNIT_ATTENTION}}}, kFailed + "undated ", "0 0 "},
      {{{"0", {-1}}}, kFailed + "undated ", "0 "}};
  for (const auto& [given, told, commands] : kCases) {
    answers = given;
    EXPECT_EQ(Told(machines::MakeScsiDrive({kNode})), told);
    EXPECT_EQ(sent, commands);
  }
}

TEST(OtherDrives, ASCSIDiskSleepsOnIfItsAnswersAreKept) {
  const auto sense = [](std::uint8_t key, std::uint8_t code, std::uint8_t qualifier) {
    return Answer{0, {0x70, 0, key, 0, 0, 0, 0, 10, 0, 0, 0, 0, code, qualifier, 0, 0, 0, 0}};
  };
  const std::tuple<Answer, bool, std::string> kCases[] = {
      {sense(0, 0x5E, 0x02), true, "sense "},   {sense(0, 0x5E, 0x04), true, "sense "},
      {sense(2, 0x04, 0x02), true, "sense "},   {sense(0, 0x5E, 0x02), false, "sense 0 "},
      {sense(0, 0x5E, 0x01), true, "sense 0 "}, {sense(0, 0, 0), true, "sense 0 "},
      {sense(2, 0x04, 0x01), true, "sense 0 "}, {{-1}, true, "sense 0 "}};
  for (const auto& [answer, isKept, commands] : kCases) {
    answers = {{"sense", answer}, {"0", {SG_LIB_CAT_INVALID_OP}}};
    const auto kept = [isKept = isKept](const std::string& identity) {
      EXPECT_EQ(identity, "A DISK");
      return isKept ? std::optional(DriveAnswers()) : std::nullopt;
    };
    Told(machines::MakeScsiDrive({kNode, "A DISK"}, kept));
    EXPECT_EQ(sent, commands);
  }
}

// A host with a drive of two namespaces and a SCSI disk.
class OtherDisks : public testing::Test {
 protected:
  void SetUp() override {
    answers = {{"log", {0, Data(512, 1)}}, {"0", {0, {0, 0, 0, 0}}}};
    const fs::path controller = sys_ / "devices/pci0/nvme/nvme0";
    for (const auto& [file, text] : {std::pair("model", "FAST 1\n"), {"serial", "N1 \n"}}) {
      WriteFile(controller / file, text);
    }
    WriteFile(controller / "firmware_rev", "F2\n");
    for (const std::string name : {"nvme0n1", "nvme0n2"}) Add(controller / name, controller);
    const fs::path disk = sys_ / "devices/pci0/host3/target3:0:0/3:0:0:0";
    for (const auto& [file, text] : {std::pair("vendor", "MAKER   \n"),
                                     {"model", "SAS 4\n"},
                                     {"rev", "R3\n"},
                                     {"type", "0\n"}}) {
      WriteFile(disk / file, text);
    }
    WriteFile(disk / "vpd_pg80", std::string("\0\x80\0\x02S4", 6));
    Add(disk / "block/sda", disk);
  }

  void Add(const fs::path& block, const fs::path& device) const {
    WriteFile(block / "dev", "8:16\n");
    WriteFile(block / "size", "8\n");
    fs::create_directory_symlink(device, block / "device");
    fs::create_directories(sys_ / "block");
    fs::create_directory_symlink(block, sys_ / "block" / block.filename());
    fs::create_directories(root_ / "dev");
    fs::create_symlink("/dev/null", root_ / "dev" / block.filename());
  }

  // "name: product, revision, serial number, logs", or "name" of a disk without a drive.
  std::string Disks(const machines::Asking& asking) const {
    std::string text;
    const platform::Machine machine =
        machines::AskDisks(machines::ListDisks(sys_), root_ / "dev", asking);
    for (const Entry& disk : machine.roots.at(0).children) {
      text += std::string(machines::DiskName(disk));
      if (disk.drive) {
        for (const char* key : {"Product Name", "Product Revision Level", "Serial Number"}) {
          text += ", " + std::string(machines::Characteristic(disk, key));
        }
        text += ": " + Told(disk.drive);
      }
      text += "\n";
    }
    return text;
  }

  fs::path root_ = EmptyFolder();
  fs::path sys_ = root_ / "sys";
};

TEST_F(OtherDisks, AreAskedWhereThatIsWanted) {
  EXPECT_EQ(Disks({.beyondReport = false}), "sda\nnvme0n1\nnvme0n2\n");
  EXPECT_EQ(Disks({.beyondReport = true}),
            "sda, MAKER SAS 4, R3, S4: Sense:18 \n"
            "nvme0n1, FAST 1, F2, N1: HealthLog:512 IdentifyController:512 \n"
            "nvme0n2, FAST 1, F2, N1: HealthLog:512 IdentifyController:512 \n");
  answers["0"] = {SG_LIB_CAT_INVALID_OP};
  fs::remove(root_ / "dev/nvme0n2");
  answers["log"] = {0x0F};
  EXPECT_EQ(Disks({.beyondReport = true}),
            "sda\n"
            "nvme0n1, FAST 1, F2, N1: "
            "cannot read its health log: the drive refused, NVMe status 0Fhundated \n"
            "nvme0n2, FAST 1, F2, N1: "
            "cannot read its health log: the drive refused, NVMe status 0Fhundated \n");
}

TEST_F(OtherDisks, SleepOnIfTheKernelHasSuspendedThem) {
  const auto kept = [](const std::string& identity) {
    DriveAnswers old = {.date = Date(0)};
    old.logs.emplace(Replaced(identity, "(\n)", "/"), Data());
    return std::optional(old);
  };
  const auto set = [&](const char* text) {
    WriteFile(sys_ / "devices/pci0/nvme/nvme0/device/power/runtime_status", text);
    WriteFile(sys_ / "devices/pci0/host3/target3:0:0/3:0:0:0/power/runtime_status", text);
  };
  set("suspended\n");
  EXPECT_EQ(Disks({.kept = kept, .beyondReport = true}),
            "sda, MAKER SAS 4, R3, S4: MAKER SAS 4/S4:0 \n"
            "nvme0n1, FAST 1, F2, N1: FAST 1/N1:0 \n"
            "nvme0n2, FAST 1, F2, N1: FAST 1/N1:0 \n");
  const std::string asked = Disks({.beyondReport = true});
  EXPECT_EQ(asked.find("/N1"), std::string::npos) << asked;
  set("active\n");
  EXPECT_EQ(Disks({.kept = kept, .beyondReport = true}), asked);
}

TEST_F(OtherDisks, AreNotAskedWithoutAMedium) {
  const fs::path disk = sys_ / "devices/pci0/host3/target3:0:0/3:0:0:0/block/sda";
  WriteFile(disk / "removable", "1\n");
  EXPECT_TRUE(Disks({.beyondReport = true}).starts_with("sda, "));
  WriteFile(disk / "size", "0\n");
  EXPECT_TRUE(Disks({.beyondReport = true}).starts_with("sda\n"));
}

}  // namespace test
