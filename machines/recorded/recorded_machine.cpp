// The walk over a registry listing: entries, their drives, the system version.
#include "machines/recorded/recorded_machine.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "machines/recorded/keys.h"
#include "machines/recorded/plist_text.h"
#include "machines/recorded/product_version.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/recorded_drive.h"
#include "machines/recorded/recording_error.h"
#include "machines/recorded/text_check.h"
#include "machines/recorded/typed_value.h"

namespace machines {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::Entry;
using platform::KeyedProperty;
using platform::Property;

// Where an entry stands in the property list. Its path is written only for an error.
struct Place {
  const Place* parent;  // null for a root
  const Array& siblings;
  std::size_t index;
};

// Empty when there is none. An entry's name is copied, not taken, so that it is still
// there for the paths of the entries that follow.
std::string_view NameOf(const Property& entry) {
  const auto* dictionary = std::get_if<Dictionary>(&entry.value);
  const Property* name = dictionary ? platform::Find(*dictionary, kNameKey) : nullptr;
  const auto* text = name ? std::get_if<std::string>(&name->value) : nullptr;
  return text ? std::string_view(*text) : std::string_view();
}

std::string PathTo(const Place& place) {
  const std::string parent = place.parent ? PathTo(*place.parent) : "";
  const std::string_view name = NameOf(place.siblings[place.index]);
  const std::string position = "child " + std::to_string(place.index + 1);
  if (name.empty()) return parent + "/" + position;
  const bool isOnly = std::ranges::count(place.siblings, name, NameOf) == 1;
  return parent + "/" + Shortened(name) + (isOnly ? "" : " (" + position + ")");
}

RecordingError ErrorAt(const Place& place, const std::string& what) {
  return RecordingError(PathTo(place) + ": " + what);
}

// Takes what is the entry's own out of `source`. Returns its children.
Array TakeEntry(Property& source, Entry& entry) {
  auto* dictionary = std::get_if<Dictionary>(&source.value);
  if (dictionary == nullptr) throw RecordingError("not a <dict>");
  Array children;
  for (KeyedProperty& keyed : *dictionary) {
    if (keyed.key == kChildrenKey) {
      children = std::move(TypedValue<Array>(keyed));
      continue;
    }
    if (const auto fault = TextFault(keyed)) throw RecordingError(*fault);
    if (keyed.key == kNameKey) {
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

std::vector<Entry> ReadEntries(Array& sources, const Place* parent);

Entry ReadEntry(Property& source, const Place& place) {
  Entry entry;
  Array children;
  try {
    children = TakeEntry(source, entry);
  } catch (const RecordingError& error) {
    throw ErrorAt(place, error.what());
  }
  entry.children = ReadEntries(children, &place);
  return entry;
}

std::vector<Entry> ReadEntries(Array& sources, const Place* parent) {
  std::vector<Entry> entries;
  entries.reserve(sources.size());
  for (std::size_t i = 0; i < sources.size(); i++) {
    entries.push_back(ReadEntry(sources[i], {parent, sources, i}));
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

// The product version stands on the first root and is none of its properties.
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
  Array roots = Roots(ParsePropertyList(CanonicalPropertyList(file)));
  platform::Machine machine;
  machine.roots = ReadEntries(roots, nullptr);
  if (machine.roots.empty()) return machine;
  try {
    const auto version = TakeSystemVersion(machine.roots.front().properties);
    if (version) machine.systemVersion = *version;
  } catch (const RecordingError& error) {
    throw ErrorAt({nullptr, roots, 0}, error.what());
  }
  return machine;
}

}  // namespace machines
