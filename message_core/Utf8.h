// Utf8: the one reading of well-formed UTF-8 for the library and its tool,
// so that the JSON lines channel and msgtool agree on which bytes are text.
//
// Private to the library: not installed, nothing here is exported.

#ifndef MSG_MESSAGE_CORE_UTF8_H_
#define MSG_MESSAGE_CORE_UTF8_H_

#include <cstddef>

namespace msg {

// Length of the well-formed UTF-8 sequence of two to four bytes at the start
// of `text` (`size` bytes available), or 0 if it does not start with one: an
// ASCII byte, a stray continuation byte, an overlong form, a surrogate or a
// code point above U+10FFFF all give 0. Follows the table of well-formed
// byte sequences in the Unicode standard (chapter 3).
// REQUIRES: size >= 1.
inline std::size_t utf8SequenceLength(const unsigned char* text, std::size_t size) {
  const unsigned char lead = text[0];
  std::size_t length = 0;
  unsigned char secondLow = 0x80;
  unsigned char secondHigh = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) {
      secondLow = 0xA0;  // no overlong form
    } else if (lead == 0xED) {
      secondHigh = 0x9F;  // no surrogate
    }
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) {
      secondLow = 0x90;  // no overlong form
    } else if (lead == 0xF4) {
      secondHigh = 0x8F;  // nothing above U+10FFFF
    }
  } else {
    return 0;
  }
  if (size < length || text[1] < secondLow || text[1] > secondHigh) {
    return 0;
  }
  for (std::size_t i = 2; i < length; ++i) {
    if (text[i] < 0x80 || text[i] > 0xBF) {
      return 0;
    }
  }
  return length;
}

// True if the `size` bytes at `text` are well-formed UTF-8.
inline bool isValidUtf8(const char* text, std::size_t size) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text);
  std::size_t at = 0;
  while (at < size) {
    if (bytes[at] < 0x80) {
      ++at;
      continue;
    }
    const std::size_t length = utf8SequenceLength(bytes + at, size - at);
    if (length == 0) {
      return false;
    }
    at += length;
  }
  return true;
}

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_UTF8_H_
