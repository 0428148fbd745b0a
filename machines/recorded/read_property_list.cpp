// The one file that includes expat's header. By default expat trusts the encoding that a file
// declares, takes memory without limit, and drops references that it cannot resolve.
#include <expat.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "machines/recorded/element_stack.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/recording_format.h"

namespace machines {
namespace {

using platform::Property;

// In bytes. A file of 64 MiB that is one text or one attribute needs less. A tag with millions of
// attributes would need more, and several seconds.
constexpr std::size_t kMaxMemory = std::size_t{256} << 20;

// A property list has one attribute, the version. expat keeps every attribute name that it has met,
// and takes up to ten seconds for a file that is full of them.
constexpr std::size_t kMaxXMLAttributes = 1'000;

// The memory that the parser holds, in bytes. It is global because expat passes no object to its
// allocator.
thread_local std::size_t memoryHeld = 0;

void Free(void* memory) {
  memoryHeld -= malloc_usable_size(memory);
  std::free(memory);
}

// Counts the old block and the new one together, because both may be there at the same time.
void* Reallocate(void* memory, std::size_t size) {
  if (size > kMaxMemory || memoryHeld > kMaxMemory - size) return nullptr;
  const std::size_t before = malloc_usable_size(memory);
  void* moved = std::realloc(memory, size);
  if (moved != nullptr) memoryHeld += malloc_usable_size(moved) - before;
  return moved;
}

void* Allocate(std::size_t size) { return Reallocate(nullptr, size); }

// The number of bytes of `file` before its first markup. They are skipped, because expat does not
// accept white space before an XML declaration.
std::size_t LengthBeforeMarkup(std::string_view file) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  const std::size_t start = file.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
  return std::min(file.find_first_not_of(" \t\r\n", start), file.size());
}

// Where the parser is, in bytes of what it was given (-1: nowhere), and how many bytes the markup
// there has. expat 2.9 has new calls for large files and warns of the old ones.
#if XML_MAJOR_VERSION > 2 || XML_MINOR_VERSION >= 9
constexpr auto kByteIndex = XML_GetCurrentByteIndex64;
constexpr auto kByteCount = XML_GetCurrentByteCount64;
#else
constexpr auto kByteIndex = XML_GetCurrentByteIndex;
constexpr auto kByteCount = XML_GetCurrentByteCount;
#endif

// The functions that expat calls must not throw. An exception in them is kept until expat has
// returned, and then gets the line where expat was.
class Parser {
 public:
  explicit Parser(std::string_view file) : file_(file), start_(LengthBeforeMarkup(file)) {
    constexpr XML_Memory_Handling_Suite kMemory = {Allocate, Reallocate, Free};
    // Overrides the encoding that the file declares. expat still knows UTF-16 by its first bytes.
    parser_.reset(XML_ParserCreate_MM("UTF-8", &kMemory, nullptr));
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser_.get(), OnText);
    XML_SetStartDoctypeDeclHandler(parser_.get(), OnDocumentType);
    XML_SetSkippedEntityHandler(parser_.get(), OnSkippedReference);
  }

  Property Parse() {
    const std::string_view markup = file_.substr(start_);
    const auto status =
        XML_Parse(parser_.get(), markup.data(), static_cast<int>(markup.size()), XML_TRUE);
    if (status != XML_STATUS_OK) {
      Guard(this, [](Parser& parser) { throw RecordingError(parser.Explanation()); });
    }
    if (fault_) ThrowFault();
    return std::move(elements_.Root());
  }

 private:
  static void OnStart(void* self, const XML_Char* name, const XML_Char** attributes) {
    Guard(self, [=](Parser& parser) {
      if (*attributes != nullptr) parser.CheckAttributes(attributes);
      parser.elements_.Start(name);
    });
  }
  static void OnEnd(void* self, const XML_Char* /*name*/) {
    Guard(self, [](Parser& parser) { parser.elements_.End(); });
  }
  static void OnText(void* self, const XML_Char* text, int length) {
    const std::string_view piece(text, static_cast<std::size_t>(length));
    Guard(self, [piece](Parser& parser) { parser.elements_.Text(piece); });
  }
  // Declarations can give every element thousands of attributes, and one can hide others.
  static void OnDocumentType(void* self, const XML_Char* /*name*/, const XML_Char* /*systemId*/,
                             const XML_Char* /*publicId*/, int hasDeclarations) {
    if (hasDeclarations == 0) return;
    Guard(self, [](Parser&) { throw RecordingError("a document type with declarations in it"); });
  }
  // An external document type is not read. It might declare any entity, so expat skips an unknown
  // reference after one and does not fail.
  static void OnSkippedReference(void* self, const XML_Char* name, int /*isParameter*/) {
    Guard(self, [name](Parser&) {
      throw RecordingError("an unknown reference, &" + Excerpt(name) + ";");
    });
  }

  // Keeps the first exception that `call` throws, and stops expat. expat may still make some calls
  // after that.
  template <typename Call>
  static void Guard(void* self, Call call) noexcept {
    auto& parser = *static_cast<Parser*>(self);
    if (parser.fault_) return;
    try {
      call(parser);
    } catch (...) {
      parser.fault_ = std::current_exception();
      parser.faultPosition_ = parser.Position();
      XML_StopParser(parser.parser_.get(), XML_FALSE);
    }
  }
  void ThrowFault() const;
  void CheckAttributes(const XML_Char** attributes);
  std::string Explanation() const;

  std::size_t Position() const {
    return start_ + static_cast<std::size_t>(std::max<std::int64_t>(kByteIndex(parser_.get()), 0));
  }

  std::string_view file_;
  std::size_t start_;  // where the part of the file that expat is given begins
  ElementStack elements_;
  std::size_t attributeCount_ = 0;
  std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_{nullptr, XML_ParserFree};
  std::exception_ptr fault_;  // the first
  std::size_t faultPosition_ = 0;
};

void Parser::ThrowFault() const {
  try {
    std::rethrow_exception(fault_);
  } catch (const RecordingError& error) {
    const auto line = 1 + std::ranges::count(file_.substr(0, faultPosition_), '\n');
    throw RecordingError("line " + std::to_string(line) + ": " + error.what());
  }
}

// Rejects any reference in an attribute, because there expat drops an unknown one without a call.
void Parser::CheckAttributes(const XML_Char** attributes) {
  for (; *attributes != nullptr; attributes += 2) attributeCount_++;
  if (attributeCount_ > kMaxXMLAttributes) {
    throw RecordingError("more than " + std::to_string(kMaxXMLAttributes) + " attributes");
  }
  const auto length = static_cast<std::size_t>(kByteCount(parser_.get()));
  if (file_.substr(Position(), length).find('&') != std::string_view::npos) {
    throw RecordingError("a reference in an attribute");
  }
}

// Why expat stopped by itself.
std::string Parser::Explanation() const {
  const XML_Error code = XML_GetErrorCode(parser_.get());
  if (code == XML_ERROR_NO_MEMORY) return "the XML here takes too much memory to read";
  if (code == XML_ERROR_NO_ELEMENTS) {
    const std::string innermost(elements_.Innermost());
    return innermost.empty() ? "not an XML property list"
                             : "the file ends inside <" + innermost + ">";
  }
  const bool isMarkup = code != XML_ERROR_SYNTAX && code != XML_ERROR_INVALID_TOKEN;
  if (Position() == start_ && !isMarkup) return "this is not XML";
  const bool isUTF16 = std::ranges::any_of(
      file_.substr(0, 2), [](char c) { return c == '\0' || c == '\xFE' || c == '\xFF'; });
  const bool isByteKnown = Position() < file_.size() && !isUTF16;
  if (code != XML_ERROR_INVALID_TOKEN || !isByteKnown) return XML_ErrorString(code);
  const auto byte = static_cast<unsigned char>(file_[Position()]);
  if (byte >= 0x80) return "text that is not UTF-8, or U+FFFE or U+FFFF, which XML does not allow";
  if (byte >= 0x20) return XML_ErrorString(code);
  return "a control character, which XML does not allow; tr -d '\\000-\\010\\013\\014\\016-\\037' "
         "<FILE >FILE.clean takes them out";
}

}  // namespace

Property ReadPropertyList(std::string_view file) {
  if (file.empty()) throw RecordingError("the file is empty");
  if (file.starts_with("bplist")) {
    throw RecordingError("a binary property list; plistutil -i FILE -o FILE.xml converts it");
  }
  return Parser(file).Parse();
}

}  // namespace machines
