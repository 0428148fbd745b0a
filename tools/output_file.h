// The writing of what a program was asked for: of a file, whole or not at all, or of standard
// output, whose name is "-".
#pragma once

#include <string>
#include <string_view>

namespace tools {

// Throws std::runtime_error, whose what() names the file, if WriteOutputFile could not write
// `file` even now: its folder takes no new file, or it exists and is no regular file. A device, a
// folder or a link is not what a rename should replace. To be called before long work for the
// output. Changes nothing that stays. Standard output is not tried.
void CheckOutputFile(const std::string& file);

// Writes a new file of these bytes beside `file`, which takes its place when it is whole and on
// the disk: a reader finds the old file or the new one, and a failure leaves the old one. The new
// file has the mode of the old one, or else 0666 without the bits of the umask, which is changed
// for a moment: not for a program with threads. Its owner is the caller, whosever the old one was.
// Signals wait until all is done; only SIGKILL in the middle leaves the new file: `file`, a dot and
// six characters. Throws as CheckOutputFile does. Standard output is printed, as by base::Print.
void WriteOutputFile(const std::string& file, std::string_view bytes);

}  // namespace tools
