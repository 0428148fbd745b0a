// What a live drive must answer: each command in turn fails, comes short or finds the drive
// gone, and what the report then says of the drive, now and from a recording.
#include "machines/linux/ata_drive.h"

#include <sys/sysmacros.h>

#include <algorithm>

#include "drives/identify_data.h"
#include "machines/linux/host_machine.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/read_recording.h"
#include "machines/recorded/write_recording.h"
#include "tests/fake_ata_drive.h"

namespace test {

class AtaDrive : public testing::Test {
 protected:
  void SetUp() override { AnswerWell(); }

  platform::Machine Host() const {
    return {.roots = {AhciDevice(machines::MakeAtaDrive({{node_, number_}}), "sda")}};
  }

  // "True", "False" or "failure" for what the report says, if anything, and what was sent
  // for it. The replay of the host's recording must say the same.
  std::string Told() {
    sent.clear();
    report_ = ReportOf(Host());
    std::string commands = sent;
    const Property listing = machines::ListingOf(Host(), [this](const Entry& entry) {
      const DriveAnswers told = entry.drive();
      failures_ = machines::FailuresOf(told);
      return machines::RecordDrive(told);
    });
    EXPECT_EQ(sent, commands + commands) << "a recording sends the same";
    const std::string recording = machines::WritePropertyList(listing);
    EXPECT_EQ(ReportOf(machines::ReadRecording(recording)), report_);
    recordsData_ = recording.find("<key>Data</key>") != std::string::npos;
    if (report_.empty()) return commands;
    if (report_.starts_with("GetSMARTFailed")) return "failure " + commands;
    return (report_.ends_with(":::True\n") ? "True " : "False ") + commands;
  }

  std::string node_ = "/dev/null";
  std::optional<dev_t> number_ = kNodeNumber;
  std::string report_;
  std::vector<std::string> failures_;
  bool recordsData_ = false;
};

TEST_F(AtaDrive, EachCommandMustSucceedButTheLast) {
  EXPECT_EQ(Told(), "False IESDT");
  EXPECT_TRUE(failures_.empty());
  const Answer kHardwareError = {kCheckCondition, {0x70, 0, 4, 0, 0, 0, 0, 10}};
  const Answer kInvalidOperation = {kCheckCondition,
                                    {0x70, 0, 5, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x20}};
  const Answer kInvalidField = {kCheckCondition, {0x72, 5, 0x24, 0, 0, 0, 0, 0}};
  const Answer kBusError = {kCheckCondition, {0x72, 0x0B, 0x47, 0, 0, 0, 0, 0}};
  for (const std::string sentUntilThen : {"I", "IE", "IES", "IESD", "IESDT"}) {
    const char command = sentUntilThen.back();
    std::vector<Answer> bad = {{.status = kGone}, {.status = 8}, kHardwareError, kBusError};
    if (command != 'T') bad.push_back(kAborted);
    if (command == 'I' || command == 'D') bad.push_back({});  // zeros
    if (command != 'E' && command != 'S') bad.push_back({.block = BlockOf({{1, 1}}), .missing = 1});
    for (const Answer& answer : bad) {
      AnswerWell();
      answers[command] = answer;
      EXPECT_EQ(Told(), "failure " + sentUntilThen) << answer.status;
      EXPECT_EQ(failures_.size(), 1U);
      EXPECT_EQ(recordsData_, command == 'T');
    }
  }
  for (const Answer& refusal : {kAborted, kInvalidOperation, kInvalidField}) {
    AnswerWell();
    answers['T'] = refusal;
    EXPECT_EQ(Told(), "False IESDT");
    EXPECT_TRUE(failures_.empty()) << "it may refuse";
  }
}

// The condition holds where the report warns of a pre-failure.
TEST_F(AtaDrive, WithoutRegistersTheBlocksTellTheCondition) {
  std::vector<BlockEntry> last(30);
  std::vector<BlockEntry> beyond(31);
  last[29] = beyond[30] = {5, 1, 9};
  const std::tuple<Data, Answer, std::string> kCases[] = {
      {BlockOf(last), {.block = BlockOf({{5, 10}})}, "True"},
      {BlockOf(beyond), {.block = BlockOf({{5, 10}})}, "failure"},
      {BlockOf({{5, 1, 10}}), {.block = BlockOf({{5, 10}})}, "True"},
      {BlockOf({{5, 1, 11}}), {.block = BlockOf({{5, 10}})}, "False"},
      {BlockOf({{5, 2, 10}}), {.block = BlockOf({{5, 10}})}, "False"},
      {BlockOf({{5, 1, 0}, {5, 2, 1}, {5, 1, 1}}), {.block = BlockOf({{5, 10}})}, "False"},
      {BlockOf({{7, 1, 9}, {5, 1, 9}}), {.block = BlockOf({{5, 1}, {0, 99}, {7, 254}})}, "True"},
      {BlockOf({{5, 1, 10}}), {.block = BlockOf({{6, 10}})}, "failure"},
      {BlockOf({{5, 1, 10}}), {}, "failure"},
      {BlockOf({{5, 1, 10}}), kAborted, "failure"},
  };
  for (const auto& [data, thresholds, told] : kCases) {
    answers['S'] = {};
    answers['D'].block = data;
    answers['T'] = thresholds;
    EXPECT_EQ(Told(), told + " IESDT");
    EXPECT_EQ(report_.find("Pre-Failure Warning") != std::string::npos, told == "True");
  }
}

TEST_F(AtaDrive, OneThatHasNoSmartGivesNoLineAndIsAskedNothing) {
  answers['I'].block[164] = 0;
  answers['I'].block[167] = 0x40;
  EXPECT_EQ(Told(), "I");
  answers['I'].block[164] = 1;
  EXPECT_EQ(Told(), "False IESDT");
}

TEST_F(AtaDrive, OddBytesDoNotBreakTheReport) {
  const std::pair<std::size_t, std::uint8_t> kOdd[] = {{20, 0x1B}, {21, '\n'}, {22, 0x7F},
                                                       {23, 0xFF}, {46, '\n'}, {53, 0}};
  for (const auto& [at, byte] : kOdd) answers['I'].block[at] = byte;
  Told();
  EXPECT_NE(report_.find(":::????AL              \n"), std::string::npos) << report_;
  EXPECT_NE(report_.find(":::R?V   :::"), std::string::npos) << report_;
}

TEST_F(AtaDrive, AnotherNodeIsNeverAsked) {
  const std::pair<std::string, std::optional<dev_t>> kNodes[] = {
      {node_, {}}, {node_, makedev(7, 255)}, {"/", dev_t{0}}};
  for (const auto& [node, number] : kNodes) {
    node_ = node;
    number_ = number;
    EXPECT_EQ(Told(), "failure ");
  }
}

TEST_F(AtaDrive, OneThatSleepsIsAskedOnlyForWhatIsNotKept) {
  const std::tuple<Answer, bool, bool, std::string> kCases[] = {
      {PowerMode(0x01), true, true, "P"},       {PowerMode(0x01), false, true, "PI"},
      {PowerMode(0x01), true, false, "PIESDT"}, {PowerMode(0x01), false, false, "PIESDT"},
      {PowerMode(0xFF), true, true, "PIESDT"},  {kAborted, true, true, "PIESDT"}};
  for (const auto& [answer, hasPage, isKept, commands] : kCases) {
    answers['P'] = answer;
    machines::AtaNode node = {{node_, number_}};
    base::Block identify{};
    std::ranges::copy(answers['I'].block, identify.begin());
    if (hasPage) node.identify = identify;
    const auto kept = [&, keeps = isKept](const std::string& identity) {
      EXPECT_EQ(identity, drives::Identity(identify));
      return keeps ? std::optional(DriveAnswers()) : std::nullopt;
    };
    sent.clear();
    const bool isAsked = machines::MakeAtaDrive(node, kept)().date.has_value();
    EXPECT_EQ(sent, commands);
    EXPECT_EQ(isAsked, commands.size() > 2);
  }
}

Answer Block(const std::vector<std::pair<std::size_t, int>>& bytes) {
  Answer answer;
  for (const auto& [offset, byte] : bytes) answer.block[offset] = static_cast<std::uint8_t>(byte);
  return answer;
}

TEST_F(AtaDrive, IsAskedForTheLogsThatItHas) {
  const std::map<char, Answer> kLogs = {{'L', Block({{0, 1}})},
                                        {'G', Block({{8, 1}})},
                                        {'0', Block({{8, 4}, {9, 0}, {10, 1}, {11, 2}, {12, 7}})},
                                        {'1', Block({{2, 1}})},
                                        {'7', Block({{2, 7}})}};
  constexpr int kAll = 0x4022;
  struct Case {
    int word84, word87;
    std::map<char, Answer> answers;
    std::string logs, commands;
  };
  const Answer kUntouched = {.block = {}};
  const Case kCases[] = {
      {kAll, 0, {}, "SelfTestLog:512 Statistics:1024 ", "LG017"},
      {0, kAll, {}, "SelfTestLog:512 Statistics:1024 ", "LG017"},
      {0x4002, 0, {}, "SelfTestLog:512 ", "L"},
      {0x4020, 0, {}, "Statistics:1024 ", "G017"},
      {0x8022, 0x0022, {}, "", ""},  // not valid
      {kAll, 0, {{'L', kAborted}, {'1', kAborted}}, "Statistics:512 ", "LG017"},
      {kAll, 0, {{'G', Block({{12, 1}})}}, "SelfTestLog:512 ", "LG"},
      {kAll, 0, {{'0', kAborted}}, "SelfTestLog:512 ", "LG0"},
      // What the drive did not send: nothing at all, zeros, or the block before.
      {kAll, 0, {{'L', kUntouched}, {'7', Block({})}}, "Statistics:512 ", "LG017"},
      {kAll, 0, {{'7', Block({{2, 1}})}}, "SelfTestLog:512 Statistics:512 ", "LG017"},
      {kAll, 0, {{'0', {kGone}}}, "SelfTestLog:512 ", "LG0"},
      {kAll, 0, {{'L', {kGone}}}, "", "L"},
      {kAll, 0, {{'T', {kGone}}}, "", ""}};
  const auto answer = [&](int word84, int word87) {
    AnswerWell();
    answers.insert(kLogs.begin(), kLogs.end());
    Data& identify = answers['I'].block;
    for (const auto& [byte, value] : {std::pair<std::size_t, int>(168, word84), {174, word87}}) {
      identify[byte] = static_cast<std::uint8_t>(value);
      identify[byte + 1] = static_cast<std::uint8_t>(value >> 8);
    }
  };
  for (const auto& [word84, word87, changed, logs, commands] : kCases) {
    answer(word84, word87);
    for (const auto& [letter, given] : changed) answers[letter] = given;
    sent.clear();
    std::string taken;
    DriveAnswers asked = machines::MakeAtaDrive({{node_, number_}})();
    machines::AddAtaLogs({node_, number_}, asked);
    for (const auto& [name, bytes] : asked.logs) {
      taken += name + ":" + std::to_string(bytes.size()) + " ";
    }
    EXPECT_EQ(taken, logs) << commands;
    EXPECT_EQ(sent, "IESDT" + commands);
  }
  // A bridge may reset on such commands.
  for (const auto& [vendor, bus, isAsked] : {std::tuple("ATA\n", "pci0", true),
                                             {"ATA\n", "pci0/usb2/2-1", false},
                                             {"MAKER\n", "pci0", false}}) {
    answer(kAll, 0);
    const fs::path root = EmptyFolder();
    AddDisk(root, vendor, bus);
    const platform::Machine machine =
        machines::AskDisks(machines::ListDisks(root / "sys"), root / "dev", {.beyondReport = true});
    EXPECT_EQ(machine.roots.at(0).children.at(0).drive().logs.size(), isAsked ? 2U : 0U) << bus;
  }
}

// Nobody but the drive knows its model, and nothing is asked of it twice.
TEST_F(AtaDrive, BehindABridgeHasTheModelOfItsIdentifyData) {
  const fs::path root = EmptyFolder();
  AddDisk(root, "");
  const DeviceLines lines{.path = "/dev/rsda", .product = "MODEL"};
  EXPECT_EQ(ReportOf(machines::AskDisks(machines::ListDisks(root / "sys"), root / "dev")),
            lines.Text());
}

}  // namespace test
