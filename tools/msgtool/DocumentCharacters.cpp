#include "DocumentCharacters.h"

#include <cstdio>

#include "message_core/Utf8.h"

namespace msgtool {

namespace {

constexpr char32_t kNotUtf8 = 0xFFFFFFFF;

// The code point of the UTF-8 sequence at text[at], advancing `at` past
// it; kNotUtf8 for a sequence that is malformed, overlong, a surrogate or
// beyond U+10FFFF.
char32_t decodeAt(const std::string& text, std::size_t& at) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data()) + at;
  if (bytes[0] < 0x80) {
    ++at;
    return bytes[0];
  }
  const std::size_t length = msg::utf8SequenceLength(bytes, text.size() - at);
  if (length == 0) {
    ++at;
    return kNotUtf8;
  }
  char32_t code = bytes[0] & (0x7F >> length);
  for (std::size_t k = 1; k < length; ++k) {
    code = (code << 6) | (bytes[k] & 0x3F);
  }
  at += length;
  return code;
}

bool isXml10Character(char32_t code) {
  return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
         (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

}  // namespace

std::size_t firstNonUtf8(const std::string& bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t start = at;
    if (decodeAt(bytes, at) == kNotUtf8) {
      return start;
    }
  }
  return std::string::npos;
}

std::string whyDocumentCannotHold(const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const char32_t code = decodeAt(text, at);
    if (code == kNotUtf8) {
      return "bytes that are not UTF-8";
    }
    if (!isXml10Character(code)) {
      char name[16];
      std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(code));
      return std::string(name) + ", a character that a message document cannot hold";
    }
  }
  return std::string();
}

}  // namespace msgtool
