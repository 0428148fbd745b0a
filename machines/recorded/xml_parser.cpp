// The one file that includes expat's header. As it comes, expat trusts a file's declared
// encoding, takes memory without bound, and drops references that it cannot resolve.
#include "machines/recorded/xml_parser.h"

#include <expat.h>
#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <memory>

namespace machines {
namespace {

// A file of 64 MiB that is one text or one attribute needs less. A tag of millions of
// attributes would need more, and several seconds.
constexpr std::size_t kMostMemory = std::size_t{256} << 20;

// What the parser holds, in bytes. expat passes its allocator no object to keep this in.
thread_local std::size_t memoryTaken = 0;

bool IsTooMuch(std::size_t size) { return size > kMostMemory || memoryTaken > kMostMemory - size; }

void* Allocate(std::size_t size) {
  if (IsTooMuch(size)) return nullptr;
  void* memory = std::malloc(size);
  memoryTaken += malloc_usable_size(memory);
  return memory;
}

void Free(void* memory) {
  memoryTaken -= malloc_usable_size(memory);
  std::free(memory);
}

// The old block and the new one may be there at the same time.
void* Reallocate(void* memory, std::size_t size) {
  if (IsTooMuch(size)) return nullptr;
  const std::size_t before = malloc_usable_size(memory);
  void* moved = std::realloc(memory, size);
  if (moved != nullptr) memoryTaken += malloc_usable_size(moved) - before;
  return moved;
}

// How much of `file` stands before its first markup. expat takes no white space before
// an XML declaration.
std::size_t LengthBeforeMarkup(std::string_view file) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  const std::size_t start = file.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
  return std::min(file.find_first_not_of(" \t\r\n", start), file.size());
}

bool IsUTF16(std::string_view file) {
  return file.starts_with("\xFE\xFF") || file.starts_with("\xFF\xFE");
}

// Where the parser is, in bytes of what it was given; -1: nowhere. expat 2.9 has a call of
// its own for large files, and warns of the other.
std::int64_t ByteIndex(XML_Parser parser) {
#if XML_MAJOR_VERSION > 2 || XML_MINOR_VERSION >= 9
  return XML_GetCurrentByteIndex64(parser);
#else
  return XML_GetCurrentByteIndex(parser);
#endif
}

// The functions that expat calls may not throw: what is thrown there is kept until expat
// has returned.
class Parsing {
 public:
  Parsing(std::string_view file, XmlListener& listener)
      : file_(file), start_(LengthBeforeMarkup(file)), listener_(listener) {
    constexpr XML_Memory_Handling_Suite kMemory = {Allocate, Reallocate, Free};
    // Whatever encoding the file declares; a byte order mark still wins.
    parser_.reset(XML_ParserCreate_MM("UTF-8", &kMemory, nullptr));
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser_.get(), OnText);
    XML_SetEntityDeclHandler(parser_.get(), OnEntityDeclaration);
    XML_SetAttlistDeclHandler(parser_.get(), OnAttributeListDeclaration);
    XML_SetSkippedEntityHandler(parser_.get(), OnSkippedEntity);
  }

  void Run() {
    const std::string_view markup = file_.substr(start_);
    const auto status =
        XML_Parse(parser_.get(), markup.data(), static_cast<int>(markup.size()), XML_TRUE);
    if (fault_) std::rethrow_exception(fault_);
    if (status == XML_STATUS_OK) return;
    const XML_Error code = XML_GetErrorCode(parser_.get());
    if (code == XML_ERROR_NO_ELEMENTS) listener_.OnEarlyEnd(Position());
    throw Error(Explanation(code));
  }

 private:
  struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  static void OnStart(void* self, const XML_Char* name, const XML_Char** /*attributes*/) {
    static_cast<Parsing*>(self)->Tell(
        [name](XmlListener& listener, std::size_t position) { listener.OnStart(name, position); });
  }
  static void OnEnd(void* self, const XML_Char* /*name*/) {
    static_cast<Parsing*>(self)->Tell(
        [](XmlListener& listener, std::size_t position) { listener.OnEnd(position); });
  }
  static void OnText(void* self, const XML_Char* text, int length) {
    static_cast<Parsing*>(self)->Tell([=](XmlListener& listener, std::size_t position) {
      listener.OnText({text, static_cast<std::size_t>(length)}, position);
    });
  }
  static void OnEntityDeclaration(void* self, const XML_Char* /*name*/, int /*isParameter*/,
                                  const XML_Char* /*value*/, int /*length*/,
                                  const XML_Char* /*base*/, const XML_Char* /*systemId*/,
                                  const XML_Char* /*publicId*/, const XML_Char* /*notation*/) {
    static_cast<Parsing*>(self)->Refuse("a document type that declares an entity");
  }
  static void OnAttributeListDeclaration(void* self, const XML_Char* /*element*/,
                                         const XML_Char* /*attribute*/, const XML_Char* /*type*/,
                                         const XML_Char* /*value*/, int /*isRequired*/) {
    static_cast<Parsing*>(self)->Refuse("a document type that declares an attribute list");
  }
  // After an external document type, which is not read, it might declare any entity.
  static void OnSkippedEntity(void* self, const XML_Char* name, int /*isParameter*/) {
    static_cast<Parsing*>(self)->Refuse("an unknown reference, &" + Shortened(name) + ";");
  }

  // expat calls some more when it has been stopped.
  template <typename Call>
  void Tell(Call call) noexcept {
    if (fault_) return;
    try {
      call(listener_, Position());
    } catch (...) {
      fault_ = std::current_exception();
      XML_StopParser(parser_.get(), XML_FALSE);
    }
  }
  void Refuse(const std::string& what) noexcept {
    Tell([&](XmlListener&, std::size_t) { throw Error(what); });
  }

  std::size_t Position() const {
    return start_ + static_cast<std::size_t>(std::max<std::int64_t>(ByteIndex(parser_.get()), 0));
  }
  RecordingError Error(std::string_view what) const { return ErrorAt(file_, Position(), what); }
  std::string Explanation(XML_Error code) const;

  std::string_view file_;
  std::size_t start_;  // of what expat is given
  XmlListener& listener_;
  std::unique_ptr<XML_ParserStruct, FreeParser> parser_;
  std::exception_ptr fault_;
};

std::string Parsing::Explanation(XML_Error code) const {
  if (code == XML_ERROR_NO_MEMORY) return "the XML here takes too much memory to read";
  const bool isMarkup = code != XML_ERROR_SYNTAX && code != XML_ERROR_INVALID_TOKEN;
  if (Position() == start_ && !isMarkup) return "this is not XML";
  const bool isByteKnown = Position() < file_.size() && !IsUTF16(file_);
  if (code != XML_ERROR_INVALID_TOKEN || !isByteKnown) return XML_ErrorString(code);
  const auto byte = static_cast<unsigned char>(file_[Position()]);
  if (byte >= 0x80) return "text that is not UTF-8, or U+FFFE or U+FFFF, which XML does not allow";
  if (byte >= 0x20) return XML_ErrorString(code);
  return "a control character, which XML does not allow; tr -d '\\000-\\010\\013\\014\\016-\\037' "
         "<FILE >FILE.clean takes them out";
}

}  // namespace

void ParseXml(std::string_view file, XmlListener& listener) { Parsing(file, listener).Run(); }

RecordingError ErrorAt(std::string_view file, std::size_t position, std::string_view what) {
  const auto line = 1 + std::ranges::count(file.substr(0, position), '\n');
  return RecordingError("line " + std::to_string(line) + ": " + std::string(what));
}

}  // namespace machines
