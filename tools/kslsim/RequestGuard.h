#pragma once

#include <string>

namespace kslsim {

// The XML-RPC library reads past an argument list, and the process with it, when the text of an <i8> is no number
// of 64 bits. False for a document with such a text, or with anything (a document type, references, comments inside
// the element) by which one could hide from this look at the plain text. Any thread.
bool isSafeForLibrary(const std::string& xml);

}  // namespace kslsim
