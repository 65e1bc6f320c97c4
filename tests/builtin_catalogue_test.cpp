// The library's own 22 entries, as they stand in the process-wide handler
// once the library has loaded.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>

#include "message_core/MessageTable.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandler.h"

namespace msg {
namespace {

struct Row {
  const char* nameSpace;
  const char* identifier;
  const char* language;
  SeverityLevel severity;
  const char* text;
};

// The expected catalogue, in the order of registration. German umlauts are
// the ISO 8859-1 byte 0xFC.
const Row kRows[] = {
    {"msg", "notfound", "en", error, "System error: Message with key &0:&1 not found."},
    {"msg", "langunknown", "en", error, "System error: Language with id &0 is unknown."},
    {"msg", "notfound", "de", error,
     "Systemfehler: Eine auszugebende Meldung mit Schl\xFC"
     "ssel &0:&1 wurde nicht gefunden."},
    {"msg", "langunknown", "de", error,
     "Systemfehler: Die angegebene Sprache mit der Kennung &0 ist nicht bekannt."},
    {"msg", "true", "en", info, "true"},
    {"msg", "true", "de", info, "Wahr"},
    {"msg", "false", "en", info, "false"},
    {"msg", "false", "de", info, "Falsch"},
    {"msg", "yes", "en", info, "yes"},
    {"msg", "yes", "de", info, "Ja"},
    {"msg", "no", "en", info, "no"},
    {"msg", "no", "de", info, "Nein"},
    {"Xerces", "NotInitialized", "en", info, "Das Xerces-Subsystem wurde nicht initialisiert."},
    {"Xerces", "InitializationFailure", "en", warning,
     "Fehler bei der Initialisierung des Xerces-Subsystems."},
    {"Xerces", "ParsingError", "en", info, "Fehler bei der Analyse einer XML-Datei."},
    {"Xerces", "NullPointer", "en", warning,
     "Abbruch der Aktion aufgrund eines ung\xFC"
     "ltigen Null-Zeigers."},
    {"Xerces", "NavigationError", "en", info, "Fehler bei der Navigation in einem XML-Dokument."},
    {"Xerces", "ConversionError", "en", info, "Es ist ein Umwandlungsfehler aufgetreten."},
    {"Xerces", "FormatError", "en", info, "Es ist ein Formatfehler aufgetreten."},
    {"Xerces", "GetError", "en", info, "Fehler beim Abruf einer Datei aus dem Internet."},
    {"Xerces", "MalformedUrl", "en", info, "Eine URL ist syntaktisch falsch angegeben worden."},
    {"exception", "default", "en", info,
     "Meldung: Das Subsystem [&0] hat die Fehlersituation [&1] gemeldet. Text: [&2], Parameter "
     "sind 1: [&3], 2: [&4], 3: [&5], usw."},
};

struct TableAccess : MessageHandler {
  static MessageTable& of(const MessageHandler& handler) { return *messageTableOf(handler); }
};

// Every test leaves the process-wide handler with its list of load time.
class BuiltinCatalogueTest : public ::testing::Test {
 protected:
  ~BuiltinCatalogueTest() override { singleton->setLanguageList(LanguageList(Language("en"))); }

  // The text the singleton finds for a key, or "<none>".
  std::string lookUp(const char* nameSpace, const char* identifier) {
    std::unique_ptr<Message> found(singleton->getMessage(nameSpace, identifier));
    return found == nullptr ? "<none>" : found->getText();
  }

  MessageHandler* singleton = MessageHandler::object();
};

// Declared first: it must see the table before any other test adds to it
// (CTest runs each test in a process of its own anyway).
TEST_F(BuiltinCatalogueTest, AfterLoadTheSingletonHoldsExactlyTheTwentyTwoRows) {
  const MessageHandler& object = *singleton;
  EXPECT_EQ(typeid(object), typeid(MessageHandler));  // a plain handler, not a derived one
  EXPECT_EQ(singleton->getParent(), nullptr);
  MessageTable& table = TableAccess::of(*singleton);
  EXPECT_EQ(table.getSize(), 997u);
  ASSERT_EQ(table.getCount(), 22u);

  for (const Row& row : kRows) {
    SCOPED_TRACE(std::string(row.nameSpace) + ":" + row.identifier + " " + row.language);
    const MTE* entry =
        table.findBestEntry(row.nameSpace, row.identifier, LanguageList(Language(row.language)));
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->getLanguage(), Language(row.language));
    EXPECT_EQ(entry->getSeverity(), row.severity);
    EXPECT_EQ(std::string(entry->getText()), row.text);  // byte for byte
    EXPECT_FALSE(entry->getOwnsStrings());
  }

  // Rows of one key were registered "en" first, so "de" heads the chain.
  std::unique_ptr<Message> notFound(singleton->getMessageNotFound());
  ASSERT_NE(notFound, nullptr);
  EXPECT_STREQ(notFound->getText(), kRows[0].text);
  EXPECT_EQ(notFound->getSeverityLevel(), error);
  std::uint32_t bucket = table.tableHash("msg", "notfound");
  EXPECT_EQ(table.chainEntry(bucket, 0)->getLanguage(), Language("de"));
}

TEST_F(BuiltinCatalogueTest, GermanListFindsGermanRowsOnly) {
  singleton->setLanguageList(LanguageList(Language("de")));
  EXPECT_EQ(lookUp("msg", "notfound"), kRows[2].text);
  EXPECT_EQ(lookUp("msg", "yes"), "Ja");
  EXPECT_EQ(lookUp("Xerces", "ParsingError"), "<none>");  // registered under "en" alone

  singleton->setLanguageList(LanguageList(Language("de"), Language("en")));
  EXPECT_EQ(lookUp("Xerces", "ParsingError"), "Fehler bei der Analyse einer XML-Datei.");
  EXPECT_EQ(lookUp("msg", "false"), "Falsch");
}

TEST_F(BuiltinCatalogueTest, BritishListFindsEveryEnglishRow) {
  singleton->setLanguageList(LanguageList(Language("en-GB")));
  for (const Row& row : kRows) {
    if (std::string(row.language) == "en") {
      EXPECT_EQ(lookUp(row.nameSpace, row.identifier), row.text) << row.identifier;
    }
  }
}

TEST_F(BuiltinCatalogueTest, ListWithoutEnglishOrGermanFindsNoNotFoundText) {
  singleton->setLanguageList(LanguageList(Language("fr"), Language("it")));
  EXPECT_EQ(singleton->getMessageNotFound(), nullptr);
  EXPECT_THROW(Message(singleton, "app", "start"), MessageNotFound);
}

TEST_F(BuiltinCatalogueTest, UnknownKeyShowsTheNotFoundText) {
  Message message(singleton, "app", "start");
  EXPECT_STREQ(message.getMessage(), "System error: Message with key app:start not found.");
  EXPECT_STREQ(message.getNamespace(), "msg");
  EXPECT_STREQ(message.getIdentifier(), "notfound");
}

TEST_F(BuiltinCatalogueTest, ClientEntriesMeetBuiltInRows) {
  // A duplicate of a built-in row is refused when asked to be.
  EXPECT_THROW(new MTE(info, "en", "msg", "yes", "yes!", nullptr, true, true), MessageExists);
  // Another language of a built-in key stands beside its rows. The entry is
  // owned by the singleton's table, which lives as long as the process.
  new MTE(info, "fr", "msg", "yes", "oui", nullptr, true, true);
  singleton->setLanguageList(LanguageList(Language("fr")));
  EXPECT_EQ(lookUp("msg", "yes"), "oui");
  singleton->setLanguageList(LanguageList(Language("de")));
  EXPECT_EQ(lookUp("msg", "yes"), "Ja");

  // Replacing a built-in row unlinks it and leaves the static object alone
  // (deleting it would be caught by AddressSanitizer). The replacement has
  // the same content, so the catalogue reads as before.
  singleton->setLanguageList(LanguageList(Language("en")));
  MessageTable& table = TableAccess::of(*singleton);
  std::uint32_t bucket = table.tableHash("msg", "no");
  const MTE* builtIn = table.chainEntry(bucket, 0);
  ASSERT_STREQ(builtIn->getIdentifier(), "no");
  ASSERT_EQ(builtIn->getLanguage(), Language("de"));
  const MTE* replacement = new MTE(info, "de", "msg", "no", "Nein", nullptr, false, true);
  EXPECT_EQ(table.chainEntry(bucket, 0), replacement);
  for (std::uint32_t i = 0; i < table.chainLength(bucket); ++i) {
    EXPECT_NE(table.chainEntry(bucket, i), builtIn);
  }
  EXPECT_STREQ(builtIn->getText(), "Nein");
  EXPECT_EQ(table.getCount(), 23u);  // 22 rows, one replaced, and "fr"
}

}  // namespace
}  // namespace msg
