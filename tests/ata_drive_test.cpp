// What a live drive must answer: each command in turn fails, comes short or finds the drive
// gone, and what the report then says of the drive, now and from a recording.
#include "machines/linux/ata_drive.h"

#include <scsi/sg_cmds_extra.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "machines/linux/sysfs_files.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/recorded_machine.h"
#include "machines/recorded/recording.h"
#include "tests/support.h"

namespace {

using platform::Drive;
using Block = Drive::Block;

// An answer to a command: SCSI's status, sense data, a block, how much of it is missing.
struct Answer {
  int status = 0;
  std::vector<std::uint8_t> sense = {};
  Block block = {};
  int missing = 0;
};

std::map<std::uint8_t, Answer> answers;  // by the operation; IDENTIFY DEVICE is EC
std::string sent;                        // a letter each: I E S D T

constexpr int kGone = -1;
constexpr int kCheckCondition = 2;
const Answer kAborted = {kCheckCondition, {0x72, 0x0B, 0, 0, 0, 0, 0, 0}};

Answer Registers(std::uint8_t lbaMid, std::uint8_t lbaHigh) {
  return {kCheckCondition, {0xF0, 1, 0, 0, 0x50, 0, 0, 10, 0, 0, lbaMid, lbaHigh, 0, 0x1D, 0, 0}};
}

}  // namespace

// The linker sends the commands here. Nothing goes to the node.
extern "C" int __wrap_sg_ll_ata_pt(int /*node*/, const std::uint8_t* cdb, int /*size*/,
                                   int /*timeout*/, void* in, void* /*out*/, int length,
                                   std::uint8_t* sense, int /*senseSize*/, std::uint8_t* /*ata*/,
                                   int /*ataSize*/, int* missing, int /*verbose*/) {
  const std::uint8_t operation = cdb[14] == 0xB0 ? cdb[4] : cdb[14];
  const std::map<std::uint8_t, char> letters = {
      {0xEC, 'I'}, {0xD8, 'E'}, {0xDA, 'S'}, {0xD0, 'D'}, {0xD1, 'T'}};
  sent += letters.at(operation);
  const Answer& answer = answers[operation];
  std::copy(answer.sense.begin(), answer.sense.end(), sense);
  if (length > 0) std::memcpy(in, answer.block.data(), static_cast<std::size_t>(length));
  if (length > 0) *missing = answer.missing;
  return answer.status;
}

namespace {

constexpr std::uint8_t kIdentify = 0xEC, kEnable = 0xD8, kStatus = 0xDA, kData = 0xD0,
                       kThresholds = 0xD1;

// Attribute 5 below a pre-failure threshold if `value` is small.
void AnswerWell(std::uint8_t value = 90) {
  const auto drive = test::HealthyDrive();
  drive->identify->at(167) = 0;  // nothing is said of S.M.A.R.T.
  answers = {{kIdentify, {.block = *drive->identify}},
             {kStatus, Registers(0x4F, 0xC2)},
             {kData, {.block = test::BlockOf({{5, 0x33, value}, {194, 0x22, 38}})}},
             {kThresholds, {.block = test::BlockOf({{194, 0}, {5, 36}})}}};
  sent.clear();
}

class AtaDrive : public testing::Test {
 protected:
  // A loop device stands for the disk: it is there on most systems, and is only opened.
  void SetUp() override {
    number_ = machines::ReadDeviceNumber("/sys/block/loop0/dev");
    if (!number_ || access(kNode, R_OK) != 0) GTEST_SKIP() << "no " << kNode << " to read";
  }

  platform::Machine Host() const {
    platform::Machine host;
    host.roots = {test::AhciDevice(machines::MakeAtaDrive(kNode, number_), "sda")};
    return host;
  }

  // "group True", "group False", "failure" or "" for what the report says, followed by what
  // was sent for it. The replay of the host's recording must say the same.
  std::string Told() {
    sent.clear();
    const std::string report = ReportOf(Host());
    std::string commands = sent;
    const platform::Property listing =
        machines::ListingOf(Host(), [this](const platform::Entry& entry) {
          machines::DriveRecording recording = machines::RecordDrive(*entry.drive);
          failures_ = recording.failures;
          return recording.answers;
        });
    EXPECT_EQ(sent, commands + commands) << "a recording sends the same";
    const std::string recording = machines::WritePropertyList(listing);
    EXPECT_EQ(ReportOf(machines::ReadRecordedMachine(recording)), report);
    recordsData_ = recording.find("<key>Data</key>") != std::string::npos;
    if (report.empty()) return commands;
    if (report.starts_with("GetSMARTFailed")) return "failure " + commands;
    return std::string(report.find(":::True\n") != std::string::npos ? "True " : "False ") +
           commands;
  }

  static std::string ReportOf(const platform::Machine& machine) {
    test::Install(machine.roots);
    return test::Report();
  }

  static constexpr const char* kNode = "/dev/loop0";
  std::optional<dev_t> number_;
  std::vector<std::string> failures_;
  bool recordsData_ = false;
};

TEST_F(AtaDrive, EachCommandMustSucceedButTheLast) {
  AnswerWell();
  EXPECT_EQ(Told(), "False IESDT");
  EXPECT_TRUE(failures_.empty());
  const Answer kHardwareError = {kCheckCondition, {0x70, 0, 4, 0, 0, 0, 0, 10}};
  const std::pair<std::uint8_t, const char*> kCommands[] = {
      {kIdentify, "I"}, {kEnable, "IE"}, {kStatus, "IES"}, {kData, "IESD"}, {kThresholds, "IESDT"}};
  for (const auto& [command, sentUntilThen] : kCommands) {
    const bool readsAnswer = command == kIdentify || command == kData;
    std::vector<Answer> bad = {{.status = kGone}, {.status = 8}, kHardwareError};
    if (command != kThresholds) bad.push_back(kAborted);
    if (readsAnswer) bad.push_back({});  // zeros
    if (readsAnswer || command == kThresholds) bad.push_back({.block = {1}, .missing = 1});
    for (const Answer& answer : bad) {
      AnswerWell();
      answers[command] = answer;
      EXPECT_EQ(Told(), std::string("failure ") + sentUntilThen) << answer.status;
      EXPECT_EQ(failures_.size(), 1U);
      EXPECT_EQ(recordsData_, command == kThresholds);
    }
  }
  AnswerWell();
  answers[kThresholds] = kAborted;
  EXPECT_EQ(Told(), "False IESDT");
  EXPECT_EQ(failures_, std::vector<std::string>{"SMART READ THRESHOLDS failed"});
}

TEST_F(AtaDrive, WithoutRegistersTheBlocksTellTheCondition) {
  for (const auto& [value, told] : {std::pair{37, "False IESDT"}, {36, "True IESDT"}}) {
    AnswerWell(static_cast<std::uint8_t>(value));
    answers[kStatus] = {};
    EXPECT_EQ(Told(), told);
  }
  for (const Answer& thresholds : {kAborted, Answer{}}) {
    answers[kThresholds] = thresholds;
    EXPECT_EQ(Told(), "failure IESDT") << "nothing tells the condition";
  }
}

TEST_F(AtaDrive, OneThatHasNoSmartGivesNoLineAndIsAskedNothing) {
  AnswerWell();
  answers[kIdentify].block[164] = 0;
  answers[kIdentify].block[167] = 0x40;
  EXPECT_EQ(Told(), "I");
  answers[kIdentify].block[164] = 1;
  EXPECT_EQ(Told(), "False IESDT");
}

TEST_F(AtaDrive, OddBytesDoNotBreakTheReport) {
  AnswerWell();
  Block& identify = answers[kIdentify].block;
  const std::string_view serial = "\n\x1B\xFF\x7F A";
  for (std::size_t i = 0; i < serial.size(); i++) {
    identify[20 + (i ^ 1)] = static_cast<std::uint8_t>(serial[i]);
  }
  identify[46] = '\n';
  identify[53] = 0;
  const std::string report = ReportOf(Host());
  EXPECT_NE(report.find(":::???? A              \n"), std::string::npos) << report;
  EXPECT_NE(report.find(":::R?V   :::"), std::string::npos) << report;
}

TEST_F(AtaDrive, AnotherNodeIsNeverAsked) {
  AnswerWell();
  number_ = makedev(7, 255);
  EXPECT_EQ(Told(), "failure ");
  number_.reset();
  EXPECT_EQ(Told(), "failure ");
}

TEST_F(AtaDrive, TheConditionHoldsWhereTheReportWarnsOfAPreFailure) {
  const struct {
    Block data, thresholds;
    bool isKnown = true;
  } kCases[] = {
      {test::BlockOf({{5, 1, 10}}), test::BlockOf({{5, 10}})},
      {test::BlockOf({{5, 1, 11}}), test::BlockOf({{5, 10}})},
      {test::BlockOf({{5, 2, 10}}), test::BlockOf({{5, 10}})},
      {test::BlockOf({{5, 1, 0}, {5, 2, 1}, {5, 1, 1}}), test::BlockOf({{5, 10}})},
      {test::BlockOf({{7, 1, 9}, {5, 1, 9}}), test::BlockOf({{5, 1}, {0, 99}, {7, 254}})},
      {test::BlockOf({{5, 1, 10}}), test::BlockOf({{6, 10}}), false},
  };
  for (const auto& c : kCases) {
    AnswerWell();
    answers[kStatus] = {};
    answers[kData].block = c.data;
    answers[kThresholds].block = c.thresholds;
    const std::string report = ReportOf(Host());
    const bool warns = report.find("Pre-Failure Warning") != std::string::npos;
    EXPECT_EQ(report.ends_with(warns ? ":::True\n" : ":::False\n"), c.isKnown) << report;
  }
}

}  // namespace
