// Compiled catalogues: the same records as the documents they come from,
// refusal of damaged files with the table left as it was, entries that stay
// valid for as long as their handler lives, and a load into the plain
// process-wide handler that leaves the XML system alone.

#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CatalogueData.h"
#include "compiled_catalogues/CompiledCatalogueFormat.h"
#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "message_core/MessageTable.h"
#include "message_documents/DocumentCompilation.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"
#include "msg/MessageHandlerX.h"
#include "tests/scratch_folder.h"
#include "xml_access/XMLSystem.h"

namespace {

using Bytes = std::vector<unsigned char>;

class Handler : public msg::MessageHandlerX {
 public:
  explicit Handler(msg::LanguageList languages) { setLanguageList(languages); }
  std::uint32_t entryCount() const { return messageTableOf(*this)->getCount(); }
};

// "text|severity|language" of a key, or "<none>".
std::string recordOf(const msg::MessageHandler& handler, const char* nameSpace, const char* id) {
  std::unique_ptr<msg::Message> record(handler.getMessage(nameSpace, id));
  if (record == nullptr) {
    return "<none>";
  }
  return std::string(record->getText()) + "|" + std::to_string(record->getSeverityLevel()) + "|" +
         record->getLanguage().toString();
}

class CompiledCatalogueTest : public ::testing::Test {
 protected:
  CompiledCatalogueTest() {
    std::filesystem::copy_file(MSG_SOURCE_DIR "/schema/messages.xsd", scratch / "messages.xsd");
  }

  // A document of namespace "app" with `body` (Message elements) inside.
  std::string document(const std::string& name, const std::string& body) {
    std::ofstream(dir + "/" + name)
        << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<MessageCollection xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
           "xsi:noNamespaceSchemaLocation=\"messages.xsd\"><MessageNamespace name=\"app\">"
        << body << "</MessageNamespace></MessageCollection>\n";
    return dir + "/" + name;
  }

  // For each language list: every key gives the same record from the
  // documents (loaded in order) as from the file compiled from them.
  void expectEquivalent(const std::vector<std::string>& documents,
                        const std::vector<std::string>& identifiers) {
    msg::CompiledCatalogueWriter writer;
    for (const std::string& path : documents) {
      msg::addMessageDocument(writer, path.c_str());
    }
    const std::string compiled = dir + "/app.msgc";
    writer.writeFile(compiled);
    const msg::Language austrianFirst[] = {msg::Language("de-AT"), msg::Language("de"),
                                           msg::Language("en")};
    const msg::LanguageList lists[] = {msg::LanguageList(msg::Language("en")),
                                       msg::LanguageList(msg::Language("de")),
                                       msg::LanguageList(3, austrianFirst)};
    for (const msg::LanguageList& languages : lists) {
      Handler fromDocuments(languages);
      Handler fromCompiled(languages);
      for (const std::string& path : documents) {
        fromDocuments.loadMessageDocument(path.c_str());
      }
      fromCompiled.loadCompiledCatalogue(compiled.c_str());
      EXPECT_EQ(fromCompiled.entryCount(), fromDocuments.entryCount());
      for (const std::string& id : identifiers) {
        ASSERT_EQ(recordOf(fromCompiled, "app", id.c_str()),
                  recordOf(fromDocuments, "app", id.c_str()))
            << id << " with " << languages.getLanguage(0).toString() << " first";
      }
    }
  }

  msg::MessageHandlerX xmlSystemKeeper;  // documents are read while it lives
  test_support::ScratchFolder scratch;
  const std::string dir = scratch.path().string();
};

TEST_F(CompiledCatalogueTest, GivesTheRecordsOfTheBenchmarkDocument) {
  std::string body;
  std::vector<std::string> identifiers;
  const char* const severities[] = {"info", "warning", "error", "abort"};
  for (std::size_t i = 0; i < msg_bench::kStandardKeyCount; ++i) {
    const msg_bench::Entry entry = msg_bench::makeEntry(i);
    const auto text = [](const char* tag, const msg_bench::Text& t) {
      std::string out = "<Text xml:lang=\"" + std::string(tag) + "\">";
      for (char c : t.render(msg_bench::PlaceholderSyntax::kMsg)) {
        out += c == '&' ? std::string("&amp;") : c == '<' ? std::string("&lt;") : std::string(1, c);
      }
      return out + "</Text>";
    };
    body += "<Message id=\"" + entry.identifier + "\" severity=\"" + severities[i % 4] + "\">" +
            text("en", entry.english) + text("de", entry.german) +
            (msg_bench::hasAustrianText(i) ? text("de-AT", entry.austrian) : "") + "</Message>";
    identifiers.push_back(entry.identifier);
  }
  expectEquivalent({document("messages.xml", body)}, identifiers);
}

TEST_F(CompiledCatalogueTest, KeepsReplacementsAndDropsWhatTheListDoesNotAccept) {
  const std::string first = document(
      "first.xml",
      "<Message id=\"twice\" severity=\"info\"><Text xml:lang=\"en\">first</Text>"
      "<Text xml:lang=\"fr\">premier</Text><Text xml:lang=\"de-AT-1996\">Erste</Text></Message>"
      "<Message id=\"once\"><Text>no language, no severity</Text></Message>");
  const std::string second =
      document("second.xml",
               "<Message id=\"twice\" severity=\"abort\"><Text xml:lang=\"en\">second</Text>"
               "<Text xml:lang=\"en\">last of the document</Text></Message>"
               "<Message id=\"french\"><Text xml:lang=\"fr\">seulement</Text></Message>");
  expectEquivalent({first, second}, {"twice", "once", "french"});
}

TEST_F(CompiledCatalogueTest, EntriesStayValidAfterReplacementAndRename) {
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "en", "app", "k", "old");
  const std::string path = dir + "/app.msgc";
  writer.writeFile(path);
  Handler handler(msg::LanguageList(msg::Language("en")));
  handler.loadCompiledCatalogue(path.c_str());
  std::unique_ptr<msg::Message> old(handler.getMessage("app", "k"));

  // A new file renamed over the mapped one, loaded again: the old mapping
  // and the replaced entry live on with the handler.
  writer.add(msg::warning, "en", "app", "k", "new");
  writer.writeFile(path);
  handler.loadCompiledCatalogue(path.c_str());
  EXPECT_EQ(recordOf(handler, "app", "k"), "new|1|en");
  EXPECT_STREQ(old->getText(), "old");
  EXPECT_EQ(handler.entryCount(), 1u);
}

TEST_F(CompiledCatalogueTest, ALanguageTwiceInOneKeyIsReplacedAsInAnyLoad) {
  // Writers keep one text per key and language; a file from elsewhere may
  // hold two. Here "de" becomes a second "en": the later of the two in the
  // file wins, and the key keeps two entries.
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "en", "app", "k", "first");
  writer.add(msg::info, "de-AT", "app", "k", "mittel");
  writer.add(msg::warning, "de", "app", "k", "last");
  Bytes bytes = writer.bytes();
  using namespace msg::compiled;
  const std::uint32_t entrySize = readU32(bytes.data() + kEntrySizeOffset);
  unsigned char* entries = bytes.data() + readU32(bytes.data() + kEntryTableOffset);
  bool patchedIsLater = false;
  for (std::uint32_t i = 0; i < 3; ++i) {
    unsigned char* language = entries + i * entrySize + kEntryLanguage;
    const std::string tag(reinterpret_cast<const char*>(language));
    if (tag == "en") {
      patchedIsLater = false;
    } else if (tag == "de") {
      std::memcpy(language, "en\0", 3);
      patchedIsLater = true;
    }
  }
  writeU64(bytes.data() + kChecksumOffset, checksumOf(bytes.data(), bytes.size()));
  const std::string path = scratch.write("twice.msgc", std::string(bytes.begin(), bytes.end()));

  Handler handler(msg::LanguageList{"en", "de-AT"});
  handler.loadCompiledCatalogue(path.c_str());
  EXPECT_EQ(handler.entryCount(), 2u);
  EXPECT_EQ(recordOf(handler, "app", "k"), patchedIsLater ? "last|1|en" : "first|0|en");
}

// Keeps each message written through it as "namespace:identifier".
class RecordingChannel : public msg::MessageChannel {
 public:
  std::vector<std::string> lines;

 protected:
  void onMessage(const msg::Message& message) override {
    lines.push_back(std::string(message.getNamespace()) + ":" + message.getIdentifier());
  }
};

// A valid file with one key, made damaged by `damage`, is refused with the
// report, the exception and its problem, and the table as it was.
void expectRefused(const std::string& path, const std::string& why) {
  Handler handler(msg::LanguageList(msg::Language("en")));
  RecordingChannel channel;
  handler.setMessageChannel(&channel, false);
  new msg::MTE(msg::info, "en", "base", "kept", "loaded before", &handler, false, true);
  new msg::MTE(msg::error, "en", "msgx", "MessageDocumentError", "Cannot load &0.", &handler, false,
               true);
  try {
    handler.loadCompiledCatalogue(path.c_str());
    ADD_FAILURE() << "accepted: " << why;
  } catch (const msg::ErrorInMessageDocument& failure) {
    EXPECT_EQ(failure.getText(), "Message document \"" + path + "\" contains syntactical error.");
    ASSERT_EQ(failure.getProblems().size(), 1u);
    EXPECT_NE(failure.getProblems()[0].message.find(why), std::string::npos)
        << failure.getProblems()[0].message;
  }
  EXPECT_EQ(channel.lines, std::vector<std::string>{"msgx:MessageDocumentError"});
  EXPECT_EQ(handler.entryCount(), 2u);
  EXPECT_EQ(recordOf(handler, "base", "kept"), "loaded before|0|en");
}

TEST_F(CompiledCatalogueTest, RefusesDamagedFilesAndLeavesTheTable) {
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "en", "app", "k", "text");
  const Bytes good = writer.bytes();
  const auto write = [&](const Bytes& bytes) {
    return scratch.write("bad.msgc", std::string(bytes.begin(), bytes.end()));
  };
  // Damage to a field behind the checksum, with the checksum made right
  // again, so the field's own check has to catch it.
  const auto patched = [&](const std::function<void(unsigned char*)>& damage) {
    Bytes bytes = good;
    damage(bytes.data());
    msg::compiled::writeU64(bytes.data() + msg::compiled::kChecksumOffset,
                            msg::compiled::checksumOf(bytes.data(), bytes.size()));
    return bytes;
  };
  using namespace msg::compiled;
  const struct {
    Bytes bytes;
    const char* why;
  } cases[] = {
      {Bytes(good.begin(), good.begin() + 30), "inside the 56-byte header"},
      {Bytes(good.begin(), good.end() - 1), "truncated or extended"},
      {patched([](unsigned char* b) { b[1] = 'X'; }), "magic"},
      {patched([](unsigned char* b) { writeU16(b + kMajorOffset, 2); }), "newer"},
      {patched([](unsigned char* b) { writeU32(b + kByteOrderOffset, 0x04030201); }), "byte-order"},
      {[&] {
         Bytes b = good;
         b.back() ^= 1;
         return b;
       }(),
       "checksum"},
      {patched([](unsigned char* b) { writeU32(b + kHeaderSize + kEntryText, 999); }), "outside"},
      {patched([&](unsigned char* b) { b[good.size() - 1] = 'x'; }), "no terminator"},
      {patched([](unsigned char* b) { writeU32(b + kEntryCountOffset, 0xffffffff); }),
       "do not fit"},
      {patched([](unsigned char* b) { writeU32(b + kEntrySizeOffset, 0x80000000); }), "do not fit"},
      {patched(
           [](unsigned char* b) { std::memcpy(b + kHeaderSize + kEntryLanguage, "de-ATx", 6); }),
       "more than 5"},
      {patched([](unsigned char* b) { writeU16(b + kHeaderSize + kEntrySeverity, 4); }),
       "severity"},
  };
  for (const auto& damaged : cases) {
    SCOPED_TRACE(damaged.why);
    expectRefused(write(damaged.bytes), damaged.why);
  }
  // Truncated at every byte: refused, whatever the reason given.
  for (std::size_t size = 0; size < good.size(); ++size) {
    expectRefused(write(Bytes(good.begin(), good.begin() + static_cast<long>(size))),
                  size == 0 ? "empty" : "");
  }
  expectRefused(dir, "folder");
  ASSERT_EQ(mkfifo((dir + "/fifo").c_str(), 0600), 0);
  expectRefused(dir + "/fifo", "FIFO");
  expectRefused(dir + "/missing.msgc", "cannot be opened");
}

// In the whole library, loading into the plain process-wide handler neither
// stacks the document handler nor starts the XML system.
TEST(CompiledCatalogueWithoutXmlTest, ThePlainHandlerLoadsWithoutStartingTheXmlSystem) {
  ASSERT_FALSE(XercesXML::isSystemInitialized());
  msg::MessageHandler* handler = msg::MessageHandler::object();
  {
    test_support::ScratchFolder scratch;
    msg::CompiledCatalogueWriter writer;
    writer.add(msg::warning, "en", "plain", "k", "from the file");
    writer.writeFile(scratch / "plain.msgc");
    handler->loadCompiledCatalogue((scratch / "plain.msgc").c_str());
  }  // the mapping outlives the name
  EXPECT_EQ(recordOf(*handler, "plain", "k"), "from the file|1|en");
  EXPECT_FALSE(XercesXML::isSystemInitialized());
  EXPECT_EQ(dynamic_cast<msg::MessageHandlerX*>(msg::MessageHandler::object()), nullptr);
}

}  // namespace
