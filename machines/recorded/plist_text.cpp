// The grammar of a property list, element by element, and the canonical text.
#include "machines/recorded/plist_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "machines/recorded/byte_set.h"
#include "machines/recorded/leaf_text.h"
#include "machines/recorded/xml_tokens.h"

namespace machines {
namespace {

using Kind = XmlToken::Kind;

constexpr std::size_t kMaxNesting = 256;

// libplist takes some 150 bytes for the smallest element: this bounds its memory.
constexpr std::size_t kMaxElements = 1'000'000;

// libplist compares a new key with every key of its dictionary that shares its 12-bit
// hash, and in a hostile file all of them do: the square of their number. This sum of
// squares takes it about a second. One dictionary may hold 16,384 keys.
constexpr std::size_t kMaxKeyComparisons = std::size_t{1} << 28;

enum class Role { kRoot, kDictionary, kArray, kKey, kValue };

struct Element {
  std::string_view name;
  Role role;
  std::optional<std::string> (*canonicalText)(std::string_view) = nullptr;  // null: any text
};

constexpr auto kElements = std::to_array<Element>({
    {"key", Role::kKey},
    {"string", Role::kValue},
    {"integer", Role::kValue, CanonicalInteger},
    {"dict", Role::kDictionary},
    {"true", Role::kValue, CanonicalBoolean},
    {"false", Role::kValue, CanonicalBoolean},
    {"data", Role::kValue, CanonicalData},
    {"array", Role::kArray},
    {"real", Role::kValue, CanonicalReal},
    {"date", Role::kValue, CanonicalDate},
    {"plist", Role::kRoot},
});

constexpr ByteSet kMarkup("<&");
constexpr ByteSet kWhiteSpace(" \t\n");

std::string Tag(std::string_view name) { return "<" + Shortened(name) + ">"; }

class Canonicalizer {
 public:
  explicit Canonicalizer(std::string_view file) : file_(file), tokens_(file) {}
  std::string Run();

 private:
  struct OpenElement {
    const Element* element;
    std::size_t firstKey;     // of a dictionary, in keys_
    bool keyPending = false;  // of a dictionary: a key waits for its value
    bool hasValue = false;    // of the root
  };
  struct Key {
    std::size_t offset, length;  // of the key's element in output_
    std::size_t position;        // in the file
  };

  void SkipText(const XmlToken& text) const;
  void CheckEnd(const XmlToken& end) const;
  void Start(const XmlToken& tag);
  void CheckPlace(const XmlToken& tag, const Element& element);
  void Count(const XmlToken& tag);
  void Open(const XmlToken& tag, const Element& element);
  void Close(const XmlToken& tag);
  void CheckKeys(const XmlToken& endTag, std::size_t firstKey);
  void CopyLeaf(const XmlToken& tag, const Element& element);
  void ReadText(const XmlToken& startTag);
  void WriteText(const XmlToken& tag);
  void WriteCData(const XmlToken& tag);
  RecordingError Error(const XmlToken& token, const std::string& what) const {
    return ErrorAt(file_, token.position, what);
  }

  std::string_view file_;
  XmlTokenizer tokens_;
  std::string output_;
  std::string text_;  // of the leaf that was read last
  std::vector<OpenElement> open_;
  std::vector<Key> keys_;  // of the open dictionaries, the outermost first
  std::size_t count_ = 0;
  std::size_t keyComparisons_ = 0;
  bool complete_ = false;  // the root is closed
};

std::string Canonicalizer::Run() {
  output_.reserve(file_.size());
  for (;;) {
    const XmlToken token = tokens_.Next();
    switch (token.kind) {
      case Kind::kStartTag:
      case Kind::kEmptyTag:
        Start(token);
        break;
      case Kind::kEndTag:
        Close(token);
        break;
      case Kind::kText:
        SkipText(token);
        break;
      case Kind::kEndOfFile:
        CheckEnd(token);
        return std::move(output_);
    }
  }
}

void Canonicalizer::SkipText(const XmlToken& text) const {
  const std::size_t space = kWhiteSpace.LengthWithin(text.value);
  if (space == text.value.size()) return;
  if (output_.empty()) throw RecordingError("not an XML property list");
  throw ErrorAt(file_, text.position + space, "text between elements");
}

void Canonicalizer::CheckEnd(const XmlToken& end) const {
  if (complete_) return;
  if (open_.empty()) throw RecordingError("not an XML property list");
  throw Error(end, "the file ends inside " + Tag(open_.back().element->name));
}

void Canonicalizer::Start(const XmlToken& tag) {
  const auto* element = std::ranges::find(kElements, tag.value, &Element::name);
  if (element == kElements.end()) {
    throw Error(tag, Tag(tag.value) + " is no element of a property list");
  }
  CheckPlace(tag, *element);
  Count(tag);
  if (element->role == Role::kKey || element->role == Role::kValue) return CopyLeaf(tag, *element);
  Open(tag, *element);
  if (tag.kind == Kind::kEmptyTag) Close(tag);
}

void Canonicalizer::CheckPlace(const XmlToken& tag, const Element& element) {
  if (complete_) throw Error(tag, Tag(tag.value) + " after </plist>");
  if (open_.empty() != (element.role == Role::kRoot)) {
    throw Error(tag, open_.empty() ? Tag(tag.value) + " before <plist>" : "<plist> inside <plist>");
  }
  if (open_.empty()) return;

  OpenElement& parent = open_.back();
  const bool isKey = element.role == Role::kKey;
  const bool inDictionary = parent.element->role == Role::kDictionary;
  if (isKey && !inDictionary) throw Error(tag, "<key> outside <dict>");
  if (isKey && parent.keyPending) throw Error(tag, "a second <key> where a value is due");
  if (!isKey && inDictionary && !parent.keyPending) {
    throw Error(tag, Tag(tag.value) + " where a <key> is due");
  }
  if (parent.hasValue) throw Error(tag, "a second value in <plist>");
  parent.keyPending = isKey;
  parent.hasValue = parent.element->role == Role::kRoot;
}

void Canonicalizer::Count(const XmlToken& tag) {
  if (++count_ > kMaxElements) {
    throw Error(tag, "more than " + std::to_string(kMaxElements) + " elements");
  }
}

void Canonicalizer::Open(const XmlToken& tag, const Element& element) {
  // The root is open too and is no level of its own.
  if (open_.size() > kMaxNesting) {
    throw Error(tag, "more than " + std::to_string(kMaxNesting) + " levels of nesting");
  }
  open_.push_back({&element, keys_.size()});
  output_.append("<").append(element.name).append(">");
}

void Canonicalizer::Close(const XmlToken& tag) {
  if (open_.empty() || open_.back().element->name != tag.value) {
    throw Error(tag, "</" + Shortened(tag.value) + "> closes nothing that is open");
  }
  const OpenElement closed = open_.back();
  if (closed.keyPending) throw Error(tag, "a <key> without a value");
  if (closed.element->role == Role::kRoot && !closed.hasValue) throw Error(tag, "an empty <plist>");
  CheckKeys(tag, closed.firstKey);
  output_.append("</").append(closed.element->name).append(">");
  open_.pop_back();
  complete_ = open_.empty();
}

// Sorting finds a key that is there twice; unlike hashing, it has no bad case.
void Canonicalizer::CheckKeys(const XmlToken& endTag, std::size_t firstKey) {
  const auto first = keys_.begin() + static_cast<std::ptrdiff_t>(firstKey);
  const auto written = [this](const Key& key) {
    return std::string_view(output_).substr(key.offset, key.length);
  };
  const auto order = [&](const Key& key) { return std::pair(written(key), key.position); };
  std::ranges::sort(first, keys_.end(), {}, order);
  const auto twice = std::ranges::adjacent_find(first, keys_.end(), {}, written);
  if (twice != keys_.end()) {
    throw ErrorAt(file_, std::next(twice)->position, "a <key> that is in its <dict> already");
  }
  const std::size_t count = keys_.size() - firstKey;
  keyComparisons_ += count * count;
  if (keyComparisons_ > kMaxKeyComparisons)
    throw Error(endTag, "too many keys in one <dict> or in all of them");
  keys_.erase(first, keys_.end());
}

void Canonicalizer::CopyLeaf(const XmlToken& tag, const Element& element) {
  text_.clear();
  if (tag.kind == Kind::kStartTag) ReadText(tag);
  const std::size_t offset = output_.size();
  output_.append("<").append(element.name).append(">");
  if (element.canonicalText == nullptr) {
    WriteText(tag);
  } else {
    const std::optional<std::string> text = element.canonicalText(text_);
    if (!text) throw Error(tag, "\"" + Shortened(text_) + "\" is no " + Tag(element.name));
    output_ += *text;
  }
  output_.append("</").append(element.name).append(">");
  if (element.role == Role::kKey) {
    keys_.push_back({offset, output_.size() - offset, tag.position});
  }
}

// Reads up to the tag that ends `startTag`'s element.
void Canonicalizer::ReadText(const XmlToken& startTag) {
  for (;;) {
    const XmlToken token = tokens_.Next();
    if (token.kind == Kind::kText) {
      text_ += token.value;
      continue;
    }
    if (token.kind == Kind::kEndTag && token.value == startTag.value) return;
    if (token.kind == Kind::kEndOfFile) {
      throw Error(token, "the file ends inside " + Tag(startTag.value));
    }
    const std::string name = (token.kind == Kind::kEndTag ? "/" : "") + std::string(token.value);
    throw Error(token, Tag(name) + " inside " + Tag(startTag.value));
  }
}

void Canonicalizer::WriteText(const XmlToken& tag) {
  if (kMarkup.LengthBefore(text_) == text_.size()) {
    output_ += text_;
  } else {
    WriteCData(tag);
  }
}

// libplist copies CDATA as it is, but moves the whole rest of a text for each reference
// in it. A section cannot hold "]]>": that is spread over two, which libplist keeps
// apart until the end of the text, so that each counts as an element does.
void Canonicalizer::WriteCData(const XmlToken& tag) {
  constexpr std::string_view kBegin = "<![CDATA[";
  constexpr std::string_view kEnd = "]]>";
  std::string_view rest = text_;
  output_ += kBegin;
  for (;;) {
    const std::size_t length = rest.find(kEnd);
    if (length == std::string_view::npos) break;
    Count(tag);
    output_.append(rest.substr(0, length + 2)).append(kEnd).append(kBegin);
    rest.remove_prefix(length + 2);
  }
  output_.append(rest).append(kEnd);
}

}  // namespace

std::string CanonicalPropertyList(std::string_view file) {
  if (file.empty()) throw RecordingError("the file is empty");
  if (file.starts_with("bplist")) {
    throw RecordingError(
        "a binary property list; plistutil -i FILE -o FILE.xml converts it to an XML one");
  }
  return Canonicalizer(file).Run();
}

}  // namespace machines
