// Loads one bad (or merely unusual) input through
// MessageHandlerX::loadMessageDocument and reports what happened.
//
//   bad_input_probe <case>     run one case; exit 0 if it ends as expected
//   bad_input_probe --list     the case names, one a line
//
// Each case makes its input at run time in a scratch folder beside a copy of
// the schema, after the process-wide handler loaded a small document (the
// "msgx" report texts and three entries). One line of key=value pairs tells
// the outcome, the report written, the time of the load, the peak resident
// memory before and after it, and whether the three entries are still found.
// A crash or a hang shows from outside (exit status, timeout).

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "msg/msg.h"
#include "tests/catalogue_support.h"

namespace fs = std::filesystem;

namespace {

const char kRoot[] =
    "<MessageCollection xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
    "    xmlns:xi=\"http://www.w3.org/2001/XInclude\"\n"
    "    xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n";
const char kUtf8Declaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// A document with `body` under MessageCollection.
std::string document(const std::string& body) {
  return std::string(kUtf8Declaration) + kRoot + body + "</MessageCollection>\n";
}

std::string message(const std::string& id, const std::string& text) {
  return "<Message id=\"" + id + "\"><Text xml:lang=\"en\">" + text + "</Text></Message>\n";
}

// The namespace "case" holding one message.
std::string caseOf(const std::string& id, const std::string& text) {
  return "<MessageNamespace name=\"case\">" + message(id, text) + "</MessageNamespace>\n";
}

const char* const kKeptIds[] = {"first", "second", "third"};

std::string keptText(const char* id) {
  return std::string("kept ") + id;
}

// The document loaded before every case.
std::string baseDocument() {
  std::string body = "<MessageNamespace name=\"msgx\">\n" +
                     message("MessageDocumentError", "Cannot load &amp;0.") +
                     message("NoMessageCollection", "No catalogue in &amp;0.") +
                     "</MessageNamespace>\n" + "<MessageNamespace name=\"kept\">\n";
  for (const char* id : kKeptIds) {
    body += message(id, keptText(id));
  }
  return document(body + "</MessageNamespace>\n");
}

void writeFile(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// What a case expects of the load.
enum class Outcome : std::uint8_t { loaded, documentError, noCollection };

struct Case {
  const char* name;
  Outcome expected;
  // Makes the input in `dir` and returns the path to load.
  std::function<fs::path(const fs::path& dir)> make;
};

fs::path writeInput(const fs::path& dir, const std::string& bytes) {
  writeFile(dir / "input.xml", bytes);
  return dir / "input.xml";
}

// A case whose input is `bytes` in input.xml.
std::function<fs::path(const fs::path&)> input(std::string bytes) {
  return [bytes = std::move(bytes)](const fs::path& dir) { return writeInput(dir, bytes); };
}

// A valid document of `count` messages with texts of about `textBytes`
// bytes, each with a placeholder (written "&amp;0") if `placeholders`.
// Written piece by piece, so the probe itself never holds it.
fs::path writeLarge(const fs::path& dir, int count, std::size_t textBytes, bool placeholders) {
  std::ofstream out(dir / "input.xml", std::ios::binary);
  out << kUtf8Declaration << kRoot << "<MessageNamespace name=\"large\">\n";
  const std::string filler(textBytes, 'x');
  for (int i = 0; i < count; ++i) {
    out << message("m" + std::to_string(i),
                   (placeholders ? "Text &amp;0 of message " : "Text of message ") +
                       std::to_string(i) + filler);
  }
  out << "</MessageNamespace>\n</MessageCollection>\n";
  return dir / "input.xml";
}

std::string repeated(const std::string& piece, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) {
    all += piece;
  }
  return all;
}

std::string utf16le(const std::string& ascii) {
  std::string out = "\xFF\xFE";
  for (char c : ascii) {
    out += c;
    out += '\0';
  }
  return out;
}

std::vector<Case> cases() {
  const std::string valid = document(caseOf("fine", "a fine text"));
  return {
      {"missing_file", Outcome::documentError,
       [](const fs::path& dir) { return dir / "absent.xml"; }},
      {"folder", Outcome::documentError, [](const fs::path& dir) { return dir; }},
      {"empty_file", Outcome::documentError, input("")},
      {"bom_only", Outcome::documentError, input("\xEF\xBB\xBF")},
      {"binary_garbage", Outcome::documentError,
       [](const fs::path& dir) {
         std::mt19937 random(20240611);
         std::string bytes(4096, '\0');
         for (char& c : bytes) {
           c = static_cast<char>(random() & 0xFF);
         }
         return writeInput(dir, bytes);
       }},
      // "&#xFC;" keeps the source ASCII; the parser sees a UTF-16 file.
      {"utf16_declared", Outcome::loaded,
       input(utf16le("<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n" + std::string(kRoot) +
                     caseOf("fine", "Gr&#xFC;&#xDF;e") + "</MessageCollection>\n"))},
      {"latin1_declared", Outcome::loaded,
       input("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n" + std::string(kRoot) +
             caseOf("fine", "Gr\374\337e") + "</MessageCollection>\n")},
      {"broken_first_byte", Outcome::documentError, input("!" + valid.substr(1))},
      // "</MessageCollection!", without the final line feed.
      {"broken_last_byte", Outcome::documentError, input(valid.substr(0, valid.size() - 2) + "!")},
      {"schema_invalid", Outcome::documentError,
       input(
           document("<MessageNamespace name=\"case\"><Message id=\"x\">"
                    "<Text lang=\"de\">lang without xml:</Text></Message></MessageNamespace>\n"))},
      {"schema_missing", Outcome::documentError,
       input(std::string(valid).replace(valid.find("messages.xsd"), 12, "nowhere.xsd"))},
      {"include_missing_part", Outcome::documentError,
       input(document("<xi:include href=\"absent-part.xml\"/>\n"))},
      {"include_itself", Outcome::documentError,
       input(document("<xi:include href=\"input.xml\"/>\n"))},
      {"include_each_other", Outcome::documentError,
       [](const fs::path& dir) {
         writeFile(dir / "other.xml",
                   std::string(kUtf8Declaration) +
                       "<MessageNamespace xmlns:xi=\"http://www.w3.org/2001/XInclude\" name=\"o\">"
                       "<xi:include href=\"input.xml\"/></MessageNamespace>\n");
         return writeInput(dir, document("<xi:include href=\"other.xml\"/>\n"));
       }},
      {"large_50mb_200k_messages", Outcome::loaded,
       [](const fs::path& dir) { return writeLarge(dir, 200000, 230, false); }},
      {"large_50mb_200k_messages_with_placeholders", Outcome::loaded,
       [](const fs::path& dir) { return writeLarge(dir, 200000, 220, true); }},
      {"nested_200k_elements", Outcome::documentError,
       input(document(caseOf("fine", "before the depth") + repeated("<Deep>", 200000) +
                      repeated("</Deep>", 200000) + "\n"))},
      {"entity_expansion_bomb", Outcome::documentError,
       input(kUtf8Declaration + test_support::entityBomb("MessageCollection") + kRoot +
             caseOf("bomb", "&l9;") + "</MessageCollection>\n")},
      {"external_entity_local_file", Outcome::documentError,
       [](const fs::path& dir) {
         // Every element and attribute (also those the round trip adds) is
         // declared, so both parses would pass validation: only the refusal
         // of the entity stops the load. The DOCTYPE names a root of its own,
         // as one named MessageCollection would be taken for the collection.
         writeFile(dir / "secret.txt", "contents of a local file");
         const std::string common = " xmlns CDATA #IMPLIED xmlns:xml CDATA #IMPLIED";
         return writeInput(
             dir, std::string(kUtf8Declaration) + "<!DOCTYPE Wrapper [\n" +
                      "<!ELEMENT Wrapper ANY><!ATTLIST Wrapper" + common + ">\n" +
                      "<!ELEMENT MessageCollection ANY><!ATTLIST MessageCollection" + common +
                      ">\n" + "<!ELEMENT MessageNamespace ANY>" +
                      "<!ATTLIST MessageNamespace name CDATA #IMPLIED" + common + ">\n" +
                      "<!ELEMENT Message ANY><!ATTLIST Message id CDATA #IMPLIED" + common + ">\n" +
                      "<!ELEMENT Text (#PCDATA)><!ATTLIST Text xml:lang CDATA #IMPLIED" + common +
                      ">\n" + "<!ENTITY secret SYSTEM \"secret.txt\">\n]>\n" +
                      "<Wrapper><MessageCollection><MessageNamespace name=\"case\">" +
                      message("leak", "&secret;") +
                      "</MessageNamespace></MessageCollection></Wrapper>\n");
       }},
      {"quadratic_blowup", Outcome::documentError,
       input(kUtf8Declaration + std::string("<!DOCTYPE MessageCollection [<!ENTITY big \"") +
             std::string(50000, 'x') + "\">]>\n" + kRoot + caseOf("big", repeated("&big;", 20000)) +
             "</MessageCollection>\n")},
      {"include_outside_folder", Outcome::documentError,
       [](const fs::path& dir) {
         fs::create_directories(dir / "docs");
         fs::copy_file(dir / "messages.xsd", dir / "docs" / "messages.xsd");
         writeFile(dir / "outside.xml", caseOf("leak", "outside the folder"));
         writeFile(dir / "docs" / "input.xml", document("<xi:include href=\"../outside.xml\"/>\n"));
         return dir / "docs" / "input.xml";
       }},
      {"include_part_with_doctype", Outcome::documentError,
       [](const fs::path& dir) {
         writeFile(dir / "part.xml",
                   "<!DOCTYPE MessageNamespace [<!ENTITY x \"x\">]>\n" + caseOf("leak", "&x;"));
         return writeInput(dir, document("<xi:include href=\"part.xml\"/>\n"));
       }},
      {"network_references", Outcome::documentError,
       [valid](const fs::path& dir) {
         // Port 9 (discard) on the loopback: nothing should ever ask.
         std::string bytes = valid;
         bytes.replace(bytes.find("messages.xsd"), 12, "http://127.0.0.1:9/messages.xsd");
         return writeInput(dir, bytes);
       }},
      {"schema_entity_bomb", Outcome::documentError,
       [valid](const fs::path& dir) {
         writeFile(dir / "bomb.xsd", test_support::entityBomb("xs:schema") +
                                         "<xs:schema "
                                         "xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">"
                                         "<xs:annotation><xs:documentation>&l9;"
                                         "</xs:documentation></xs:annotation></xs:schema>\n");
         std::string bytes = valid;
         bytes.replace(bytes.find("messages.xsd"), 12, "bomb.xsd");
         return writeInput(dir, bytes);
       }},
      {"text_1mb", Outcome::loaded, input(document(caseOf("long", std::string(1 << 20, 'y'))))},
  };
}

long peakResidentKb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

bool keptEntriesFound(const msg::MessageHandler& handler) {
  for (const char* id : kKeptIds) {
    std::unique_ptr<msg::Message> found(handler.getMessage("kept", id));
    if (found == nullptr || keptText(id) != found->getText()) {
      return false;
    }
  }
  return true;
}

int run(const Case& probe) {
  const fs::path dir = fs::temp_directory_path() / ("msg-bad-input-" + std::to_string(getpid()));
  fs::remove_all(dir);
  fs::create_directories(dir);
  fs::copy_file(fs::path(MSG_SOURCE_DIR) / "schema" / "messages.xsd", dir / "messages.xsd");
  writeFile(dir / "base.xml", baseDocument());

  msg::MessageHandlerX* handler = msg::MessageHandlerX::object();
  auto* channel = new test_support::RecordingChannel();
  handler->setMessageChannel(channel, true);
  handler->loadMessageDocument((dir / "base.xml").c_str());
  const fs::path input = probe.make(dir);
  const std::uint32_t entriesBefore = test_support::entryCount(*handler);
  const long peakBefore = peakResidentKb();

  std::string outcome;
  Outcome seen = Outcome::documentError;
  const auto start = std::chrono::steady_clock::now();
  try {
    handler->loadMessageDocument(input.c_str());
    seen = Outcome::loaded;
    outcome = "loaded";
  } catch (const msg::ErrorInMessageDocument& error) {
    outcome = std::string("ErrorInMessageDocument \"") + error.getText() + "\"";
    if (std::strncmp(error.getText(), "No MessageCollection", 20) == 0) {
      seen = Outcome::noCollection;
    }
  } catch (const std::exception& error) {
    outcome = std::string("other exception: ") + error.what();
  } catch (...) {
    outcome = "other exception of an unknown type";
  }
  const double milliseconds =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  const bool kept = keptEntriesFound(*handler);
  const bool asExpected = outcome.rfind("other", 0) != 0 && seen == probe.expected && kept;

  std::printf(
      "case=%s outcome=%s new_entries=%ld report=\"%s\" time_ms=%.1f peak_kb_before=%ld "
      "peak_kb_after=%ld kept_entries_found=%s\n",
      probe.name, outcome.c_str(),
      static_cast<long>(test_support::entryCount(*handler)) - static_cast<long>(entriesBefore),
      channel->lines.empty() ? "" : channel->lines.back().c_str(), milliseconds, peakBefore,
      peakResidentKb(), kept ? "yes" : "no");
  fs::remove_all(dir);
  return asExpected ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s <case> | --list\n", argv[0]);
    return 2;
  }
  for (const Case& probe : cases()) {
    if (std::strcmp(argv[1], "--list") == 0) {
      std::printf("%s\n", probe.name);
    } else if (std::strcmp(argv[1], probe.name) == 0) {
      return run(probe);
    }
  }
  return std::strcmp(argv[1], "--list") == 0 ? 0 : 2;
}
