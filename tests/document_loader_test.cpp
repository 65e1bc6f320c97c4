// Loading message documents into a MessageHandlerX of the test's own: the
// rules of the format, bad input, the XML system and the encoding of texts.
// Nothing here stacks the process-wide handler.

#include <clocale>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "msg/ErrorInMessageDocument.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandlerX.h"
#include "tests/catalogue_support.h"
#include "xml_access/XMLSystem.h"

namespace {

using test_support::recordOf;
using test_support::textOf;

std::string documentPath(const std::string& name) {
  return std::string(MSG_TEST_DATA_DIR) + "/documents/" + name;
}

class DocumentLoaderTest : public ::testing::Test {
 protected:
  DocumentLoaderTest() { handler.setMessageChannel(&channel, false); }

  msg::MessageHandlerX handler;
  test_support::RecordingChannel channel;
};

TEST_F(DocumentLoaderTest, AppliesTheDefaultsAndPassesOverUnknownElements) {
  handler.loadMessageDocument(documentPath("rules.xml").c_str());
  EXPECT_TRUE(channel.lines.empty());

  // "text|severity|language", severities by number (info 0 to abort 3).
  const char* const expected[][3] = {
      {"rules", "languages", "english|0|en"},
      {"rules", "nolang", "without xml:lang|1|en"},
      {"rules", "british", "colour|3|en-GB"},
      {"rules", "empty", "|0|en"},
      {"rules", "no-id", "second without id|0|en"},
      {"rules", "capital", "capital|2|en"},
      {"rules", "placeholders", "Copied &0 of &1 files.|2|en"},
      {"no-ns", "anonymous", "no namespace name|0|en"},
      {"included", "part", "from the included part|1|en"},
  };
  for (const auto& entry : expected) {
    EXPECT_EQ(recordOf(handler, entry[0], entry[1]), entry[2]) << entry[0] << ":" << entry[1];
  }
  EXPECT_EQ(textOf(handler, "rules", "hidden"), "<none>");
  EXPECT_EQ(textOf(handler, "no-ns", "misplaced"), "<none>");

  // The list [en] kept the German texts out of the table.
  handler.setLanguageList(msg::LanguageList(msg::Language("de")));
  EXPECT_EQ(textOf(handler, "rules", "languages"), "<none>");
}

TEST_F(DocumentLoaderTest, FiltersByTheListInForceAndTheLastTextWins) {
  handler.setLanguageList(msg::LanguageList(msg::Language("de")));
  new msg::MTE(msg::info, "de", "rules", "languages", "from code", &handler, false, true);
  handler.loadMessageDocument(documentPath("rules.xml").c_str());

  EXPECT_EQ(textOf(handler, "rules", "languages"), "zweiter");
  EXPECT_EQ(textOf(handler, "included", "part"), "aus dem eingebundenen Teil");
  EXPECT_EQ(textOf(handler, "rules", "nolang"), "<none>");  // English by default

  // A later list brings back nothing that the load dropped.
  handler.setLanguageList(msg::LanguageList(msg::Language("en")));
  EXPECT_EQ(textOf(handler, "rules", "languages"), "<none>");
}

// Each way a load fails: the report, the exception, and a table that holds
// what an earlier load put there and nothing of the failed document. That a
// folder, an empty file or random bytes fail as safely is the bad-input
// probe's (bad_input.*).
TEST_F(DocumentLoaderTest, BadDocumentsAreReportedRejectedAndLeaveTheTableAsItWas) {
  test_support::addRefusalReport(handler);
  new msg::MTE(msg::error, "en", "msgx", "NoMessageCollection", "No catalogue in &0.", &handler,
               false, true);
  handler.loadMessageDocument(documentPath("base.xml").c_str());
  const struct {
    const char* file;
    const char* namespaceOfTheDocument;
  } cases[] = {{"no_such_document.xml", nullptr}, {"not_well_formed.xml", "broken"},
               {"schema_invalid.xml", "invalid"}, {"no_schema.xml", "noschema"},
               {"missing_part.xml", "missing"},   {"fault_in_part.xml", "whole"},
               {"no_collection.xml", "lonely"}};
  for (const auto& bad : cases) {
    const std::string path = documentPath(bad.file);
    SCOPED_TRACE(path);
    channel.lines.clear();
    std::string thrown = "<nothing thrown>";
    try {
      handler.loadMessageDocument(path.c_str());
    } catch (const msg::ErrorInMessageDocument& failure) {
      thrown = failure.getText();
    }
    if (std::string(bad.file) == "no_collection.xml") {
      EXPECT_EQ(thrown, "No MessageCollection element found in document");
      EXPECT_EQ(channel.lines, std::vector<std::string>{
                                   "msgx:NoMessageCollection: No catalogue in " + path + "."});
    } else {
      EXPECT_EQ(thrown, "Message document \"" + path + "\" contains syntactical error.");
      EXPECT_EQ(channel.lines,
                std::vector<std::string>{"msgx:MessageDocumentError: Cannot load " + path + "."});
    }
    EXPECT_EQ(textOf(handler, "base", "kept"), "loaded before");
    if (bad.namespaceOfTheDocument != nullptr) {
      EXPECT_EQ(textOf(handler, bad.namespaceOfTheDocument, "first"), "<none>");
    }
  }
}

// A schema fault names the file where the faulty element is written, and
// the line and column of its start there.
TEST_F(DocumentLoaderTest, ASchemaFaultNamesTheFileAndLineOfTheFaultyElement) {
  test_support::addRefusalReport(handler);
  const struct {
    const char* document;
    const char* file;  // the document itself or the part holding the fault
    int line;
    int column;
  } cases[] = {// The root start tag takes three lines; the copy has it on one.
               {"fault_after_long_root.xml", "fault_after_long_root.xml", 5, 3},
               // An element inside a Text is the faulty one, not the Text.
               {"fault_in_content.xml", "fault_in_content.xml", 6, 32},
               {"fault_in_part.xml", "fault_part.xml", 6, 5},
               {"fault_in_nested_part.xml", "fault_inner_part.xml", 4, 28}};
  for (const auto& fault : cases) {
    SCOPED_TRACE(fault.document);
    std::vector<msg::DocumentProblem> problems;
    try {
      handler.loadMessageDocument(documentPath(fault.document).c_str());
    } catch (const msg::ErrorInMessageDocument& failure) {
      problems = failure.getProblems();
    }
    ASSERT_FALSE(problems.empty());
    EXPECT_EQ(problems.front().file, documentPath(fault.file));
    EXPECT_EQ(problems.front().line, fault.line);
    EXPECT_EQ(problems.front().column, fault.column);
  }
}

TEST(DocumentLoaderReportTest, WithoutAnyTextForTheReportMessageNotFoundLeaves) {
  // A handler of its own has no parent, so no not-found text to report with.
  msg::MessageHandlerX handler;
  EXPECT_THROW(handler.loadMessageDocument(documentPath("no_such_document.xml").c_str()),
               msg::MessageNotFound);
}

TEST(DocumentLoaderSystemTest, EachHandlerIsOneStartAndTextsArriveWhole) {
  // "Schlüssel für Größe: 5 €" in UTF-8. Xerces-C's local code page (ICU on
  // Debian) is UTF-8 under the plain C locale as well as under a UTF-8 one.
  const std::string utf8 =
      "Schl\xC3\xBC"
      "ssel f\xC3\xBC"
      "r Gr\xC3\xB6\xC3\x9F"
      "e: 5 \xE2\x82\xAC";
  ASSERT_FALSE(XercesXML::isSystemInitialized());
  for (const char* locale : {"C", "C.UTF-8"}) {
    SCOPED_TRACE(locale);
    ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr);
    {
      msg::MessageHandlerX first;
      { msg::MessageHandlerX second; }
      EXPECT_TRUE(XercesXML::isSystemInitialized());
      first.setLanguageList(msg::LanguageList(msg::Language("de")));
      first.loadMessageDocument(documentPath("umlauts.xml").c_str());
      EXPECT_EQ(textOf(first, "encoding", "umlauts"), utf8);
    }
    EXPECT_FALSE(XercesXML::isSystemInitialized());
  }
  std::setlocale(LC_ALL, "C");

  // A handler joins a running system with the encoding in force.
  XercesXML::initializeSystem(XercesXML::UTF8);
  { msg::MessageHandlerX handler; }
  EXPECT_EQ(XercesXML::getOutputEncoding(), XercesXML::UTF8);
  XercesXML::terminateSystem();
}

}  // namespace
