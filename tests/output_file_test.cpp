// An output file is written whole or not at all, and what is no file is left alone.
#include "tools/output_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;

std::string Contents(const fs::path& file) {
  std::ifstream input(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(input), {}};
}

TEST(OutputFile, IsReplacedWholeOrNotAtAll) {
  const fs::path folder = fs::path(testing::TempDir()) / "output_file_test";
  fs::remove_all(folder);
  fs::create_directory(folder);
  const std::string file = folder / "file";
  tools::WriteOutputFile(file, "old");
  tools::WriteOutputFile(file, "new");
  EXPECT_EQ(Contents(file), "new");

  fs::create_symlink(file, folder / "link");
  fs::create_directory(folder / "folder");
  for (const fs::path& refused : {folder / "link", folder / "folder", fs::path("/dev/null")}) {
    EXPECT_THROW(tools::WriteOutputFile(refused, "x"), std::runtime_error) << refused;
  }
  EXPECT_THROW(tools::WriteOutputFile(folder / "none" / "file", "x"), std::runtime_error);

  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit few{.rlim_cur = 8, .rlim_max = RLIM_INFINITY};
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  setrlimit(RLIMIT_FSIZE, &few);
  EXPECT_THROW(tools::WriteOutputFile(file, "more than a few"), std::runtime_error);
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(Contents(file), "new");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 3) << "nothing else is left";
}

}  // namespace
