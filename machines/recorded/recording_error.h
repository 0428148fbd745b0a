// The one error of a recorded machine: what is wrong with its file, and where.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace machines {

// what() is one line of printable UTF-8, whatever the file put into it.
class RecordingError : public std::runtime_error {
 public:
  explicit RecordingError(std::string_view message);
};

// `text` of the file as it stands in a message: cut after 80 bytes.
std::string Shortened(std::string_view text);

}  // namespace machines
