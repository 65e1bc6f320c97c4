// BinaryFiles: tells a binary file from text before it is parsed, so that
// the tool names a binary file as one instead of failing at its first NUL
// byte with a parse error.

#ifndef MSGTOOL_BINARYFILES_H_
#define MSGTOOL_BINARYFILES_H_

#include <cstddef>
#include <string>

namespace msgtool {

// How much of a file is looked at, as git and grep do.
inline constexpr std::size_t kSniffBytes = 8192;

// True if `head`, the first bytes of a file, holds a NUL byte that text
// cannot explain. With `xml`, text may be UTF-16 or UTF-32, which hold NUL
// bytes: such a file starts with its byte order mark or with "<" in a wide
// encoding.
bool looksBinary(const std::string& head, bool xml);

// The first kSniffBytes of the file at `path` (fewer for a shorter file);
// "" if it cannot be read, which whoever reads it next reports.
std::string headOf(const std::string& path);

}  // namespace msgtool

#endif  // MSGTOOL_BINARYFILES_H_
