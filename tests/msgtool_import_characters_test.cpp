// msgtool import, run in this process, with translations that hold
// characters a message document cannot hold: each such unit is refused as a
// finding with its file and line, and the document stays byte for byte as
// it was.

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

// A PO file whose one entry, on line 6, has `context` and `translation`
// (both written between the quotes as they stand).
std::string poFile(const std::string& context, const std::string& translation) {
  return "msgid \"\"\nmsgstr \"\"\n\"Language: de\\n\"\n"
         "\"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
         "msgctxt \"" +
         context + "\"\nmsgid \"Hello\"\nmsgstr \"" + translation + "\"\n";
}

struct Case {
  const char* name;
  const char* format;
  std::string file;
  int exitCode;
  std::string finding;  // the line of standard error that says why
};

TEST(ImportCharactersTest, UnitsWithCharactersADocumentCannotHoldAreRefused) {
  const std::string refused = ", a character that a message document cannot hold; not imported";
  const std::vector<Case> cases = {
      {"bell", "po", poFile("app:hello", "Hal\\alo"), 1,
       "in.po:6: error: app:hello: the translation holds U+0007" + refused},
      {"backspace", "po", poFile("app:hello", "\\bHallo"), 1,
       "in.po:6: error: app:hello: the translation holds U+0008" + refused},
      {"form feed", "po", poFile("app:hello", "Hallo\\f"), 1,
       "in.po:6: error: app:hello: the translation holds U+000C" + refused},
      {"vertical tab", "po", poFile("app:hello", "Hal\\vlo"), 1,
       "in.po:6: error: app:hello: the translation holds U+000B" + refused},
      {"octal", "po", poFile("app:hello", "Hallo\\001"), 1,
       "in.po:6: error: app:hello: the translation holds U+0001" + refused},
      {"raw byte", "po", poFile("app:hello", "Hal\x1Flo"), 1,
       "in.po:6: error: app:hello: the translation holds U+001F" + refused},
      {"U+FFFE", "po", poFile("app:hello", "Hallo \xEF\xBF\xBE"), 1,
       "in.po:6: error: app:hello: the translation holds U+FFFE" + refused},
      {"U+FFFF", "po", poFile("app:hello", "Hallo \xEF\xBF\xBF"), 1,
       "in.po:6: error: app:hello: the translation holds U+FFFF" + refused},
      {"escaped byte that is not UTF-8", "po", poFile("app:hello", "Hall\\366"), 1,
       "in.po:6: error: app:hello: the translation holds bytes that are not UTF-8; not "
       "imported"},
      {"control character in the key", "po", poFile("app:hel\\033lo", "Hallo"), 1,
       "in.po:6: error: app:hel\033lo: the key holds U+001B" + refused},
      // The whole file is in another encoding than it says: nothing of it is read.
      {"raw byte that is not UTF-8", "po", poFile("app:hello", "Hall\xF6"), 2,
       "in.po:8: error: holds bytes that are not UTF-8; convert the file to UTF-8 (msgconv -t "
       "UTF-8)"},
      {"XLIFF 1.1 character reference", "xliff",
       "<?xml version=\"1.1\" encoding=\"UTF-8\"?>\n"
       "<xliff version=\"1.2\" xmlns=\"urn:oasis:names:tc:xliff:document:1.2\">\n"
       "<file original=\"app.xml\" source-language=\"en\" target-language=\"de\" "
       "datatype=\"plaintext\"><body>\n"
       "<trans-unit id=\"app:hello\" resname=\"app:hello\">\n"
       "<source>Hello</source><target state=\"translated\">Hal&#x1b;lo</target>\n"
       "</trans-unit></body></file></xliff>\n",
       1, "in.xlf:4: error: app:hello: the translation holds U+001B" + refused},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    const test_support::ScratchFolder scratch;
    fs::copy_file(fs::path(MSG_SOURCE_DIR) / "schema" / "messages.xsd", scratch / "messages.xsd");
    const std::string document = scratch.write("messages.xml", kDocument);
    const fs::path previous = fs::current_path();
    fs::current_path(scratch.path());
    const std::string input =
        std::string("in.") + (test.format == std::string("po") ? "po" : "xlf");
    scratch.write(input, test.file);
    const std::vector<const char*> arguments = {"msgtool",     "import", "--format",    test.format,
                                                input.c_str(), "--into", "messages.xml"};
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int code = msgtool::runTool(static_cast<int>(arguments.size()), arguments.data());
    testing::internal::GetCapturedStdout();
    const std::string errors = testing::internal::GetCapturedStderr();
    fs::current_path(previous);

    EXPECT_EQ(code, test.exitCode);
    EXPECT_NE(errors.find(test.finding + "\n"), std::string::npos) << errors;
    EXPECT_EQ(test_support::readFile(document), kDocument);
  }
}

}  // namespace
