// Drives asked at once: each comes to an end of its own, whatever the others do.
#include "machines/linux/drive_processes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "machines/recorded/write_recording.h"
#include "tests/support.h"

namespace test {

using namespace std::chrono_literals;

// Why it was not opened, or all that it answered.
std::string Text(const DriveAnswers& answers) {
  if (!answers.whyNotOpened.empty()) return answers.whyNotOpened;
  std::string text = answers.enables ? "enabled" : "";
  for (const platform::BlockAnswer& block : {answers.data, answers.thresholds, answers.identify}) {
    text += std::string(block.bytes.begin(), block.bytes.end()) + (block.succeeds ? "+" : "-");
  }
  if (answers.exceeded) text += *answers.exceeded ? "True" : "False";
  return text + (answers.date ? std::to_string(answers.date->seconds) : "");
}

Drive Late(std::chrono::milliseconds time) {
  return [time] {
    usleep(static_cast<useconds_t>(time.count()) * 1000);
    return HealthyAnswers();
  };
}

TEST(AskAll, EveryDriveGetsItsOwnAnswersWhateverTheOthersDo) {
  DriveAnswers odd = HealthyAnswers();
  odd.enables = false;
  odd.exceeded = true;
  odd.data = {{}, false};
  odd.thresholds = {{1, 2, 3}, false};
  odd.date = platform::Date{-5};
  DriveAnswers wordy;
  wordy.whyNotOpened = std::string(300, 'w');
  // Together they would take longer than the limit.
  std::vector<Drive> drives(8, Late(200ms));
  drives.insert(drives.begin() + 3,
                {[]() -> DriveAnswers { pause(), std::abort(); },
                 []() -> DriveAnswers { raise(SIGKILL), std::abort(); },
                 []() -> DriveAnswers { _exit(0); }, DriveOf(odd), DriveOf(wordy)});
  std::vector<std::vector<bool>> progress;
  const std::vector<DriveAnswers> answers =
      machines::AskAll(drives, 900ms, [&](const auto& awaited) { progress.push_back(awaited); });

  ASSERT_EQ(answers.size(), drives.size());
  std::vector<std::string> expected(8, Text(HealthyAnswers()));
  expected.insert(expected.begin() + 3,
                  {"no answer within 0 seconds", "the process that asked it ended",
                   "the process that asked it ended", Text(odd), std::string(255, 'w')});
  for (std::size_t i = 0; i < answers.size(); i++) EXPECT_EQ(Text(answers[i]), expected[i]) << i;

  EXPECT_EQ(progress.front(), std::vector<bool>(drives.size(), true));
  std::vector<bool> onlyOne(drives.size());
  onlyOne[3] = true;
  EXPECT_EQ(progress.at(progress.size() - 2), onlyOne);
  EXPECT_EQ(progress.back(), std::vector<bool>(drives.size()));

  while (waitpid(-1, nullptr, 0) > 0) {
  }  // without end if the one that was given up has not been killed
}

TEST(AskAll, AnswersThatHaveComeCountEvenIfTheLimitIsOver) {
  const auto answers =
      machines::AskAll({DriveOf(HealthyAnswers())}, 50ms, [](const auto&) { usleep(100'000); });
  EXPECT_EQ(answers.at(0).whyNotOpened, "");
}

// A child that hangs would else keep the reader of the output waiting.
TEST(AskAll, AChildHoldsNothingOfItsParent) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  for (int& end : ends) end = fcntl(end, F_DUPFD, 100);
  const Drive drive = [&] {
    DriveAnswers answers;
    struct stat null {
    }, stream{};
    stat("/dev/null", &null);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      fstat(standard, &stream);
      if (stream.st_rdev != null.st_rdev) answers.whyNotOpened += "a standard stream, ";
    }
    for (const int end : ends) {
      if (fcntl(end, F_GETFD) != -1) answers.whyNotOpened += "a pipe, ";
    }
    return answers;
  };
  for (const DriveAnswers& answers : machines::AskAll({drive, drive}, 900ms, {})) {
    EXPECT_EQ(answers.whyNotOpened, "");
  }
}

}  // namespace test
