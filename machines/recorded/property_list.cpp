// Turns libplist's nodes into properties and back. The one file that includes its header.
#include "machines/recorded/property_list.h"

#include <plist/plist.h>

#include <bit>
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

struct FreeXml {
  void operator()(char* xml) const { plist_to_xml_free(xml); }
};

// A new node of the value, which belongs to the caller.
struct NodeMaker {
  plist_t operator()(const std::string& text) const { return plist_new_string(text.c_str()); }
  plist_t operator()(bool value) const { return plist_new_bool(value); }
  plist_t operator()(const platform::Date& date) const {
    return plist_new_date(static_cast<std::int32_t>(date.seconds), 0);
  }
  plist_t operator()(const platform::Data& bytes) const {
    return plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }
  plist_t operator()(const platform::Number& number) const {
    if (number.type == kCFNumberFloat64Type)
      return plist_new_real(std::bit_cast<double>(number.bits));
    return plist_new_uint(number.bits);
  }
  plist_t operator()(const platform::Array& array) const {
    plist_t node = plist_new_array();
    for (const Property& item : array) plist_array_append_item(node, std::visit(*this, item.value));
    return node;
  }
  plist_t operator()(const platform::Dictionary& dictionary) const {
    plist_t node = plist_new_dict();
    for (const auto& [key, property] : dictionary) {
      plist_dict_set_item(node, key.c_str(), std::visit(*this, property.value));
    }
    return node;
  }
};

}  // namespace

std::string WritePropertyList(const Property& property) {
  const OwnedNode root(std::visit(NodeMaker(), property.value));
  char* xml = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(root.get(), &xml, &length);
  if (xml == nullptr) throw RecordingError("libplist cannot write it");
  const std::unique_ptr<char, FreeXml> owner(xml);
  return {xml, length};
}

Property ParsePropertyList(std::string canonical) {
  const OwnedNode root = Parse(std::move(canonical));
  return ToProperty(root.get());
}

}  // namespace machines
