// Tests of Parser: its settings, the document it hands out and who owns it,
// and its use after failures.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "msg/XercesXMLException.h"
#include "xml_access/XercesXML.h"
#include "xml_files.h"

namespace {

using XercesXML::DOMNode;
using XercesXML::Parser;
using xml_files::dataFile;
using xml_files::elementNames;
using xml_files::errorBlock;
using xml_files::kFinished;
using xml_files::parsingErrorOf;

TEST(ParserWithoutSystem, RefusesToExist) {
  ASSERT_FALSE(XercesXML::isSystemInitialized());
  try {
    Parser parser(true, false);
    ADD_FAILURE() << "no exception";
  } catch (const XercesXML::NotInitialized& failure) {
    EXPECT_EQ(failure.getText(), "XercesXML - Parser object created without initializing system.");
  }
}

class ParserTest : public xml_files::XmlFilesTest {};

TEST_F(ParserTest, AValidDocumentComesBackAsAHandleOnItsDocumentNode) {
  Parser parser(false, false);
  EXPECT_FALSE(parser.getXInclude());
  EXPECT_EQ(parser.getXIncludeOutputFile(), "");

  const DOMNode document = parser.parseFile(dataFile("valid_catalogue.xml"));
  EXPECT_EQ(document.getNodeName(), "#document");
  const DOMNode root = document.getFirstElementChild();
  EXPECT_EQ(root.getNodeName(), "Catalogue");
  EXPECT_EQ(elementNames(root), (std::vector<std::string>{"Entry", "Entry"}));
  EXPECT_EQ(root.getFirstElementChild().getAttributeByName("id", ""), "first");
  EXPECT_EQ(root.getFirstElementChild().getChildText(), "One");
  // The schema makes the blanks between the entries ignorable, and they are
  // dropped; without schema processing they stay as text nodes.
  EXPECT_EQ(root.getFirstChild().getNodeName(), "Entry");
  Parser relaxed(true, false);
  const DOMNode unvalidated = relaxed.parseFile(dataFile("valid_catalogue.xml"));
  EXPECT_EQ(unvalidated.getFirstElementChild().getFirstChild().getNodeName(), "#text");
}

TEST_F(ParserTest, CommentsAreDroppedAndEntitiesExpanded) {
  Parser parser(true, false);
  const DOMNode document = parser.parseFile(dataFile("comments_and_entities.xml"));
  const DOMNode root = document.getFirstElementChild();
  EXPECT_EQ(root.getChildText(), "before expanded after");
  EXPECT_FALSE(document.findFirstNodeByName("#comment").isValid());
}

TEST_F(ParserTest, TheDocumentOutlivesTheParserAndTheFirstHandle) {
  DOMNode entry(nullptr, nullptr);
  {
    Parser parser(true, false);
    const DOMNode document = parser.parseFile(dataFile("valid_catalogue.xml"));
    entry = document.findFirstNodeByName("Entry").getNextElementSibling();
  }
  // Parser and document handle are gone; the child handle alone keeps the
  // document (ASan and valgrind see a use after release or a leak).
  EXPECT_EQ(entry.getAttributeByName("id", ""), "second");
  EXPECT_EQ(entry.getChildText(), "Two");
}

TEST_F(ParserTest, EachParseGivesAnIndependentDocument) {
  Parser parser(true, false);
  const DOMNode first = parser.parseFile(dataFile("valid_catalogue.xml"));
  const DOMNode second = parser.parseFile(dataFile("no_grammar.xml"));
  const DOMNode third = parser.parseFile(dataFile("valid_catalogue.xml"));
  EXPECT_EQ(first.getFirstElementChild().getNodeName(), "Catalogue");
  EXPECT_EQ(second.getFirstElementChild().getNodeName(), "list");
  EXPECT_EQ(third.getFirstElementChild().getNodeName(), "Catalogue");
}

TEST_F(ParserTest, StrictSettingsValidateAndStopAtTheFirstViolation) {
  const std::string file = dataFile("schema_violations.xml");
  Parser strict(false, false);
  // Three violations in the file, one block: validation errors are fatal.
  EXPECT_EQ(parsingErrorOf(strict, file),
            errorBlock("Error", file, 4, 10, "missing required attribute 'id'") + kFinished);

  // Strict validation needs a grammar, and an unexpanded include is unknown
  // to the schema.
  const std::string noGrammar = dataFile("no_grammar.xml");
  EXPECT_EQ(
      parsingErrorOf(strict, noGrammar),
      errorBlock("Error", noGrammar, 2, 7, "no declaration found for element 'list'") + kFinished);
  const std::string include = dataFile("include_main.xml");
  EXPECT_EQ(parsingErrorOf(strict, include),
            errorBlock("Error", include, 6, 40, "no declaration found for element 'xi:include'") +
                kFinished);
}

TEST_F(ParserTest, RelaxedSettingsCheckWellFormednessOnly) {
  Parser relaxed(true, false);
  for (const char* name : {"schema_violations.xml", "no_grammar.xml", "include_main.xml"}) {
    EXPECT_TRUE(relaxed.parseFile(dataFile(name)).isValid()) << name;
  }
  // Without XInclude processing the include stays an element of its own.
  const DOMNode document = relaxed.parseFile(dataFile("include_main.xml"));
  EXPECT_EQ(elementNames(document.getFirstElementChild()),
            (std::vector<std::string>{"Entry", "include"}));
}

TEST_F(ParserTest, SwitchingXIncludeOffKeepsTheSettingsAndTheFileName) {
  Parser parser(false, false);
  parser.setXInclude(true, "out.xml");
  EXPECT_TRUE(parser.getXInclude());
  EXPECT_EQ(parser.getXIncludeOutputFile(), "out.xml");

  parser.setXInclude(false, "other.xml");
  EXPECT_FALSE(parser.getXInclude());
  EXPECT_EQ(parser.getXIncludeOutputFile(), "out.xml");

  parser.setXInclude(true, "");
  EXPECT_EQ(parser.getXIncludeOutputFile(), "");
  parser.setXInclude(false, "");

  // The strict settings of the constructor do not come back: a document
  // that breaks its schema parses.
  EXPECT_TRUE(parser.parseFile(dataFile("schema_violations.xml")).isValid());
}

TEST_F(ParserTest, TheParserStaysUsableAfterEveryKindOfFailure) {
  Parser parser(true, false);
  parsingErrorOf(parser, dataFile("not_well_formed.xml"));
  parsingErrorOf(parser, dataFile("no_such_file.xml"));
  parsingErrorOf(parser, dataFile("three_errors.xml"));
  const DOMNode document = parser.parseFile(dataFile("valid_catalogue.xml"));
  EXPECT_EQ(elementNames(document.getFirstElementChild()).size(), 2u);
}

}  // namespace
