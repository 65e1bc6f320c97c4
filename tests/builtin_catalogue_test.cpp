// The library's own 22 entries, as they stand in the process-wide handler
// once the library has loaded (the rows below; the Xerces rows not listed
// are alike).

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandler.h"
#include "tests/catalogue_support.h"

namespace msg {
namespace {

const struct Row {
  const char* nameSpace;
  const char* identifier;
  const char* language;
  SeverityLevel severity;
  const char* text;
} kRows[] = {
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
    {"Xerces", "ParsingError", "en", info, "Fehler bei der Analyse einer XML-Datei."},
    {"Xerces", "NullPointer", "en", warning,
     "Abbruch der Aktion aufgrund eines ung\xFC"
     "ltigen Null-Zeigers."},
    {"exception", "default", "en", info,
     "Meldung: Das Subsystem [&0] hat die Fehlersituation [&1] gemeldet. Text: [&2], Parameter "
     "sind 1: [&3], 2: [&4], 3: [&5], usw."},
};

// Every test leaves the process-wide handler with its list of load time.
class BuiltinCatalogueTest : public ::testing::Test {
 protected:
  ~BuiltinCatalogueTest() override { singleton->setLanguageList(LanguageList(Language("en"))); }

  void useList(const LanguageList& list) { singleton->setLanguageList(list); }
  std::string lookUp(const char* nameSpace, const char* identifier) {
    return test_support::textOf(*singleton, nameSpace, identifier);
  }

  MessageHandler* singleton = MessageHandler::object();
};

// First in the file: it must see the table before another test adds to it
// (CTest runs each test in a process of its own anyway).
TEST_F(BuiltinCatalogueTest, AfterLoadAPlainSingletonHoldsExactlyTheTwentyTwoRows) {
  const MessageHandler& object = *singleton;
  EXPECT_EQ(typeid(object), typeid(MessageHandler));
  EXPECT_EQ(test_support::entryCount(*singleton), 22u);
  for (const Row& row : kRows) {
    SCOPED_TRACE(std::string(row.nameSpace) + ":" + row.identifier + " " + row.language);
    useList(LanguageList(Language(row.language)));
    EXPECT_EQ(test_support::recordOf(*singleton, row.nameSpace, row.identifier),
              std::string(row.text) + "|" + std::to_string(row.severity) + "|" + row.language);
  }
}

TEST_F(BuiltinCatalogueTest, ListsFindTheRowsOfTheirLanguages) {
  EXPECT_STREQ(Message(singleton, "app", "start").getMessage(),
               "System error: Message with key app:start not found.");

  useList(LanguageList(Language("de")));
  EXPECT_EQ(lookUp("msg", "yes"), "Ja");
  EXPECT_EQ(lookUp("Xerces", "ParsingError"), "<none>");  // registered under "en" alone
  useList(LanguageList(Language("de"), Language("en")));
  EXPECT_EQ(lookUp("Xerces", "ParsingError"), kRows[13].text);

  useList(LanguageList(Language("fr"), Language("it")));
  EXPECT_EQ(singleton->getMessageNotFound(), nullptr);
  EXPECT_THROW(Message(singleton, "app", "start"), MessageNotFound);
}

// A built-in row replaced by a client entry is unlinked but never deleted:
// it is a static object, and AddressSanitizer would catch the delete.
TEST_F(BuiltinCatalogueTest, ClientEntriesMeetBuiltInRows) {
  EXPECT_THROW(new MTE(info, "en", "msg", "yes", "yes!", nullptr, true, true), MessageExists);
  new MTE(info, "fr", "msg", "yes", "oui", nullptr, true, true);  // owned by the singleton
  new MTE(info, "de", "msg", "no", "Nein!", nullptr, false, true);
  useList(LanguageList(Language("fr"), Language("de")));
  EXPECT_EQ(lookUp("msg", "yes"), "oui");
  EXPECT_EQ(lookUp("msg", "no"), "Nein!");
  EXPECT_EQ(test_support::entryCount(*singleton), 23u);
}

}  // namespace
}  // namespace msg
