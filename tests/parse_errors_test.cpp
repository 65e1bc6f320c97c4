// Tests of parse error reporting: the error blocks, their receivers, and the
// texts of the ParsingError that parseFile raises.

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/XMLString.hpp>

#include "msg/XercesXMLException.h"
#include "xml_access/XercesXML.h"
#include "xml_files.h"

namespace {

using XercesXML::Parser;
using xml_files::dataFile;
using xml_files::errorBlock;
using xml_files::kFinished;
using xml_files::parsingErrorOf;

// A receiver that keeps what it is given; optionally throws from error().
class RecordingReceiver : public XercesXML::XercesXMLErrorHandlerInterface {
 public:
  void warning(std::string text) override { warnings.push_back(text); }
  void error(std::string text) override {
    errors.push_back(text);
    if (throwStd) {
      throw std::runtime_error("receiver gave up");
    }
    if (throwLayer) {
      throw XercesXML::NullPointer("thrown by the receiver");
    }
  }
  void fatalError(std::string text) override { fatalErrors.push_back(text); }

  std::vector<std::string> warnings, errors, fatalErrors;
  bool throwStd = false;
  bool throwLayer = false;
};

// A SAXParseException as the parser would report it.
xercesc::SAXParseException saxException(const char* message, const char* systemId, XMLFileLoc line,
                                        XMLFileLoc column) {
  XMLCh* wideMessage = xercesc::XMLString::transcode(message);
  XMLCh* wideId = systemId != nullptr ? xercesc::XMLString::transcode(systemId) : nullptr;
  xercesc::SAXParseException exception(wideMessage, nullptr, wideId, line, column);
  xercesc::XMLString::release(&wideMessage);
  xercesc::XMLString::release(&wideId);
  return exception;
}

class ParseErrorsTest : public xml_files::XmlFilesTest {};

TEST_F(ParseErrorsTest, ReporterHoldsTheParserForItsLifeOnlyAndLeavesNoHandler) {
  xercesc::XercesDOMParser parser;
  xercesc::HandlerBase previous;
  parser.setErrorHandler(&previous);
  RecordingReceiver receiver;
  {
    XercesXML::TreeErrorReporter reporter(&parser, &receiver);
    EXPECT_EQ(parser.getErrorHandler(), &reporter);
  }
  // The handler installed before is not put back.
  EXPECT_EQ(parser.getErrorHandler(), nullptr);
}

TEST_F(ParseErrorsTest, BlocksHaveTheTwoLineLayoutAndWarningsLeaveNoTrace) {
  xercesc::XercesDOMParser parser;
  RecordingReceiver receiver;
  XercesXML::TreeErrorReporter reporter(&parser, &receiver);

  reporter.warning(saxException("only a warning", "doc.xml", 1, 1));
  EXPECT_FALSE(reporter.getSawErrors());
  EXPECT_TRUE(receiver.warnings.empty());

  reporter.error(saxException("bad thing", "dir/doc.xml", 12, 3));
  EXPECT_TRUE(reporter.getSawErrors());
  ASSERT_EQ(receiver.errors.size(), 1u);
  EXPECT_EQ(receiver.errors[0],
            "Error in file \"dir/doc.xml\", line 12, column 3\n"
            "                                   Message: bad thing\n");

  // Line numbers are 64 bits wide; a missing system id gives empty quotes.
  reporter.fatalError(saxException("worse thing", nullptr, 1099511627777ull, 0));
  ASSERT_EQ(receiver.fatalErrors.size(), 1u);
  EXPECT_EQ(receiver.fatalErrors[0],
            errorBlock("Fatal error", "", 1099511627777ull, 0, "worse thing"));

  reporter.resetErrors();
  EXPECT_TRUE(reporter.getSawErrors());
  EXPECT_TRUE(receiver.warnings.empty());
}

TEST_F(ParseErrorsTest, WarningsAloneDoNotFailAParse) {
  for (const bool relaxed : {true, false}) {
    Parser parser(relaxed, false);
    const XercesXML::DOMNode document = parser.parseFile(dataFile("warnings_only.xml"));
    EXPECT_EQ(document.getFirstElementChild().getChildText(), "text") << relaxed;
  }
}

TEST_F(ParseErrorsTest, EachErrorGivesOneBlockInOrderThenTheClosingLine) {
  Parser parser(true, false);
  const std::string file = dataFile("three_errors.xml");
  const std::string missingId = "missing required attribute 'id'";
  EXPECT_EQ(parsingErrorOf(parser, file), errorBlock("Error", file, 8, 9, missingId) +
                                              errorBlock("Error", file, 10, 9, missingId) +
                                              errorBlock("Error", file, 11, 9, missingId) +
                                              kFinished);
}

TEST_F(ParseErrorsTest, AFatalErrorEndsTheParseWithItsBlockLast) {
  Parser parser(true, false);
  const std::string file = dataFile("not_well_formed.xml");
  EXPECT_EQ(parsingErrorOf(parser, file),
            errorBlock("Fatal error", file, 4, 14, "expected end of tag 'item'") + kFinished);
}

TEST_F(ParseErrorsTest, AMissingFileIsAFatalErrorWithoutAPosition) {
  Parser parser(false, false);
  const std::string file = dataFile("no_such_file.xml");
  EXPECT_EQ(
      parsingErrorOf(parser, file),
      errorBlock("Fatal error", "", 0, 0, "unable to open primary document entity '" + file + "'") +
          kFinished);
}

TEST_F(ParseErrorsTest, AClientReceiverGetsTheBlocksInsteadOfTheErrorText) {
  Parser parser(true, false);
  RecordingReceiver receiver;
  parser.setErrorHandler(&receiver);
  const std::string file = dataFile("three_errors.xml");
  EXPECT_EQ(parsingErrorOf(parser, file), kFinished);
  ASSERT_EQ(receiver.errors.size(), 3u);
  EXPECT_EQ(receiver.errors[1],
            errorBlock("Error", file, 10, 9, "missing required attribute 'id'"));
  EXPECT_TRUE(receiver.fatalErrors.empty());

  // Null brings the parse's own error text back.
  parser.setErrorHandler(nullptr);
  EXPECT_EQ(parsingErrorOf(parser, dataFile("not_well_formed.xml")).find("Fatal error in file"),
            0u);
  EXPECT_EQ(receiver.errors.size(), 3u);
}

TEST_F(ParseErrorsTest, AnythingThrownOutOfTheParseIsAnUnknownErrorAndTheParserRecovers) {
  Parser parser(true, false);
  RecordingReceiver receiver;
  parser.setErrorHandler(&receiver);

  receiver.throwStd = true;
  EXPECT_EQ(parsingErrorOf(parser, dataFile("three_errors.xml")),
            "XercesXML - Unknown system error while parsing.\n");
  EXPECT_EQ(receiver.errors.size(), 1u);  // the parse ended at the first error

  // An exception of the XML layer itself gets no special treatment here.
  receiver.throwStd = false;
  receiver.throwLayer = true;
  EXPECT_EQ(parsingErrorOf(parser, dataFile("three_errors.xml")),
            "XercesXML - Unknown system error while parsing.\n");

  const XercesXML::DOMNode document = parser.parseFile(dataFile("valid_catalogue.xml"));
  EXPECT_EQ(document.getFirstElementChild().getNodeName(), "Catalogue");
}

}  // namespace
