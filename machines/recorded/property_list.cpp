// Elements become values on a stack of the containers that are open: nothing here calls
// itself, however deep a file is nested.
#include "machines/recorded/property_list.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "machines/recorded/leaf_values.h"
#include "machines/recorded/recording_error.h"
#include "machines/recorded/xml_parser.h"

namespace machines {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::KeyedProperty;
using platform::Property;

// Whatever walks the finished values, such as their destruction, calls itself for each
// level.
constexpr std::size_t kMaxNesting = 256;

// The smallest element, seven bytes of a file, takes some hundred bytes of memory.
constexpr std::size_t kMaxElements = 1'000'000;

constexpr std::string_view kWhiteSpace = " \t\n\r";

enum class Role { kRoot, kDictionary, kArray, kKey, kValue };

struct Element {
  std::string_view name;
  Role role;
  std::optional<Property> (*value)(const std::string& text) = nullptr;  // of a leaf but a key
};

constexpr auto kElements = std::to_array<Element>({
    {"key", Role::kKey},
    {"string", Role::kValue, TextValue},
    {"integer", Role::kValue, IntegerValue},
    {"dict", Role::kDictionary},
    {"true", Role::kValue, TrueValue},
    {"false", Role::kValue, FalseValue},
    {"data", Role::kValue, DataValue},
    {"array", Role::kArray},
    {"real", Role::kValue, RealValue},
    {"date", Role::kValue, DateValue},
    {"plist", Role::kRoot},
});

std::string Tag(std::string_view name) { return "<" + Shortened(name) + ">"; }

class PropertyListReader : public XmlListener {
 public:
  explicit PropertyListReader(std::string_view file) : file_(file) {}

  // The value of the whole list. To be called once, after the whole file was parsed.
  Property TakeRoot() { return std::move(*root_); }

  void OnStart(std::string_view name, std::size_t position) override;
  void OnEnd(std::size_t position) override;
  void OnText(std::string_view piece, std::size_t position) override;
  void OnEarlyEnd(std::size_t position) override;

 private:
  // A container that is not closed. <plist> is one too, but does not count as a level of
  // nesting.
  struct Container {
    const Element* element;
    std::size_t firstKey;     // of a dictionary, in keyPositions_
    bool keyPending = false;  // of a dictionary: its last key waits for its value
    Property value;
  };

  void CheckPlace(const Element& element, std::size_t position) const;
  void Open(const Element& element, std::size_t position);
  void CloseLeaf();
  void Close(std::size_t position);
  void CheckKeys(const Dictionary& dictionary, std::size_t firstKey) const;
  void Put(Property value);
  RecordingError Error(std::size_t position, std::string_view what) const {
    return ErrorAt(file_, position, what);
  }

  std::string_view file_;
  std::vector<Container> open_;
  std::vector<std::size_t> keyPositions_;  // of the open dictionaries, the outermost first
  const Element* leaf_ = nullptr;          // that is open
  std::size_t leafPosition_ = 0;
  std::string text_;  // of that leaf so far
  std::optional<Property> root_;
  std::size_t count_ = 0;
};

void PropertyListReader::OnStart(std::string_view name, std::size_t position) {
  if (leaf_ != nullptr) throw Error(position, Tag(name) + " inside " + Tag(leaf_->name));
  const auto* element = std::ranges::find(kElements, name, &Element::name);
  if (element == kElements.end()) {
    throw Error(position, Tag(name) + " is no element of a property list");
  }
  CheckPlace(*element, position);
  if (++count_ > kMaxElements) {
    throw Error(position, "more than " + std::to_string(kMaxElements) + " elements");
  }
  Open(*element, position);
}

void PropertyListReader::CheckPlace(const Element& element, std::size_t position) const {
  if (open_.empty()) {
    if (element.role == Role::kRoot) return;
    throw Error(position, Tag(element.name) + " before <plist>");
  }
  if (element.role == Role::kRoot) throw Error(position, "<plist> inside <plist>");
  const Container& parent = open_.back();
  if (parent.element->role == Role::kRoot && root_) {
    throw Error(position, "a second value in <plist>");
  }
  const bool isKey = element.role == Role::kKey;
  const bool inDictionary = parent.element->role == Role::kDictionary;
  if (isKey && !inDictionary) throw Error(position, "<key> outside <dict>");
  if (isKey && parent.keyPending) throw Error(position, "a second <key> where a value is due");
  if (!isKey && inDictionary && !parent.keyPending) {
    throw Error(position, Tag(element.name) + " where a <key> is due");
  }
}

void PropertyListReader::Open(const Element& element, std::size_t position) {
  switch (element.role) {
    case Role::kKey:
    case Role::kValue:
      leaf_ = &element;
      leafPosition_ = position;
      text_.clear();
      return;
    case Role::kDictionary:
      open_.push_back({&element, keyPositions_.size(), false, {Dictionary()}});
      break;
    case Role::kArray:
    case Role::kRoot:
      open_.push_back({&element, keyPositions_.size(), false, {Array()}});
      break;
  }
  if (open_.size() > kMaxNesting + 1) {
    throw Error(position, "more than " + std::to_string(kMaxNesting) + " levels of nesting");
  }
}

void PropertyListReader::OnText(std::string_view piece, std::size_t position) {
  if (leaf_ != nullptr) {
    text_ += piece;
  } else if (piece.find_first_not_of(kWhiteSpace) != std::string_view::npos) {
    throw Error(position, "text between elements");
  }
}

void PropertyListReader::OnEarlyEnd(std::size_t position) {
  if (count_ == 0) throw RecordingError("not an XML property list");
  const Element& innermost = leaf_ != nullptr ? *leaf_ : *open_.back().element;
  throw Error(position, "the file ends inside " + Tag(innermost.name));
}

void PropertyListReader::OnEnd(std::size_t position) {
  if (leaf_ != nullptr) {
    CloseLeaf();
  } else {
    Close(position);
  }
}

void PropertyListReader::CloseLeaf() {
  const Element& leaf = *std::exchange(leaf_, nullptr);
  if (leaf.role == Role::kKey) {
    Container& parent = open_.back();
    std::get<Dictionary>(parent.value.value).push_back({text_, {}});
    keyPositions_.push_back(leafPosition_);
    parent.keyPending = true;
    return;
  }
  std::optional<Property> value = leaf.value(text_);
  if (!value) {
    throw Error(leafPosition_, "\"" + Shortened(text_) + "\" is no " + Tag(leaf.name));
  }
  Put(std::move(*value));
}

void PropertyListReader::Close(std::size_t position) {
  Container closed = std::move(open_.back());
  open_.pop_back();
  if (closed.keyPending) throw Error(position, "a <key> without a value");
  if (closed.element->role == Role::kRoot) {
    if (!root_) throw Error(position, "an empty <plist>");
    return;
  }
  if (const auto* dictionary = std::get_if<Dictionary>(&closed.value.value)) {
    CheckKeys(*dictionary, closed.firstKey);
  }
  keyPositions_.resize(closed.firstKey);
  Put(std::move(closed.value));
}

// Sorting finds a key that is there twice; unlike hashing, it has no bad case.
void PropertyListReader::CheckKeys(const Dictionary& dictionary, std::size_t firstKey) const {
  std::vector<const KeyedProperty*> sorted;
  sorted.reserve(dictionary.size());
  for (const KeyedProperty& keyed : dictionary) sorted.push_back(&keyed);
  const auto key = [](const KeyedProperty* keyed) -> const std::string& { return keyed->key; };
  const auto order = [&](const KeyedProperty* keyed) {
    return std::pair<const std::string&, const KeyedProperty*>(key(keyed), keyed);
  };
  std::ranges::sort(sorted, {}, order);
  const auto twice = std::ranges::adjacent_find(sorted, {}, key);
  if (twice == sorted.end()) return;
  const auto second = static_cast<std::size_t>(*std::next(twice) - dictionary.data());
  throw Error(keyPositions_[firstKey + second], "a <key> that is in its <dict> already");
}

// Puts a finished value into the innermost container.
void PropertyListReader::Put(Property value) {
  Container& parent = open_.back();
  if (parent.element->role == Role::kRoot) {
    root_ = std::move(value);
  } else if (auto* dictionary = std::get_if<Dictionary>(&parent.value.value)) {
    dictionary->back().value = std::move(value);
    parent.keyPending = false;
  } else {
    std::get<Array>(parent.value.value).push_back(std::move(value));
  }
}

}  // namespace

Property ReadPropertyList(std::string_view file) {
  if (file.empty()) throw RecordingError("the file is empty");
  if (file.starts_with("bplist")) {
    throw RecordingError(
        "a binary property list; plistutil -i FILE -o FILE.xml converts it to an XML one");
  }
  PropertyListReader reader(file);
  ParseXml(file, reader);
  return reader.TakeRoot();
}

}  // namespace machines
