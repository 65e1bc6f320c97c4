// msgtool's XLIFF 1.2 and 2.0 readers and writers: a written file reads back
// as it was, files of other tools read as their translators meant, and bad
// files are refused with their file and line.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "XliffFile.h"
#include "tests/msgtool_run.h"
#include "tests/scratch_folder.h"

namespace fs = std::filesystem;

namespace {

using ::testing::HasSubstr;

class XliffTest : public ::testing::Test {
 protected:
  static std::string refusalOf(const std::string& path) {
    return test_support::refusalOf(msgtool::XliffFile::read, path);
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

// What a reader takes from a file, as text: the file's version, original
// and languages, then one line per unit; with the line of each unit in the
// file if `lines`.
std::string describe(const msgtool::XliffFile& file, bool lines = true) {
  std::string text = (file.version2 ? "2.0 " : "1.2 ") + file.original + " " + file.sourceLanguage +
                     " -> " + file.targetLanguage + "\n";
  for (const msgtool::XliffUnit& unit : file.units) {
    text += unit.key + (unit.form >= 0 ? "[" + std::to_string(unit.form) + "]" : "") + ": " +
            unit.source + " -> " + unit.target.value_or("(none)") + " [" + unit.state + ", " +
            unit.severity + (unit.count.empty() ? "" : ", count " + unit.count) +
            (unit.approved ? ", approved" : "") + "]" +
            (lines ? " line " + std::to_string(unit.line) : "") + "\n";
  }
  return text;
}

// The forms of one plural message, as export writes them.
std::vector<msgtool::XliffUnit> pluralForms(const std::string& key,
                                            const std::vector<std::string>& targets) {
  std::vector<msgtool::XliffUnit> forms;
  for (std::size_t i = 0; i < targets.size(); ++i) {
    msgtool::XliffUnit form = unit(key, i == 0 ? "&1 file" : "&1 files", targets[i], "translated");
    form.form = static_cast<int>(i);
    form.count = "&1";
    forms.push_back(form);
  }
  return forms;
}

// Everything a catalogue text can hold comes back byte for byte, in both
// versions: placeholders repeated, moved, with leading zeros, next to a
// bare '&', and markup characters; and a plural group, each form with its
// index, its target and the count note. The 1.2 file is of gettext's
// datatype only while it holds a plural group.
TEST_F(XliffTest, WrittenFilesReadBackAsTheyWere) {
  for (const bool version2 : {false, true}) {
    SCOPED_TRACE(version2 ? "XLIFF 2.0" : "XLIFF 1.2");
    msgtool::XliffFile file;
    file.original = "app.xml";
    file.sourceLanguage = "en";
    file.targetLanguage = "pl";
    file.version2 = version2;
    file.units = {
        unit("app:start", "Start &0, then &1 & &0.", "&1 dann &0 & &0.", "translated"),
        unit("app:odd", "C:\\&007\t&&1 100& <b>\"x\"</b>\n", "&&1 &007 <i/>", "translated"),
        unit("app:stale", "Old &0", "Alt &0", "needs-review-translation"),
        unit("ns:a:b", "Untranslated &2", std::nullopt, ""),
    };
    const std::vector<msgtool::XliffUnit> plain = file.units;
    for (const msgtool::XliffUnit& form :
         pluralForms("app:deleted", {"&1 plik", "&1 pliki", "&1 plików"})) {
      file.units.push_back(form);
    }
    file.units.push_back(unit("app:plain", "Plain", "Zwykły", "translated"));
    const std::string written = file.write();
    const msgtool::XliffFile read = msgtool::XliffFile::read(scratch.write("round.xlf", written));

    EXPECT_EQ(describe(read, false), describe(file, false));
    // Where a text comes from is for the translator's eyes; it is not read back.
    EXPECT_THAT(written, HasSubstr(version2 ? "<note category=\"location\">app.xml:7</note>"
                                            : "<context context-type=\"sourcefile\">app.xml"
                                              "</context>"));
    if (!version2) {
      EXPECT_THAT(written, HasSubstr("<context context-type=\"linenumber\">7</context>"));
      EXPECT_THAT(written, HasSubstr("datatype=\"po\""));
      file.units = plain;
      EXPECT_THAT(file.write(), HasSubstr("datatype=\"plaintext\""));
    }
  }
}

// What other tools write: groups, wrappers around text, CDATA, inline
// elements that the translator moved, codes named by their text only.
TEST_F(XliffTest, FilesOfOtherToolsReadAsMeant) {
  const std::string v12 = scratch.write(
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
  EXPECT_EQ(describe(msgtool::XliffFile::read(v12)),
            "1.2 a.xml en -> fr\n"
            "app:start: Start &0 &1 -> &1 <&> &0 [final, info, approved] line 5\n"
            "app:plain: Plain -> (none) [, ] line 10\n");

  const std::string v2 = scratch.write(
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
  // A unit translated in part has no target.
  EXPECT_EQ(describe(msgtool::XliffFile::read(v2)),
            "2.0 b.xml en -> pt\n"
            "app:start: Start &0, &1. -> &1 &0. [translated, abort] line 2\n"
            "app:open: AB -> (none) [, ] line 4\n");
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
    const std::string path = scratch.write("bad.xlf", bad.content);
    EXPECT_EQ(refusalOf(path), path + ":" + bad.expected) << bad.content;
  }
}

// XLIFF 1.2 and 2.0 text around plural groups written by hand.
std::string pluralFile(bool version2, const std::string& groupBody) {
  if (version2) {
    return "<?xml version=\"1.0\"?>\n<xliff version=\"2.0\" srcLang=\"en\" trgLang=\"pl\" "
           "xmlns=\"urn:oasis:names:tc:xliff:document:2.0\"><file id=\"f\">\n"
           "<group id=\"app:deleted\" type=\"msgtool:plurals\">\n" +
           groupBody + "</group></file></xliff>\n";
  }
  return "<?xml version=\"1.0\"?>\n<xliff version=\"1.2\" "
         "xmlns=\"urn:oasis:names:tc:xliff:document:1.2\"><file source-language=\"en\" "
         "target-language=\"pl\"><body>\n"
         "<group id=\"app:deleted\" restype=\"x-gettext-plurals\">\n" +
         groupBody + "</group></body></file></xliff>\n";
}

// One form on a line of its own, its id "app:deleted`index`".
std::string formUnit(bool version2, const std::string& index, const std::string& target) {
  const std::string id = "app:deleted" + index;
  if (version2) {
    return "<unit id=\"" + id +
           "\"><notes><note category=\"count\">&amp;1</note></notes><segment "
           "state=\"translated\"><source>&amp;1 files</source><target>" +
           target + "</target></segment></unit>\n";
  }
  return "<trans-unit id=\"" + id + "\"><source>&amp;1 files</source><target>" + target +
         "</target><note>count: &amp;1</note></trans-unit>\n";
}

// Tools may reorder the units of a group: each form is read by the index in
// its id, and comes back in the order of the index with the count note and
// the line of its unit.
TEST_F(XliffTest, PluralFormsAreReadByTheirIndex) {
  for (const bool version2 : {false, true}) {
    SCOPED_TRACE(version2 ? "XLIFF 2.0" : "XLIFF 1.2");
    const std::string path = scratch.write(
        "order.xlf", pluralFile(version2, formUnit(version2, "[2]", "&amp;1 plików") +
                                              formUnit(version2, "[0]", "&amp;1 plik") +
                                              formUnit(version2, "[1]", "&amp;1 pliki")));
    const msgtool::XliffFile read = msgtool::XliffFile::read(path);
    EXPECT_EQ(read.version2, version2);
    std::string forms;
    for (const msgtool::XliffUnit& form : read.units) {
      forms += form.key + "[" + std::to_string(form.form) + "] " + *form.target + " (" +
               form.count + ") line " + std::to_string(form.line) + "\n";
    }
    EXPECT_EQ(forms,
              "app:deleted[0] &1 plik (&1) line 5\n"
              "app:deleted[1] &1 pliki (&1) line 6\n"
              "app:deleted[2] &1 plików (&1) line 4\n");
  }
}

// A plural group that names no form, or a form twice or out of its range,
// is refused at the line of the fault.
TEST_F(XliffTest, BadPluralGroupsAreRefused) {
  struct Case {
    const char* name;
    std::vector<std::string> indexes;  // of the units in the group, in order
    std::string expected;              // after "<file>:"
  };
  // A form whose id has `index` behind the key, on line 5.
  const auto wrongId = [](const std::string& index) {
    return "5: error: the form of \"app:deleted\" has the id \"app:deleted" + index +
           "\" where \"app:deleted[0]\" to \"app:deleted[1]\", each once, were expected";
  };
  const std::vector<Case> cases = {
      {"empty", {}, "3: error: the group of plural forms of \"app:deleted\" holds no form"},
      {"twice", {"[0]", "[0]"}, wrongId("[0]")},
      {"past the end", {"[0]", "[2]"}, wrongId("[2]")},
      {"no index", {"[0]", ""}, wrongId("")},
      {"no number", {"[0]", "[x]"}, wrongId("[x]")},
  };
  for (const bool version2 : {false, true}) {
    for (const Case& bad : cases) {
      SCOPED_TRACE(std::string(bad.name) + (version2 ? " XLIFF 2.0" : " XLIFF 1.2"));
      std::string body;
      for (const std::string& index : bad.indexes) {
        body += formUnit(version2, index, "x");
      }
      const std::string path = scratch.write("bad.xlf", pluralFile(version2, body));
      EXPECT_EQ(refusalOf(path), path + ":" + bad.expected);
    }
  }
}

// An ordinal message goes out as one unit per category of the target
// language and comes back as the ordinal texts of that language.
TEST_F(XliffTest, OrdinalMessagesTravelThroughExportAndImport) {
  for (const char* format : {"xliff", "xliff2"}) {
    SCOPED_TRACE(format);
    test_support::copySchemaInto(scratch.path());
    scratch.write("messages.xml",
                  test_support::messageDocument(
                      "  <MessageNamespace name=\"app\">\n"
                      "    <Message id=\"place\" severity=\"info\">\n"
                      "      <Text xml:lang=\"en\" ordinal=\"one\">&amp;0st</Text>\n"
                      "      <Text xml:lang=\"en\">&amp;0th</Text>\n"
                      "    </Message>\n"
                      "  </MessageNamespace>\n"));
    const test_support::ToolRun exported = test_support::runMsgtool(
        {"export", "--format", format, "--target", "fr", "-o", "fr.xlf", "messages.xml"},
        scratch.path());
    ASSERT_EQ(exported.code, 0) << exported.err;
    msgtool::XliffFile file = msgtool::XliffFile::read((scratch / "fr.xlf").string());
    std::vector<std::string> keys;
    for (msgtool::XliffUnit& out : file.units) {
      keys.push_back(out.key);
      out.target = out.key == "app:place[ordinal one]" ? "premier" : "&0e";
      out.state = "translated";
    }
    EXPECT_EQ(keys,
              (std::vector<std::string>{"app:place[ordinal one]", "app:place[ordinal other]"}));
    scratch.write("fr.xlf", file.write());
    const test_support::ToolRun imported = test_support::runMsgtool(
        {"import", "--format", format, "fr.xlf", "--into", "messages.xml"}, scratch.path());
    ASSERT_EQ(imported.code, 0) << imported.err;
    const std::string document = test_support::readFile(scratch / "messages.xml");
    EXPECT_THAT(document, HasSubstr("xml:lang=\"fr\" ordinal=\"one\">premier</Text>"));
    EXPECT_THAT(document, HasSubstr("xml:lang=\"fr\">&amp;0e</Text>"));
  }
}

}  // namespace
