// The profile for files from outside: what it refuses, with which file and
// line, and that it opens nothing but the one file.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/InputLimits.h"
#include "tests/scratch_folder.h"
#include "xml_access/DocumentSerializer.h"
#include "xml_access/OutsideFile.h"
#include "xml_test_document.h"

namespace fs = std::filesystem;

namespace {

constexpr XercesXML::OutsideFileRules kRules{msg::limits::kMaxTranslatorsFileBytes, false};

class OutsideFileTest : public xml_test::XmlSystemFixture {
 protected:
  OutsideFileTest() : XmlSystemFixture(XercesXML::UTF8) {}

  std::string write(const std::string& name, const std::string& bytes) const {
    return scratch.write(name, bytes);
  }
  // The problem with which the profile refuses `path`; a failure if it
  // accepts it.
  XercesXML::ParseProblem refusalOf(const std::string& path,
                                    const XercesXML::OutsideFileRules& rules = kRules) const {
    try {
      XercesXML::parseOutsideFile(path, rules);
    } catch (const XercesXML::FileRefused& refused) {
      EXPECT_EQ(refused.getProblem().file, path);
      EXPECT_EQ(refused.what(), refused.getProblem().message);
      return refused.getProblem();
    }
    ADD_FAILURE() << "accepted: " << path;
    return XercesXML::ParseProblem{};
  }

  test_support::ScratchFolder scratch;
};

TEST_F(OutsideFileTest, RefusesWhatCouldReachBeyondTheFileOrGrowWithoutBound) {
  std::string deep = "<?xml version=\"1.0\"?>\n<a>\n";
  for (std::size_t i = 0; i < msg::limits::kMaxElementDepth; ++i) {
    deep += "<b>";
  }
  // Each attribute on a line of its own: the refusal names the line where
  // the element starts.
  const auto attributes = [](std::size_t count) {
    std::string element = "<?xml version=\"1.0\"?>\n<a>\n<b";
    for (std::size_t i = 0; i < count; ++i) {
      element += "\n a" + std::to_string(i) + "=\"\"";
    }
    return element + "/></a>";
  };
  struct Case {
    std::string content;
    std::uint64_t line;
    std::string message;
  };
  const std::vector<Case> cases = {
      {"<!DOCTYPE a SYSTEM \"http://example.com/a.dtd\" "
       "[<!ENTITY e SYSTEM \"file:///etc/passwd\">]><a>&e;</a>",
       1,
       "a document type declaration (DOCTYPE) is not allowed here: it could declare entities or "
       "load a DTD"},
      {deep, 3, "elements are nested deeper than the limit of 1000 levels"},
      {attributes(msg::limits::kMaxAttributesPerElement + 1), 3,
       "an element has 129 attributes, more than the limit of 128"},
      {"<?xml version=\"1.0\"?>\n<a>\n<b></a>", 3,
       "is not well-formed XML: expected end of tag 'b'"},
  };
  for (const Case& bad : cases) {
    const XercesXML::ParseProblem problem = refusalOf(write("bad.xml", bad.content));
    EXPECT_EQ(problem.line, bad.line) << bad.content.substr(0, 80);
    EXPECT_EQ(problem.message, bad.message);
  }
  EXPECT_NO_THROW(XercesXML::parseOutsideFile(
      write("full.xml", attributes(msg::limits::kMaxAttributesPerElement)), kRules));
}

TEST_F(OutsideFileTest, RefusesFilesItCannotTakeBeforeParsing) {
  const std::string big = write("big.xml", "<a/>");
  fs::resize_file(big, msg::limits::kMaxTranslatorsFileBytes + 1);  // sparse: no disk used
  EXPECT_EQ(refusalOf(big).message, "is larger than 16 MiB");
  EXPECT_EQ(refusalOf(scratch.path().string()).message, "is a folder, not a file");
  EXPECT_EQ(refusalOf((scratch / "missing.xml").string()).message,
            "cannot be read: No such file or directory");
  EXPECT_EQ(refusalOf(write("empty.xml", "")).message,
            "is not well-formed XML: invalid document structure");
}

// An xi:include stays an element and its part is never opened; schema
// locations are not followed. Comments stay only when asked for.
TEST_F(OutsideFileTest, OpensNothingButTheFileAndKeepsLinesAndAskedForComments) {
  write("part.xml", "<p>included</p>");
  const std::string body =
      "\n<!-- c -->\n"
      "<a xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
      "xsi:noNamespaceSchemaLocation=\"http://example.com/none.xsd\">\n"
      "  <xi:include xmlns:xi=\"http://www.w3.org/2001/XInclude\" href=\"part.xml\"/>\n"
      "</a>\n";
  const std::string path = write("doc.xml", "<?xml version=\"1.0\"?>" + body);
  const XercesXML::DOMNode plain = XercesXML::parseOutsideFile(path, kRules);
  const XercesXML::DOMNode root = plain.getFirstElementChild();
  EXPECT_EQ(plain.getFirstChild().getNodeName(), "a") << "a comment was kept";
  EXPECT_EQ(root.getSourceLine(), 3);
  const XercesXML::DOMNode include = root.getFirstElementChild();
  EXPECT_EQ(include.getNodeName(), "include");
  EXPECT_EQ(include.getSourceLine(), 4);
  EXPECT_EQ(root.getTextContent().find("included"), std::string::npos);

  const XercesXML::DOMNode kept =
      XercesXML::parseOutsideFile(path, {msg::limits::kMaxTranslatorsFileBytes, true});
  EXPECT_EQ(kept.getFirstChild().getNodeValue(), " c ");
  // Written back as it stands, the file is the same but for its declaration.
  EXPECT_EQ(XercesXML::serializeAsWritten(kept),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + body);
}

// A tree the serialiser cannot write is refused with this layer's error,
// never with one of Xerces-C, which would outlive the XML system.
TEST_F(OutsideFileTest, ATreeWithACharacterXmlCannotHoldIsRefusedWhenWritten) {
  const XercesXML::DOMNode document = XercesXML::DOMNode::createDocument("", "a");
  document.getFirstElementChild().appendText("bell \a");
  EXPECT_THROW(XercesXML::serializeAsWritten(document), XercesXML::ParsingError);
}

}  // namespace
