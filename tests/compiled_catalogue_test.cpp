// Compiled catalogues: the same records as the documents they come from,
// refusal of damaged files with the table left as it was, entries that stay
// valid for as long as their handler lives, and a load into the plain
// process-wide handler that leaves the XML system alone.

#include <sys/stat.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CatalogueData.h"
#include "compiled_catalogues/CompiledCatalogueFormat.h"
#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "message_documents/DocumentCompilation.h"
#include "message_documents/MessageDocumentReader.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageHandlerX.h"
#include "msg/Typed.h"
#include "tests/catalogue_support.h"
#include "tests/plural_catalogue.h"
#include "tests/scratch_folder.h"
#include "xml_access/XMLSystem.h"

namespace {

using Bytes = std::vector<unsigned char>;

class Handler : public msg::MessageHandlerX {
 public:
  explicit Handler(msg::LanguageList languages) { setLanguageList(languages); }
};

using test_support::entryCount;
using test_support::recordOf;

// Writes `bytes` to the file `name` of `scratch`; returns its path.
std::string writeBytes(const test_support::ScratchFolder& scratch, const std::string& name,
                       const Bytes& bytes) {
  return scratch.write(name, std::string(bytes.begin(), bytes.end()));
}

class CompiledCatalogueTest : public ::testing::Test {
 protected:
  CompiledCatalogueTest() { test_support::copySchemaInto(scratch.path()); }

  // A document of namespace "app" with `body` (Message elements) inside.
  std::string document(const std::string& name, const std::string& body) {
    return scratch.write(name, test_support::messageDocument("<MessageNamespace name=\"app\">" +
                                                             body + "</MessageNamespace>"));
  }

  // For each language list: every key gives the same record from the
  // documents (loaded in order) as from the file compiled from them, read
  // in place and, written without its key index, registered in the table.
  void expectEquivalent(const std::vector<std::string>& documents,
                        const std::vector<std::string>& identifiers) {
    msg::CompiledCatalogueWriter writer;
    for (const std::string& path : documents) {
      msg::addMessageDocument(writer, path.c_str());
    }
    const std::string compiled = dir + "/app.msgc";
    writer.writeFile(compiled);
    const Bytes unindexed = writer.bytes(false);
    const std::string registered = writeBytes(scratch, "registered.msgc", unindexed);
    const msg::Language austrianFirst[] = {msg::Language("de-AT"), msg::Language("de"),
                                           msg::Language("en")};
    const msg::LanguageList lists[] = {msg::LanguageList(msg::Language("en")),
                                       msg::LanguageList(msg::Language("de")),
                                       msg::LanguageList(3, austrianFirst)};
    for (const msg::LanguageList& languages : lists) {
      Handler fromDocuments(languages);
      Handler inPlace(languages);
      Handler fromTable(languages);
      for (const std::string& path : documents) {
        fromDocuments.loadMessageDocument(path.c_str());
      }
      inPlace.loadCompiledCatalogue(compiled.c_str());
      fromTable.loadCompiledCatalogue(registered.c_str());
      EXPECT_EQ(entryCount(inPlace), 0u);  // nothing registered
      EXPECT_EQ(entryCount(fromTable), entryCount(fromDocuments));
      for (const std::string& id : identifiers) {
        const std::string expected = recordOf(fromDocuments, "app", id.c_str());
        ASSERT_EQ(recordOf(inPlace, "app", id.c_str()), expected)
            << id << " with " << languages.getLanguage(0).toString() << " first";
        ASSERT_EQ(recordOf(fromTable, "app", id.c_str()), expected) << id;
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
  EXPECT_EQ(std::string(old->getNamespace()) + ":" + old->getIdentifier() + " " + old->getText(),
            "app:k old");
}

TEST_F(CompiledCatalogueTest, ALanguageTwiceInOneKeyIsReplacedAsInAnyLoad) {
  // Writers keep one text per key and language; a file from elsewhere may
  // hold two. Here "de" becomes a second "en": the later of the two in the
  // file wins, and the key keeps two entries.
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "en", "app", "k", "first");
  writer.add(msg::info, "de-AT", "app", "k", "mittel");
  writer.add(msg::warning, "de", "app", "k", "last");
  for (const bool indexed : {true, false}) {
    Bytes bytes = writer.bytes(indexed);
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
    const std::string path = writeBytes(scratch, "twice.msgc", bytes);

    Handler handler(msg::LanguageList{"en", "de-AT"});
    handler.loadCompiledCatalogue(path.c_str());
    EXPECT_EQ(entryCount(handler), indexed ? 0u : 2u);
    EXPECT_EQ(recordOf(handler, "app", "k"), patchedIsLater ? "last|1|en" : "first|0|en");
  }
}

// Entries registered in code, then documents and compiled catalogues in
// turn: each compiled catalogue must act as loading its document there
// would. Languages of equal rank (de-AT, de-CH, de-LU for "de") show which
// text wins a tie; within each message the texts stand in the order in
// which the compiler writes them (by language), as a tie within one load
// goes to the later text.
TEST_F(CompiledCatalogueTest, MixedWithCodeAndDocumentsGivesTheRecordsOfDocumentsAlone) {
  const std::string first =
      document("first.xml",
               "<Message id=\"k1\"><Text xml:lang=\"de\">doc1 de</Text></Message>"
               "<Message id=\"tie\"><Text xml:lang=\"de-AT\">doc1 AT</Text></Message>"
               "<Message id=\"k2\"><Text xml:lang=\"en\">doc1 en</Text></Message>");
  const std::string second =
      document("second.xml",
               "<Message id=\"k1\" severity=\"error\"><Text xml:lang=\"en\">cat en</Text>"
               "<Text xml:lang=\"fr\">cat fr</Text></Message>"
               "<Message id=\"tie\"><Text xml:lang=\"de-LU\">cat LU</Text></Message>"
               "<Message id=\"k2\"><Text xml:lang=\"de\">cat de</Text></Message>"
               "<Message id=\"k3\"><Text xml:lang=\"en\">cat only</Text></Message>");
  const std::string third =
      document("third.xml",
               "<Message id=\"k1\"><Text xml:lang=\"fr\">doc3 fr</Text></Message>"
               "<Message id=\"tie\"><Text xml:lang=\"de-AT\">doc3 AT</Text>"
               "<Text xml:lang=\"de-CH\">doc3 CH</Text></Message>"
               "<Message id=\"k3\"><Text xml:lang=\"de-CH\">doc3 CH</Text></Message>"
               "<Message id=\"k4\"><Text xml:lang=\"en\">doc3 only</Text></Message>");
  const std::string fourth = document(
      "fourth.xml",
      "<Message id=\"tie\"><Text xml:lang=\"de-CH\">cat2 CH</Text>"
      "<Text xml:lang=\"de-LU\">cat2 LU</Text></Message>"
      "<Message id=\"k3\" severity=\"warning\"><Text xml:lang=\"en\">cat2 en</Text></Message>");
  const auto compile = [&](const std::string& source, bool indexed) {
    msg::CompiledCatalogueWriter writer;
    msg::addMessageDocument(writer, source.c_str());
    const Bytes bytes = writer.bytes(indexed);
    return writeBytes(scratch, source.substr(dir.size() + 1) + (indexed ? ".msgc" : ".old.msgc"),
                      bytes);
  };
  const auto fromCode = [](msg::MessageHandler& handler) {
    new msg::MTE(msg::info, "en", "app", "k1", "code en", &handler, false, true);
    new msg::MTE(msg::info, "de-CH", "app", "tie", "code CH", &handler, false, true);
    new msg::MTE(msg::info, "de", "app", "k4", "code de", &handler, false, true);
  };
  const std::vector<std::string> ids = {"k1", "k2", "k3", "k4", "tie"};
  const char* const loadLists[] = {"de,en,fr", "de,en", "de-AT,fr"};
  const char* const askLists[] = {"de", "de,en", "fr,en", "en", "de-AT,de,en", "de-CH", "fr"};
  // The second document compiled and read in place, the fourth compiled
  // without an index (registered in the table), each also the other way.
  for (const bool indexedFirst : {true, false}) {
    const std::string secondCompiled = compile(second, indexedFirst);
    const std::string fourthCompiled = compile(fourth, !indexedFirst);
    for (const char* loadList : loadLists) {
      Handler documents(msg::LanguageList::parse(loadList));
      Handler mixed(msg::LanguageList::parse(loadList));
      fromCode(documents);
      fromCode(mixed);
      for (const std::string& path : {first, second, third, fourth}) {
        documents.loadMessageDocument(path.c_str());
      }
      mixed.loadMessageDocument(first.c_str());
      mixed.loadCompiledCatalogue(secondCompiled.c_str());
      mixed.loadMessageDocument(third.c_str());
      mixed.loadCompiledCatalogue(fourthCompiled.c_str());
      for (const char* askList : askLists) {
        documents.setLanguageList(msg::LanguageList::parse(askList));
        mixed.setLanguageList(msg::LanguageList::parse(askList));
        for (const std::string& id : ids) {
          EXPECT_EQ(recordOf(mixed, "app", id.c_str()), recordOf(documents, "app", id.c_str()))
              << id << ", loaded with " << loadList << ", asked with " << askList
              << (indexedFirst ? ", second in place" : ", fourth in place");
        }
      }
    }
  }
}

// A file with a key index is read in place: damage behind the header is
// found where a lookup reads it, and passes the damaged text over. Nothing
// outside the file is read (the sanitizer builds watch that).
TEST_F(CompiledCatalogueTest, ReadsInPlaceAndPassesOverDamagedTexts) {
  using Form = msg::CompiledCatalogueWriter::Form;
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "de", "app", "a", "a de");
  writer.add(msg::warning, "en", "app", "a", "a en");
  writer.add(msg::info, "en", "app", "b", "&0 files", msg::PluralKind::cardinal, 0,
             {Form{false, 0, msg::PluralCategory::one, "&0 file"}});
  writer.add(msg::info, "en", "app", "c", "c en");
  const Bytes good = writer.bytes();
  using namespace msg::compiled;
  ASSERT_EQ(readU16(good.data() + kMinorOffset), kIndexedMinorVersion);
  const std::size_t header = readU32(good.data() + kHeaderSizeOffset);
  const std::size_t entryDe = header;  // entries by key and language: a/de, a/en, b/en, c/en
  const std::size_t entryB = header + 2 * kVariantEntrySize;
  const std::uint32_t index = readU32(good.data() + kVariantHeaderSize);
  const std::uint32_t slots = readU32(good.data() + index + kIndexSlotCount);
  const std::uint32_t block = readU32(good.data() + kVariantBlockOffset);
  // The slot of the key whose texts begin at entry `first`.
  const auto slotOf = [&](std::uint32_t first) {
    for (std::uint32_t i = 0;; ++i) {
      const std::size_t slot = index + kIndexSlots + i * kSlotSize;
      if (readU32(good.data() + slot + kSlotTexts) != 0 &&
          readU32(good.data() + slot + kSlotFirst) == first) {
        return slot;
      }
    }
  };
  // Each damage changes the record of one key at most; the others keep
  // theirs (with the list de, en).
  const std::map<std::string, std::string> intact = {
      {"a", "a de|0|de"}, {"b", "&0 files|0|en"}, {"c", "c en|0|en"}, {"missing", "<none>"}};
  const struct {
    std::function<void(unsigned char*)> damage;
    const char* id;  // of the key whose record changes, "" for none
    const char* record;
  } cases[] = {
      {[](unsigned char*) {}, "", ""},
      {[&](unsigned char* b) { writeU32(b + entryDe + kEntryText, 0x7fffffff); }, "a", "a en|1|en"},
      {[&](unsigned char* b) { writeU16(b + entryDe + kEntrySeverity, 9); }, "a", "a en|1|en"},
      {[&](unsigned char* b) { std::memcpy(b + entryDe + kEntryLanguage, "de\0x", 4); }, "a",
       "a en|1|en"},
      // The first text of a key names the key for the index.
      {[&](unsigned char* b) { writeU32(b + entryDe + kEntryIdentifier, 0); }, "a", "<none>"},
      {[&](unsigned char* b) { writeU16(b + block + kRecordKind, 7); }, "b", "<none>"},
      {[&](unsigned char* b) { writeU32(b + entryB + kEntryVariants, 0xfffffff0); }, "b", "<none>"},
      {[&](unsigned char* b) { writeU32(b + slotOf(3) + kSlotFirst, 1000); }, "c", "<none>"},
      {[&](unsigned char* b) { writeU32(b + slotOf(0) + kSlotTexts, 3); }, "", ""},
      {[&](unsigned char* b) { writeU32(b + slotOf(0) + kSlotTexts, 9); }, "a", "<none>"},
      {[&](unsigned char* b) {
         // No empty slot left: a lookup of a missing key still ends.
         for (std::uint32_t i = 0; i < slots; ++i) {
           unsigned char* slot = b + index + kIndexSlots + i * kSlotSize;
           if (readU32(slot + kSlotTexts) == 0) {
             writeU32(slot + kSlotFirst, 3);
             writeU32(slot + kSlotTexts, 1);
           }
         }
       },
       "", ""},
  };
  for (const auto& damaged : cases) {
    SCOPED_TRACE(&damaged - cases);
    Bytes bytes = good;
    damaged.damage(bytes.data());
    const std::string path = writeBytes(scratch, "damaged.msgc", bytes);
    Handler handler(msg::LanguageList::parse("de,en"));
    handler.loadCompiledCatalogue(path.c_str());
    for (const auto& [id, record] : intact) {
      EXPECT_EQ(recordOf(handler, "app", id.c_str()), id == damaged.id ? damaged.record : record);
    }
    if (std::string(damaged.id) != "b") {
      EXPECT_EQ(msg::format(handler, "app", "b", "1"), "1 file");
    }
  }
}

// A valid file with one key, made damaged by `damage`, is refused with the
// report, the exception and its problem, and the table as it was.
void expectRefused(const std::string& path, const std::string& why) {
  Handler handler(msg::LanguageList(msg::Language("en")));
  test_support::RecordingChannel channel;
  handler.setMessageChannel(&channel, false);
  new msg::MTE(msg::info, "en", "base", "kept", "loaded before", &handler, false, true);
  test_support::addRefusalReport(handler);
  try {
    handler.loadCompiledCatalogue(path.c_str());
    ADD_FAILURE() << "accepted: " << why;
  } catch (const msg::ErrorInMessageDocument& failure) {
    EXPECT_EQ(failure.getText(), "Message document \"" + path + "\" contains syntactical error.");
    ASSERT_EQ(failure.getProblems().size(), 1u);
    EXPECT_NE(failure.getProblems()[0].message.find(why), std::string::npos)
        << failure.getProblems()[0].message;
  }
  EXPECT_EQ(channel.lines,
            std::vector<std::string>{"msgx:MessageDocumentError: Cannot load " + path + "."});
  EXPECT_EQ(entryCount(handler), 2u);
  EXPECT_EQ(recordOf(handler, "base", "kept"), "loaded before|0|en");
}

// A change to the bytes of a good file, and the reason its refusal gives.
struct Damage {
  std::function<void(unsigned char*)> change;
  const char* why;
};

// Each damage done to a copy of `good` is refused. With `checksummed` the
// checksum is made right again first, so the field's own check has to
// catch it.
void expectDamageRefused(const test_support::ScratchFolder& scratch, const Bytes& good,
                         bool checksummed, const std::vector<Damage>& damages) {
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.why);
    Bytes bytes = good;
    damage.change(bytes.data());
    if (checksummed) {
      msg::compiled::writeU64(bytes.data() + msg::compiled::kChecksumOffset,
                              msg::compiled::checksumOf(bytes.data(), bytes.size()));
    }
    expectRefused(writeBytes(scratch, "bad.msgc", bytes), damage.why);
  }
}

// `good` cut at every byte is refused, whatever the reason given.
void expectEveryCutRefused(const test_support::ScratchFolder& scratch, const Bytes& good) {
  for (std::size_t size = 0; size < good.size(); ++size) {
    expectRefused(scratch.write("cut.msgc", std::string(good.begin(), good.begin() + size)),
                  size == 0 ? "empty" : "");
  }
}

TEST_F(CompiledCatalogueTest, RefusesDamagedFilesWithoutIndexAndLeavesTheTable) {
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "en", "app", "k", "text");
  const Bytes good = writer.bytes(false);
  using namespace msg::compiled;
  expectRefused(scratch.write("bad.msgc", std::string(good.begin(), good.begin() + 30)),
                "inside the 56-byte header");
  expectRefused(scratch.write("bad.msgc", std::string(good.begin(), good.end() - 1)),
                "truncated or extended");
  expectDamageRefused(scratch, good, false,
                      {{[&](unsigned char* b) { b[good.size() - 1] ^= 1; }, "checksum"}});
  expectDamageRefused(
      scratch, good, true,
      {
          {[](unsigned char* b) { b[1] = 'X'; }, "magic"},
          {[](unsigned char* b) { writeU16(b + kMajorOffset, 3); }, "newer"},
          {[](unsigned char* b) { writeU32(b + kByteOrderOffset, 0x04030201); }, "byte-order"},
          {[](unsigned char* b) { writeU32(b + kHeaderSize + kEntryText, 999); }, "outside"},
          {[&](unsigned char* b) { b[good.size() - 1] = 'x'; }, "no terminator"},
          {[](unsigned char* b) { writeU32(b + kEntryCountOffset, 0xffffffff); }, "do not fit"},
          {[](unsigned char* b) { writeU32(b + kEntrySizeOffset, 0x80000000); }, "do not fit"},
          {[](unsigned char* b) { std::memcpy(b + kHeaderSize + kEntryLanguage, "de-ATx", 6); },
           "more than 5"},
          {[](unsigned char* b) { writeU16(b + kHeaderSize + kEntrySeverity, 4); }, "severity"},
      });
  expectEveryCutRefused(scratch, good);
  expectRefused(dir, "folder");
  ASSERT_EQ(mkfifo((dir + "/fifo").c_str(), 0600), 0);
  expectRefused(dir + "/fifo", "FIFO");
  expectRefused(dir + "/missing.msgc", "cannot be opened");
}

TEST_F(CompiledCatalogueTest, RefusesDamagedHeadersOfAnIndexedFileAndLeavesTheTable) {
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "en", "app", "k", "text");
  writer.add(msg::info, "en", "app", "l", "more");  // two keys: an index of four slots
  const Bytes good = writer.bytes();
  using namespace msg::compiled;
  const std::size_t fields = indexFieldsOffset(kPlainMajorVersion);
  const std::uint32_t index = readU32(good.data() + fields);
  const std::uint32_t indexSize = readU32(good.data() + fields + 4);
  expectDamageRefused(
      scratch, good, false,
      {
          {[&](unsigned char* b) { writeU32(b + fields, index - 1); }, "key index"},
          {[&](unsigned char* b) { writeU32(b + fields + 4, indexSize + 1); }, "key index"},
          {[&](unsigned char* b) { writeU32(b + fields + 4, 4); }, "key index"},
          {[&](unsigned char* b) { writeU32(b + index + kIndexSlotCount, 3); },
           "not a power of two"},
          {[&](unsigned char* b) { writeU32(b + index + kIndexSlotCount, 0); }, "none"},
          {[&](unsigned char* b) { writeU32(b + index + kIndexSlotCount, 1u << 20); }, "more than"},
          {[&](unsigned char* b) { writeU32(b + index + 4, 1); }, "should be zero"},
          {[&](unsigned char* b) { writeU32(b + kStringBlockSizeOffset, 1u << 30); },
           "string block"},
          {[&](unsigned char* b) { writeU32(b + kEntryCountOffset, 1u << 30); }, "do not fit"},
          {[&](unsigned char* b) { writeU16(b + kMajorOffset, 3); }, "newer"},
      });
  // The checksum is not read at the load of an indexed file: a text changed
  // behind it is shown as it is, and the header alone is trusted.
  Bytes changed = good;
  const std::string asText(good.begin(), good.end());
  changed[asText.find(std::string("text\0", 5), readU32(good.data() + kStringBlockOffset))] = 'T';
  Handler handler(msg::LanguageList(msg::Language("en")));
  handler.loadCompiledCatalogue(writeBytes(scratch, "changed.msgc", changed).c_str());
  EXPECT_EQ(recordOf(handler, "app", "k"), "Text|0|en");
  expectEveryCutRefused(scratch, good);
}

TEST_F(CompiledCatalogueTest, PluralAndOrdinalMessagesRenderAsFromTheDocument) {
  const std::string source = document("plural.xml", test_support::kPluralMessages);
  msg::CompiledCatalogueWriter writer;
  msg::addMessageDocument(writer, source.c_str());
  const std::string compiled = dir + "/plural.msgc";
  writer.writeFile(compiled);

  const msg::LanguageList everything = msg::LanguageList::parse("en,pl,ar,ja,fr,pt,pt-PT");
  Handler fromDocument(everything);
  Handler fromCompiled(everything);
  fromDocument.loadMessageDocument(source.c_str());
  fromCompiled.loadCompiledCatalogue(compiled.c_str());
  const char* const counts[] = {"0", "1", "2", "3", "5", "11", "22", "101", "1.0", "1.5"};
  for (const char* languages : {"en", "pl,en", "ar,en", "fr,en", "pt-PT,pt,en", "pt-BR,pt,en"}) {
    fromDocument.setLanguageList(msg::LanguageList::parse(languages));
    fromCompiled.setLanguageList(msg::LanguageList::parse(languages));
    for (const char* count : counts) {
      SCOPED_TRACE(std::string(languages) + " " + count);
      for (const char* id : {"deleted", "place", "plain"}) {
        EXPECT_EQ(msg::format(fromCompiled, "app", id, count),
                  msg::format(fromDocument, "app", id, count))
            << id;
      }
      EXPECT_EQ(msg::format(fromCompiled, "app", "moved", "/srv", count),
                msg::format(fromDocument, "app", "moved", "/srv", count));
      EXPECT_EQ(recordOf(fromCompiled, "app", "deleted"), recordOf(fromDocument, "app", "deleted"));
    }
  }
  // The choice is really made: not every count gives `other`.
  fromCompiled.setLanguageList(msg::LanguageList::parse("pl"));
  EXPECT_EQ(msg::format(fromCompiled, "app", "deleted", "22"), "Usunięto 22 pliki.");
  fromCompiled.setLanguageList(msg::LanguageList::parse("en"));
  EXPECT_EQ(msg::format(fromCompiled, "app", "place", "22"), "22nd place");
  EXPECT_EQ(msg::format(fromCompiled, "app", "deleted", "0"), "No files deleted.");
}

TEST_F(CompiledCatalogueTest, APluralMessageThatBreaksARuleCompilesNothing) {
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "en", "app", "before", "kept");
  const std::string broken = document(
      "broken.xml",
      "<Message id=\"fine\"><Text>fine</Text></Message>"
      "<Message id=\"deleted\"><Text xml:lang=\"pl\" plural=\"one\">&amp;0 plik</Text></Message>");
  try {
    msg::addMessageDocument(writer, broken.c_str());
    ADD_FAILURE() << "a language without other was compiled";
  } catch (const msg::DocumentRefused& refused) {
    ASSERT_FALSE(refused.problems.empty());
    EXPECT_NE(refused.problems[0].message.find("no other text"), std::string::npos)
        << refused.problems[0].message;
  }
  EXPECT_EQ(writer.size(), 1u);
}

// A file that today's library reads as before: written by the writer of the
// first format, before compiled catalogues held variants.
TEST_F(CompiledCatalogueTest, ReadsAndStillWritesTheFirstFormat) {
  const std::string old = MSG_TEST_DATA_DIR "/compiled/format-1.0.msgc";
  Handler handler(msg::LanguageList::parse("de-AT,de,en"));
  handler.loadCompiledCatalogue(old.c_str());
  EXPECT_EQ(entryCount(handler), 5u);
  EXPECT_EQ(recordOf(handler, "app", "greeting"), "Servus, &0!|0|de-AT");
  EXPECT_EQ(recordOf(handler, "app", "deleted"), "&0 files deleted.|1|en");
  EXPECT_EQ(msg::format(handler, "other", "failed", "a.txt", "gone"), "Cannot open a.txt: gone");

  // Without its key index, a catalogue without variants is written byte for
  // byte in the first format.
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "en", "app", "greeting", "Hello, &0!");
  writer.add(msg::info, "de", "app", "greeting", "Hallo, &0!");
  writer.add(msg::info, "de-AT", "app", "greeting", "Servus, &0!");
  writer.add(msg::warning, "en", "app", "deleted", "&0 files deleted.");
  writer.add(msg::error, "en", "other", "failed", "Cannot open &0: &1");
  std::ifstream in(old, std::ios::binary);
  const Bytes expected((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(writer.bytes(false), expected);
}

TEST_F(CompiledCatalogueTest, TheWriterRefusesFormsItCannotHoldAndKeepsItsTexts) {
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "en", "app", "k", "kept");
  const Bytes before = writer.bytes();
  using Form = msg::CompiledCatalogueWriter::Form;
  const Form one{false, 0, msg::PluralCategory::one, "one"};
  const std::vector<Form> bad[] = {
      {Form{false, 0, msg::PluralCategory::other, "other twice"}},
      {one, one},
      {Form{true, 3, msg::PluralCategory::other, "three"}, one,
       Form{true, 3, msg::PluralCategory::other, "three again"}},
      {Form{false, 0, msg::PluralCategory::few, std::string("nul\0", 4)}},
  };
  for (const std::vector<Form>& forms : bad) {
    EXPECT_THROW(
        writer.add(msg::info, "en", "app", "k", "other", msg::PluralKind::cardinal, 0, forms),
        std::invalid_argument);
  }
  EXPECT_EQ(writer.bytes(), before);

  // The order of the forms does not change the bytes.
  const Form zero{true, 0, msg::PluralCategory::other, "none"};
  msg::CompiledCatalogueWriter first;
  msg::CompiledCatalogueWriter second;
  first.add(msg::info, "en", "app", "k", "&0 files", msg::PluralKind::cardinal, 0, {one, zero});
  second.add(msg::info, "en", "app", "k", "&0 files", msg::PluralKind::cardinal, 0, {zero, one});
  EXPECT_EQ(first.bytes(), second.bytes());
}

TEST_F(CompiledCatalogueTest, RefusesADamagedVariantBlockWithoutIndexAndLeavesTheTable) {
  using Form = msg::CompiledCatalogueWriter::Form;
  msg::CompiledCatalogueWriter writer;
  writer.add(msg::info, "en", "app", "a", "&0 files", msg::PluralKind::cardinal, 0,
             {Form{false, 0, msg::PluralCategory::one, "&0 file"},
              Form{true, 0, msg::PluralCategory::other, "no file"}});
  writer.add(msg::info, "en", "app", "b", "plain");
  writer.add(msg::info, "en", "app", "c", "&0th", msg::PluralKind::ordinal, 0,
             {Form{false, 0, msg::PluralCategory::two, "&0nd"}});
  const Bytes good = writer.bytes(false);
  using namespace msg::compiled;
  ASSERT_EQ(readU16(good.data() + kMajorOffset), kMajorVersion);
  const std::uint32_t block = readU32(good.data() + kVariantBlockOffset);
  const std::uint32_t blockSize = readU32(good.data() + kVariantBlockSizeOffset);
  const std::size_t entryA = kVariantHeaderSize;
  const std::size_t entryC = kVariantHeaderSize + 2 * kVariantEntrySize;
  const std::size_t firstForm = block + kRecordSize;  // "a"'s forms: one, then =0
  expectDamageRefused(
      scratch, good, true,
      {
          {[&](unsigned char* b) { writeU32(b + kVariantBlockSizeOffset, blockSize + 1); },
           "variant block"},
          {[&](unsigned char* b) { writeU32(b + kVariantBlockOffset, block - 1); },
           "variant block"},
          {[&](unsigned char* b) { writeU32(b + kEntrySizeOffset, kEntrySize); }, "entry size"},
          {[&](unsigned char* b) { writeU32(b + kHeaderSizeOffset, kHeaderSize); }, "header size"},
          {[&](unsigned char* b) { writeU32(b + entryA + kEntryVariants, blockSize - 4); },
           "outside the variant block"},
          {[&](unsigned char* b) { writeU32(b + entryC + kEntryVariants, 0); }, "over another"},
          {[&](unsigned char* b) { writeU16(b + block + kRecordFormCount, 40); }, "40 forms"},
          {[&](unsigned char* b) { writeU16(b + block + kRecordFormCount, 0); }, "0 forms"},
          {[&](unsigned char* b) { writeU16(b + block + kRecordKind, 2); }, "kind 2"},
          {[&](unsigned char* b) { writeU16(b + firstForm + kFormSelector, 5); }, "form 5"},
          {[&](unsigned char* b) {
             writeU16(b + firstForm + kFormSize + kFormSelector, 1);
             writeU64(b + firstForm + kFormSize + kFormValue, 0);
           },
           "form 1"},
          {[&](unsigned char* b) { writeU32(b + firstForm + kFormText, 0x7fffffff); },
           "outside the string block"},
          {[&](unsigned char* b) { writeU16(b + firstForm + kFormZero, 1); }, "should be zero"},
          {[&](unsigned char* b) { writeU64(b + firstForm + kFormValue, 7); }, "should be zero"},
      });
  // Cut inside the variant block, with the size in the header made to match.
  for (std::size_t cut = 1; cut <= blockSize; ++cut) {
    Bytes bytes(good.begin(), good.end() - static_cast<long>(cut));
    writeU64(bytes.data() + kFileSizeOffset, bytes.size());
    writeU64(bytes.data() + kChecksumOffset, checksumOf(bytes.data(), bytes.size()));
    expectRefused(writeBytes(scratch, "cut.msgc", bytes), "variant");
  }
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
