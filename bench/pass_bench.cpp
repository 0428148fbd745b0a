// Measures what a pass costs: for each drive, compared to printing only its lines, and in a large
// registry. The report goes to a null stream.
#include <IOKit/IOKitLib.h>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/machines.h"
#include "platform/ledger.h"
#include "probe/pass/start_up.h"

namespace {

constexpr int kManyDrives = 64;
constexpr int kOtherEntries = 10000;

// Sends standard output to `file` for as long as it lives.
class Redirection {
 public:
  explicit Redirection(FILE* file) : old_(stdout) { stdout = file; }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;
  ~Redirection() {
    std::fclose(stdout);
    stdout = old_;
  }

 private:
  FILE* old_;
};

FILE* NullStream() { return std::fopen("/dev/null", "w"); }

std::string Report() {
  char* text = nullptr;
  std::size_t size = 0;
  {
    const Redirection redirection(open_memstream(&text, &size));
    RunProbe();
  }
  platform::EndProcess();
  std::string report(text, size);
  std::free(text);
  return report;
}

void RunPasses(benchmark::State& state) {
  const Redirection redirection(NullStream());
  for ([[maybe_unused]] auto _ : state) {
    RunProbe();
    platform::EndProcess();
  }
}

void Pass(benchmark::State& state) {
  const auto drives = static_cast<int>(state.range(0));
  platform::SetMachine(bench::MachineOf(drives));
  RunPasses(state);
}
BENCHMARK(Pass)->Arg(0)->Arg(1)->Arg(8)->Arg(kManyDrives);

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields;
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = line.find(":::", begin)) != std::string::npos; begin = end + 3) {
    fields.push_back(line.substr(begin, end - begin));
  }
  fields.push_back(line.substr(begin));
  return fields;
}

std::vector<std::vector<std::string>> Lines(const std::string& report) {
  std::vector<std::vector<std::string>> lines;
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = report.find('\n', begin)) != std::string::npos;
       begin = end + 1) {
    lines.push_back(Fields(report.substr(begin, end - begin)));
  }
  return lines;
}

// Prints a line of this kind from the texts of its fields.
void PrintLine(const std::vector<std::string>& f) {
  if (f.size() == 3) {
    std::printf("%s%s%s%s\n", "SmartDeviceEnd:::", f[1].c_str(), ":::", f[2].c_str());
  } else if (f.size() == 6) {
    std::printf("%s%s%s%s%s%s%s%s%s%s\n", "SmartDeviceStart:::", f[1].c_str(), ":::", f[2].c_str(),
                ":::", f[3].c_str(), ":::", f[4].c_str(), ":::", f[5].c_str());
  } else {
    std::printf("%s%s%s%s%s%s%s%s%s%s%s%s\n", "SMARTStatus:::", f[1].c_str(), ":::", f[2].c_str(),
                ":::", f[3].c_str(), ":::", f[4].c_str(), ":::", f[5].c_str(), ":::", f[6].c_str());
  }
}

void LinesAlone(benchmark::State& state) {
  platform::SetMachine(bench::MachineOf(kManyDrives));
  const auto lines = Lines(Report());
  const Redirection redirection(NullStream());
  for ([[maybe_unused]] auto _ : state) {
    for (const auto& fields : lines) PrintLine(fields);
  }
}
BENCHMARK(LinesAlone);

void PassAmongOthers(benchmark::State& state) {
  platform::SetMachine(bench::MachineAmong(kOtherEntries, kManyDrives));
  RunPasses(state);
}
BENCHMARK(PassAmongOthers);

// The two searches of a pass for its devices, in the same registry.
void TwoScans(benchmark::State& state) {
  platform::SetMachine(bench::MachineAmong(kOtherEntries, kManyDrives));
  for ([[maybe_unused]] auto _ : state) {
    io_iterator_t iterator = 0;
    IOServiceGetMatchingServices(kIOMasterPortDefault,
                                 IOServiceNameMatching("IOATABlockStorageDevice"), &iterator);
    IOServiceGetMatchingServices(kIOMasterPortDefault,
                                 IOServiceMatching("IOAHCIBlockStorageDevice"), &iterator);
    platform::EndProcess();
  }
}
BENCHMARK(TwoScans);

}  // namespace

BENCHMARK_MAIN();
