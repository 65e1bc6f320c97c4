// msgtool's PO reader and writer: what the writer emits reads back the same,
// files shaped as gettext's tools write them read as meant, and a faulty
// file is refused with its file and line.

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "PoFile.h"
#include "platform/InputLimits.h"
#include "tests/msgtool_run.h"
#include "tests/scratch_folder.h"

namespace fs = std::filesystem;

namespace {

class PoFileTest : public ::testing::Test {
 protected:
  static std::string refusalOf(const std::string& path) {
    return test_support::refusalOf(msgtool::PoFile::read, path);
  }

  test_support::ScratchFolder scratch;
};

void expectSameEntry(const msgtool::PoEntry& read, const msgtool::PoEntry& written) {
  EXPECT_EQ(read.context, written.context);
  EXPECT_EQ(read.id, written.id);
  EXPECT_EQ(read.str, written.str);
  EXPECT_EQ(read.translatorComments, written.translatorComments);
  EXPECT_EQ(read.extractedComments, written.extractedComments);
  EXPECT_EQ(read.references, written.references);
  EXPECT_EQ(read.flags, written.flags);
  EXPECT_EQ(read.idPlural, written.idPlural);
  EXPECT_EQ(read.forms, written.forms);
}

TEST_F(PoFileTest, WhatTheWriterWritesReadsBackTheSame) {
  msgtool::PoFile file;
  file.headerComments = {"Translations of app", ""};
  file.header = {{"Project-Id-Version", "app.xml"},
                 {"Language", "de"},
                 {"Content-Type", "text/plain; charset=UTF-8"}};

  msgtool::PoEntry escapes;
  escapes.context = "app:quote";
  escapes.id = "Say \"hello\" to C:\\temp\\&0\tand\r\a\b\f\v &&1 or 100&.";
  escapes.str = "Sag \"hallo\" zu C:\\temp\\&0\tund\r\a\b\f\v &&1 oder 100&.";
  escapes.translatorComments = {"reviewed", ""};
  escapes.extractedComments = {"severity: warning"};
  escapes.references = {"app.xml:12"};
  escapes.flags = {"fuzzy", "no-c-format"};

  msgtool::PoEntry lines;  // several lines, and lines longer than a page is wide
  lines.context = "app:long";
  lines.id = "First line\nSecond line\n\n" + std::string(30, 'x') + std::string(20, ' ') +
             "a long line of words that needs to be wrapped at a space " +
             "because gettext wraps it there too, " + std::string(100, 'y') + "\n";
  lines.str = "";

  msgtool::PoEntry noContext;
  noContext.id = "ü and € stay as they are";
  noContext.str = "ü und € bleiben";

  msgtool::PoEntry plural;
  plural.context = "app:deleted";
  plural.id = "Deleted &0 file.";
  plural.idPlural = "Deleted &0 files.";
  plural.forms = {"Usunięto &0 plik.", "", "Usunięto &0\nplików."};

  file.entries = {escapes, plural, lines, noContext};
  std::ostringstream out;
  file.write(out);
  const std::string text = out.str();

  const msgtool::PoFile read = msgtool::PoFile::read(scratch.write("round.po", text));
  EXPECT_EQ(read.header, file.header);
  EXPECT_EQ(read.headerComments, file.headerComments);
  EXPECT_EQ(read.headerField("Language"), "de");
  EXPECT_EQ(read.headerField("X-Absent"), "");
  ASSERT_EQ(read.entries.size(), file.entries.size());
  for (std::size_t i = 0; i < file.entries.size(); ++i) {
    SCOPED_TRACE(i);
    expectSameEntry(read.entries[i], file.entries[i]);
  }
  EXPECT_TRUE(read.entries[0].hasFlag("fuzzy") && !read.entries[1].hasFlag("fuzzy"));
  EXPECT_EQ(read.entries[3].line, 37) << text;  // the line of its msgid

  // gettext's shape: a string with several lines starts with "", is split
  // after each \n, and no line is wider than 79 columns unless one word is.
  EXPECT_NE(text.find("msgid \"\"\n\"First line\\n\"\n\"Second line\\n\"\n\"\\n\"\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("#, fuzzy, no-c-format\n"), std::string::npos);
  EXPECT_NE(text.find("msgstr \"Sag \\\"hallo\\\" zu C:\\\\temp\\\\&0\\tund\\r\\a\\b\\f\\v "),
            std::string::npos);
  std::istringstream written(text);
  for (std::string line; std::getline(written, line);) {
    EXPECT_TRUE(line.size() <= 79 || line.find(' ') == std::string::npos) << line;
  }
}

TEST_F(PoFileTest, ReadsFilesAsGettextsToolsLeaveThem) {
  const std::string path = scratch.write("gettext.po",
                                         "# Header comment\r\n"
                                         "msgid \"\"\r\n"
                                         "msgstr \"\"\r\n"
                                         "\"Language: de_DE\\n\"\r\n"
                                         "\"Content-Type: text/plain; charset=utf-8\\n\"\r\n"
                                         "\r\n"
                                         "#  translator's note\n"
                                         "#. extracted\n"
                                         "#: a.xml:1 b.xml:2\n"
                                         "#, fuzzy,c-format\n"
                                         "#| msgid \"older\"\n"
                                         "msgctxt \"app:a\"\n"
                                         "msgid \"\"\n"
                                         "\"joined \"   \"on one line, \"\n"
                                         "\"and over two\"\n"
                                         "msgstr \"\\101b\\x63\\0101\"\n"
                                         "#~ msgctxt \"app:gone\"\n"
                                         "#~ msgid \"Gone\"\n"
                                         "#~ msgstr \"Weg\"\n"
                                         "msgid \"no blank line before me\"\n"
                                         "msgstr \"\"\n");
  const msgtool::PoFile file = msgtool::PoFile::read(path);
  EXPECT_EQ(file.headerComments, std::vector<std::string>{"Header comment"});
  EXPECT_EQ(file.headerField("Language"), "de_DE");
  ASSERT_EQ(file.entries.size(), 2u);

  const msgtool::PoEntry& a = file.entries[0];
  EXPECT_EQ(a.line, 12);
  EXPECT_EQ(a.context, "app:a");
  EXPECT_EQ(a.id, "joined on one line, and over two");
  EXPECT_EQ(a.str,
            "Abc\x08"
            "1");  // \010 takes three octal digits at most
  EXPECT_EQ(a.translatorComments, std::vector<std::string>{"translator's note"});
  EXPECT_EQ(a.extractedComments, std::vector<std::string>{"extracted"});
  EXPECT_EQ(a.references, std::vector<std::string>{"a.xml:1 b.xml:2"});
  EXPECT_EQ(a.flags, (std::vector<std::string>{"fuzzy", "c-format"}));

  // Obsolete entries and previous msgids are dropped.
  EXPECT_FALSE(file.entries[1].context.has_value());
  EXPECT_EQ(file.entries[1].id, "no blank line before me");
  EXPECT_EQ(file.entries[1].line, 20);
}

TEST_F(PoFileTest, FaultyFilesAreRefusedWithFileAndLine) {
  const std::string header =
      "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n";
  struct Case {
    const char* name;
    std::string content;
    std::string refusal;  // after "<path>"
  };
  const std::vector<Case> cases{
      {"unterminated", header + "msgid \"a\nmsgstr \"b\"\n",
       ":4: error: the string has no closing '\"'"},
      {"unknown_escape", header + "msgid \"a\"\nmsgstr \"\\q\"\n",
       ":5: error: unknown escape sequence '\\q'"},
      {"msgstr_without_msgid", header + "msgctxt \"k\"\nmsgstr \"b\"\n",
       ":5: error: msgstr without a msgid before it"},
      {"no_msgstr", header + "msgid \"a\"\n\nmsgid \"b\"\nmsgstr \"\"\n",
       ":4: error: the entry has no msgstr"},
      {"text_after_string", header + "msgid \"a\" b\nmsgstr \"\"\n",
       ":4: error: unexpected text after the closing '\"'"},
      {"string_outside_entry", header + "\"stray\"\n",
       ":4: error: a string stands outside an entry"},
      {"unknown_keyword", header + "msgid \"a\"\nmsgtxt \"b\"\n",
       ":5: error: unknown keyword 'msgtxt'"},
      {"context_after_id", header + "msgid \"a\"\nmsgctxt \"k\"\nmsgstr \"\"\n",
       ":5: error: msgctxt must come before msgid"},
      {"id_after_id", header + "msgid \"a\"\nmsgid \"b\"\nmsgstr \"\"\n",
       ":5: error: msgid follows msgid without a msgstr in between"},
      // Plural entries: forms in order, and msgstr[N] only after msgid_plural.
      {"form_out_of_order",
       header + "msgid \"a\"\nmsgid_plural \"b\"\nmsgstr[0] \"\"\nmsgstr[2] \"\"\n",
       ":7: error: 'msgstr[2]' where msgstr[1] was expected"},
      {"form_without_plural", header + "msgid \"a\"\nmsgstr[0] \"\"\n",
       ":5: error: 'msgstr[0]' without a msgid_plural before it"},
      {"plain_msgstr_in_plural", header + "msgid \"a\"\nmsgid_plural \"b\"\nmsgstr \"\"\n",
       ":6: error: a plural entry has msgstr[0], msgstr[1] ..., not msgstr"},
      {"plural_without_forms", header + "msgid \"a\"\nmsgid_plural \"b\"\n\n",
       ":4: error: the plural entry has no msgstr[0]"},
      {"latin1_charset",
       "msgid \"\"\nmsgstr \"\"\n\"Content-Type: text/plain; charset=ISO-8859-1\\n\"\n",
       ":1: error: the charset is ISO-8859-1, not UTF-8; convert the file (msgconv -t UTF-8)"},
      {"not_utf8", header + "msgid \"a\"\nmsgstr \"\xE4\"\n",
       ":5: error: holds bytes that are not UTF-8; convert the file to UTF-8 (msgconv -t UTF-8)"},
  };
  for (const Case& bad : cases) {
    const std::string path = scratch.write(std::string(bad.name) + ".po", bad.content);
    EXPECT_EQ(refusalOf(path), path + bad.refusal) << bad.name;
  }

  // Files that cannot be read at all.
  const std::string missing = (scratch / "missing.po").string();
  EXPECT_EQ(refusalOf(missing), missing + ": error: cannot be read: No such file or directory");
  EXPECT_EQ(refusalOf(scratch.path().string()),
            scratch.path().string() + ": error: is a folder, not a PO file");
  const std::string huge = scratch.write("huge.po", "#");
  fs::resize_file(huge, msg::limits::kMaxTranslatorsFileBytes + 1);  // sparse: takes no disk space
  EXPECT_EQ(refusalOf(huge), huge + ": error: is larger than 16 MiB");
}

}  // namespace
