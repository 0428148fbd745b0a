#include "machines/recorded/read_recording.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "machines/entries/drive_logs.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/recording_format.h"

namespace machines {
namespace {

constexpr auto kDriveKeys = std::to_array<std::string_view>(
    {kDataKey, kThresholdsKey, kIdentifyKey, kExceededKey, kEnableFailsKey, kQueryFailsKey,
     kDataFailsKey, kThresholdsFailsKey, kDateKey, kWhyKey, kWhyNoLogsKey});

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::Entry;
using platform::Property;

// The value of a key that has a meaning. Such a key has one type: RecordingError is thrown for a
// value of another type.
template <typename Type>
Type& TypedValue(std::string_view key, Property& property) {
  constexpr std::array kTypes = {"a <string>",          "a number",   "<data>",  "a <dict>",
                                 "<true/> or <false/>", "an <array>", "a <date>"};
  if (Type* value = std::get_if<Type>(&property.value)) return *value;
  throw RecordingError(Excerpt(key) + " is not " +
                       kTypes.at(decltype(property.value)(Type()).index()));
}

// Removes the value under `key` and returns it. Empty if there is none.
template <typename Type>
Type Take(Dictionary& dictionary, std::string_view key) {
  const auto found = dictionary.find(key);
  if (found == dictionary.end()) return {};
  Type value = std::move(TypedValue<Type>(key, found->second));
  dictionary.erase(found);
  return value;
}

Data MoveBytes(std::string_view key, Property& recorded, std::size_t maxSize) {
  Data& bytes = TypedValue<Data>(key, recorded);
  if (bytes.size() > maxSize) {
    throw RecordingError(std::string(key) + " is longer than " + std::to_string(maxSize) +
                         " bytes");
  }
  return std::move(bytes);
}

bool Flag(Dictionary& recorded, std::string_view key) {
  const auto found = recorded.find(key);
  return found != recorded.end() && TypedValue<bool>(key, found->second);
}

// A block that was not recorded fails. A short block is not filled up, because a file may hold many
// drives.
platform::BlockAnswer MoveBlockAnswer(Dictionary& recorded, std::string_view key, bool fails) {
  const auto found = recorded.find(key);
  if (found == recorded.end()) return {};
  return {MoveBytes(key, found->second, base::kBlockSize), !fails};
}

// Keys of the drive's whole record, and of none that it has of earlier answers.
constexpr auto kHistoryKeys =
    std::to_array<std::string_view>({kEarlierKey, kGoneKey, kGoneSinceKey});

template <typename Keys>
bool IsAmong(const Keys& keys, std::string_view key) {
  return std::ranges::find(keys, key) != keys.end();
}

void CheckKeys(const Dictionary& recorded, bool isEarlier) {
  for (const auto& [key, property] : recorded) {
    const bool isKnown = IsAmong(kDriveKeys, key) || MaxLogSize(key) > 0 ||
                         (!isEarlier && IsAmong(kHistoryKeys, key));
    if (!isKnown) {
      throw RecordingError("unknown key " + Excerpt(key));
    }
  }
}

// The date under the key. nullopt if there is none.
std::optional<std::chrono::sys_seconds> DateOf(Dictionary& recorded, std::string_view key) {
  const auto date = recorded.find(key);
  if (date == recorded.end()) return std::nullopt;
  return TypedValue<std::chrono::sys_seconds>(key, date->second);
}

platform::DriveAnswers MoveAnswers(Dictionary& recorded) {
  platform::DriveAnswers answers;
  answers.data = MoveBlockAnswer(recorded, kDataKey, Flag(recorded, kDataFailsKey));
  answers.thresholds =
      MoveBlockAnswer(recorded, kThresholdsKey, Flag(recorded, kThresholdsFailsKey));
  answers.identify = MoveBlockAnswer(recorded, kIdentifyKey, false);
  if (recorded.contains(kExceededKey)) answers.exceeded = Flag(recorded, kExceededKey);
  answers.enables = !Flag(recorded, kEnableFailsKey);
  answers.date = DateOf(recorded, kDateKey);
  answers.whyNoLogs = Take<std::string>(recorded, kWhyNoLogsKey);
  const auto why = Take<std::string>(recorded, kWhyKey);
  if (Flag(recorded, kQueryFailsKey)) {
    answers.whyNotOpened = why.empty() ? "it was not opened when recorded" : why;
  }
  for (auto& [key, property] : recorded) {
    const std::size_t maxSize = MaxLogSize(key);
    if (maxSize > 0) answers.logs.emplace(key, MoveBytes(key, property, maxSize));
  }
  return answers;
}

std::vector<platform::DriveAnswers> MoveEarlier(Dictionary& recorded) {
  constexpr std::size_t kMaxItems = 1000;  // ten years of the recorder's have some 550
  std::vector<platform::DriveAnswers> earlier;
  auto items = Take<Array>(recorded, kEarlierKey);
  if (items.size() > kMaxItems) throw RecordingError("Earlier has more than 1000 items");
  for (Property& item : items) {
    auto& dictionary = TypedValue<Dictionary>("an item of Earlier", item);
    CheckKeys(dictionary, true);
    earlier.push_back(MoveAnswers(dictionary));
    if (!earlier.back().date) throw RecordingError("an item of Earlier has no Date");
  }
  return earlier;
}

// Moves what is recorded of the entry's drive into the entry.
void MoveDrive(Dictionary& recorded, Entry& entry) {
  try {
    CheckKeys(recorded, false);
    entry.earlier = MoveEarlier(recorded);
    const auto since = DateOf(recorded, kGoneSinceKey);
    const bool isGone = Flag(recorded, kGoneKey);
    if (isGone) entry.goneSince = since ? since : DateOf(recorded, kDateKey);
    if (isGone && !entry.goneSince) throw RecordingError("Gone without a GoneSince or a Date");
    entry.drive = [answers = MoveAnswers(recorded)] { return answers; };
  } catch (const RecordingError& error) {
    throw RecordingError(std::string("RecordedDrive: ") + error.what());
  }
}

// The name of the entry. Empty if it has none.
std::string_view NameOf(const Property& entry) {
  const auto* dictionary = std::get_if<Dictionary>(&entry.value);
  const std::string* name = dictionary ? platform::FindText(*dictionary, kNameKey) : nullptr;
  return name ? std::string_view(*name) : std::string_view();
}

// The part of a path that names an entry among its siblings: "/PCI0" or "/Port (child 2)".
std::string PathStep(const Array& siblings, std::size_t index) {
  const std::string_view name = NameOf(siblings[index]);
  const std::string position = "child " + std::to_string(index + 1);
  if (name.empty()) return "/" + position;
  const bool isOnly = std::ranges::count(siblings, name, NameOf) == 1;
  return "/" + Excerpt(name) + (isOnly ? "" : " (" + position + ")");
}

// Moves the contents of `source` into `entry` and returns the children. The name stays in `source`
// too, for the paths of the entries that follow.
Array MoveContents(Property& source, Entry& entry) {
  auto* dictionary = std::get_if<Dictionary>(&source.value);
  if (dictionary == nullptr) throw RecordingError("not a <dict>");
  if (const auto name = dictionary->find(kNameKey); name != dictionary->end()) {
    entry.name = TypedValue<std::string>(kNameKey, name->second);
  }
  entry.className = Take<std::string>(*dictionary, kClassKey);
  auto children = Take<Array>(*dictionary, kChildrenKey);
  if (const auto drive = dictionary->find(kDriveKey); drive != dictionary->end()) {
    MoveDrive(TypedValue<Dictionary>(kDriveKey, drive->second), entry);
    dictionary->erase(drive);
  }
  entry.properties.swap(*dictionary);
  if (auto name = entry.properties.extract(std::string(kNameKey))) {
    dictionary->insert(std::move(name));
  }
  return children;
}

// The error `what` of an entry, with the entry's step of the path before it. If the error is of an
// entry below, `what` already begins with the rest of the path.
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

// A listing with one root is that root. A listing with several roots is an array of them.
Array Roots(Property list) {
  if (auto* array = std::get_if<Array>(&list.value)) return std::move(*array);
  if (!std::holds_alternative<Dictionary>(list.value)) {
    throw RecordingError("the property list is neither a <dict> nor an <array>");
  }
  Array roots;
  roots.push_back(std::move(list));
  return roots;
}

// Removes the digits at the start of `text` and returns their number, at most `max`. nullopt if
// there are none.
std::optional<SInt32> PopNumber(std::string_view& text, SInt32 max) {
  const auto length = std::min(text.find_first_not_of("0123456789"), text.size());
  if (length == 0) return std::nullopt;
  SInt32 number = 0;
  for (const char digit : text.substr(0, length)) {
    number = std::min(number * 10 + (digit - '0'), max);
  }
  text.remove_prefix(length);
  return number;
}

// "10.5.8" as 0x1058. The text has one to three numbers. The first is at most 99. Each of the
// others takes one digit, and a larger number becomes 9. nullopt for any other text.
std::optional<SInt32> ParseVersion(std::string_view text) {
  const auto first = PopNumber(text, 100);
  if (!first || *first > 99) return std::nullopt;
  SInt32 version = (*first / 10) << 12 | (*first % 10) << 8;
  for (int shift = 4; shift >= 0 && !text.empty(); shift -= 4) {
    if (!text.starts_with('.')) return std::nullopt;
    text.remove_prefix(1);
    const auto other = PopNumber(text, 9);
    if (!other) return std::nullopt;
    version |= *other << shift;
  }
  return text.empty() ? std::optional(version) : std::nullopt;
}

// Moves the product version from the properties of the first root to the machine.
void MoveVersion(platform::Machine& machine) {
  Dictionary& properties = machine.roots.front().properties;
  if (!properties.contains(kVersionKey)) return;
  const auto text = Take<std::string>(properties, kVersionKey);
  const auto version = ParseVersion(text);
  if (!version) throw RecordingError("ProductVersion \"" + Excerpt(text) + "\" is no version");
  machine.systemVersion = *version;
}

}  // namespace

platform::Machine ReadRecording(std::string_view file) {
  if (file.size() > kMaxRecordingSize) throw RecordingError("the file is larger than 64 MiB");
  Array roots = Roots(ReadPropertyList(file));
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
