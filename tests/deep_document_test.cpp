// Documents nested too deep for the serialiser of the XInclude round trip.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "xml_access/XercesXML.h"

namespace {

class DeepDocumentTest : public ::testing::Test {
 protected:
  void SetUp() override {
    XercesXML::initializeSystem(XercesXML::LocalCodePage);
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "deep.xsd")
        << "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">"
           "<xs:element name=\"Deep\"><xs:complexType><xs:sequence>"
           "<xs:element ref=\"Deep\" minOccurs=\"0\"/>"
           "</xs:sequence></xs:complexType></xs:element></xs:schema>\n";
  }
  void TearDown() override {
    std::filesystem::remove_all(folder);
    XercesXML::terminateSystem();
  }

  // Writes a valid document of `depth` nested elements.
  void writeNested(int depth) {
    std::ofstream out(path);
    out << "<?xml version=\"1.0\"?>\n<Deep xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
           "xsi:noNamespaceSchemaLocation=\"deep.xsd\">";
    for (int i = 1; i < depth; ++i) {
      out << "<Deep>";
    }
    for (int i = 0; i < depth; ++i) {
      out << "</Deep>";
    }
    out << "\n";
  }

  // Parses in XInclude mode, which serialises the document and parses it
  // again, and gives the text of the ParsingError ("" if none).
  std::string roundTripError() {
    XercesXML::Parser parser(true, false);
    parser.setXInclude(true, std::string());
    try {
      parser.parseFile(path.string());
    } catch (const XercesXML::ParsingError& error) {
      return error.getText();
    }
    return "";
  }

  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() /
      ("deep_document_test_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()));
  const std::filesystem::path path = folder / "deep.xml";
};

// 100,000 levels overflowed the stack in the serialiser; such a document is
// refused while it is parsed, before anything is built from it.
TEST_F(DeepDocumentTest, TooDeepIsRefusedAndWithinTheLimitTakesTheRoundTrip) {
  writeNested(100000);
  EXPECT_THAT(roundTripError(), ::testing::HasSubstr("nested deeper than the limit of 1000 levels"));

  // The document node is level 0, so 1,000 nested elements are the deepest
  // document that passes.
  writeNested(1000);
  EXPECT_EQ(roundTripError(), "");
  writeNested(1001);
  EXPECT_THAT(roundTripError(), ::testing::HasSubstr("nested deeper than the limit of 1000 levels"));
}

}  // namespace
