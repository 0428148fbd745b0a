// The one file that includes libplist's header.
#include <plist/plist.h>
#include <utf8.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

#include "machines/recorded/property_list.h"
#include "machines/recorded/recording_format.h"

namespace machines {
namespace {

using platform::Property;

using OwnedNode = std::unique_ptr<void, decltype([](plist_t node) { plist_free(node); })>;

// Uses free(), because libplist's own call for this changes its name from release to release.
using OwnedText = std::unique_ptr<char, decltype([](char* text) { std::free(text); })>;

// `text`, if XML gives it back unchanged. A carriage return is refused too: XML allows it, but
// reads it as a line feed.
const std::string& Checked(const std::string& text) {
  const auto isControl = [](char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n';
  };
  if (utf8::is_valid(text.begin(), text.end()) && std::ranges::none_of(text, isControl) &&
      text.find("\uFFFE") == std::string::npos && text.find("\uFFFF") == std::string::npos) {
    return text;
  }
  throw RecordingError("a text that XML cannot hold cannot be recorded: " + Excerpt(text));
}

// libplist counts the seconds of a date from 2001 on, in 32 bits.
std::int64_t SinceOrigin(std::chrono::sys_seconds date) {
  constexpr std::chrono::sys_days kOrigin = std::chrono::year(2001) / 1 / 1;
  return std::chrono::seconds(date - kOrigin).count();
}

OwnedNode MakeNode(const Property& property);

// A new node of the value.
struct NodeMaker {
  OwnedNode operator()(const std::string& text) const {
    return OwnedNode(plist_new_string(Checked(text).c_str()));
  }
  OwnedNode operator()(bool value) const { return OwnedNode(plist_new_bool(value)); }
  OwnedNode operator()(std::chrono::sys_seconds date) const {
    if (!IsWritableDate(date)) {
      throw RecordingError("a date outside 1933 to 2068 cannot be recorded");
    }
    return OwnedNode(plist_new_date(static_cast<std::int32_t>(SinceOrigin(date)), 0));
  }
  OwnedNode operator()(const platform::Data& bytes) const {
    return OwnedNode(plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  }
  OwnedNode operator()(const platform::Number& number) const {
    if (number.type == kCFNumberFloat64Type) {
      return OwnedNode(plist_new_real(std::bit_cast<double>(number.bits)));
    }
    if (number.type == kCFNumberSInt32Type || number.type == kCFNumberSInt64Type) {
      return OwnedNode(plist_new_uint(number.bits));
    }
    throw RecordingError("a number of this type cannot be recorded");
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

bool IsWritableDate(std::chrono::sys_seconds date) {
  return std::in_range<std::int32_t>(SinceOrigin(date));
}

std::string WritePropertyList(const Property& property) {
  const OwnedNode root = MakeNode(property);
  char* xml = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(root.get(), &xml, &length);
  if (xml == nullptr) throw RecordingError("libplist cannot write it");
  const OwnedText owner(xml);
  return {xml, length};
}

}  // namespace machines
