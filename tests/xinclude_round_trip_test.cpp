// Tests of the XInclude mode: expansion, the serialised output file and the
// second, strict parse of the expanded document; and of the serialiser.

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xercesc/framework/MemBufFormatTarget.hpp>

#include "msg/XercesXMLException.h"
#include "tests/scratch_folder.h"
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

// include_main.xml after expansion, as the serialiser writes it.
constexpr char kExpandedMain[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>"
    "<Catalogue xmlns=\"\" xmlns:xi=\"http://www.w3.org/2001/XInclude\" "
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
    "xsi:noNamespaceSchemaLocation=\"catalogue.xsd\">\n"
    "  <Entry id=\"first\">One</Entry>\n"
    "  <Entry id=\"second\" xml:base=\"include_part.xml\">Two</Entry>\n"
    "</Catalogue>";

using test_support::readFile;

class XIncludeRoundTripTest : public xml_test::XmlSystemFixture {
 protected:
  // A path in the test's folder, with nothing there yet.
  std::string freshPath(const std::string& name) const { return (scratch / name).string(); }

  test_support::ScratchFolder scratch;
};

TEST_F(XIncludeRoundTripTest, IncludesAreExpandedAndTheResultValidatedStrictly) {
  // A relaxed constructor does not reach the round trip: the second parse is strict.
  Parser parser(true, false);
  parser.setXInclude(true, "");
  const DOMNode root = parser.parseFile(dataFile("include_main.xml")).getFirstElementChild();
  EXPECT_EQ(elementNames(root), (std::vector<std::string>{"Entry", "Entry"}));
  EXPECT_EQ(root.getFirstElementChild().getNextElementSibling().getChildText(), "Two");
  EXPECT_EQ(root.getFirstChild().getNodeName(), "Entry");  // ignorable blanks are gone

  // The fault lies in the included part: the block names the part and the
  // place where the faulty element starts there, not the serialised copy.
  // The problems a loader reads carry the same place (DocumentLoaderTest).
  const std::string breaks = dataFile("include_breaks_schema.xml");
  const std::string part = dataFile("include_part_without_id.xml");
  EXPECT_EQ(parsingErrorOf(parser, breaks),
            errorBlock("Error", part, 2, 1, "missing required attribute 'id'") + kFinished);

  // Relaxed settings are back: an unexpanded include would fail a strict first parse.
  EXPECT_TRUE(parser.parseFile(dataFile("include_main.xml")).isValid());
}

TEST_F(XIncludeRoundTripTest, TheOutputFileIsWrittenAfterTheFirstAndBeforeTheSecondParse) {
  const std::string output = freshPath("out.xml");
  Parser parser(false, false);
  parser.setXInclude(true, output);
  parsingErrorOf(parser, dataFile("not_well_formed.xml"));  // ends before the round trip
  EXPECT_FALSE(std::filesystem::exists(output));

  parsingErrorOf(parser, dataFile("include_breaks_schema.xml"));
  EXPECT_NE(readFile(output).find("<Entry xml:base=\"include_part_without_id.xml\">"
                                  "Two, but without an id</Entry>"),
            std::string::npos);
  std::ofstream(output) << std::string(4096, 'x');  // longer than what follows
  EXPECT_TRUE(parser.parseFile(dataFile("include_main.xml")).isValid());
  EXPECT_EQ(readFile(output), kExpandedMain);

  // A file that cannot be opened fails the round trip; the parser recovers.
  const std::string folder = freshPath("folder");
  const std::string unopenable = folder + "/out.xml";
  parser.setXInclude(true, unopenable);
  EXPECT_EQ(
      parsingErrorOf(parser, dataFile("include_main.xml")),
      "XercesXML - Abort: error while parsing: File " + unopenable + " could not be opened\n\n");
  std::filesystem::create_directory(folder);
  EXPECT_TRUE(parser.parseFile(dataFile("include_main.xml")).isValid());
  EXPECT_EQ(readFile(unopenable), kExpandedMain);
}

TEST_F(XIncludeRoundTripTest, AnOutputFileWithXIncludeOffIsWrittenWithoutASecondParse) {
  const std::string output = freshPath("off.xml");
  Parser parser(false, false);
  parser.setXInclude(true, output);
  parser.setXInclude(false, "");
  // Nothing is expanded or validated, and the document of the only parse comes back.
  for (int round = 0; round < 2; ++round) {
    const DOMNode document = parser.parseFile(dataFile("include_breaks_schema.xml"));
    EXPECT_EQ(elementNames(document.getFirstElementChild()),
              (std::vector<std::string>{"Entry", "include"}));
  }
  EXPECT_NE(readFile(output).find("<xi:include href=\"include_part_without_id.xml\"/>"),
            std::string::npos);
}

TEST_F(XIncludeRoundTripTest, SerialiserWritesMemoryOrFileAndFailuresLeaveNothingBehind) {
  Parser parser(true, false);
  const DOMNode document = parser.parseFile(dataFile("umlaut.xml"));
  xercesc::MemBufFormatTarget* target = nullptr;
  XercesXML::serializeToMemory(document, target, "ISO-8859-1");
  ASSERT_NE(target, nullptr);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(target->getRawBuffer()), target->getLen()),
            "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone=\"no\" ?>"
            "<Word lang=\"de\">Schl\xFCssel</Word>");
  delete target;

  // An empty encoding leaves the choice to the serialiser (UTF-8 here).
  const std::string file = freshPath("word.xml");
  target = nullptr;
  XercesXML::serializeDocument(document, file, target, "");
  EXPECT_EQ(target, nullptr);
  EXPECT_EQ(readFile(file),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>"
            "<Word lang=\"de\">Schl\xC3\xBCssel</Word>");

  const std::string unwritable = freshPath("folder") + "/word.xml";
  xml_test::expectText<XercesXML::ParsingError>(
      [&] { XercesXML::serializeDocument(document, unwritable, target, ""); },
      "unable to open file '" + unwritable + "'");
  EXPECT_EQ(target, nullptr);
  EXPECT_THROW(XercesXML::serializeToMemory(DOMNode(), target, ""), XercesXML::NullPointer);
  EXPECT_EQ(target, nullptr);
}

}  // namespace
