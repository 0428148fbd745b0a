// Drives asked at once: each comes to an end of its own, whatever the others do.
#include "machines/linux/drive_processes.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>

#include "machines/linux/capabilities.h"
#include "machines/recorded/write_recording.h"
#include "tests/support.h"

namespace test {

using namespace std::chrono_literals;

// Why it was not opened, and all that it answered.
std::pair<std::string, Dictionary> All(const DriveAnswers& answers) {
  return {answers.whyNotOpened, machines::RecordDrive(answers)};
}

TEST(AskAll, EveryDriveGetsItsOwnAnswersWhateverTheOthersDo) {
  const DriveAnswers odd = {.enables = false,
                            .exceeded = true,
                            .thresholds = {{1, 2, 3}, false},
                            .identify = HealthyAnswers().identify,
                            .date = Date(-5),
                            .logs = {{"Sense", {}}, {"LogPage02", Data(200'000, 7)}}};
  const Drive late = [] { return usleep(200'000), HealthyAnswers(); };
  const std::pair<Drive, DriveAnswers> kCases[] = {
      {[]() -> DriveAnswers { pause(), std::abort(); }, NotOpened("no answer within 0 seconds")},
      {[]() -> DriveAnswers { _exit(0); }, NotOpened("the process that asked it ended")},
      {[]() -> DriveAnswers { throw 1; }, NotOpened("the process that asked it ended")},
      {DriveOf(odd), odd},
      {DriveOf(NotOpened(std::string(300, 'w'))), NotOpened(std::string(300, 'w'))}};
  std::vector<machines::Query> drives;
  for (const auto& [drive, answers] : kCases) drives.push_back({drive});
  drives.insert(drives.end(), 8, {late});  // one after the other they would take too long
  std::vector<std::vector<bool>> progress;
  const std::vector<DriveAnswers> answers =
      machines::AskAll(drives, 900ms, [&](const auto& awaited) { progress.push_back(awaited); });
  ASSERT_EQ(answers.size(), drives.size());
  for (std::size_t i = 0; i < answers.size(); i++) {
    EXPECT_EQ(All(answers[i]), All(i < 5 ? kCases[i].second : HealthyAnswers())) << i;
  }

  EXPECT_EQ(progress.front(), std::vector<bool>(drives.size(), true));
  std::vector<bool> onlyOne(drives.size());
  onlyOne[0] = true;
  EXPECT_EQ(progress.at(progress.size() - 2), onlyOne);
  EXPECT_EQ(progress.back(), std::vector<bool>(drives.size()));

  while (waitpid(-1, nullptr, 0) > 0) {
  }  // without end if the one that was given up has not been killed
}

TEST(AskAll, AnswersThatHaveComeCountEvenIfTheLimitIsOver) {
  const auto answers =
      machines::AskAll({{DriveOf(HealthyAnswers())}}, 50ms, [](const auto&) { usleep(100'000); });
  EXPECT_EQ(answers.at(0).whyNotOpened, "");
}

// Otherwise a child that hangs keeps the reader of the output waiting.
TEST(AskAll, AChildHoldsNothingOfItsParent) {
  const int far = fcntl(STDERR_FILENO, F_DUPFD, 100);
  const Drive drive = [] {
    DriveAnswers answers;
    for (const auto& open : fs::directory_iterator("/proc/self/fd")) {
      answers.whyNotOpened += fs::read_symlink(open).filename().string() + " ";
    }
    return answers;
  };
  // The pipe to the parent, and the folder that is read.
  for (const DriveAnswers& answers : machines::AskAll({{drive}, {drive}}, 900ms, {})) {
    EXPECT_EQ(Replaced(answers.whyNotOpened, "pipe:[^ ]*", "pipe"), "null null null pipe fd ");
  }
  close(far);
}

// A bit for each.
std::uint64_t Capabilities() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (!line.starts_with("CapEff:\t")) std::getline(status, line);
  return std::stoull(line.substr(8), nullptr, 16);
}

TEST(AskAll, LeavesNoCapabilityButThoseOfFiles) {
  const std::uint64_t before = Capabilities();  // without root's rights there are none
  machines::AskAll({}, 900ms, {});
  const std::uint64_t ofFiles =
      1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH | 1U << CAP_FOWNER;
  EXPECT_EQ(Capabilities(), before & ofFiles);
  machines::KeepCapabilities(std::array{CAP_FOWNER, CAP_SYS_ADMIN});
  EXPECT_EQ(Capabilities(), before & 1U << CAP_FOWNER) << "and gets none back";
}

// What is needed less must not cost what has come before.
TEST(AskAll, AnswersBeforeAHangCount) {
  const std::function<void(DriveAnswers&)> kMore[] = {
      [](DriveAnswers& answers) { answers.enables = false, pause(); },
      [](DriveAnswers& answers) { answers.enables = false, _exit(0); },
      [](DriveAnswers& answers) { answers.logs["Sense"] = {1}; }};
  std::vector<machines::Query> queries;
  queries.reserve(std::size(kMore));
  for (const auto& more : kMore) queries.push_back({DriveOf(HealthyAnswers()), more});
  const auto answers = machines::AskAll(queries, 900ms, {});
  DriveAnswers expected = HealthyAnswers();
  expected.whyNoLogs = "it did not answer when it was asked for its logs";
  EXPECT_EQ(All(answers.at(0)), All(expected));
  EXPECT_EQ(All(answers.at(1)), All(expected));
  EXPECT_EQ(answers.at(2).logs.size(), 1U);
  EXPECT_EQ(answers.at(2).whyNoLogs, "");
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): std::function keeps what it holds

}  // namespace test
