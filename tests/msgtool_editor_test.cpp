// msgtool's document editor: what it changes in a message document, what it
// keeps byte for byte, and that a refused edit leaves the file as it was.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Catalogue.h"
#include "MessageDocumentEditor.h"
#include "ToolError.h"
#include "tests/scratch_folder.h"

namespace fs = std::filesystem;

namespace {

using test_support::readFile;
using test_support::writeFile;
using Text = msgtool::MessageDocumentEditor::ExistingText;

const char kHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!-- kept: a comment before the collection -->\n"
    "<MessageCollection xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
    "    xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n";

// A document with comments, two indentation depths and an include.
const std::string kDocument = std::string(kHead) +
                              "    <MessageNamespace name=\"app\">\n"
                              "        <Message id=\"start\" severity=\"info\">\n"
                              "            <Text xml:lang=\"en\">Starting &amp;0</Text>\n"
                              "            <!-- kept: reviewed -->\n"
                              "            <Text xml:lang=\"de\">Start &amp;0</Text>\n"
                              "        </Message>\n"
                              "    </MessageNamespace>\n"
                              "    <xi:include href=\"part.xml\" "
                              "xmlns:xi=\"http://www.w3.org/2001/XInclude\"/>\n"
                              "</MessageCollection>\n";

const char kPart[] =
    "<?xml version=\"1.0\"?>\n"
    "<MessageNamespace name=\"part\" "
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
    "xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n"
    "  <Message id=\"only\"><Text xml:lang=\"de\">Teil</Text></Message>\n"
    "</MessageNamespace>\n";

// The root element once the editor has stamped a text.
const char kEditedHead[] =
    "<MessageCollection xmlns:msgtool=\"urn:x-msg:msgtool:1\" "
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
    "xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n";

class EditorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::copy_file(fs::path(MSG_SOURCE_DIR) / "schema" / "messages.xsd", scratch / "messages.xsd");
    writeFile(scratch / "part.xml", kPart);
    writeFile(document(), kDocument);
  }
  std::string document() const { return (scratch / "messages.xml").string(); }

  test_support::ScratchFolder scratch;
  msgtool::XmlSession session;
};

// Keys of an included part are known but not edited.
TEST_F(EditorTest, EditsInPlaceAndKeepsCommentsIndentationAndIncludes) {
  msgtool::MessageDocumentEditor editor(document(), "unused.xsd");
  EXPECT_FALSE(editor.isNew());
  EXPECT_EQ(editor.find("app", "start", "de").value_or(Text{}).text, "Start &0");
  EXPECT_FALSE(editor.find("app", "start", "fr").has_value());
  EXPECT_EQ(editor.find("part", "only", "de").value_or(Text{}).text, "Teil");
  EXPECT_TRUE(editor.isInIncludedPart("part", "only"));
  EXPECT_FALSE(editor.isInIncludedPart("app", "start"));
  EXPECT_TRUE(editor.hasMessage("part", "only"));
  EXPECT_FALSE(editor.hasMessage("part", "missing"));

  editor.setText("app", "start", "", "de", "Los &0", "en:1");      // replaced
  editor.setText("app", "start", "", "fr", "Début &0", "en:2");    // a new Text
  editor.setText("app", "stop", "warning", "de", "Halt", "en:3");  // a new Message
  editor.setText("other", "x", "", "de", "<&1>", "en:4");          // a new namespace
  EXPECT_EQ(editor.find("app", "start", "fr")->stamp, "en:2");
  editor.save();

  const std::string expected =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!-- kept: a comment before the collection -->\n" +
      std::string(kEditedHead) +
      "    <MessageNamespace name=\"app\">\n"
      "        <Message id=\"start\" severity=\"info\">\n"
      "            <Text xml:lang=\"en\">Starting &amp;0</Text>\n"
      "            <!-- kept: reviewed -->\n"
      "            <Text msgtool:translated-from=\"en:1\" xml:lang=\"de\">Los &amp;0</Text>\n"
      "            <Text msgtool:translated-from=\"en:2\" xml:lang=\"fr\">Début &amp;0</Text>\n"
      "        </Message>\n"
      "        <Message id=\"stop\" severity=\"warning\">\n"
      "          <Text msgtool:translated-from=\"en:3\" xml:lang=\"de\">Halt</Text>\n"
      "        </Message>\n"
      "    </MessageNamespace>\n"
      "    <MessageNamespace name=\"other\">\n"
      "      <Message id=\"x\">\n"
      "        <Text msgtool:translated-from=\"en:4\" xml:lang=\"de\">&lt;&amp;1&gt;</Text>\n"
      "      </Message>\n"
      "    </MessageNamespace>\n"
      "    <xi:include xmlns:xi=\"http://www.w3.org/2001/XInclude\" href=\"part.xml\"/>\n"
      "</MessageCollection>\n";
  EXPECT_EQ(readFile(document()), expected);
  EXPECT_EQ(readFile(scratch / "part.xml"), kPart);
}

TEST_F(EditorTest, AddsToEmptyElementsWithOneStepMoreThanTheirParent) {
  writeFile(document(),
            std::string(kHead) +
                "  <MessageNamespace name=\"app\"><Message id=\"a\"/></MessageNamespace>\n"
                "</MessageCollection>\n");
  msgtool::MessageDocumentEditor editor(document(), "unused.xsd");
  editor.setText("app", "a", "", "en", "A", "s");
  editor.save();
  EXPECT_NE(readFile(document())
                .find("  <MessageNamespace name=\"app\">"
                      "<Message id=\"a\">\n"
                      "  <Text msgtool:translated-from=\"s\" xml:lang=\"en\">A</Text>\n"
                      "</Message></MessageNamespace>\n"),
            std::string::npos)
      << readFile(document());
}

TEST_F(EditorTest, NewDocumentNamesItsSchemaAndLoads) {
  const std::string fresh = (scratch / "fresh.xml").string();
  msgtool::MessageDocumentEditor editor(fresh, "messages.xsd");
  EXPECT_TRUE(editor.isNew());
  editor.setText("app", "hello", "info", "de", "Hallo", "en:5");
  editor.save();
  EXPECT_EQ(readFile(fresh),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + std::string(kEditedHead) +
                "  <MessageNamespace name=\"app\">\n"
                "    <Message id=\"hello\" severity=\"info\">\n"
                "      <Text msgtool:translated-from=\"en:5\" xml:lang=\"de\">Hallo</Text>\n"
                "    </Message>\n"
                "  </MessageNamespace>\n"
                "</MessageCollection>\n");
}

// A refusal names the file and the line the loader gives, and the document
// is byte for byte as it was; also when the loader refuses the edited one.
TEST_F(EditorTest, RefusedDocumentsAndEditsLeaveTheFileAsItWas) {
  const std::string file = document();
  const std::string refused = std::string(kHead) +
                              "  <MessageNamespace bogus=\"1\"/>\n"
                              "</MessageCollection>\n";
  writeFile(file, refused);
  try {
    msgtool::MessageDocumentEditor editor(file, "unused.xsd");
    ADD_FAILURE() << "not refused";
  } catch (const msgtool::ToolError& error) {
    EXPECT_STREQ(error.what(),
                 "attribute 'bogus' is not declared for element 'MessageNamespace' (the document "
                 "must load before texts can be imported into it)");
    EXPECT_EQ(error.getFile(), file);
    EXPECT_GT(error.getLine(), 0);
  }
  EXPECT_EQ(readFile(file), refused);

  // The schema has gone since the document was read.
  writeFile(file, kDocument);
  msgtool::MessageDocumentEditor editor(file, "unused.xsd");
  editor.setText("app", "start", "", "de", "Neu", "en:1");
  fs::remove(scratch / "messages.xsd");
  try {
    editor.save();
    ADD_FAILURE() << "an edit the loader refuses was saved";
  } catch (const msgtool::ToolError& error) {
    EXPECT_EQ(error.getFile(), file);
    EXPECT_EQ(error.getLine(), 0);
    EXPECT_EQ(std::string(error.what())
                  .rfind("the edited document would not load, so it was left as it was: ", 0),
              0u)
        << error.what();
  }
  EXPECT_EQ(readFile(file), kDocument);
  EXPECT_EQ(std::distance(fs::directory_iterator(scratch.path()), fs::directory_iterator()), 2)
      << "a temporary file was left beside messages.xml and part.xml";
}

}  // namespace
