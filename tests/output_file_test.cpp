// An output file is written whole or not at all, what is no file is left alone, and no file
// becomes a standard stream.
#include "tools/output_file.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "base/descriptor.h"
#include "base/files.h"
#include "base/standard_streams.h"
#include "tests/support.h"

namespace test {

TEST(OutputFile, IsReplacedWholeOrNotAtAll) {
  const fs::path folder = EmptyFolder();
  fs::create_directory(folder / "folder");
  const std::string file = folder / "file";
  umask(027);
  tools::WriteOutputFile(file, "old");
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640)) << "as any other new file";
  fs::permissions(file, fs::perms(0604));
  tools::WriteOutputFile(file, "new");
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0604)) << "as the file before";

  fs::create_symlink(file, folder / "link");
  for (const char* refused : {"link", "folder", "none/file", "/dev/null"}) {
    EXPECT_THROW(tools::CheckOutputFile(folder / refused), std::runtime_error) << refused;
  }
  const auto interrupted = [&] {
    for (ualarm(20000, 0);;) tools::WriteOutputFile(folder / "whole", std::string(50000, 'x'));
  };
  for (int i = 0; i < 10; i++) EXPECT_EXIT(interrupted(), testing::KilledBySignal(SIGALRM), "");

  std::signal(SIGXFSZ, SIG_IGN);
  rlimit bytes{.rlim_cur = 8, .rlim_max = RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &bytes);
  EXPECT_THROW(tools::WriteOutputFile(file, "more than a few"), std::runtime_error);
  bytes.rlim_cur = bytes.rlim_max;
  setrlimit(RLIMIT_FSIZE, &bytes);
  EXPECT_EQ(base::ReadUpTo(100, file), "new");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 4) << "nothing else is left";
}

// Without this, messages would end in a file that got the number of a closed stream.
TEST(StandardStreams, AClosedOneIsNeverAFile) {
  const auto child = [] {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(stream);
    base::PrepareStandardStreams();
    const base::Descriptor file(open("/dev/null", O_RDONLY));
    _exit(file.Number() > STDERR_FILENO && write(STDERR_FILENO, "x", 1) < 0 ? 0 : 1);
  };
  EXPECT_EXIT(child(), testing::ExitedWithCode(0), "");
}

}  // namespace test
