// Tests of Parser: its settings, the document it hands out and who owns it,
// and the error blocks of a failed parse and where they go.

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/XMLString.hpp>

#include "msg/XercesXMLException.h"
#include "xml_access/XercesXML.h"
#include "xml_test_document.h"

namespace {

using XercesXML::DOMNode;
using XercesXML::Parser;
using xml_test::dataFile;
using xml_test::elementNames;
using xml_test::errorBlock;
using xml_test::kFinished;
using xml_test::parsingErrorOf;

TEST(ParserWithoutSystem, RefusesToExist) {
  xml_test::expectText<XercesXML::NotInitialized>(
      [] { Parser parser(true, false); },
      "XercesXML - Parser object created without initializing system.");
}

class ParserTest : public xml_test::XmlSystemFixture {};

TEST_F(ParserTest, StrictParseValidatesAndDropsIgnorableBlanks) {
  Parser strict(false, false);
  const DOMNode document = strict.parseFile(dataFile("valid_catalogue.xml"));
  EXPECT_EQ(document.getNodeName(), "#document");
  EXPECT_EQ(elementNames(document.getFirstElementChild()),
            (std::vector<std::string>{"Entry", "Entry"}));
  EXPECT_EQ(document.getFirstElementChild().getFirstChild().getNodeName(), "Entry");
  Parser relaxed(true, false);
  const DOMNode unvalidated = relaxed.parseFile(dataFile("valid_catalogue.xml"));
  EXPECT_EQ(unvalidated.getFirstElementChild().getFirstChild().getNodeName(), "#text");

  // Comments are dropped and entities expanded.
  const DOMNode text = relaxed.parseFile(dataFile("comments_and_entities.xml"));
  EXPECT_EQ(text.getFirstElementChild().getChildText(), "before expanded after");
  EXPECT_FALSE(text.findFirstNodeByName("#comment").isValid());
  // Relaxed settings check well-formedness only.
  for (const char* name : {"schema_violations.xml", "no_grammar.xml", "include_main.xml"}) {
    EXPECT_TRUE(relaxed.parseFile(dataFile(name)).isValid()) << name;
  }
}

TEST_F(ParserTest, DocumentsOutliveTheParserAndTheFirstHandle) {
  DOMNode entry(nullptr, nullptr);
  DOMNode other(nullptr, nullptr);
  {
    Parser parser(true, false);
    entry = parser.parseFile(dataFile("valid_catalogue.xml")).findFirstNodeByName("Entry");
    other = parser.parseFile(dataFile("no_grammar.xml"));
  }
  EXPECT_EQ(entry.getNextElementSibling().getAttributeByName("id", ""), "second");
  EXPECT_EQ(other.getFirstElementChild().getNodeName(), "list");
}

// A receiver that keeps the blocks it is given; it may throw instead.
class RecordingReceiver : public XercesXML::XercesXMLErrorHandlerInterface {
 public:
  void warning(std::string text) override { blocks.push_back("warning: " + text); }
  void error(std::string text) override {
    blocks.push_back(text);
    if (throwing) {
      throw XercesXML::NullPointer("thrown by the receiver");
    }
  }
  void fatalError(std::string text) override { blocks.push_back(text); }

  std::vector<std::string> blocks;
  bool throwing = false;
};

TEST_F(ParserTest, ReporterWritesTwoLineBlocksAndLeavesTheParserWithoutHandler) {
  xercesc::XercesDOMParser parser;
  RecordingReceiver receiver;
  {
    XercesXML::TreeErrorReporter reporter(&parser, &receiver);
    XMLCh* message = xercesc::XMLString::transcode("bad thing");
    XMLCh* file = xercesc::XMLString::transcode("dir/doc.xml");
    reporter.warning(xercesc::SAXParseException(message, nullptr, file, 1, 1));
    EXPECT_FALSE(reporter.getSawErrors());
    reporter.error(xercesc::SAXParseException(message, nullptr, file, 1099511627777ull, 3));
    xercesc::XMLString::release(&message);
    xercesc::XMLString::release(&file);
    reporter.resetErrors();
    EXPECT_TRUE(reporter.getSawErrors());
  }
  EXPECT_EQ(parser.getErrorHandler(), nullptr);
  EXPECT_EQ(receiver.blocks,
            std::vector<std::string>{"Error in file \"dir/doc.xml\", line 1099511627777, column 3\n"
                                     "                                   Message: bad thing\n"});
}

TEST_F(ParserTest, AHoldingReporterPassesNothingOnUntilReleasedAtTheNewPlaces) {
  xercesc::XercesDOMParser parser;
  RecordingReceiver receiver;
  std::vector<XercesXML::ParseProblem> problems;
  XercesXML::TreeErrorReporter reporter(&parser, &receiver, &problems, true);
  XMLCh* message = xercesc::XMLString::transcode("bad thing");
  XMLCh* file = xercesc::XMLString::transcode("copy.xml");
  reporter.error(xercesc::SAXParseException(message, nullptr, file, 1, 40));
  reporter.fatalError(xercesc::SAXParseException(message, nullptr, file, 1, 90));
  xercesc::XMLString::release(&message);
  xercesc::XMLString::release(&file);
  EXPECT_TRUE(reporter.getSawErrors());
  EXPECT_TRUE(reporter.hasHeld());
  EXPECT_TRUE(receiver.blocks.empty());
  EXPECT_TRUE(problems.empty());

  std::uint64_t nextLine = 5;
  reporter.release([&](XercesXML::ParseProblem& problem) {
    problem.file = "part.xml";
    problem.line = nextLine++;
  });
  const std::string blanks(35, ' ');
  EXPECT_EQ(receiver.blocks,
            (std::vector<std::string>{
                "Error in file \"part.xml\", line 5, column 40\n" + blanks + "Message: bad thing\n",
                "Fatal error in file \"part.xml\", line 6, column 90\n" + blanks +
                    "Message: bad thing\n"}));
  ASSERT_EQ(problems.size(), 2u);
  EXPECT_EQ(problems[1].line, 6u);
  EXPECT_FALSE(reporter.hasHeld());
  reporter.release(nullptr);  // nothing is passed on twice
  EXPECT_EQ(receiver.blocks.size(), 2u);
}

TEST_F(ParserTest, EachErrorGivesOneBlockInOrderThenTheClosingLine) {
  Parser relaxed(true, false);
  const std::string missingId = "missing required attribute 'id'";
  const std::string three = dataFile("three_errors.xml");
  EXPECT_EQ(parsingErrorOf(relaxed, three), errorBlock("Error", three, 8, 9, missingId) +
                                                errorBlock("Error", three, 10, 9, missingId) +
                                                errorBlock("Error", three, 11, 9, missingId) +
                                                kFinished);
  // The same errors, as problems with their places.
  ASSERT_EQ(relaxed.getProblems().size(), 3u);
  EXPECT_EQ(relaxed.getProblems()[1].file, three);
  EXPECT_EQ(relaxed.getProblems()[1].line, 10u);
  EXPECT_EQ(relaxed.getProblems()[1].message, missingId);
  // A fatal error ends the parse.
  const std::string broken = dataFile("not_well_formed.xml");
  EXPECT_EQ(parsingErrorOf(relaxed, broken),
            errorBlock("Fatal error", broken, 4, 14, "expected end of tag 'item'") + kFinished);

  // Strict: validation errors are fatal, so of three violations one is reported.
  Parser strict(false, false);
  const std::string violations = dataFile("schema_violations.xml");
  EXPECT_EQ(parsingErrorOf(strict, violations),
            errorBlock("Error", violations, 4, 10, missingId) + kFinished);

  // Warnings leave no trace.
  for (Parser* parser : {&relaxed, &strict}) {
    EXPECT_EQ(
        parser->parseFile(dataFile("warnings_only.xml")).getFirstElementChild().getChildText(),
        "text");
  }
}

TEST_F(ParserTest, AClientReceiverGetsTheBlocksInsteadOfTheErrorText) {
  Parser parser(true, false);
  RecordingReceiver receiver;
  parser.setErrorHandler(&receiver);
  const std::string file = dataFile("three_errors.xml");
  EXPECT_EQ(parsingErrorOf(parser, file), kFinished);
  ASSERT_EQ(receiver.blocks.size(), 3u);
  EXPECT_EQ(receiver.blocks[1],
            errorBlock("Error", file, 10, 9, "missing required attribute 'id'"));

  // Anything thrown out of the parse is an unknown error, even an exception
  // of the XML layer itself, and the parser recovers.
  receiver.throwing = true;
  EXPECT_EQ(parsingErrorOf(parser, file), "XercesXML - Unknown system error while parsing.\n");
  EXPECT_EQ(receiver.blocks.size(), 4u);  // the parse ended at the first error

  parser.setErrorHandler(nullptr);
  EXPECT_EQ(parsingErrorOf(parser, file).find("Error in file"), 0u);
  EXPECT_EQ(parser.parseFile(dataFile("valid_catalogue.xml")).getFirstElementChild().getNodeName(),
            "Catalogue");
}

}  // namespace
