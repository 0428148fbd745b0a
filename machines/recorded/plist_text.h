// The check of an XML property list before libplist reads it. libplist is lenient,
// recursive and quadratic in places, so it never sees a stranger's file: it reads a
// text written here, of which this check knows all that there is to know.
#pragma once

#include <string>
#include <string_view>

namespace machines {

// The same property list without anything that XML offers beyond elements and text.
// Throws RecordingError with the line for what is not well-formed, is no property
// list, or is larger than a reader of hostile files can afford. Text is not checked
// for UTF-8: bytes pass, and a NUL passes as C0 80, so that the entry can be named.
std::string CanonicalPropertyList(std::string_view file);

}  // namespace machines
