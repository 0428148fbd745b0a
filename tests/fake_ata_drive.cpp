#include "tests/fake_ata_drive.h"

#include <scsi/sg_cmds_extra.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>

#include "machines/linux/block_device.h"
#include "machines/linux/udev_database.h"

namespace test {

std::map<char, Answer> answers;
std::map<char, std::vector<Answer>> later;
std::string sent;

// The linker sends the commands here. Nothing goes to the node.
extern "C" int __wrap_sg_ll_ata_pt(int /*node*/, const std::uint8_t* cdb, int /*size*/,
                                   int /*timeout*/, void* in, void* /*out*/, int length,
                                   std::uint8_t* sense, int /*senseSize*/, std::uint8_t* /*ata*/,
                                   int /*ataSize*/, int* missing, int /*verbose*/) {
  // All but the first byte, which is the library's.
  const std::map<std::vector<int>, char> letters = {
      {{8, 0x0E, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0xEC, 0}, 'I'},
      {{6, 0, 0, 0xD8, 0, 0, 0, 0, 0, 0x4F, 0, 0xC2, 0, 0xB0, 0}, 'E'},
      {{6, 0x20, 0, 0xDA, 0, 0, 0, 0, 0, 0x4F, 0, 0xC2, 0, 0xB0, 0}, 'S'},
      {{8, 0x0E, 0, 0xD0, 0, 1, 0, 0, 0, 0x4F, 0, 0xC2, 0, 0xB0, 0}, 'D'},
      {{8, 0x0E, 0, 0xD1, 0, 1, 0, 0, 0, 0x4F, 0, 0xC2, 0, 0xB0, 0}, 'T'},
      {{6, 0x20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xE5, 0}, 'P'},
      {{8, 0x0E, 0, 0xD5, 0, 1, 0, 6, 0, 0x4F, 0, 0xC2, 0, 0xB0, 0}, 'L'},
      {{9, 0x0E, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0x2F, 0}, 'G'},
      {{6, 0, 0, 0xD4, 0, 0, 0, 1, 0, 0x4F, 0, 0xC2, 0, 0xB0, 0}, 'X'},
      {{6, 0, 0, 0xD4, 0, 0, 0, 2, 0, 0x4F, 0, 0xC2, 0, 0xB0, 0}, 'Y'}};
  // A page of the device statistics by its number.
  const bool isStatistics = cdb[14] == 0x2F && cdb[8] == 4;
  const char letter =
      isStatistics ? static_cast<char>('0' + cdb[10]) : letters.at({cdb + 1, cdb + 16});
  sent += letter;
  const Answer& answer = answers[letter];
  std::copy(answer.sense.begin(), answer.sense.end(), sense);
  if (length > 0) std::ranges::copy(answer.block, static_cast<std::uint8_t*>(in));
  if (length > 0) *missing = answer.missing;
  while (answer.status == kHangs) pause();
  const int status = answer.status;
  if (auto& next = later[letter]; !next.empty()) {
    answers[letter] = next.front();
    next.erase(next.begin());
  }
  return status;
}

const dev_t kNodeNumber = makedev(8, 16);
}  // namespace test

std::optional<dev_t> machines::BlockDeviceNumber(int descriptor) {
  struct stat status {};
  fstat(descriptor, &status);
  return S_ISCHR(status.st_mode) ? std::optional(test::kNodeNumber) : std::nullopt;
}

// Stands for udev, which has asked every disk.
bool machines::IsATAByUdev(dev_t /*number*/) { return true; }

namespace test {

Answer PowerMode(std::uint8_t count) {
  return {kCheckCondition, {0xF0, 0, 1, 0, 0x50, 0, count, 10, 0, 0, 0, 0, 0, 0x1D}};
}

void AnswerWell() {
  const DriveAnswers drive = HealthyAnswers();
  Data identify = drive.identify.bytes;
  identify[167] = 0;  // nothing is said of S.M.A.R.T.
  answers = {{'I', {.block = identify}},
             {'S', {kCheckCondition, {0xF0, 1, 0, 0, 0x50, 0, 0, 10, 0, 0, 0x4F, 0xC2, 0, 0x1D}}},
             {'P', PowerMode(0xFF)},
             {'D', {.block = drive.data.bytes}},
             {'T', {.block = drive.thresholds.bytes}}};
}

void AddDisk(const fs::path& root, const std::string& vendor, const std::string& bus) {
  const fs::path folder = root / "sys/devices" / bus / "host6/6:0:0:0/block/sda";
  for (const char* made : {"sys/block", "dev"}) fs::create_directories(root / made);
  fs::create_directory_symlink(folder, root / "sys/block/sda");
  fs::create_symlink("/dev/null", root / "dev/sda");
  WriteFile(folder / "device/type", "0\n");
  WriteFile(folder / "device/vendor", vendor);
  WriteFile(folder / "device/model", "Bridge\n");
  WriteFile(folder / "dev", "8:16\n");
}

}  // namespace test
