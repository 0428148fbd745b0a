// A parser of XML that is safe on a stranger's file. Of property lists it knows nothing.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "machines/recorded/recording_error.h"

namespace machines {

// Its functions are called with what ParseXml finds, in the file's order. Each may throw,
// which ends the parsing.
class XmlListener {
 public:
  XmlListener() = default;
  XmlListener(const XmlListener&) = delete;
  XmlListener& operator=(const XmlListener&) = delete;
  virtual ~XmlListener() = default;

  // `position` is that of the tag, in bytes from the start of the file.
  virtual void OnStart(std::string_view name, std::size_t position) = 0;
  virtual void OnEnd(std::size_t position) = 0;
  // A text comes in pieces. References are resolved, line ends are LF.
  virtual void OnText(std::string_view piece, std::size_t position) = 0;
  // The file ends where an element is due, or inside one. Throws.
  virtual void OnEarlyEnd(std::size_t position) = 0;
};

// Parses `file`, as UTF-8 whatever encoding it declares. Comments, processing instructions
// and attributes are skipped. Throws RecordingError with the line of the fault for what is
// not well-formed, what takes the parser more than 256 MiB, a document type that declares
// entities or attribute lists, and a reference that cannot be resolved. What the listener
// throws passes through.
void ParseXml(std::string_view file, XmlListener& listener);

// An error at the line of `position` in `file`.
RecordingError ErrorAt(std::string_view file, std::size_t position, std::string_view what);

}  // namespace machines
