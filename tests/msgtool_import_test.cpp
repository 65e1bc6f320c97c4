// msgtool import, run in this process: a translator's file may change only
// the texts of its own language for the keys the document has. A file in the
// source language, languages that disagree, an empty file and keys the
// document does not know leave the document byte for byte as it was.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Tool.h"
#include "tests/scratch_folder.h"

namespace fs = std::filesystem;

namespace {

const char kDocument[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<MessageCollection xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
    "    xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n"
    "  <MessageNamespace name=\"app\">\n"
    "    <Message id=\"hello\" severity=\"info\">\n"
    "      <Text xml:lang=\"en\">Hello</Text>\n"
    "    </Message>\n"
    "  </MessageNamespace>\n"
    "</MessageCollection>\n";

// A PO file in `language` whose one entry, on line 6, is `context`.
std::string poFile(const std::string& language, const std::string& context = "app:hello") {
  return "msgid \"\"\nmsgstr \"\"\n\"Language: " + language +
         "\\n\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
         "msgctxt \"" +
         context + "\"\nmsgid \"Hello\"\nmsgstr \"Hallo\"\n";
}

// An XLIFF 1.2 file whose one unit is on line 4; `unitLanguage` is written
// into the target's start tag.
std::string xliffFile(const std::string& language, const std::string& unitLanguage = "") {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<xliff version=\"1.2\" xmlns=\"urn:oasis:names:tc:xliff:document:1.2\">\n"
         "<file original=\"app.xml\" source-language=\"en\" target-language=\"" +
         language +
         "\" datatype=\"plaintext\"><body>\n"
         "<trans-unit id=\"app:hello\" resname=\"app:hello\">\n"
         "<source>Hello</source><target state=\"translated\"" +
         unitLanguage + ">Hallo</target>\n</trans-unit></body></file></xliff>\n";
}

struct Result {
  int code;
  std::string errors;
  std::string document;
};

// Imports `file` (named in.po or in.xlf after `format`) into kDocument.
Result import(const std::string& format, const std::string& file,
              const std::vector<const char*>& options = {}) {
  const test_support::ScratchFolder scratch;
  fs::copy_file(fs::path(MSG_SOURCE_DIR) / "schema" / "messages.xsd", scratch / "messages.xsd");
  const std::string document = scratch.write("messages.xml", kDocument);
  const std::string input = format == "po" ? "in.po" : "in.xlf";
  scratch.write(input, file);
  const fs::path previous = fs::current_path();
  fs::current_path(scratch.path());
  std::vector<const char*> arguments = {"msgtool",     "import", "--format",    format.c_str(),
                                        input.c_str(), "--into", "messages.xml"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int code = msgtool::runTool(static_cast<int>(arguments.size()), arguments.data());
  testing::internal::GetCapturedStdout();
  const std::string errors = testing::internal::GetCapturedStderr();
  fs::current_path(previous);
  return {code, errors, test_support::readFile(document)};
}

struct Refusal {
  const char* name;
  const char* format;
  std::string file;
  std::vector<const char*> options;
  std::string message;  // a line of standard error
};

TEST(ImportTest, FilesThatWouldOverwriteOtherLanguagesAreRefused) {
  const std::string source = "is also the source language; importing would replace the source ";
  const std::vector<Refusal> cases = {
      {"PO in the source language",
       "po",
       poFile("en"),
       {},
       "in.po: error: the target language \"en\" " + source +
           "texts; write the translations' language into the file's Language header"},
      {"XLIFF in the source language",
       "xliff",
       xliffFile("en"),
       {},
       "in.xlf: error: the target language \"en\" " + source +
           "texts; write the translations' language into the file's target-language"},
      {"--target against the file",
       "po",
       poFile("fr"),
       {"--target", "de"},
       "in.po: error: the file's Language header says \"fr\", but --target says \"de\"; "
       "leave out --target to import the file as \"fr\", or correct the file"},
      {"a unit against the file",
       "xliff",
       xliffFile("de", " xml:lang=\"fr\""),
       {},
       "in.xlf:4: error: the target of \"app:hello\" is in \"fr\" (xml:lang), but the file's "
       "target-language says \"de\"; correct the one that is wrong"},
      {"no language tag",
       "po",
       poFile("zh_Hant_TW"),
       {},
       "in.po: error: the file's Language header \"zh_Hant_TW\" is no language tag msg uses; "
       "write a two-letter language and an optional two-letter region, like \"de\" or "
       "\"de-AT\""},
      {"empty PO",
       "po",
       "",
       {"--target", "de"},
       "in.po: error: is empty: no header and no entries; nothing to import"},
  };
  for (const Refusal& test : cases) {
    SCOPED_TRACE(test.name);
    const Result result = import(test.format, test.file, test.options);
    EXPECT_EQ(result.code, 2);
    EXPECT_NE(result.errors.find(test.message + "\n"), std::string::npos) << result.errors;
    EXPECT_EQ(result.document, kDocument);
  }
}

TEST(ImportTest, KeysTheDocumentDoesNotHaveAreAddedOnlyOnRequest) {
  const std::string unknown =
      ": the document has no such message; not imported (correct the key, or give "
      "--add-new-keys to add it)\n";
  for (const char* key : {"ap:hello", "app:helo"}) {
    SCOPED_TRACE(key);
    const Result refused = import("po", poFile("de", key));
    EXPECT_EQ(refused.code, 1);
    EXPECT_NE(refused.errors.find(std::string("in.po:6: error: ") + key + unknown),
              std::string::npos)
        << refused.errors;
    EXPECT_EQ(refused.document, kDocument);

    const Result added = import("po", poFile("de", key), {"--add-new-keys"});
    EXPECT_EQ(added.code, 0) << added.errors;
    EXPECT_NE(added.document.find("xml:lang=\"de\">Hallo<"), std::string::npos);
  }
}

TEST(ImportTest, GettextLocaleNamesBecomeLanguageTags) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"fr_FR.UTF-8", "fr-FR"}, {"de_AT@euro", "de-AT"}, {"pt_br", "pt-BR"}, {"DE", "de"}};
  for (const auto& [locale, tag] : cases) {
    SCOPED_TRACE(locale);
    const Result result = import("po", poFile(locale));
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_NE(result.document.find(std::string("xml:lang=\"") + tag + "\">Hallo<"),
              std::string::npos)
        << result.document;
  }
}

}  // namespace
