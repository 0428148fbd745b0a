#include "tests/support.h"

#include <regex.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <utility>

#include "probe/pass/start_up.h"
#include "probe/state/process_state.h"

namespace test {

std::string Repeated(std::size_t times, const std::string& text) {
  std::string repeated;
  repeated.reserve(times * text.size());
  for (std::size_t i = 0; i < times; i++) repeated += text;
  return repeated;
}

std::string Replaced(const std::string& text, const char* regex, const std::string& replacement) {
  regex_t compiled;
  EXPECT_EQ(regcomp(&compiled, regex, REG_EXTENDED | REG_NEWLINE), 0) << regex;
  std::string replaced;
  const char* rest = text.c_str();
  for (regmatch_t match[2]; regexec(&compiled, rest, 2, match, 0) == 0; rest += match[0].rm_eo) {
    replaced.append(rest, static_cast<std::size_t>(match[0].rm_so));
    for (const char c : replacement) {
      if (c != '&') replaced += c;
      if (c == '&') replaced.append(rest + match[1].rm_so, rest + match[1].rm_eo);
    }
  }
  regfree(&compiled);
  return replaced + rest;
}

std::string Printed(std::FILE* stream, const std::function<void()>& run) {
  std::fflush(stream);
  const int before = dup(fileno(stream));
  std::FILE* const file = std::tmpfile();
  dup2(fileno(file), fileno(stream));
  run();
  std::fflush(stream);
  dup2(before, fileno(stream));
  close(before);
  std::string text(static_cast<std::size_t>(ftell(file)), '\0');
  std::rewind(file);
  text.resize(std::fread(text.data(), 1, text.size(), file));
  std::fclose(file);
  return text;
}

std::vector<char> Written(std::size_t size, const std::function<void(char*)>& write) {
  std::vector<char> text(size, 'x');
  std::strcpy(text.data(), "untouched");
  write(text.data());
  return text;
}

fs::path EmptyFolder() {
  static const struct Folder {
    ~Folder() { fs::remove_all(path); }
    fs::path path = fs::path(testing::TempDir()) / ("smartprobe." + std::to_string(getpid()));
  } folder;
  fs::remove_all(folder.path);
  fs::create_directory(folder.path);
  return folder.path;
}

void WriteFile(const fs::path& file, const std::string& content) {
  fs::create_directories(file.parent_path());
  if (!content.empty()) std::ofstream(file, std::ios::binary) << content;
}

Data BlockOf(const std::vector<BlockEntry>& entries) {
  Data block = {0x10, 0x00};
  for (const auto& [id, second, value, worst, raw] : entries) {
    block.insert(block.end(), {id, second, 0, value, worst});
    for (int shift = 0; shift < 56; shift += 8) block.push_back(raw >> shift & 0xFF);
  }
  block.resize(base::kBlockSize);
  return block;
}

DriveAnswers HealthyAnswers() {
  DriveAnswers answers;
  answers.exceeded = false;
  answers.data = {BlockOf({{194, 0x22, 38}}), true};
  answers.thresholds = {BlockOf({{194, 0}}), true};
  // What comes after a field must never be printed.
  answers.identify = {Data(base::kBlockSize, 'x'), true};
  // A text as a drive delivers it, characters exchanged.
  const auto put = [&](std::size_t offset, const std::string& text) {
    for (std::size_t i = 0; i < text.size(); i++)
      answers.identify.bytes[offset + (i ^ 1)] = static_cast<UInt8>(text[i]);
  };
  put(20, "SERIAL              ");
  put(46, "REV     ");
  put(54, "MODEL" + std::string(35, ' '));
  return answers;
}

Entry AtaDevice(Drive drive, std::string bsdName, SInt64 size) {
  Entry medium{"Media", "IOMedia", {{"BSD Name", Text(std::move(bsdName))}}, {}, {}};
  // Of 64 bits, as the probe takes the bytes of a smaller one in the processor's order.
  const Property bytes = {platform::Number{kCFNumberSInt64Type, static_cast<std::uint64_t>(size)}};
  if (size != 0) medium.properties.emplace("Size", bytes);
  const char* const name = "IOATABlockStorageDevice";
  const auto characteristics =
      Dict({{"ATA Features", Integer(0x20)}, {"Product Name", Text("  EXAMPLE 250 ")}});
  return {name, name, {{"Device Characteristics", characteristics}}, {medium}, std::move(drive)};
}

Entry AhciDevice(Drive drive, std::string bsdName, SInt64 size) {
  Entry device = AtaDevice(std::move(drive), std::move(bsdName), size);
  device.name = device.className = "IOAHCIBlockStorageDevice";
  return device;
}

std::string DeviceLines::Text() const {
  return "SmartDeviceStart:::" + path + ":::" + product + ":::" + revision + ":::" + capacity +
         ":::" + serial + "\n" + attributes + "SmartDeviceEnd:::" + path +
         (exceeded ? ":::True\n" : ":::False\n");
}

void Install(std::vector<Entry> roots, SInt32 systemVersion) {
  platform::SetMachine(platform::Machine{systemVersion, std::move(roots), {}});
}

std::string Report(std::vector<Entry> roots, SInt32 systemVersion) {
  Install(std::move(roots), systemVersion);
  gMySysVersion = 0;
  return Printed(stdout, [] { RunProbe(); });
}

io_service_t ServiceNamed(const char* name) {
  io_iterator_t iterator = 0;
  IOServiceGetMatchingServices(kIOMasterPortDefault, IOServiceNameMatching(name), &iterator);
  const io_service_t service = IOIteratorNext(iterator);
  if (iterator != 0) IOObjectRelease(iterator);
  return service;
}

}  // namespace test
