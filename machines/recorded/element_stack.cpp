#include "machines/recorded/element_stack.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "machines/recorded/leaf_values.h"
#include "machines/recorded/recording_format.h"

namespace machines {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::Property;

// Code that walks the finished values, such as their destructor, calls itself for each level.
constexpr std::size_t kMaxNesting = 256;

// The smallest element has six bytes in a file but takes some hundred bytes of memory.
constexpr std::size_t kMaxElements = 1'000'000;

constexpr auto kElements =
    std::to_array<std::string_view>({"key", "string", "integer", "dict", "true", "false", "data",
                                     "array", "real", "date", "plist"});

std::string Tag(std::string_view name) { return "<" + Excerpt(name) + ">"; }

}  // namespace

void ElementStack::Start(std::string_view name) {
  if (!leaf_.empty()) throw RecordingError(Tag(name) + " inside " + Tag(leaf_));
  const auto* element = std::ranges::find(kElements, name);
  if (element == kElements.end()) {
    throw RecordingError(Tag(name) + " is no element of a property list");
  }
  CheckPlace(name);
  if (++count_ > kMaxElements) {
    throw RecordingError("more than " + std::to_string(kMaxElements) + " elements");
  }
  const bool isDictionary = name == "dict";
  if (!isDictionary && name != "array" && name != "plist") {
    leaf_ = *element;
    text_.clear();
    return;
  }
  if (open_.size() > kMaxNesting) {  // <plist> does not count as a level
    throw RecordingError("more than " + std::to_string(kMaxNesting) + " levels of nesting");
  }
  open_.push_back({*element, {Array()}});
  if (isDictionary) open_.back().value = {Dictionary()};
}

void ElementStack::CheckPlace(std::string_view name) const {
  const bool isRoot = name == "plist";
  if (open_.empty() && !isRoot) throw RecordingError(Tag(name) + " before <plist>");
  if (open_.empty()) return;
  if (isRoot) throw RecordingError("<plist> inside <plist>");
  const Container& parent = open_.back();
  if (open_.size() == 1 && !std::get<Array>(parent.value.value).empty()) {
    throw RecordingError("a second value in <plist>");
  }
  const bool isKey = name == "key";
  const bool inDictionary = std::holds_alternative<Dictionary>(parent.value.value);
  if (isKey && !inDictionary) throw RecordingError("<key> outside <dict>");
  if (isKey && parent.due != nullptr) throw RecordingError("a second <key> where a value is due");
  if (!isKey && inDictionary && parent.due == nullptr) {
    throw RecordingError(Tag(name) + " where a <key> is due");
  }
}

void ElementStack::Text(std::string_view piece) {
  if (!leaf_.empty()) {
    text_ += piece;
  } else if (piece.find_first_not_of(" \t\n\r") != std::string_view::npos) {
    throw RecordingError("text between elements");
  }
}

void ElementStack::End() {
  if (!leaf_.empty()) {
    EndLeaf();
    return;
  }
  Container ended = std::move(open_.back());
  open_.pop_back();
  if (ended.due != nullptr) throw RecordingError("a <key> without a value");
  if (!open_.empty()) {
    Put(std::move(ended.value));
    return;
  }
  auto& values = std::get<Array>(ended.value.value);
  if (values.empty()) throw RecordingError("an empty <plist>");
  root_ = std::move(values.front());
}

void ElementStack::EndLeaf() {
  const std::string_view leaf = std::exchange(leaf_, {});
  if (leaf == "key") {
    AddKey(open_.back());
    return;
  }
  std::optional<Property> value = ParseLeaf(leaf, text_);
  if (!value) throw RecordingError("\"" + Excerpt(text_) + "\" is no " + Tag(leaf));
  Put(std::move(*value));
}

void ElementStack::AddKey(Container& dictionary) {
  const auto [key, isNew] =
      std::get<Dictionary>(dictionary.value.value).try_emplace(std::move(text_));
  if (!isNew) throw RecordingError("the <key> \"" + Excerpt(key->first) + "\" twice in a <dict>");
  dictionary.due = &key->second;
}

// Puts a finished value into the innermost container.
void ElementStack::Put(Property value) {
  Container& parent = open_.back();
  if (parent.due != nullptr) {
    *std::exchange(parent.due, nullptr) = std::move(value);
  } else {
    std::get<Array>(parent.value.value).push_back(std::move(value));
  }
}

}  // namespace machines
