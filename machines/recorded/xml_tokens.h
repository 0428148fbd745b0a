// Takes XML apart, front to back, into tags and texts. What may stand where in a
// property list is not known here.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "machines/recorded/byte_set.h"
#include "machines/recorded/recording_error.h"

namespace machines {

struct XmlToken {
  enum class Kind { kStartTag, kEmptyTag, kEndTag, kText, kEndOfFile };
  Kind kind;
  std::size_t position;    // of its first byte in the file
  std::string_view value;  // the tag's name, or text; good until the next token is taken
};

// "line 12: what", for the line that holds the byte at `position`.
RecordingError ErrorAt(std::string_view file, std::size_t position, std::string_view what);

// Text comes in pieces: runs of characters, and what stands for one. References
// are decoded, CDATA is text like any other, line ends are LF, and a NUL is the two
// bytes C0 80, which pass through C strings and are no valid UTF-8. Attributes,
// comments, instructions and the document type are skipped, entities of a file's
// own are refused. Other bytes are passed on as they are, valid UTF-8 or not.
class XmlTokenizer {
 public:
  explicit XmlTokenizer(std::string_view file);

  // Throws RecordingError when no token can be made of what comes next.
  XmlToken Next();

 private:
  std::size_t Offset(std::string_view part) const {
    return static_cast<std::size_t>(part.data() - file_.data());
  }
  RecordingError EndInside(std::string_view construct) const;
  bool TakePrefix(std::string_view prefix);
  std::string_view TakePast(std::string_view end, std::string_view construct);
  char TakePast(const ByteSet& ends, std::string_view construct);
  void Declaration();
  void SkipDocumentType();
  XmlToken Tag();
  bool SkipAttributes();
  XmlToken Reference();

  std::string_view file_;
  std::string_view rest_;         // behind the last token
  std::string_view cdata_;        // what is left of the section just before rest_
  std::string decodedReference_;  // what the last token refers to
  bool seenTag_ = false;
};

}  // namespace machines
