// The reading of a program's input file.
#pragma once

#include <cstddef>
#include <string>

namespace tools {

// The first `limit` bytes of the file, "-" being standard input; what is behind them
// is left alone, so that an endless input ends. Throws std::system_error.
std::string ReadUpTo(std::size_t limit, const std::string& file);

}  // namespace tools
