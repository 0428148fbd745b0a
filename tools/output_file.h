// The writing of a program's output file, whole or not at all.
#pragma once

#include <string>
#include <string_view>

namespace tools {

// Throws std::runtime_error when `file` exists and is no regular file: a device, a
// folder or a link is not what a rename should replace. what() names the file.
void CheckOutputFile(const std::string& file);

// Writes `bytes` into a new file beside `file` and gives that its name, so that a reader
// finds the old file or the new one. The mode is 0666 without the bits of the umask. A
// failure leaves the old file, removes the new one and throws as CheckOutputFile does.
void WriteOutputFile(const std::string& file, std::string_view bytes);

}  // namespace tools
