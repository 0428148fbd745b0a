// The scanner behind XmlTokenizer. It never goes back: its time is linear in the file.
#include "machines/recorded/xml_tokens.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

namespace machines {
namespace {

using namespace std::string_view_literals;
using Kind = XmlToken::Kind;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kCarriedNul = "\xC0\x80";

// CDATA may hold the first two as plain text: a run that is cut there goes on in the
// next piece.
constexpr ByteSet kEndsRun("<&\r\0"sv);
constexpr ByteSet kEndsTagName(" \t\r\n/<>");
constexpr ByteSet kEndsReference(" \t\r\n<&;");
constexpr ByteSet kTurnsAttributes("\"'<>");
constexpr ByteSet kTurnsDocumentType("\"'<>[]");

// Takes the next piece of a text that does not begin with a reference.
std::string_view TakePiece(std::string_view& text) {
  if (text.front() == '\0') {
    text.remove_prefix(1);
    return kCarriedNul;
  }
  if (text.front() == '\r') {
    text.remove_prefix(text.starts_with("\r\n") ? 2 : 1);
    return "\n";
  }
  const std::size_t length = 1 + kEndsRun.LengthBefore(text.substr(1));
  const std::string_view piece = text.substr(0, length);
  text.remove_prefix(length);
  return piece;
}

std::optional<char32_t> NumberedCharacter(std::string_view digits) {
  const bool isHexadecimal = digits.starts_with('x');
  if (isHexadecimal) digits.remove_prefix(1);
  std::uint32_t code = 0;
  const char* end = digits.data() + digits.size();
  const auto [parsed, error] = std::from_chars(digits.data(), end, code, isHexadecimal ? 16 : 10);
  const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
  if (error != std::errc() || parsed != end || code > 0x10FFFF || isSurrogate) return std::nullopt;
  return code;
}

// The character that &name; stands for.
std::optional<char32_t> ReferredCharacter(std::string_view name) {
  if (name.starts_with('#')) return NumberedCharacter(name.substr(1));
  constexpr auto kNamed = std::to_array<std::pair<std::string_view, char32_t>>(
      {{"amp", U'&'}, {"lt", U'<'}, {"gt", U'>'}, {"quot", U'"'}, {"apos", U'\''}});
  for (const auto& [known, character] : kNamed) {
    if (name == known) return character;
  }
  return std::nullopt;
}

}  // namespace

RecordingError ErrorAt(std::string_view file, std::size_t position, std::string_view what) {
  const auto line = 1 + std::ranges::count(file.substr(0, position), '\n');
  return RecordingError("line " + std::to_string(line) + ": " + std::string(what));
}

XmlTokenizer::XmlTokenizer(std::string_view file) : file_(file), rest_(file) {
  TakePrefix(kByteOrderMark);
}

XmlToken XmlTokenizer::Next() {
  for (;;) {
    if (!cdata_.empty()) return {Kind::kText, Offset(cdata_), TakePiece(cdata_)};
    if (rest_.empty()) return {Kind::kEndOfFile, Offset(rest_), {}};
    if (rest_.front() == '&') return Reference();
    if (rest_.front() != '<') return {Kind::kText, Offset(rest_), TakePiece(rest_)};
    if (TakePrefix("<?")) {
      TakePast("?>", "a processing instruction");
    } else if (TakePrefix("<!")) {
      Declaration();
    } else {
      return Tag();
    }
  }
}

// What begins with "<!", which is taken.
void XmlTokenizer::Declaration() {
  if (TakePrefix("--")) {
    TakePast("-->", "a comment");
  } else if (TakePrefix("[CDATA[")) {
    cdata_ = TakePast("]]>", "a CDATA section");
  } else if (!seenTag_ && TakePrefix("DOCTYPE")) {
    SkipDocumentType();
  } else {
    throw ErrorAt(file_, Offset(rest_), "a <! that begins nothing known here");
  }
}

bool XmlTokenizer::TakePrefix(std::string_view prefix) {
  if (!rest_.starts_with(prefix)) return false;
  rest_.remove_prefix(prefix.size());
  return true;
}

// Takes everything up to and including `end`. Returns what stood before it.
std::string_view XmlTokenizer::TakePast(std::string_view end, std::string_view construct) {
  const std::size_t length = rest_.find(end);
  if (length == std::string_view::npos) throw EndInside(construct);
  const std::string_view taken = rest_.substr(0, length);
  rest_.remove_prefix(length + end.size());
  return taken;
}

// Takes everything up to and including the first byte of `ends`. Returns that byte.
char XmlTokenizer::TakePast(const ByteSet& ends, std::string_view construct) {
  const std::size_t length = ends.LengthBefore(rest_);
  if (length == rest_.size()) throw EndInside(construct);
  const char end = rest_[length];
  rest_.remove_prefix(length + 1);
  return end;
}

RecordingError XmlTokenizer::EndInside(std::string_view construct) const {
  return ErrorAt(file_, Offset(rest_), "the file ends inside " + std::string(construct));
}

// The declarations inside may hold '>' and ']' in quotes, and lone quotes in comments.
void XmlTokenizer::SkipDocumentType() {
  constexpr std::string_view kConstruct = "the document type";
  bool inSubset = false;
  for (;;) {
    const char found = TakePast(kTurnsDocumentType, kConstruct);
    if (found == '>' && !inSubset) return;
    if (found == '[' || found == ']') inSubset = found == '[';
    if (found == '"' || found == '\'') TakePast(std::string_view(&found, 1), kConstruct);
    if (found == '<' && TakePrefix("!--")) TakePast("-->", "a comment");
    if (found == '<' && TakePrefix("?")) TakePast("?>", "a processing instruction");
  }
}

XmlToken XmlTokenizer::Tag() {
  const std::size_t start = Offset(rest_);
  seenTag_ = true;
  rest_.remove_prefix(1);
  const bool isEndTag = TakePrefix("/");
  const std::string_view name = rest_.substr(0, kEndsTagName.LengthBefore(rest_));
  rest_.remove_prefix(name.size());
  const bool isEmpty = SkipAttributes();
  if (isEmpty && isEndTag) throw ErrorAt(file_, start, "a tag with a '/' at both ends");
  if (isEndTag) return {Kind::kEndTag, start, name};
  return {isEmpty ? Kind::kEmptyTag : Kind::kStartTag, start, name};
}

// Takes the rest of a tag. True when it ends in "/>". Values in quotes may hold '>'.
bool XmlTokenizer::SkipAttributes() {
  constexpr std::string_view kConstruct = "a tag";
  for (;;) {
    const char found = TakePast(kTurnsAttributes, kConstruct);
    const std::size_t offset = Offset(rest_) - 1;
    if (found == '>') return file_[offset - 1] == '/';
    if (found == '<') throw ErrorAt(file_, offset, "a '<' inside a tag");
    TakePast(std::string_view(&found, 1), kConstruct);
  }
}

XmlToken XmlTokenizer::Reference() {
  const std::size_t start = Offset(rest_);
  rest_.remove_prefix(1);
  const std::string_view name = rest_.substr(0, kEndsReference.LengthBefore(rest_));
  rest_.remove_prefix(name.size());
  const std::optional<char32_t> character = ReferredCharacter(name);
  if (!character || !TakePrefix(";")) {
    throw ErrorAt(file_, start, "unknown character reference &" + Shortened(name));
  }
  decodedReference_.clear();
  utf8::append(*character, decodedReference_);
  return {Kind::kText, start, *character == 0 ? kCarriedNul : decodedReference_};
}

}  // namespace machines
