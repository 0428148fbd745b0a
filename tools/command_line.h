// How every program treats its command line. What options it has is its own affair.
#pragma once

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <optional>

namespace tools {

inline constexpr int kUsageStatus = 2;

// Adds --help and --version to the options of `app` and parses the arguments into
// them. Nothing: go on. Otherwise all is said, and the program ends with that status:
// `usageStatus` after a mistake in the arguments.
std::optional<int> ParseCommandLine(CLI::App& app, int argc, char** argv,
                                    int usageStatus = kUsageStatus);

}  // namespace tools
