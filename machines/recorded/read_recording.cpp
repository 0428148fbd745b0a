#include "machines/recorded/recorded_machine.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "machines/recorded/property_list.h"
#include "machines/recorded/recording_format.h"

namespace machines {
namespace {

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::Entry;
using platform::KeyedProperty;
using platform::Property;

template <typename Type>
constexpr const char* TypeName() {
  if (std::is_same_v<Type, std::string>) return "a <string>";
  if (std::is_same_v<Type, bool>) return "<true/> or <false/>";
  if (std::is_same_v<Type, Data>) return "<data>";
  return std::is_same_v<Type, Array> ? "an <array>" : "a <dict>";
}

// The value of a key that has one type only. Throws RecordingError when it is of another.
template <typename Type>
Type& TypedValue(KeyedProperty& keyed) {
  if (Type* value = std::get_if<Type>(&keyed.value.value)) return *value;
  throw RecordingError(Excerpt(keyed.key) + " is not " + TypeName<Type>());
}

// What was not recorded has no value. Data stay as short as they are in the file, which
// may hold many drives.
struct RecordedDrive final : platform::Drive {
  bool Open() override { return !queryFails; }
  bool Enable(bool) override { return !enableFails; }
  std::optional<bool> ReturnStatus() override { return thresholdExceeded; }
  std::optional<Block> ReadData() override { return Filled(data); }
  std::optional<Block> ReadThresholds() override { return Filled(thresholds); }
  std::optional<Block> Identify() override { return Filled(identify); }

  static std::optional<Block> Filled(const std::optional<Data>& recorded) {
    if (!recorded) return std::nullopt;
    Block block{};
    std::ranges::copy(*recorded, block.begin());
    return block;
  }

  std::optional<Data> data;
  std::optional<Data> thresholds;
  std::optional<Data> identify;
  std::optional<bool> thresholdExceeded;
  bool enableFails = false;
  bool queryFails = false;
};

Data MoveBlock(KeyedProperty& recorded) {
  constexpr std::size_t kMaxLength = platform::Drive::kBlockSize;
  Data& bytes = TypedValue<Data>(recorded);
  if (bytes.size() > kMaxLength) {
    throw RecordingError(recorded.key + " is longer than " + std::to_string(kMaxLength) + " bytes");
  }
  return std::move(bytes);
}

void MoveAnswer(KeyedProperty& recorded, RecordedDrive& drive) {
  const std::string& key = recorded.key;
  if (key == kDataKey) {
    drive.data = MoveBlock(recorded);
  } else if (key == kThresholdsKey) {
    drive.thresholds = MoveBlock(recorded);
  } else if (key == kIdentifyKey) {
    drive.identify = MoveBlock(recorded);
  } else if (key == kExceededKey) {
    drive.thresholdExceeded = TypedValue<bool>(recorded);
  } else if (key == kEnableFailsKey) {
    drive.enableFails = TypedValue<bool>(recorded);
  } else if (key == kQueryFailsKey) {
    drive.queryFails = TypedValue<bool>(recorded);
  } else {
    throw RecordingError("unknown key " + Excerpt(key));
  }
}

std::shared_ptr<platform::Drive> MakeDrive(Dictionary& recorded) {
  auto drive = std::make_shared<RecordedDrive>();
  try {
    for (KeyedProperty& keyed : recorded) MoveAnswer(keyed, *drive);
  } catch (const RecordingError& error) {
    throw RecordingError(std::string("RecordedDrive: ") + error.what());
  }
  return drive;
}

// Empty when there is none. An entry's name is copied, not moved, so that it is still
// there for the paths of the entries that follow.
std::string_view NameOf(const Property& entry) {
  const auto* dictionary = std::get_if<Dictionary>(&entry.value);
  const Property* name = dictionary ? platform::Find(*dictionary, kNameKey) : nullptr;
  const auto* text = name ? std::get_if<std::string>(&name->value) : nullptr;
  return text ? std::string_view(*text) : std::string_view();
}

// An entry among its siblings, such as "/PCI0" or "/Port (child 2)".
std::string PathStep(const Array& siblings, std::size_t index) {
  const std::string_view name = NameOf(siblings[index]);
  const std::string position = "child " + std::to_string(index + 1);
  if (name.empty()) return "/" + position;
  const bool isOnly = std::ranges::count(siblings, name, NameOf) == 1;
  return "/" + Excerpt(name) + (isOnly ? "" : " (" + position + ")");
}

// Moves the contents of `source` into `entry`, but copies the name. Returns the children.
Array MoveContents(Property& source, Entry& entry) {
  auto* dictionary = std::get_if<Dictionary>(&source.value);
  if (dictionary == nullptr) throw RecordingError("not a <dict>");
  Array children;
  for (KeyedProperty& keyed : *dictionary) {
    if (keyed.key == kChildrenKey) {
      children = std::move(TypedValue<Array>(keyed));
    } else if (keyed.key == kNameKey) {
      entry.name = TypedValue<std::string>(keyed);
    } else if (keyed.key == kClassKey) {
      entry.className = std::move(TypedValue<std::string>(keyed));
    } else if (keyed.key == kDriveKey) {
      entry.drive = MakeDrive(TypedValue<Dictionary>(keyed));
    } else {
      entry.properties.push_back(std::move(keyed));
    }
  }
  return children;
}

// The error of an entry, or of one below it, whose path then begins it.
RecordingError ErrorIn(const Array& siblings, std::size_t index, std::string_view what) {
  const char* separator = what.starts_with('/') ? "" : ": ";
  return RecordingError(PathStep(siblings, index) + separator + std::string(what));
}

std::vector<Entry> MakeEntries(Array& sources) {
  std::vector<Entry> entries(sources.size());
  for (std::size_t i = 0; i < sources.size(); i++) {
    try {
      Array children = MoveContents(sources[i], entries[i]);
      entries[i].children = MakeEntries(children);
    } catch (const RecordingError& error) {
      throw ErrorIn(sources, i, error.what());
    }
  }
  return entries;
}

// A listing of one root is that root; one of several is an array of them.
Array Roots(Property list) {
  if (auto* array = std::get_if<Array>(&list.value)) return std::move(*array);
  if (!std::holds_alternative<Dictionary>(list.value)) {
    throw RecordingError("the property list is neither a <dict> nor an <array>");
  }
  Array roots;
  roots.push_back(std::move(list));
  return roots;
}

// Removes the figures at the start of `text`. Gives their number, at most `max`, if there are any.
std::optional<SInt32> ParseFigures(std::string_view& text, SInt32 max) {
  const auto length = std::min(text.find_first_not_of("0123456789"), text.size());
  if (length == 0) return std::nullopt;
  SInt32 number = 0;
  for (const char figure : text.substr(0, length)) {
    number = std::min(number * 10 + (figure - '0'), max);
  }
  text.remove_prefix(length);
  return number;
}

// "10.5.8" as 0x1058: one to three figures, the first at most 99; each of the others is
// one digit, 9 when it is larger. Nothing for any other text.
std::optional<SInt32> ParseVersion(std::string_view text) {
  const auto first = ParseFigures(text, 100);
  if (!first || *first > 99) return std::nullopt;
  SInt32 version = (*first / 10) << 12 | (*first % 10) << 8;
  for (int shift = 4; shift >= 0 && !text.empty(); shift -= 4) {
    if (!text.starts_with('.')) return std::nullopt;
    text.remove_prefix(1);
    const auto other = ParseFigures(text, 9);
    if (!other) return std::nullopt;
    version |= *other << shift;
  }
  return text.empty() ? std::optional(version) : std::nullopt;
}

// The product version that the first root has is the machine's, and none of its properties.
void MoveVersion(platform::Machine& machine) {
  Dictionary& properties = machine.roots.front().properties;
  const auto found = std::ranges::find(properties, kVersionKey, &KeyedProperty::key);
  if (found == properties.end()) return;
  const auto& text = TypedValue<std::string>(*found);
  const auto version = ParseVersion(text);
  if (!version) throw RecordingError("ProductVersion \"" + Excerpt(text) + "\" is no version");
  machine.systemVersion = *version;
  properties.erase(found);
}

}  // namespace

platform::Machine ParseRecordedMachine(std::string_view file) {
  if (file.size() > kMaxRecordingSize) throw RecordingError("the file is larger than 64 MiB");
  Array roots = Roots(ParsePropertyList(file));
  platform::Machine machine;
  machine.roots = MakeEntries(roots);
  if (machine.roots.empty()) return machine;
  try {
    MoveVersion(machine);
  } catch (const RecordingError& error) {
    throw ErrorIn(roots, 0, error.what());
  }
  return machine;
}

}  // namespace machines
