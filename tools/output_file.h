// The writing of a program's output file, whole or not at all.
#pragma once

#include <string>
#include <string_view>

namespace tools {

// Throws std::runtime_error when `file` exists and is no regular file: a device, a
// folder or a link is not what a rename should replace. what() names the file.
void CheckOutputFile(const std::string& file);

// Writes `bytes` beside `file` and renames the result, so that a reader meets the old
// file or the new one and a failure leaves the old one. Its mode is that of any new file. Throws as
// CheckOutputFile does.
void WriteOutputFile(const std::string& file, std::string_view bytes);

}  // namespace tools
