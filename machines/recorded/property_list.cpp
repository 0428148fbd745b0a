// Turns libplist's nodes into properties. The one file that includes its header.
#include "machines/recorded/property_list.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

#include "machines/recorded/recording_error.h"

namespace machines {
namespace {

using platform::Property;

struct FreeNode {
  void operator()(plist_t node) const { plist_free(node); }
};
struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};
using OwnedNode = std::unique_ptr<void, FreeNode>;
using OwnedIterator = std::unique_ptr<void, FreeMemory>;
using OwnedText = std::unique_ptr<char, FreeMemory>;

Property ToProperty(plist_t node);

Property ToDictionary(plist_t node) {
  plist_dict_iter iterator = nullptr;
  plist_dict_new_iter(node, &iterator);
  const OwnedIterator owner(iterator);
  platform::Dictionary dictionary;
  dictionary.reserve(plist_dict_get_size(node));
  for (;;) {
    char* key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(node, iterator, &key, &value);
    if (value == nullptr) return {std::move(dictionary)};
    const OwnedText keyOwner(key);
    dictionary.push_back({key, ToProperty(value)});
  }
}

Property ToArray(plist_t node) {
  plist_array_iter iterator = nullptr;
  plist_array_new_iter(node, &iterator);
  const OwnedIterator owner(iterator);
  platform::Array array;
  array.reserve(plist_array_get_size(node));
  for (;;) {
    plist_t item = nullptr;
    plist_array_next_item(node, iterator, &item);
    if (item == nullptr) return {std::move(array)};
    array.push_back(ToProperty(item));
  }
}

Property ToText(plist_t node) {
  std::uint64_t length = 0;
  const char* text = plist_get_string_ptr(node, &length);
  return {std::string(text, length)};
}

Property ToData(plist_t node) {
  std::uint64_t length = 0;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(plist_get_data_ptr(node, &length));
  return {platform::Data(bytes, bytes + length)};
}

// From 2^63 up the registry's number is the two's complement of a negative one.
Property ToInteger(plist_t node) {
  std::uint64_t value = 0;
  plist_get_uint_val(node, &value);
  return {platform::IntegerNumber(static_cast<std::int64_t>(value))};
}

Property ToReal(plist_t node) {
  double value = 0;
  plist_get_real_val(node, &value);
  return {platform::Float64Number(value)};
}

Property ToBoolean(plist_t node) {
  std::uint8_t value = 0;
  plist_get_bool_val(node, &value);
  return {value != 0};
}

Property ToDate(plist_t node) {
  std::int32_t seconds = 0;
  plist_get_date_val(node, &seconds, nullptr);
  return {platform::Date{seconds}};
}

Property ToProperty(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_DICT:
      return ToDictionary(node);
    case PLIST_ARRAY:
      return ToArray(node);
    case PLIST_STRING:
      return ToText(node);
    case PLIST_DATA:
      return ToData(node);
    case PLIST_UINT:
      return ToInteger(node);
    case PLIST_REAL:
      return ToReal(node);
    case PLIST_BOOLEAN:
      return ToBoolean(node);
    case PLIST_DATE:
      return ToDate(node);
    default:
      throw RecordingError("libplist found a kind of value that no XML property list has");
  }
}

// The text is no longer there when this has returned: a large one would double what its
// properties take.
OwnedNode Parse(std::string canonical) {
  plist_t root = nullptr;
  plist_from_xml(canonical.data(), static_cast<std::uint32_t>(canonical.size()), &root);
  if (root == nullptr) throw RecordingError("libplist cannot read it");
  return OwnedNode(root);
}

}  // namespace

Property ParsePropertyList(std::string canonical) {
  const OwnedNode root = Parse(std::move(canonical));
  return ToProperty(root.get());
}

}  // namespace machines
