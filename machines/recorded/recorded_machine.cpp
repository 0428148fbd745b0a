#include "machines/recorded/recorded_machine.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "machines/recorded/keys.h"
#include "machines/recorded/product_version.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/recorded_drive.h"
#include "machines/recorded/recording_error.h"
#include "machines/recorded/typed_value.h"

namespace machines {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::Entry;
using platform::KeyedProperty;
using platform::Property;

// Empty when there is none. An entry's name is copied, not taken, so that it is still
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
  return "/" + Shortened(name) + (isOnly ? "" : " (" + position + ")");
}

// Moves the contents of `source` into `entry`, but copies the name. Returns the children.
Array TakeEntry(Property& source, Entry& entry) {
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
      entry.drive = MakeRecordedDrive(TypedValue<Dictionary>(keyed));
    } else {
      entry.properties.push_back(std::move(keyed));
    }
  }
  return children;
}

// The walk from the roots down. Errors name the path of the entry in hand.
class Walk {
 public:
  std::vector<Entry> ReadEntries(Array& sources) {
    std::vector<Entry> entries;
    entries.reserve(sources.size());
    for (std::size_t i = 0; i < sources.size(); i++) {
      path_.push_back({&sources, i});
      entries.push_back(ReadEntry(sources[i]));
      path_.pop_back();
    }
    return entries;
  }

 private:
  struct Step {
    const Array* siblings;
    std::size_t index;
  };

  Entry ReadEntry(Property& source) {
    Entry entry;
    Array children;
    try {
      children = TakeEntry(source, entry);
    } catch (const RecordingError& error) {
      throw RecordingError(Path() + ": " + error.what());
    }
    entry.children = ReadEntries(children);
    return entry;
  }

  std::string Path() const {
    std::string path;
    for (const Step& step : path_) path += PathStep(*step.siblings, step.index);
    return path;
  }

  std::vector<Step> path_;
};

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

// Removes the product version from the properties of the first root: it is the machine's.
std::optional<SInt32> TakeSystemVersion(Dictionary& properties) {
  const auto found = std::ranges::find(properties, kVersionKey, &KeyedProperty::key);
  if (found == properties.end()) return std::nullopt;
  const auto& text = TypedValue<std::string>(*found);
  const auto version = SystemVersion(text);
  if (!version) throw RecordingError("ProductVersion \"" + Shortened(text) + "\" is no version");
  properties.erase(found);
  return version;
}

}  // namespace

platform::Machine ReadRecordedMachine(std::string_view file) {
  if (file.size() > kMaxRecordingSize) throw RecordingError("the file is larger than 64 MiB");
  Array roots = Roots(ReadPropertyList(file));
  platform::Machine machine;
  machine.roots = Walk().ReadEntries(roots);
  if (machine.roots.empty()) return machine;
  try {
    const auto version = TakeSystemVersion(machine.roots.front().properties);
    if (version) machine.systemVersion = *version;
  } catch (const RecordingError& error) {
    throw RecordingError(PathStep(roots, 0) + ": " + error.what());
  }
  return machine;
}

}  // namespace machines
