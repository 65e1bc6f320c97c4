// Places of texts that live in included parts: check's findings, the "#:"
// references of a PO export and the location notes of XLIFF exports name
// the part's own file and the line there, also for a part of a part.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/msgtool_run.h"
#include "tests/scratch_folder.h"

namespace fs = std::filesystem;

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const char kDocument[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<MessageCollection xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
    "    xmlns:xi=\"http://www.w3.org/2001/XInclude\"\n"
    "    xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n"
    "  <MessageNamespace name=\"app\">\n"
    "    <Message id=\"own\" severity=\"info\">\n"
    "      <Text xml:lang=\"en\">Own &amp;0</Text>\n"
    "      <Text xml:lang=\"de\">Eigen</Text>\n"
    "    </Message>\n"
    "  </MessageNamespace>\n"
    "  <xi:include href=\"parts/part.xml\"/>\n"
    "</MessageCollection>\n";

// Its own lines before the nested include shift the lines of the expanded
// copy; the message after the include shows that the part's elements still
// line up once the nested part's are passed.
const char kPart[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<MessageNamespace name=\"part\" xmlns:xi=\"http://www.w3.org/2001/XInclude\">\n"
    "  <!-- a comment -->\n"
    "  <Message id=\"outer\" severity=\"info\">\n"
    "    <Text xml:lang=\"en\">Outer &amp;0</Text>\n"
    "    <Text xml:lang=\"de\">Aussen</Text>\n"
    "  </Message>\n"
    "  <xi:include href=\"deeper/inner.xml\"/>\n"
    "  <Message id=\"after\"><Text xml:lang=\"en\">After &amp;0</Text><Text\n"
    "    xml:lang=\"de\">Danach</Text></Message>\n"
    "</MessageNamespace>\n";

const char kInner[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "\n"
    "<Message id=\"inner\" severity=\"info\">\n"
    "  <Text xml:lang=\"en\">Inner &amp;0</Text>\n"
    "  <Text xml:lang=\"de\">Innen</Text>\n"
    "</Message>\n";

class PlacesInPartsTest : public ::testing::Test {
 protected:
  PlacesInPartsTest() {
    fs::create_directories(scratch / "docs/parts/deeper");
    test_support::copySchemaInto(scratch / "docs");
    scratch.write("docs/app.xml", kDocument);
    scratch.write("docs/parts/part.xml", kPart);
    scratch.write("docs/parts/deeper/inner.xml", kInner);
  }

  // Standard output of msgtool with `arguments`, run in the scratch folder
  // so that the document is named by a relative path.
  std::string run(const std::vector<const char*>& arguments) {
    const test_support::ToolRun run = test_support::runMsgtool(arguments, scratch.path());
    EXPECT_NE(run.code, 2) << run.err;
    return run.out;
  }

  test_support::ScratchFolder scratch;
};

TEST_F(PlacesInPartsTest, FindingsReferencesAndNotesNameThePartsFileAndLine) {
  struct Row {
    const char* key;
    const char* finding;    // of the German text, which lacks &0
    const char* reference;  // of the English text
  };
  const std::vector<Row> rows = {
      {"app:own", "docs/app.xml:8:7", "docs/app.xml:7"},
      {"part:outer", "docs/parts/part.xml:6:5", "docs/parts/part.xml:5"},
      {"part:inner", "docs/parts/deeper/inner.xml:5:3", "docs/parts/deeper/inner.xml:4"},
      {"part:after", "docs/parts/part.xml:9:62", "docs/parts/part.xml:9"},
  };
  const std::string findings = run({"check", "docs/app.xml"});
  const std::string po = run({"export", "--format", "po", "--target", "de", "docs/app.xml"});
  const std::string xliff = run({"export", "--format", "xliff2", "--target", "de", "docs/app.xml"});
  for (const Row& row : rows) {
    SCOPED_TRACE(row.key);
    EXPECT_THAT(findings, HasSubstr(std::string(row.finding) + ": error: "));
    EXPECT_THAT(po, HasSubstr("#: " + std::string(row.reference) + "\nmsgctxt \"" + row.key));
    // Each reference names another line, so the note is the unit's own.
    EXPECT_THAT(xliff,
                HasSubstr("<note category=\"location\">" + std::string(row.reference) + "</note>"));
  }
}

TEST_F(PlacesInPartsTest, ASchemaFaultInAPartOfAPartIsNamedWhereItIsWritten) {
  // The attribute lang without its namespace is a schema fault.
  std::string faulty = kInner;
  faulty.replace(faulty.find("<Text xml:lang=\"de\">"), 20, "<Text lang=\"de\">");
  scratch.write("docs/parts/deeper/inner.xml", faulty);
  const std::string findings = run({"check", "docs/app.xml"});
  EXPECT_THAT(findings, HasSubstr("docs/parts/deeper/inner.xml:5:3: error: "));
  EXPECT_THAT(findings, Not(HasSubstr("docs/app.xml:")));
}

}  // namespace
