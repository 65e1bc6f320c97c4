#include "PoReader.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "BinaryFiles.h"
#include "DocumentCharacters.h"
#include "ToolError.h"
#include "platform/InputLimits.h"

namespace msgtool {

namespace {

bool startsWith(const std::string& text, const char* prefix) {
  return text.rfind(prefix, 0) == 0;
}

std::string trim(const std::string& text) {
  std::size_t begin = text.find_first_not_of(" \t\r");
  if (begin == std::string::npos) {
    return std::string();
  }
  std::size_t end = text.find_last_not_of(" \t\r");
  return text.substr(begin, end - begin + 1);
}

}  // namespace

PoReader::PoReader(std::string path) : path(std::move(path)) {}

PoFile PoReader::read() {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    throw ToolError(path, 0, "is a folder, not a PO file");
  }
  if (std::filesystem::file_size(path, error) > msg::limits::kMaxTranslatorsFileBytes && !error) {
    throw ToolError(
        path, 0,
        "is larger than " + std::to_string(msg::limits::kMaxTranslatorsFileBytes >> 20) + " MiB");
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw ToolError(path, 0, std::string("cannot be read: ") + std::strerror(errno));
  }
  std::ostringstream whole;
  whole << in.rdbuf();
  std::string bytes = whole.str();
  if (looksBinary(bytes.substr(0, kSniffBytes), false)) {
    throw ToolError(path, 0, "is a binary file, not a PO file");
  }
  std::size_t bad = firstNonUtf8(bytes);
  if (bad != std::string::npos) {
    int badLine = 1 + static_cast<int>(
                          std::count(bytes.begin(), bytes.begin() + static_cast<long>(bad), '\n'));
    throw ToolError(path, badLine,
                    "holds bytes that are not UTF-8; convert the file to UTF-8 (msgconv -t UTF-8)");
  }
  std::istringstream lines(bytes);
  std::string text;
  while (std::getline(lines, text)) {
    ++line;
    readLine(text);
  }
  finishEntry();
  checkCharset();
  return std::move(file);
}

void PoReader::fail(const std::string& message) const {
  throw ToolError(path, line, message);
}

void PoReader::readLine(const std::string& raw) {
  std::string text = trim(raw);
  if (text.empty()) {
    finishEntry();
    return;
  }
  if (startsWith(text, "#~") || startsWith(text, "#|")) {
    return;  // obsolete entries and previous msgids are not imported
  }
  if (text[0] == '#') {
    if (part != Part::none) {
      finishEntry();
    }
    readComment(text);
    return;
  }
  if (text[0] == '"') {
    if (part == Part::none) {
      fail("a string stands outside an entry");
    }
    *target() += parseString(text, 0);
    return;
  }
  std::size_t space = text.find_first_of(" \t");
  std::string keyword = text.substr(0, space);
  if (space == std::string::npos) {
    fail("'" + keyword + "' has no string after it");
  }
  readKeyword(keyword);
  *target() = parseString(text, space);
}

void PoReader::readKeyword(const std::string& keyword) {
  if (keyword == "msgctxt") {
    if (part == Part::str || part == Part::form) {
      finishEntry();
    } else if (part != Part::none) {
      fail("msgctxt must come before msgid");
    }
    entry.line = line;
    part = Part::context;
    entry.context = std::string();
  } else if (keyword == "msgid") {
    if (part == Part::str || part == Part::form) {
      finishEntry();
    } else if (part == Part::id || part == Part::idPlural) {
      fail("msgid follows msgid without a msgstr in between");
    }
    if (part == Part::none) {
      entry.line = line;
    }
    part = Part::id;
  } else if (keyword == "msgstr") {
    if (part == Part::idPlural) {
      fail("a plural entry has msgstr[0], msgstr[1] ..., not msgstr");
    }
    if (part != Part::id) {
      fail("msgstr without a msgid before it");
    }
    part = Part::str;
  } else if (keyword == "msgid_plural") {
    if (part != Part::id) {
      fail("msgid_plural without a msgid before it");
    }
    part = Part::idPlural;
    entry.idPlural.emplace();
  } else if (startsWith(keyword, "msgstr[")) {
    readFormKeyword(keyword);
  } else {
    fail("unknown keyword '" + keyword + "'");
  }
}

void PoReader::readFormKeyword(const std::string& keyword) {
  if (part != Part::idPlural && part != Part::form) {
    fail("'" + keyword + "' without a msgid_plural before it");
  }
  const std::string expected = "msgstr[" + std::to_string(entry.forms.size()) + "]";
  if (keyword != expected) {
    fail("'" + keyword + "' where " + expected + " was expected");
  }
  part = Part::form;
  entry.forms.emplace_back();
}

void PoReader::readComment(const std::string& text) {
  char kind = text.size() > 1 ? text[1] : ' ';
  std::string rest = trim(text.substr(std::min<std::size_t>(text.size(), 2)));
  if (kind == '.') {
    entry.extractedComments.push_back(rest);
  } else if (kind == ':') {
    entry.references.push_back(rest);
  } else if (kind == ',') {
    std::istringstream flags(rest);
    std::string flag;
    while (std::getline(flags, flag, ',')) {
      if (!trim(flag).empty()) {
        entry.flags.push_back(trim(flag));
      }
    }
  } else {
    entry.translatorComments.push_back(kind == ' ' ? rest : trim(text.substr(1)));
  }
}

std::string* PoReader::target() {
  if (part == Part::context) {
    return &*entry.context;
  }
  if (part == Part::idPlural) {
    return &*entry.idPlural;
  }
  if (part == Part::form) {
    return &entry.forms.back();
  }
  return part == Part::id ? &entry.id : &entry.str;
}

std::string PoReader::parseString(const std::string& text, std::size_t from) {
  std::size_t i = text.find_first_not_of(" \t", from);
  if (i == std::string::npos || text[i] != '"') {
    fail("a string must begin with '\"'");
  }
  std::string value;
  for (++i; i < text.size(); ++i) {
    char c = text[i];
    if (c == '"') {
      i = text.find_first_not_of(" \t\r", i + 1);
      if (i == std::string::npos) {
        return value;
      }
      if (text[i] != '"') {
        fail("unexpected text after the closing '\"'");
      }
      continue;
    }
    if (c != '\\') {
      value += c;
      continue;
    }
    if (++i == text.size()) {
      break;
    }
    i = readEscape(text, i, value);
  }
  fail("the string has no closing '\"'");
}

std::size_t PoReader::readEscape(const std::string& text, std::size_t i, std::string& value) {
  static const std::string kLetters = "ntrabfv\\\"'?";
  static const std::string kMeanings = "\n\t\r\a\b\f\v\\\"'?";
  char c = text[i];
  std::size_t known = kLetters.find(c);
  if (known != std::string::npos) {
    value += kMeanings[known];
    return i;
  }
  if (c >= '0' && c <= '7') {
    int code = 0;
    std::size_t end = i;
    while (end < text.size() && end < i + 3 && text[end] >= '0' && text[end] <= '7') {
      code = code * 8 + (text[end++] - '0');
    }
    value += static_cast<char>(code);
    return end - 1;
  }
  if (c == 'x' && i + 1 < text.size() && std::isxdigit(static_cast<unsigned char>(text[i + 1]))) {
    // Unsigned, so that a long run of digits wraps rather than overflows;
    // only the low byte is kept, as for a C string.
    unsigned code = 0;
    std::size_t end = i + 1;
    while (end < text.size() && std::isxdigit(static_cast<unsigned char>(text[end]))) {
      code = code * 16 + static_cast<unsigned>(std::stoi(std::string(1, text[end++]), nullptr, 16));
    }
    value += static_cast<char>(code);
    return end - 1;
  }
  fail(std::string("unknown escape sequence '\\") + c + "'");
}

void PoReader::finishEntry() {
  if (part == Part::none) {
    return;
  }
  if (part == Part::idPlural) {
    throw ToolError(path, entry.line, "the plural entry has no msgstr[0]");
  }
  if (part != Part::str && part != Part::form) {
    throw ToolError(path, entry.line, "the entry has no msgstr");
  }
  if (entry.id.empty() && !entry.context && !headerSeen && file.entries.empty()) {
    readHeader();
  } else {
    file.entries.push_back(std::move(entry));
  }
  entry = PoEntry();
  part = Part::none;
}

void PoReader::readHeader() {
  headerSeen = true;
  headerLine = entry.line;
  file.headerComments = entry.translatorComments;
  std::istringstream fields(entry.str);
  std::string field;
  while (std::getline(fields, field)) {
    std::size_t colon = field.find(':');
    if (colon != std::string::npos) {
      file.header.emplace_back(trim(field.substr(0, colon)), trim(field.substr(colon + 1)));
    }
  }
}

void PoReader::checkCharset() const {
  std::string type = file.headerField("Content-Type");
  std::size_t at = type.find("charset=");
  if (at == std::string::npos) {
    return;  // no header: the bytes were checked to be UTF-8
  }
  std::string charset = trim(type.substr(at + 8));
  std::string lower;
  for (char c : charset) {
    lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  if (lower != "utf-8" && lower != "utf8" && lower != "charset" && lower != "ascii" &&
      lower != "us-ascii") {
    throw ToolError(
        path, headerLine,
        "the charset is " + charset + ", not UTF-8; convert the file (msgconv -t UTF-8)");
  }
}

}  // namespace msgtool
