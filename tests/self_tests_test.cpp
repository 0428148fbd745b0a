// smartprobe-selftest on a host of one ATA drive: what it starts, how it watches, and its statuses.
#include "tools/self_tests.h"

#include <unistd.h>

#include <csignal>

#include "tests/fake_ata_drive.h"
#include "tools/drive_self_test.h"

namespace test {

using namespace std::chrono_literals;

// S.M.A.R.T. data with that status of a self-test, what is left of it, and times of 1 and 300
// minutes.
Answer Data363(std::uint8_t status) {
  Answer answer{.block = HealthyAnswers().data.bytes};
  answer.block.resize(512);
  answer.block[363] = status;
  answer.block[372] = 1;
  answer.block[373] = 0xFF;
  answer.block[375] = 0x2C;
  answer.block[376] = 1;
  return answer;
}

class SelfTestProgram : public testing::Test {
 protected:
  void SetUp() override {
    root_ = EmptyFolder();
    AnswerWell();
    answers['I'].block[168] = 0x02;
    answers['I'].block[169] = 0x40;
    answers['D'] = Data363(0);
    later.clear();
    AddDisk(root_, "ATA\n", "pci0");
  }

  // The status, and all that was printed.
  std::string Run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "smartprobe-selftest");
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    int status = -1;
    std::string said;
    const std::string printed = Printed(stdout, [&] {
      said = Printed(stderr, [&] {
        status = tools::RunSelfTests(static_cast<int>(arguments.size()), argv.data(),
                                     {root_ / "sys", root_ / "dev"}, {20ms, 200ms});
      });
    });
    return std::to_string(status) + " " + printed + said;
  }

  fs::path root_;
};

TEST_F(SelfTestProgram, StartsATestAndSaysHowItEnds) {
  const std::string kShort =
      "sda: short self-test started; the drive expects it to take 1 minute\n";
  const std::string kLong =
      "sda: extended self-test started; the drive expects it to take 300 minutes\n";
  const Answer kRuns = Data363(0xF3);
  struct Case {
    std::vector<std::string> arguments;
    std::map<char, Answer> answers;
    std::vector<Answer> later;  // of the data: before the test, for its time, and while it runs
    std::string said;
  };
  Answer kLog;  // of a test that failed to read
  for (const auto& [offset, byte] :
       {std::pair(0, 1), {2, 1}, {3, 0x70}, {7, 5}, {508, 1}, {511, 0x88}}) {
    kLog.block[static_cast<std::size_t>(offset)] = static_cast<std::uint8_t>(byte);
  }
  Answer kUnsaid = answers['I'];  // of self-tests
  kUnsaid.block[168] = kUnsaid.block[169] = 0;
  Answer kOld = Data363(0);  // of a drive whose IDENTIFY DEVICE data do not tell
  kOld.block[367] = 0x10;
  const Case kCases[] = {
      {{"sda"}, {}, {}, "0 " + kShort},
      {{root_ / "link", "--extended"}, {}, {}, "0 " + kLong},
      {{"--wait", "sda"},
       {},
       {Data363(0), kRuns, kRuns, Data363(0)},
       "0 " + kShort + "sda: short self-test: completed without error\n"},
      {{"--all"},
       {},
       {Data363(0), kRuns, {kGone}, {kGone}, Data363(0x70)},
       "3 " + kShort + "sda: short self-test: completed: the read element failed\n"},
      {{"--all", "--extended"},
       {},
       {Data363(0), Data363(0x10)},
       "1 " + kLong + "sda: extended self-test: aborted by the host\n"},
      {{"--wait", "sda"},
       {},
       std::vector<Answer>(9, Answer{kGone}),
       "1 sda: short self-test started; the drive does not say how long it takes\n"
       "sda: SMART READ DATA failed; the test may go on\n"},
      {{"--wait", "sda"},
       {{'L', kLog}},
       {Data363(0), Data363(0x70)},
       "3 " + kShort + "sda: short self-test: completed: the read element failed at sector 5\n"},
      {{"--all"}, {{'X', {kHangs}}}, {}, "1 smartprobe-selftest: sda: the drive does not answer\n"},
      // Not started
      {{"sda"}, {{'D', kRuns}}, {}, "1 sda: a self-test runs already, 70 % done\n"},
      {{"sda"}, {{'D', {kGone}}}, {}, "1 sda: SMART READ DATA failed\n"},
      {{"sda"}, {{'X', kAborted}}, {}, "1 sda: the drive refused to start it\n"},
      {{"sda"}, {{'X', {kGone}}}, {}, "1 sda: starting it failed\n"},
      {{"sda"}, {{'E', {kGone}}}, {}, "1 sda: S.M.A.R.T. cannot be enabled\n"},
      {{"sda"}, {{'I', kUnsaid}}, {}, "1 sda: it has no self-tests\n"},
      {{"sda"}, {{'I', kUnsaid}, {'D', kOld}}, {}, "0 " + kShort},
      {{"sdb"}, {}, {}, "1 smartprobe-selftest: sdb: no such disk\n"},
      {{}, {}, {}, "2 smartprobe-selftest: there is no DISK, and no --all; see --help\n"},
      {{"--all", "sda"}, {}, {}, "2 smartprobe-selftest: --all needs no DISK; see --help\n"}};
  for (const auto& [arguments, given, turns, said] : kCases) {
    SetUp();
    fs::create_symlink("sda", root_ / "dev/backup");
    fs::create_symlink("dev/backup", root_ / "link");
    WriteFile(root_ / "sdb/sda", "x");
    for (const auto& [letter, answer] : given) answers[letter] = answer;
    later['D'] = turns;
    EXPECT_EQ(Run(arguments), said) << testing::PrintToString(arguments) << given.size();
  }
}

TEST_F(SelfTestProgram, LeavesTheTestRunningIfItIsInterrupted) {
  later['D'] = {Data363(0), Data363(0xF1)};
  if (fork() == 0) {
    usleep(1000'000);
    kill(getppid(), SIGINT);
    _exit(0);
  }
  const std::string said = Run({"--wait", "sda"});
  EXPECT_TRUE(said.starts_with("130 sda: ") && said.ends_with("\nsda: the self-test goes on\n"))
      << said;
  tools::isInterrupted = 0;
}

}  // namespace test
