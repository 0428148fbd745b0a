// An ATA drive made up of answers to commands. It stands behind the SCSI library, behind any
// character device such as /dev/null, and is an ATA disk by udev. For tests that wrap sg_ll_ata_pt.
#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include "tests/support.h"

namespace test {

// An answer to a command: SCSI's status, sense data, a block, how much of it is missing.
struct Answer {
  int status = 0;
  std::vector<std::uint8_t> sense = {};
  Data block = Data(base::kBlockSize);
  int missing = 0;
};

constexpr int kGone = -1;
constexpr int kHangs = -2;  // does not come back
constexpr int kCheckCondition = 2;
const Answer kAborted = {kCheckCondition, {0x72, 0x0B, 0, 0, 0, 0, 0, 0}};

// To CHECK POWER MODE, with that count in the registers: 0x01 is standby, 0xFF is active.
Answer PowerMode(std::uint8_t count);

// By a letter for each command: I E S D T, P for CHECK POWER MODE, L for the self-test log, G for
// the directory of logs, digits for the pages of device statistics, and X or Y to start the
// short or the extended self-test.
extern std::map<char, Answer> answers;
extern std::map<char, std::vector<Answer>> later;  // what takes the places of these, in turn
extern std::string sent;  // the letters, but for what a child process sends
extern const dev_t kNodeNumber;

// Makes `answers` those of a healthy drive that is awake, as HealthyAnswers() has them.
void AnswerWell();

// A folder in which `root`/sys has such a disk, sda, on that bus, and `root`/dev its node. The
// kernel knows the model "Bridge" of it, and `vendor`.
void AddDisk(const fs::path& root, const std::string& vendor, const std::string& bus = "usb2");

}  // namespace test
