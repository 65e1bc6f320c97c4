// msgtool import, run in this process: a translator's file may change only
// the texts of its own language for the keys the document has. A file in the
// source language, languages that disagree, an unreadable file, keys the
// document does not know and translations with characters a document cannot
// hold leave the document byte for byte as it was.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "tests/msgtool_run.h"
#include "tests/scratch_folder.h"

namespace fs = std::filesystem;

namespace {

using test_support::readFile;
using ::testing::HasSubstr;

const std::string kDocument = test_support::messageDocument(
    "  <MessageNamespace name=\"app\">\n"
    "    <Message id=\"hello\" severity=\"info\"><Text xml:lang=\"en\">Hello</Text></Message>\n"
    "  </MessageNamespace>\n");

// A PO file in `language` whose entries follow the header; the first starts
// on line 6.
std::string poFile(const std::string& language, const std::string& entries) {
  return "msgid \"\"\nmsgstr \"\"\n\"Language: " + language +
         "\\n\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n\n" + entries;
}

// A PO file in `language` whose one entry, on line 6, has `translation` and
// `context` (both written between the quotes as they stand).
std::string helloPo(const std::string& language, const std::string& translation = "Hallo",
                    const std::string& context = "app:hello") {
  return poFile(language,
                "msgctxt \"" + context + "\"\nmsgid \"Hello\"\nmsgstr \"" + translation + "\"\n");
}

// An XLIFF 1.2 file whose one unit is on line 4; `unitLanguage` is written
// into the target's start tag.
std::string xliffFile(const std::string& language, const std::string& unitLanguage = "",
                      const std::string& translation = "Hallo",
                      const std::string& xmlVersion = "1.0") {
  return "<?xml version=\"" + xmlVersion +
         "\" encoding=\"UTF-8\"?>\n"
         "<xliff version=\"1.2\" xmlns=\"urn:oasis:names:tc:xliff:document:1.2\">\n"
         "<file original=\"app.xml\" source-language=\"en\" target-language=\"" +
         language +
         "\" datatype=\"plaintext\"><body>\n"
         "<trans-unit id=\"app:hello\" resname=\"app:hello\">\n"
         "<source>Hello</source><target state=\"translated\"" +
         unitLanguage + ">" + translation + "</target>\n</trans-unit></body></file></xliff>\n";
}

// `file` and a comment that makes it one byte larger than 16 MiB, the
// most that import reads of a translator's file (the PO reader's own
// refusal is msgtool_po_test's).
std::string oversized(const std::string& file, const std::string& open, const std::string& close) {
  const std::size_t size = (std::size_t{16} << 20) + 1;
  return file + open + std::string(size - file.size() - open.size() - close.size(), 'x') + close;
}

struct Result {
  int code;
  std::string errors;
  std::string document;
};

// Imports `file` (named in.po or in.xlf after `format`) into `start`, or
// into a new document if `start` is empty.
Result importInto(const std::string& start, const std::string& format, const std::string& file,
                  const std::vector<const char*>& options = {}) {
  const test_support::ScratchFolder scratch;
  test_support::copySchemaInto(scratch.path());
  const std::string document =
      start.empty() ? (scratch / "messages.xml").string() : scratch.write("messages.xml", start);
  const std::string input = format == "po" ? "in.po" : "in.xlf";
  scratch.write(input, file);
  std::vector<const char*> arguments = {"import",      "--format", format.c_str(),
                                        input.c_str(), "--into",   "messages.xml"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  const test_support::ToolRun run = test_support::runMsgtool(arguments, scratch.path());
  return {run.code, run.err, fs::exists(document) ? readFile(document) : std::string()};
}

// Imports `file` into kDocument.
Result import(const std::string& format, const std::string& file,
              const std::vector<const char*>& options = {}) {
  return importInto(kDocument, format, file, options);
}

struct Refusal {
  const char* format;
  std::string file;
  int code;
  std::string message;  // lines of standard error
  std::vector<const char*> options = {};
};

void expectRefusals(const std::vector<Refusal>& cases) {
  for (const Refusal& test : cases) {
    SCOPED_TRACE(test.message);
    const Result result = import(test.format, test.file, test.options);
    EXPECT_EQ(result.code, test.code);
    EXPECT_THAT(result.errors, HasSubstr(test.message + "\n"));
    EXPECT_EQ(result.document, kDocument);
  }
}

TEST(ImportTest, FilesThatWouldOverwriteOtherLanguagesOrCannotBeReadAreRefused) {
  const std::string source = "is also the source language; importing would replace the source ";
  const std::string binary = std::string{'\x7f', 'E', 'L', 'F', 0, 0, 1} + "<msgid";
  const std::string unchanged = "\nmsgtool: error: nothing was imported; messages.xml is unchanged";
  expectRefusals({
      {"po", helloPo("en"), 2,
       "in.po: error: the target language \"en\" " + source +
           "texts; write the translations' language into the file's Language header"},
      {"xliff", xliffFile("en"), 2,
       "in.xlf: error: the target language \"en\" " + source +
           "texts; write the translations' language into the file's target-language"},
      {"po",
       helloPo("fr"),
       2,
       "in.po: error: the file's Language header says \"fr\", but --target says \"de\"; "
       "leave out --target to import the file as \"fr\", or correct the file",
       {"--target", "de"}},
      {"xliff", xliffFile("de", " xml:lang=\"fr\""), 2,
       "in.xlf:4: error: the target of \"app:hello\" is in \"fr\" (xml:lang), but the file's "
       "target-language says \"de\"; correct the one that is wrong"},
      {"po", helloPo("zh_Hant_TW"), 2,
       "in.po: error: the file's Language header \"zh_Hant_TW\" is no language tag msg uses; "
       "write a two-letter language and an optional two-letter region, like \"de\" or "
       "\"de-AT\""},
      {"po",
       "",
       2,
       "in.po: error: is empty: no header and no entries; nothing to import",
       {"--target", "de"}},
      {"po", binary, 2, "in.po: error: is a binary file, not a PO file" + unchanged},
      {"xliff", binary, 2, "in.xlf: error: is a binary file, not an XML file" + unchanged},
      {"xliff", oversized(xliffFile("de"), "<!-- ", " -->\n"), 2,
       "in.xlf: error: is larger than 16 MiB" + unchanged},
  });
}

TEST(ImportTest, UnitsWithCharactersADocumentCannotHoldAreRefused) {
  const std::string refused = ", a character that a message document cannot hold; not imported";
  const std::string holds = "in.po:6: error: app:hello: the translation holds ";
  expectRefusals({
      {"po", helloPo("de", "Hal\\alo"), 1, holds + "U+0007" + refused},
      // A form feed is whitespace to C, but no character of XML 1.0.
      {"po", helloPo("de", "Hallo\\f"), 1, holds + "U+000C" + refused},
      {"po", helloPo("de", "Hal\x1Flo"), 1, holds + "U+001F" + refused},
      {"po", helloPo("de", "Hallo \xEF\xBF\xBE"), 1, holds + "U+FFFE" + refused},
      {"po", helloPo("de", "Hallo \xEF\xBF\xBF"), 1, holds + "U+FFFF" + refused},
      {"po", helloPo("de", "Hall\\366"), 1, holds + "bytes that are not UTF-8; not imported"},
      {"po", helloPo("de", "Hallo", "app:hel\\033lo"), 1,
       "in.po:6: error: app:hel\033lo: the key holds U+001B" + refused},
      // The whole file is in another encoding than it says: nothing of it is read.
      {"po", helloPo("de", "Hall\xF6"), 2,
       "in.po:8: error: holds bytes that are not UTF-8; convert the file to UTF-8 (msgconv -t "
       "UTF-8)"},
      {"xliff", xliffFile("de", "", "Hal&#x1b;lo", "1.1"), 1,
       "in.xlf:4: error: app:hello: the translation holds U+001B" + refused},
  });
}

TEST(ImportTest, KeysTheDocumentDoesNotHaveAreAddedOnlyOnRequest) {
  const std::string unknown =
      ": the document has no such message; not imported (correct the key, or give "
      "--add-new-keys to add it)";
  for (const char* key : {"ap:hello", "app:helo"}) {
    expectRefusals(
        {{"po", helloPo("de", "Hallo", key), 1, std::string("in.po:6: error: ") + key + unknown}});
    const Result added = import("po", helloPo("de", "Hallo", key), {"--add-new-keys"});
    EXPECT_EQ(added.code, 0) << added.errors;
    EXPECT_THAT(added.document, HasSubstr("xml:lang=\"de\">Hallo<"));
  }
}

TEST(ImportTest, GettextLocaleNamesBecomeLanguageTags) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"fr_FR.UTF-8", "fr-FR"}, {"de_AT@euro", "de-AT"}, {"pt_br", "pt-BR"}, {"DE", "de"}};
  for (const auto& [locale, tag] : cases) {
    SCOPED_TRACE(locale);
    const Result result = import("po", helloPo(locale));
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_THAT(result.document, HasSubstr(std::string("xml:lang=\"") + tag + "\">Hallo<"));
  }
}

// Keys of an included part are written into the part, which may also be
// imported into directly (how the editor changes a part is EditorTest's);
// a read-only part is refused before any unit is reported, and every file
// stays as it was.
TEST(ImportTest, KeysInAPartAreWrittenIntoThePart) {
  const test_support::ScratchFolder scratch;
  test_support::copySchemaInto(scratch.path());
  std::string main = kDocument;
  main.insert(main.find("</MessageCollection>"),
              "  <xi:include href=\"part.xml\" xmlns:xi=\"http://www.w3.org/2001/XInclude\"/>\n");
  const std::string part =
      "<?xml version=\"1.0\"?>\n"
      "<MessageNamespace name=\"part\">\n"
      "  <Message id=\"one\">\n"
      "    <Text xml:lang=\"en\">One</Text>\n"
      "  </Message>\n"
      "</MessageNamespace>\n";
  const std::string entry = "msgctxt \"part:one\"\nmsgid \"One\"\nmsgstr \"Eins\"\n";
  const auto import = [&scratch](const char* into, const std::string& po) {
    scratch.write("in.po", po);
    return test_support::runMsgtool({"import", "--format", "po", "in.po", "--into", into},
                                    scratch.path());
  };
  for (const char* into : {"messages.xml", "part.xml"}) {
    SCOPED_TRACE(into);
    scratch.write("messages.xml", main);
    scratch.write("part.xml", part);
    const test_support::ToolRun run = import(into, poFile("de", entry));
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(readFile(scratch / "messages.xml"), main);
    EXPECT_THAT(readFile(scratch / "part.xml"), HasSubstr(" xml:lang=\"de\">Eins</Text>"));
  }

  // Both files would change, but the part is read-only: neither is written.
  scratch.write("messages.xml", main);
  scratch.write("part.xml", part);
  fs::permissions(scratch / "part.xml", fs::perms::owner_read);
  const test_support::ToolRun run = import("messages.xml", helloPo("de") + "\n" + entry);
  EXPECT_EQ(run.code, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("part.xml: error: cannot be written: the file is read-only; make "
                                 "it writable (chmod u+w)"));
  EXPECT_EQ(readFile(scratch / "messages.xml"), main);
  EXPECT_EQ(readFile(scratch / "part.xml"), part);
}

// A plural message whose count is &1, with an exact value, and an ordinal
// message.
const std::string kPluralDocument = test_support::messageDocument(
    "  <MessageNamespace name=\"app\">\n"
    "    <Message id=\"deleted\" severity=\"info\" count=\"&amp;1\">\n"
    "      <Text xml:lang=\"en\" plural=\"one\">&amp;0: deleted &amp;1 file.</Text>\n"
    "      <Text xml:lang=\"en\" plural=\"=0\">&amp;0: no files deleted.</Text>\n"
    "      <Text xml:lang=\"en\">&amp;0: deleted &amp;1 files.</Text>\n"
    "    </Message>\n"
    "    <Message id=\"place\" severity=\"info\">\n"
    "      <Text xml:lang=\"en\" ordinal=\"one\">&amp;0st</Text>\n"
    "      <Text xml:lang=\"en\">&amp;0th</Text>\n"
    "    </Message>\n"
    "  </MessageNamespace>\n");

// The entry of app:deleted with `forms` as msgstr[0], msgstr[1] ..., and
// the count note `count` unless it is empty.
std::string deletedEntry(const std::vector<std::string>& forms, const std::string& count = "&1") {
  std::string entry = count.empty() ? "" : "#. count: " + count + "\n";
  entry +=
      "msgctxt \"app:deleted\"\nmsgid \"&0: deleted &1 file.\"\n"
      "msgid_plural \"&0: deleted &1 files.\"\n";
  for (std::size_t form = 0; form < forms.size(); ++form) {
    entry += "msgstr[" + std::to_string(form) + "] \"" + forms[form] + "\"\n";
  }
  return entry;
}

// Polish forms of app:deleted whose `one` is `one`.
std::string polishDeleted(const std::string& one, const std::string& count = "&1") {
  return deletedEntry({one, "&0: usunięto &1 pliki.", "&0: usunięto &1 plików."}, count);
}

struct PluralImport {
  const char* name;
  std::string language;
  std::string entries;
  int code;
  std::vector<std::string> written;  // each in the document afterwards; none: it is unchanged
  std::string message = "";          // on standard error, "" for none
};

// Which categories serve one number alone, and so may leave out the count,
// is PluralNeedsTest's.
TEST(ImportTest, PluralFormsArriveAsTheirVariants) {
  const std::string one = "the form one has the placeholders &1, its source &0 &1; not imported";
  const std::vector<PluralImport> cases = {
      {"Polish forms; the last is both many and other",
       "pl",
       polishDeleted("&0: usunięto &1 plik."),
       0,
       {"plural=\"one\">&amp;0: usunięto &amp;1 plik.<",
        "plural=\"few\">&amp;0: usunięto &amp;1 pliki.<",
        "plural=\"many\">&amp;0: usunięto &amp;1 plików.<",
        "xml:lang=\"pl\">&amp;0: usunięto &amp;1 plików.<"}},
      // Polish `one` is 1 alone: the count may be said in words.
      {"a file without the count note takes the count of the document's Message",
       "pl",
       polishDeleted("&0: usunięto jeden plik.", ""),
       0,
       {"plural=\"one\">&amp;0: usunięto jeden plik.<"}},
      {"without the count note, &0 is still no count where the Message names &1",
       "pl",
       polishDeleted("usunięto &1 plik.", ""),
       1,
       {},
       one},
      {"the count the file names is the one that may be left out",
       "pl",
       polishDeleted("usunięto &1 plik.", "&0"),
       0,
       {"plural=\"one\">usunięto &amp;1 plik.<"}},
      {"an entry with an empty form waits for the others",
       "pl",
       deletedEntry({"&0: usunięto &1 plik.", "", "&0: usunięto &1 plików."}),
       0,
       {},
       "in.po:7: note: app:deleted: the form few is empty; not imported until every form is "
       "translated"},
      {"exact values and ordinals travel in the msgctxt",
       "fr",
       "msgctxt \"app:deleted[plural =0]\"\nmsgid \"&0: no files deleted.\"\n"
       "msgstr \"&0 : aucun fichier supprimé.\"\n\n"
       "msgctxt \"app:place[ordinal one]\"\nmsgid \"&0st\"\nmsgstr \"premier\"\n\n"
       "msgctxt \"app:place[ordinal other]\"\nmsgid \"&0th\"\nmsgstr \"&0e\"\n",
       0,
       {"xml:lang=\"fr\" plural=\"=0\"", ">&amp;0 : aucun fichier supprimé.<",
        "xml:lang=\"fr\" ordinal=\"one\"", ">premier<", "xml:lang=\"fr\">&amp;0e<"}},
      {"an ordinal category of many numbers must show the count",
       "en-GB",
       "msgctxt \"app:place[ordinal few]\"\nmsgid \"&0th\"\nmsgstr \"third\"\n",
       1,
       {},
       "in.po:6: error: app:place[ordinal few]: the translation has the placeholders none, its "
       "source &0; not imported"},
  };
  for (const PluralImport& test : cases) {
    SCOPED_TRACE(test.name);
    const Result result = importInto(kPluralDocument, "po", poFile(test.language, test.entries));
    EXPECT_EQ(result.code, test.code) << result.errors;
    for (const std::string& text : test.written) {
      EXPECT_THAT(result.document, HasSubstr(text));
    }
    if (test.written.empty()) {
      EXPECT_EQ(result.document, kPluralDocument);
    }
    if (!test.message.empty()) {
      EXPECT_THAT(result.errors, HasSubstr(test.message + "\n"));
    }
  }
}

// A plural entry with a form too many or too few refuses the whole file,
// also the good entries before it.
TEST(ImportTest, WrongNumberOfFormsRefusesTheFile) {
  const std::string good =
      "msgctxt \"app:place[ordinal other]\"\nmsgid \"&0th\"\nmsgstr \"&0.\"\n\n";
  for (const auto& [language, forms, nplurals] :
       std::vector<std::tuple<std::string, std::size_t, std::size_t>>{
           {"pl", 2, 3}, {"pl", 4, 3}, {"ja", 2, 1}, {"ar", 3, 6}}) {
    SCOPED_TRACE(language + " " + std::to_string(forms));
    const Result result =
        importInto(kPluralDocument, "po",
                   poFile(language, good + deletedEntry(std::vector<std::string>(forms, "&0 &1"))));
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.errors, HasSubstr("in.po:11: error: the plural entry \"app:deleted\" has " +
                                         std::to_string(forms) + " forms, but \"" + language +
                                         "\" has " + std::to_string(nplurals) + " (nplurals="));
    EXPECT_EQ(result.document, kPluralDocument);
  }
}

// A new document takes the Message's count from the file, so that the
// texts load with the count the source has.
TEST(ImportTest, ANewDocumentCarriesTheCount) {
  const std::vector<std::tuple<const char*, int, const char*>> cases = {
      {"&1", 0, "<Message id=\"deleted\" count=\"&amp;1\">"},
      {"", 0, "<Message id=\"deleted\">"},
      {"one", 1, "the count \"one\" is no placeholder"}};
  for (const auto& [count, code, shown] : cases) {
    SCOPED_TRACE(count);
    const Result result =
        importInto("", "po", poFile("pl", deletedEntry({"&0 &1", "&0 &1", "&0 &1"}, count)));
    EXPECT_EQ(result.code, code) << result.errors;
    EXPECT_THAT(result.document + result.errors, HasSubstr(shown));
  }
}

}  // namespace
