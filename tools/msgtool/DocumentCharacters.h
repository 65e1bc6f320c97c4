// DocumentCharacters: whether a text from a translator's file can stand in a
// message document. A document is XML 1.0 in UTF-8, which cannot hold the
// control characters below U+0020 other than tab, line feed and carriage
// return, nor U+FFFE and U+FFFF, nor surrogates; PO escapes such as \a and
// \001, raw control bytes and character references of an XML 1.1 file can
// all bring them in.

#ifndef MSGTOOL_DOCUMENTCHARACTERS_H_
#define MSGTOOL_DOCUMENTCHARACTERS_H_

#include <cstddef>
#include <string>

namespace msgtool {

// Offset of the first byte of `bytes` that does not begin a well-formed
// UTF-8 sequence (see whyDocumentCannotHold), or std::string::npos.
std::size_t firstNonUtf8(const std::string& bytes);

// Returns "" if a message document can hold `text` (UTF-8). Otherwise says
// why not, to follow "holds ": "U+0007, a character that a message document
// cannot hold", or "bytes that are not UTF-8" (also for an overlong form, a
// surrogate or a code point above U+10FFFF).
std::string whyDocumentCannotHold(const std::string& text);

}  // namespace msgtool

#endif  // MSGTOOL_DOCUMENTCHARACTERS_H_
