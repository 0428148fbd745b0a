// The writing of a program's output file, whole or not at all.
#pragma once

#include <string>
#include <string_view>

#include "base/descriptor.h"

namespace tools {

// A new file beside `file`, which takes its place when it is whole: a reader finds the old
// file or the new one. It is removed again unless Finish succeeds; a process
// that is killed leaves it: `file`, a dot and six characters.
class OutputFile {
 public:
  // Throws std::runtime_error, whose what() names the file, when it cannot be made, or when
  // `file` exists and is no regular file: a device, a folder or a link is not what a rename
  // should replace.
  explicit OutputFile(std::string file);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  // Writes all of the file and gives it its name. The mode is 0666 without the bits of the
  // umask, which is changed for a moment: not for a program with threads. To be called once, even
  // after a failure. Waits until the disk has the bytes. Throws as the constructor does; the old
  // file is left then.
  void Finish(std::string_view bytes);

 private:
  std::string file_;
  std::string path_;  // of the new file
  base::Descriptor descriptor_;
  bool renamed_ = false;
};

}  // namespace tools
