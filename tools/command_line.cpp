// The one use of CLI11's parser.
#include "tools/command_line.h"

#include <cstdio>
#include <string>

#include "tools/standard_streams.h"

namespace tools {
namespace {

int Print(const std::string& text, const std::string& program) {
  std::fputs(text.c_str(), stdout);
  return FinishOutput(program);
}

}  // namespace

std::optional<int> ParseCommandLine(CLI::App& app, int argc, char** argv, int usageStatus) {
  const std::string program = app.get_name();
  const std::string version = program + " " SMARTPROBE_VERSION;
  app.set_help_flag("--help", "Print this help and exit");
  app.set_version_flag("--version", version, "Print the version and exit");
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return Print(app.help(), program);
  } catch (const CLI::CallForVersion&) {
    return Print(version + "\n", program);
  } catch (const CLI::ParseError& error) {
    PrintError(program, error.what());
    std::fputs(app.help().c_str(), stderr);
    return usageStatus;
  }
  return std::nullopt;
}

}  // namespace tools
