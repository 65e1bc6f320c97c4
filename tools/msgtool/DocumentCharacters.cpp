#include "DocumentCharacters.h"

#include <cstdio>

namespace msgtool {

namespace {

constexpr char32_t kNotUtf8 = 0xFFFFFFFF;

// The code point of the UTF-8 sequence at text[at], advancing `at` past
// it; kNotUtf8 for a sequence that is malformed, overlong, a surrogate or
// beyond U+10FFFF.
char32_t decodeAt(const std::string& text, std::size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at++]);
  if (lead < 0x80) {
    return lead;
  }
  const std::size_t length = (lead >> 5) == 6    ? 1
                             : (lead >> 4) == 14 ? 2
                             : (lead >> 3) == 30 ? 3
                                                 : 0;
  if (length == 0 || text.size() - at < length) {
    return kNotUtf8;
  }
  char32_t code = lead & (0x3F >> length);
  for (std::size_t k = 0; k < length; ++k) {
    const auto next = static_cast<unsigned char>(text[at++]);
    if ((next & 0xC0) != 0x80) {
      return kNotUtf8;
    }
    code = (code << 6) | (next & 0x3F);
  }
  static const char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
    return kNotUtf8;
  }
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
