// The one file that includes libplist's header.
#include "machines/recorded/write_property_list.h"

#include <plist/plist.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>

#include "machines/recorded/recording_error.h"

namespace machines {
namespace {

using platform::Property;

struct FreeNode {
  void operator()(plist_t node) const { plist_free(node); }
};
using OwnedNode = std::unique_ptr<void, FreeNode>;

// libplist's own call for this has another name from release to release.
struct FreeText {
  void operator()(char* text) const { std::free(text); }
};

const std::string& Checked(const std::string& text) {
  const auto isControl = [](char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
  };
  if (std::ranges::any_of(text, isControl)) {
    throw RecordingError("a text with a control character cannot be recorded: " + Shortened(text));
  }
  return text;
}

OwnedNode MakeNode(const Property& property);

// A new node of the value.
struct NodeMaker {
  OwnedNode operator()(const std::string& text) const {
    return OwnedNode(plist_new_string(Checked(text).c_str()));
  }
  OwnedNode operator()(bool value) const { return OwnedNode(plist_new_bool(value)); }
  OwnedNode operator()(const platform::Date& date) const {
    using Limits = std::numeric_limits<std::int32_t>;
    if (date.seconds < Limits::min() || date.seconds > Limits::max()) {
      throw RecordingError("a date outside 1933 to 2068 cannot be recorded");
    }
    return OwnedNode(plist_new_date(static_cast<std::int32_t>(date.seconds), 0));
  }
  OwnedNode operator()(const platform::Data& bytes) const {
    return OwnedNode(plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  }
  OwnedNode operator()(const platform::Number& number) const {
    switch (number.type) {
      case kCFNumberSInt32Type:
      case kCFNumberSInt64Type:
        return OwnedNode(plist_new_uint(number.bits));
      case kCFNumberFloat64Type:
        return OwnedNode(plist_new_real(std::bit_cast<double>(number.bits)));
      default:
        throw RecordingError("a number of this type cannot be recorded");
    }
  }
  OwnedNode operator()(const platform::Array& array) const {
    OwnedNode node(plist_new_array());
    for (const Property& item : array) {
      plist_array_append_item(node.get(), MakeNode(item).release());
    }
    return node;
  }
  OwnedNode operator()(const platform::Dictionary& dictionary) const {
    OwnedNode node(plist_new_dict());
    for (const auto& [key, property] : dictionary) {
      plist_dict_set_item(node.get(), Checked(key).c_str(), MakeNode(property).release());
    }
    return node;
  }
};

OwnedNode MakeNode(const Property& property) { return std::visit(NodeMaker(), property.value); }

}  // namespace

std::string WritePropertyList(const Property& property) {
  const OwnedNode root = MakeNode(property);
  char* xml = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(root.get(), &xml, &length);
  if (xml == nullptr) throw RecordingError("libplist cannot write it");
  const std::unique_ptr<char, FreeText> owner(xml);
  return {xml, length};
}

}  // namespace machines
