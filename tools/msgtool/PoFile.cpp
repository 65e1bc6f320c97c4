#include "PoFile.h"

#include <algorithm>
#include <vector>

#include "PoReader.h"

namespace msgtool {

namespace {

constexpr std::size_t kLineWidth = 79;  // gettext's default page width

std::string escape(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '\\':
        out += "\\\\";
        break;
      case '"':
        out += "\\\"";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\a':
        out += "\\a";
        break;
      case '\b':
        out += "\\b";
        break;
      case '\f':
        out += "\\f";
        break;
      case '\v':
        out += "\\v";
        break;
      default:
        out += c;
    }
  }
  return out;
}

// Cuts an escaped piece into lines of at most `room` bytes, each ending
// after a space where possible.
std::vector<std::string> wrap(const std::string& piece, std::size_t room) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  while (piece.size() - begin > room) {
    std::size_t cut = piece.rfind(' ', begin + room - 1);
    if (cut == std::string::npos || cut < begin) {
      break;
    }
    lines.push_back(piece.substr(begin, cut + 1 - begin));
    begin = cut + 1;
  }
  lines.push_back(piece.substr(begin));
  return lines;
}

void writeString(std::ostream& out, const char* keyword, const std::string& value) {
  std::vector<std::string> pieces;
  std::size_t begin = 0;
  while (begin < value.size()) {
    std::size_t end = value.find('\n', begin);
    end = end == std::string::npos ? value.size() : end + 1;
    pieces.push_back(escape(value.substr(begin, end - begin)));
    begin = end;
  }
  std::string keywordText(keyword);
  if (pieces.size() <= 1) {
    std::string single = pieces.empty() ? std::string() : pieces[0];
    if (keywordText.size() + single.size() + 3 <= kLineWidth) {
      out << keyword << " \"" << single << "\"\n";
      return;
    }
  }
  out << keyword << " \"\"\n";
  for (const std::string& piece : pieces) {
    for (const std::string& line : wrap(piece, kLineWidth - 2)) {
      out << '"' << line << "\"\n";
    }
  }
}

}  // namespace

bool PoEntry::hasFlag(const std::string& flag) const {
  return std::find(flags.begin(), flags.end(), flag) != flags.end();
}

PoFile PoFile::read(const std::string& path) {
  return PoReader(path).read();
}

std::string PoFile::headerField(const std::string& name) const {
  for (const auto& [fieldName, value] : header) {
    if (fieldName == name) {
      return value;
    }
  }
  return std::string();
}

void PoFile::write(std::ostream& out) const {
  for (const std::string& comment : headerComments) {
    out << "# " << comment << '\n';
  }
  std::string fields;
  for (const auto& [name, value] : header) {
    fields += name + ": " + value + "\n";
  }
  out << "msgid \"\"\n";
  writeString(out, "msgstr", fields);
  for (const PoEntry& entry : entries) {
    out << '\n';
    for (const std::string& comment : entry.translatorComments) {
      out << "# " << comment << '\n';
    }
    for (const std::string& comment : entry.extractedComments) {
      out << "#. " << comment << '\n';
    }
    for (const std::string& reference : entry.references) {
      out << "#: " << reference << '\n';
    }
    if (!entry.flags.empty()) {
      out << "#,";
      for (std::size_t i = 0; i < entry.flags.size(); ++i) {
        out << (i == 0 ? " " : ", ") << entry.flags[i];
      }
      out << '\n';
    }
    if (entry.context) {
      writeString(out, "msgctxt", *entry.context);
    }
    writeString(out, "msgid", entry.id);
    if (!entry.idPlural) {
      writeString(out, "msgstr", entry.str);
      continue;
    }
    writeString(out, "msgid_plural", *entry.idPlural);
    for (std::size_t i = 0; i < entry.forms.size(); ++i) {
      writeString(out, ("msgstr[" + std::to_string(i) + "]").c_str(), entry.forms[i]);
    }
  }
}

}  // namespace msgtool
