// Tests of the XInclude mode: expansion, the serialised output file and the
// second, strict parse of the expanded document; and of the serialiser.

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xercesc/framework/MemBufFormatTarget.hpp>

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
using xml_files::readFile;

// include_main.xml after expansion, as the serialiser writes it.
constexpr char kExpandedMain[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>"
    "<Catalogue xmlns=\"\" xmlns:xi=\"http://www.w3.org/2001/XInclude\" "
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
    "xsi:noNamespaceSchemaLocation=\"catalogue.xsd\">\n"
    "  <Entry id=\"first\">One</Entry>\n"
    "  <Entry id=\"second\" xml:base=\"include_part.xml\">Two</Entry>\n"
    "</Catalogue>";

// The bytes of a memory target.
std::string contentOf(const xercesc::MemBufFormatTarget& target) {
  return std::string(reinterpret_cast<const char*>(target.getRawBuffer()), target.getLen());
}

class XIncludeRoundTripTest : public xml_files::XmlFilesTest {};

TEST_F(XIncludeRoundTripTest, IncludesAreExpandedAndTheResultValidated) {
  Parser parser(false, false);
  parser.setXInclude(true, "");
  const DOMNode document = parser.parseFile(dataFile("include_main.xml"));
  const DOMNode root = document.getFirstElementChild();
  EXPECT_EQ(elementNames(root), (std::vector<std::string>{"Entry", "Entry"}));
  const DOMNode included = root.getFirstElementChild().getNextElementSibling();
  EXPECT_EQ(included.getAttributeByName("id", ""), "second");
  EXPECT_EQ(included.getChildText(), "Two");
  // The second parse validated against the schema: the blanks between the
  // entries were ignorable and are gone.
  EXPECT_EQ(root.getFirstChild().getNodeName(), "Entry");
}

TEST_F(XIncludeRoundTripTest, APartThatBreaksTheSchemaFailsTheSecondParseOnly) {
  // A relaxed constructor does not reach the round trip: the second parse
  // is strict all the same.
  Parser parser(true, false);
  parser.setXInclude(true, "");
  const std::string file = dataFile("include_breaks_schema.xml");
  // The block names the file first parsed; line and column count in the
  // serialised text.
  EXPECT_EQ(parsingErrorOf(parser, file),
            errorBlock("Error", file, 3, 49, "missing required attribute 'id'") + kFinished);

  // Relaxed settings are back: the next include is expanded before anything
  // validates it, so its xi:include element does not fail the first parse.
  const DOMNode document = parser.parseFile(dataFile("include_main.xml"));
  EXPECT_EQ(elementNames(document.getFirstElementChild()).size(), 2u);
}

TEST_F(XIncludeRoundTripTest, TheSecondParseNeedsAGrammar) {
  Parser parser(true, false);
  parser.setXInclude(true, "");
  const std::string file = dataFile("no_grammar.xml");
  EXPECT_EQ(
      parsingErrorOf(parser, file),
      errorBlock("Error", file, 1, 71, "no declaration found for element 'list'") + kFinished);
}

TEST_F(XIncludeRoundTripTest, AnErrorInTheFirstParseStopsBeforeTheRoundTrip) {
  const std::string output = scratchFile("out.xml");
  Parser parser(false, false);
  parser.setXInclude(true, output);

  const std::string broken = dataFile("not_well_formed.xml");
  EXPECT_EQ(parsingErrorOf(parser, broken),
            errorBlock("Fatal error", broken, 4, 14, "expected end of tag 'item'") + kFinished);
  EXPECT_FALSE(std::filesystem::exists(output));

  // A part that cannot be found is a fatal error of the first parse.
  const std::string missingPart = dataFile("include_missing_part.xml");
  const std::string url = "file://" + missingPart;
  EXPECT_EQ(parsingErrorOf(parser, missingPart),
            errorBlock("Fatal error", url, 0, 0,
                       "include failed and no fallback element found in document '" + url + "'") +
                kFinished);
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(XIncludeRoundTripTest, TheOutputFileHoldsTheExpandedDocumentAndIsTruncated) {
  const std::string output = scratchFile("out.xml");
  std::ofstream(output) << std::string(4096, 'x');  // longer than what follows
  Parser parser(false, false);
  parser.setXInclude(true, output);
  EXPECT_EQ(parser.parseFile(dataFile("include_main.xml")).getFirstElementChild().getNodeName(),
            "Catalogue");
  EXPECT_EQ(readFile(output), kExpandedMain);
}

TEST_F(XIncludeRoundTripTest, TheOutputFileIsWrittenBeforeValidationFails) {
  const std::string output = scratchFile("out.xml");
  Parser parser(false, false);
  parser.setXInclude(true, output);
  const std::string text = parsingErrorOf(parser, dataFile("include_breaks_schema.xml"));
  EXPECT_NE(text.find("missing required attribute 'id'"), std::string::npos);
  EXPECT_NE(readFile(output).find("<Entry xml:base=\"include_part_without_id.xml\">"
                                  "Two, but without an id</Entry>"),
            std::string::npos);
}

TEST_F(XIncludeRoundTripTest, AnOutputFolderThatDoesNotExistFailsAndTheParserRecovers) {
  const std::string output = scratchFile("missing-folder/out.xml");
  Parser parser(false, false);
  parser.setXInclude(true, output);
  EXPECT_EQ(parsingErrorOf(parser, dataFile("include_main.xml")),
            "XercesXML - Abort: error while parsing: File " + output + " could not be opened\n\n");

  // Once the folder exists the same parser succeeds: the first parse ran
  // relaxed again (an unexpanded include would fail a strict one).
  std::filesystem::create_directory(scratch / "missing-folder");
  EXPECT_TRUE(parser.parseFile(dataFile("include_main.xml")).isValid());
  EXPECT_EQ(readFile(output), kExpandedMain);
}

TEST_F(XIncludeRoundTripTest, AnOutputFileWithXIncludeOffIsWrittenWithoutASecondParse) {
  const std::string output = scratchFile("out.xml");
  Parser parser(false, false);
  parser.setXInclude(true, output);
  parser.setXInclude(false, "");

  // Nothing is expanded and nothing validated: the part without an id is
  // never read, and the document of the only parse comes back.
  const DOMNode document = parser.parseFile(dataFile("include_breaks_schema.xml"));
  EXPECT_EQ(elementNames(document.getFirstElementChild()),
            (std::vector<std::string>{"Entry", "include"}));
  const std::string written = readFile(output);
  EXPECT_NE(written.find("<xi:include href=\"include_part_without_id.xml\"/>"), std::string::npos);
  EXPECT_EQ(written.find("Two, but without an id"), std::string::npos);

  // The same again: the parser's document from the round trip is not
  // shared with anything else.
  const DOMNode again = parser.parseFile(dataFile("include_breaks_schema.xml"));
  EXPECT_TRUE(again.isValid());
}

TEST_F(XIncludeRoundTripTest, SerialiserWritesMemoryOrFileInTheGivenEncoding) {
  Parser parser(true, false);
  const DOMNode document = parser.parseFile(dataFile("umlaut.xml"));

  xercesc::MemBufFormatTarget* target = nullptr;
  XercesXML::serializeToMemory(document, target, "ISO-8859-1");
  ASSERT_NE(target, nullptr);
  const std::string latin1 = contentOf(*target);
  delete target;
  EXPECT_EQ(latin1,
            "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone=\"no\" ?>"
            "<Word lang=\"de\">Schl\xFC"
            "ssel</Word>");

  // An empty encoding leaves the choice to the serialiser (UTF-8 here).
  const std::string file = scratchFile("word.xml");
  target = nullptr;
  XercesXML::serializeDocument(document, file, target, "");
  EXPECT_EQ(target, nullptr);
  EXPECT_EQ(readFile(file),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>"
            "<Word lang=\"de\">Schl\xC3\xBC"
            "ssel</Word>");
}

TEST_F(XIncludeRoundTripTest, SerialiserFailuresLeaveNothingBehind) {
  Parser parser(true, false);
  const DOMNode document = parser.parseFile(dataFile("umlaut.xml"));
  xercesc::MemBufFormatTarget* target = nullptr;

  const std::string file = scratchFile("missing-folder/word.xml");
  try {
    XercesXML::serializeDocument(document, file, target, "");
    ADD_FAILURE() << "no exception";
  } catch (const XercesXML::ParsingError& failure) {
    EXPECT_EQ(failure.getText(), "unable to open file '" + file + "'");
  }
  EXPECT_EQ(target, nullptr);

  try {
    XercesXML::serializeToMemory(DOMNode(), target, "");
    ADD_FAILURE() << "no exception";
  } catch (const XercesXML::NullPointer& failure) {
    EXPECT_EQ(failure.getText(), "XercesXML - Access to DOM null pointer.");
  }
  EXPECT_EQ(target, nullptr);
}

}  // namespace
