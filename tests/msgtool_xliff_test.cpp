// msgtool's XLIFF 1.2 and 2.0 readers and writers: a written file reads back
// as it was, files of other tools read as their translators meant, and bad
// files are refused with their file and line.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "ToolError.h"
#include "XliffFile.h"
#include "tests/scratch_folder.h"

namespace fs = std::filesystem;

namespace {

class XliffTest : public ::testing::Test {
 protected:
  std::string write(const std::string& name, const std::string& bytes) const {
    return scratch.write(name, bytes);
  }
  test_support::ScratchFolder scratch;
  msgtool::XmlSession session;
};

msgtool::XliffUnit unit(const std::string& key, const std::string& source,
                        std::optional<std::string> target, const std::string& state,
                        const std::string& severity = "warning") {
  msgtool::XliffUnit made;
  made.key = key;
  made.source = source;
  made.target = std::move(target);
  made.state = state;
  made.severity = severity;
  made.sourceFile = "app.xml";
  made.sourceLine = 7;
  return made;
}

// The fields a reader takes from the file are those of `expected`.
void expectUnit(const msgtool::XliffUnit& read, const msgtool::XliffUnit& expected) {
  EXPECT_EQ(read.key, expected.key);
  EXPECT_EQ(read.source, expected.source);
  EXPECT_EQ(read.target, expected.target);
  EXPECT_EQ(read.state, expected.state);
  EXPECT_EQ(read.severity, expected.severity);
  EXPECT_GT(read.line, 0);
}

// Everything a catalogue text can hold comes back byte for byte, in both
// versions: placeholders repeated, moved, with leading zeros, next to a
// bare '&', and markup characters.
TEST_F(XliffTest, WrittenFilesReadBackAsTheyWere) {
  for (const bool version2 : {false, true}) {
    msgtool::XliffFile file;
    file.original = "app.xml";
    file.sourceLanguage = "en";
    file.targetLanguage = "de";
    file.version2 = version2;
    file.units = {
        unit("app:start", "Start &0, then &1 & &0.", "&1 dann &0 & &0.", "translated"),
        unit("app:odd", "C:\\&007\t&&1 100& <b>\"x\"</b>\n", "&&1 &007 <i/>", "translated"),
        unit("app:stale", "Old &0", "Alt &0", "needs-review-translation"),
        unit("ns:a:b", "Untranslated &2", std::nullopt, ""),
    };
    const std::string path = write(version2 ? "v2.xlf" : "v12.xlf", file.write());
    const msgtool::XliffFile read = msgtool::XliffFile::read(path);

    SCOPED_TRACE(version2 ? "XLIFF 2.0" : "XLIFF 1.2");
    EXPECT_EQ(read.version2, version2);
    EXPECT_EQ(read.original, "app.xml");
    EXPECT_EQ(read.sourceLanguage, "en");
    EXPECT_EQ(read.targetLanguage, "de");
    ASSERT_EQ(read.units.size(), file.units.size());
    for (std::size_t i = 0; i < file.units.size(); ++i) {
      expectUnit(read.units[i], file.units[i]);
    }
  }
}

// What other tools write: groups, wrappers around text, CDATA, inline
// elements that the translator moved, codes named by their text only.
TEST_F(XliffTest, FilesOfOtherToolsReadAsMeant) {
  const std::string v12 = write(
      "other.xlf",
      "<?xml version=\"1.0\"?>\n"
      "<xliff version=\"1.1\" xmlns=\"urn:oasis:names:tc:xliff:document:1.2\">\n"
      " <file original=\"a.xml\" source-language=\"en\" target-language=\"fr\">\n"
      "  <header/><body><group><group>\n"
      "   <trans-unit id=\"u1\" resname=\"app:start\" approved=\"yes\">\n"
      "    <source>Start <x id=\"a\" equiv-text=\"&amp;0\"/> <ph id=\"b\">&amp;1</ph></source>\n"
      "    <target state=\"final\"><g id=\"g\"><x id=\"b\"/></g><![CDATA[ <&> ]]>"
      "<mrk mtype=\"x\"><x id=\"a\"/></mrk></target>\n"
      "    <note>severity: info</note><alt-trans><target>ignored</target></alt-trans>\n"
      "   </trans-unit></group></group>\n"
      "   <trans-unit id=\"app:plain\"><source>Plain</source></trans-unit>\n"
      "  </body></file></xliff>\n");
  const msgtool::XliffFile read12 = msgtool::XliffFile::read(v12);
  EXPECT_FALSE(read12.version2);
  EXPECT_EQ(read12.targetLanguage, "fr");
  ASSERT_EQ(read12.units.size(), 2u);
  expectUnit(read12.units[0], unit("app:start", "Start &0 &1", "&1 <&> &0", "final", "info"));
  EXPECT_EQ(read12.units[0].line, 5);
  EXPECT_TRUE(read12.units[0].approved);
  EXPECT_EQ(read12.units[1].key, "app:plain");
  EXPECT_FALSE(read12.units[1].target.has_value());

  const std::string v2 = write(
      "other2.xlf",
      "<xliff version=\"2.1\" srcLang=\"en\" trgLang=\"pt\" "
      "xmlns=\"urn:oasis:names:tc:xliff:document:2.0\"><file id=\"f\" original=\"b.xml\">\n"
      "<group id=\"g\"><unit id=\"app:start\"><notes><note category=\"severity\">abort</note>"
      "</notes><originalData><data id=\"d\">&amp;0</data></originalData>\n"
      "<segment state=\"reviewed\"><source>Start <ph id=\"1\" dataRef=\"d\"/>, "
      "<sc id=\"2\" equiv=\"&amp;1\"/></source>"
      "<target><pc id=\"3\"><ec id=\"2\" disp=\"&amp;1\"/></pc> <ph id=\"1\" "
      "dataRef=\"d\"/></target>"
      "</segment><ignorable><source>.</source></ignorable></unit>\n"
      "<unit id=\"app:open\"><segment><source>A</source><target>a</target></segment>"
      "<segment state=\"initial\"><source>B</source></segment></unit></group></file></xliff>\n");
  const msgtool::XliffFile read2 = msgtool::XliffFile::read(v2);
  EXPECT_TRUE(read2.version2);
  EXPECT_EQ(read2.original, "b.xml");
  EXPECT_EQ(read2.targetLanguage, "pt");
  ASSERT_EQ(read2.units.size(), 2u);
  expectUnit(read2.units[0], unit("app:start", "Start &0, &1.", "&1 &0.", "translated", "abort"));
  EXPECT_EQ(read2.units[1].source, "AB");
  EXPECT_FALSE(read2.units[1].target.has_value()) << "a unit translated in part has no target";
}

// Each refusal is a ToolError naming the file and the line of the fault.
TEST_F(XliffTest, BadFilesAreRefusedWithFileAndLine) {
  const std::string v12 =
      "<?xml version=\"1.0\"?>\n<xliff version=\"1.2\"><file source-language=\"en\"><body>\n";
  const std::string end12 = "</body></file></xliff>\n";
  const std::string v2 = "<?xml version=\"1.0\"?>\n<xliff version=\"2.0\"><file id=\"f\">\n";
  const std::string end2 = "</file></xliff>\n";
  std::string deepGroups = "<trans-unit/>";
  std::string deepInline;
  for (int i = 0; i < 40; ++i) {
    deepGroups = "<group>" + deepGroups + "</group>";
    deepInline = "<g>" + deepInline + "</g>";
  }
  struct Case {
    std::string content;
    std::string expected;  // after "<file>:"
  };
  const std::vector<Case> cases = {
      {"<?xml version=\"1.0\"?>\n<xlif/>\n",
       "2: error: is no XLIFF file: its root element is <xlif>"},
      {"<xliff version=\"3.0\"/>",
       "1: error: has XLIFF version '3.0'; msgtool reads XLIFF 1.2 (1.0 and 1.1 too)"},
      {"<?xml version=\"1.0\"?>\n<!DOCTYPE xliff [<!ENTITY e SYSTEM \"/etc/passwd\">]>\n<xliff/>",
       "2: error: a document type declaration (DOCTYPE) is not allowed here: it could declare "
       "entities or load a DTD"},
      {v12 + "<trans-unit>\n<source/></trans-unit>" + end12, "3: error: a trans-unit has no id"},
      {v12 + "\n<trans-unit id=\"k\"><target/></trans-unit>" + end12,
       "4: error: the trans-unit 'k' has no <source>"},
      {v12 + "<trans-unit id=\"k\"><source>\n<x id=\"1\"/></source></trans-unit>" + end12,
       "4: error: the inline element <x id=\"1\"> stands for no placeholder of the source"},
      {v12 + deepGroups + end12, "3: error: has groups nested more than 32 deep"},
      {v12 + "<trans-unit id=\"k\"><source>" + deepInline + "</source></trans-unit>" + end12,
       "3: error: has inline elements nested more than 32 deep"},
      {v2 + "<unit>\n</unit>" + end2, "3: error: a unit has no id"},
      {v2 + "<unit id=\"k\"><segment>\n<target/></segment></unit>" + end2,
       "3: error: a segment of unit 'k' has no <source>"},
      {v2 + "<unit id=\"k\">\n<notes/></unit>" + end2, "3: error: the unit 'k' has no segment"},
      {v2 +
           "<unit id=\"k\"><segment><source><ph id=\"p\" dataRef=\"none\"/></source></segment>"
           "</unit>" +
           end2,
       "3: error: the inline element <ph id=\"p\"> stands for no placeholder"},
  };
  for (const Case& bad : cases) {
    const std::string path = write("bad.xlf", bad.content);
    try {
      msgtool::XliffFile::read(path);
      ADD_FAILURE() << "accepted: " << bad.content;
    } catch (const msgtool::ToolError& error) {
      EXPECT_EQ(error.describe(), path + ":" + bad.expected);
    }
  }
}

}  // namespace
