// Writes the benchmark catalogue in the source format of every contender:
//
//   messages.xml + messages-part.xml  our message document (naming the schema
//                                     messages.xsd beside it) with the second
//                                     half of the keys in one xi:include part
//   po/<lang>.po                      gettext sources for msgfmt
//   icu/<locale>.txt                  ICU resource bundle sources for genrb
//                                     (root holds English, so ICU's own
//                                     de_AT -> de -> root fallback applies)
//
// Usage: generate_catalogue OUTPUT_DIR [KEY_COUNT]
// The content comes from CatalogueData and is the same on every run.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "CatalogueData.h"

namespace {

using msg_bench::Entry;
using msg_bench::PlaceholderSyntax;

const char* const kSeverityWords[] = {"info", "warning", "error", "abort"};

std::string escapeXml(const std::string& text) {
  std::string out;
  for (char c : text) {
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
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

// Quoted string for a .po file or an ICU .txt bundle; both escape the same
// two characters.
std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
    }
    out += c;
  }
  return out + "\"";
}

void writeMessages(std::ostream& out, std::size_t begin, std::size_t end) {
  for (std::size_t i = begin; i < end; ++i) {
    const Entry entry = msg_bench::makeEntry(i);
    out << "    <Message id=\"" << entry.identifier << "\" severity=\"" << kSeverityWords[i % 4]
        << "\">\n";
    out << "      <Text xml:lang=\"en\">"
        << escapeXml(entry.english.render(PlaceholderSyntax::kMsg)) << "</Text>\n";
    out << "      <Text xml:lang=\"de\">" << escapeXml(entry.german.render(PlaceholderSyntax::kMsg))
        << "</Text>\n";
    if (msg_bench::hasAustrianText(i)) {
      out << "      <Text xml:lang=\"de-AT\">"
          << escapeXml(entry.austrian.render(PlaceholderSyntax::kMsg)) << "</Text>\n";
    }
    out << "    </Message>\n";
  }
}

void writeDocument(const std::string& dir, std::size_t keyCount) {
  const std::size_t half = keyCount / 2;
  std::ofstream main(dir + "/messages.xml");
  main << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
       << "<MessageCollection xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
       << "                   xmlns:xi=\"http://www.w3.org/2001/XInclude\"\n"
       << "                   xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n"
       << "  <MessageNamespace name=\"" << msg_bench::kNamespace << "\">\n";
  writeMessages(main, 0, half);
  main << "  </MessageNamespace>\n"
       << "  <xi:include href=\"messages-part.xml\"/>\n"
       << "</MessageCollection>\n";

  std::ofstream part(dir + "/messages-part.xml");
  part << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
       << "<MessageNamespace name=\"" << msg_bench::kNamespace << "\">\n";
  writeMessages(part, half, keyCount);
  part << "</MessageNamespace>\n";
}

enum class Which : std::uint8_t { kEnglish, kGerman, kAustrian };

const msg_bench::Text* textOf(const Entry& entry, std::size_t index, Which which) {
  switch (which) {
    case Which::kEnglish:
      return &entry.english;
    case Which::kGerman:
      return &entry.german;
    case Which::kAustrian:
      return msg_bench::hasAustrianText(index) ? &entry.austrian : nullptr;
  }
  return nullptr;
}

void writePo(const std::string& path, std::size_t keyCount, Which which) {
  std::ofstream out(path);
  out << "msgid \"\"\nmsgstr \"\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n\n";
  for (std::size_t i = 0; i < keyCount; ++i) {
    const Entry entry = msg_bench::makeEntry(i);
    const msg_bench::Text* text = textOf(entry, i, which);
    if (text != nullptr) {
      out << "msgid " << quoted(entry.identifier) << "\nmsgstr "
          << quoted(text->render(PlaceholderSyntax::kPrintf)) << "\n\n";
    }
  }
}

void writeBundle(const std::string& path, const char* locale, std::size_t keyCount, Which which) {
  std::ofstream out(path);
  out << locale << ":table {\n";
  for (std::size_t i = 0; i < keyCount; ++i) {
    const Entry entry = msg_bench::makeEntry(i);
    const msg_bench::Text* text = textOf(entry, i, which);
    if (text != nullptr) {
      out << "  " << entry.identifier << " { " << quoted(text->render(PlaceholderSyntax::kBraces))
          << " }\n";
    }
  }
  out << "}\n";
}

}  // namespace

int main(int argc, char** argv) {
  // "po" as the last argument writes the gettext sources alone: the
  // million-key catalogue needs no document or ICU bundle.
  const bool poOnly = argc == 4 && std::string(argv[3]) == "po";
  if (argc < 2 || argc > 4 || (argc == 4 && !poOnly)) {
    std::cerr << "usage: " << argv[0] << " OUTPUT_DIR [KEY_COUNT [po]]\n";
    return 2;
  }
  const std::string dir = argv[1];
  const std::size_t keyCount =
      argc >= 3 ? std::strtoul(argv[2], nullptr, 10) : msg_bench::kStandardKeyCount;

  std::filesystem::create_directories(dir + "/po");
  writePo(dir + "/po/en.po", keyCount, Which::kEnglish);
  writePo(dir + "/po/de.po", keyCount, Which::kGerman);
  writePo(dir + "/po/de_AT.po", keyCount, Which::kAustrian);
  if (!poOnly) {
    std::filesystem::create_directories(dir + "/icu");
    writeDocument(dir, keyCount);
    writeBundle(dir + "/icu/root.txt", "root", keyCount, Which::kEnglish);
    writeBundle(dir + "/icu/de.txt", "de", keyCount, Which::kGerman);
    writeBundle(dir + "/icu/de_AT.txt", "de_AT", keyCount, Which::kAustrian);
  }
  std::cout << "wrote " << keyCount << " keys to " << dir << "\n";
  return 0;
}
