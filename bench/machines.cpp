#include "bench/machines.h"

#include <array>
#include <string>
#include <utility>

namespace bench {
namespace {

using platform::Entry;
using platform::Property;

constexpr std::uint8_t kIds[kAttributes] = {1,   2,   3,   4,   5,   7,   8,   9,   10,  11,
                                            12,  189, 190, 191, 192, 193, 194, 195, 196, 197,
                                            198, 199, 200, 201, 202, 203, 220, 222, 240, 250};

// Revision 16, and for each attribute its identifier and then `rest` of its 12 bytes.
platform::BlockAnswer Attributes(const std::array<std::uint8_t, 11>& rest) {
  platform::Data block = {0x10, 0x00};
  for (const std::uint8_t id : kIds) {
    block.push_back(id);
    block.insert(block.end(), rest.begin(), rest.end());
  }
  block.resize(base::kBlockSize);
  return {block, true};
}

platform::Drive BenchDrive() {
  platform::DriveAnswers answers;
  answers.exceeded = false;
  answers.data = Attributes({0x33, 0, 127, 100, 1, 2, 3, 4, 5, 6, 0});
  answers.thresholds = Attributes({36});
  answers.identify = {platform::Data(base::kBlockSize, 'A'), true};
  return [answers] { return answers; };
}

Property Text(std::string text) { return {std::move(text)}; }

Entry DriveEntry(int number) {
  Entry medium{"Media",
               "IOMedia",
               {{"BSD Name", Text("disk" + std::to_string(number))},
                {"Size", {platform::IntegerNumber(1000204886016)}}},
               {},
               {}};
  return {
      "IOAHCIBlockStorageDevice",
      "IOAHCIBlockStorageDevice",
      {{"Device Characteristics",
        {platform::Dictionary{{"Product Name", Text("EXAMPLE HD103SJ                         ")}}}},
       {"Protocol Characteristics",
        {platform::Dictionary{{"Physical Interconnect", Text("SATA")},
                              {"Physical Interconnect Location", Text("Internal")}}}}},
      {std::move(medium)},
      BenchDrive()};
}

}  // namespace

platform::Machine MachineAmong(int entries, int drives) {
  Entry root{"Root", "IORegistryEntry", {}, {}, {}};
  for (int i = 0; i < entries; i++) {
    root.children.push_back({"Entry " + std::to_string(i), "IOService", {}, {}, {}});
  }
  for (int i = 0; i < drives; i++) root.children.push_back(DriveEntry(i));
  platform::Machine machine;
  machine.roots.push_back(std::move(root));
  return machine;
}

platform::Machine MachineOf(int drives) { return MachineAmong(0, drives); }

}  // namespace bench
