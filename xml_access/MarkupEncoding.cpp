#include "xml_access/MarkupEncoding.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>

#include "msg/XercesXMLException.h"

namespace XercesXML {

namespace {

bool startsWith(const std::string& bytes, const char* prefix, std::size_t length) {
  return bytes.size() >= length && bytes.compare(0, length, prefix, length) == 0;
}

// The value of encoding="..." in the XML declaration at the start of
// `bytes`, upper case; "" if there is none.
std::string declaredEncoding(const std::string& bytes) {
  if (!startsWith(bytes, "<?xml", 5)) {
    return std::string();
  }
  const std::size_t end = bytes.find("?>");
  std::size_t at = bytes.find("encoding", 5);
  if (end == std::string::npos || at == std::string::npos || at > end) {
    return std::string();
  }
  at = bytes.find_first_of("\"'", at);
  if (at == std::string::npos || at > end) {
    return std::string();
  }
  const std::size_t close = bytes.find(bytes[at], at + 1);
  if (close == std::string::npos || close > end) {
    return std::string();
  }
  std::string name = bytes.substr(at + 1, close - at - 1);
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return name;
}

bool isOneOf(const std::string& name, std::initializer_list<const char*> names) {
  return std::any_of(names.begin(), names.end(), [&](const char* known) { return name == known; });
}

void appendUtf8(std::string& out, std::uint32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

// The code point of the UTF-8 sequence at `at`, which it passes; a byte that
// starts no sequence stands for itself.
std::uint32_t nextCodePoint(const std::string& utf8, std::size_t& at) {
  const auto lead = static_cast<unsigned char>(utf8[at++]);
  const int trailing = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
  if (trailing == 0 || at + trailing > utf8.size()) {
    return lead;
  }
  std::uint32_t code = lead & (0x3F >> trailing);
  for (int i = 0; i < trailing; ++i) {
    code = (code << 6) | (static_cast<unsigned char>(utf8[at++]) & 0x3F);
  }
  return code;
}

std::string reference(std::uint32_t code) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "&#x%X;", static_cast<unsigned>(code));
  return buffer;
}

ParsingError refusal(const std::string& why) {
  return ParsingError("the file cannot be edited: " + why);
}

}  // namespace

MarkupEncoding MarkupEncoding::of(const std::string& fileBytes) {
  if (startsWith(fileBytes, "\xEF\xBB\xBF", 3)) {
    return MarkupEncoding(Kind::utf8, "UTF-8", false);
  }
  if (startsWith(fileBytes, "\xFF\xFE", 2) || startsWith(fileBytes, "<\0?\0", 4)) {
    return MarkupEncoding(Kind::utf16le, "UTF-16LE", fileBytes[0] != '<');
  }
  if (startsWith(fileBytes, "\xFE\xFF", 2) || startsWith(fileBytes, "\0<\0?", 4)) {
    return MarkupEncoding(Kind::utf16be, "UTF-16BE", fileBytes[0] != '\0');
  }
  const std::string name = declaredEncoding(fileBytes);
  if (name.empty() || isOneOf(name, {"UTF-8", "UTF8"})) {
    return MarkupEncoding(Kind::utf8, "UTF-8", false);
  }
  if (isOneOf(name, {"ISO-8859-1", "ISO8859-1", "ISO_8859-1", "LATIN1", "LATIN-1", "L1"})) {
    return MarkupEncoding(Kind::latin1, name, false);
  }
  // The other encodings whose first 128 characters are ASCII: the editor
  // writes every other character as a reference, which needs no table.
  if (isOneOf(name, {"US-ASCII", "ASCII"}) || name.rfind("ISO-8859-", 0) == 0 ||
      name.rfind("ISO8859-", 0) == 0 || name.rfind("WINDOWS-125", 0) == 0) {
    return MarkupEncoding(Kind::ascii, name, false);
  }
  throw refusal("it is in the encoding \"" + name +
                "\"; files in UTF-8, UTF-16, US-ASCII, ISO-8859-n or windows-125n can be edited");
}

std::string MarkupEncoding::toWorkingText(const std::string& fileBytes) const {
  if (kind != Kind::utf16le && kind != Kind::utf16be) {
    return fileBytes;
  }
  const std::size_t start = byteOrderMark ? 2 : 0;
  if ((fileBytes.size() - start) % 2 != 0) {
    throw refusal("its UTF-16 has an odd number of bytes");
  }
  const int high = kind == Kind::utf16be ? 0 : 1;
  auto unitAt = [&](std::size_t at) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(fileBytes[at + high]) << 8 |
                                      static_cast<unsigned char>(fileBytes[at + 1 - high]));
  };
  std::string text;
  text.reserve(fileBytes.size());
  for (std::size_t at = start; at < fileBytes.size(); at += 2) {
    std::uint32_t code = unitAt(at);
    if (code >= 0xD800 && code < 0xDC00 && at + 2 < fileBytes.size()) {
      const std::uint32_t low = unitAt(at + 2);
      if (low >= 0xDC00 && low < 0xE000) {
        code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        at += 2;
      }
    }
    if (code >= 0xD800 && code < 0xE000) {
      throw refusal("its UTF-16 holds a lone surrogate");
    }
    appendUtf8(text, code);
  }
  return text;
}

std::string MarkupEncoding::toFileBytes(const std::string& workingText) const {
  if (kind != Kind::utf16le && kind != Kind::utf16be) {
    return workingText;
  }
  std::string bytes;
  bytes.reserve(workingText.size() * 2 + 2);
  auto appendUnit = [&](std::uint32_t unit) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes += kind == Kind::utf16be ? high : low;
    bytes += kind == Kind::utf16be ? low : high;
  };
  if (byteOrderMark) {
    appendUnit(0xFEFF);
  }
  for (std::size_t at = 0; at < workingText.size();) {
    const std::uint32_t code = nextCodePoint(workingText, at);
    if (code >= 0x10000) {
      appendUnit(0xD800 + ((code - 0x10000) >> 10));
      appendUnit(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
      appendUnit(code);
    }
  }
  return bytes;
}

std::string MarkupEncoding::escapeText(const std::string& utf8) const {
  return escape(utf8, 0);
}

std::string MarkupEncoding::escapeAttribute(const std::string& utf8, char quote) const {
  return escape(utf8, quote);
}

std::string MarkupEncoding::escape(const std::string& utf8, char quote) const {
  const std::uint32_t largest = kind == Kind::latin1 ? 0xFF : kind == Kind::ascii ? 0x7F : 0;
  std::string out;
  out.reserve(utf8.size() + utf8.size() / 8);
  for (std::size_t at = 0; at < utf8.size();) {
    const char c = utf8[at];
    if (static_cast<unsigned char>(c) >= 0x80) {
      const std::size_t start = at;
      const std::uint32_t code = nextCodePoint(utf8, at);
      if (largest == 0) {
        out.append(utf8, start, at - start);
      } else if (code <= largest) {
        out += static_cast<char>(code);
      } else {
        out += reference(code);
      }
      continue;
    }
    ++at;
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '\r':
        out += "&#xD;";
        break;
      case '"':
        out += quote == '"' ? "&quot;" : "\"";
        break;
      case '\'':
        out += quote == '\'' ? "&apos;" : "'";
        break;
      // An attribute value's tabs and line ends would be read as spaces.
      case '\t':
        out += quote != 0 ? "&#x9;" : "\t";
        break;
      case '\n':
        out += quote != 0 ? "&#xA;" : "\n";
        break;
      default:
        out += c;
    }
  }
  return out;
}

}  // namespace XercesXML
