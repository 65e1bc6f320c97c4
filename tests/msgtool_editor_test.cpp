// msgtool's document editor: what it changes in a message document, what it
// keeps byte for byte, and that a refused edit leaves the file as it was.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "Catalogue.h"
#include "MessageDocumentEditor.h"
#include "message_documents/MessageDocumentReader.h"
#include "tests/msgtool_run.h"
#include "tests/scratch_folder.h"

namespace fs = std::filesystem;

namespace {

using test_support::readFile;
using test_support::writeFile;
using ::testing::HasSubstr;
using ::testing::StartsWith;
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

class EditorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    test_support::copySchemaInto(scratch.path());
    writeFile(scratch / "part.xml", kPart);
    writeFile(document(), kDocument);
  }
  std::string document() const { return (scratch / "messages.xml").string(); }

  test_support::ScratchFolder scratch;
  msgtool::XmlSession session;
};

struct Edit {
  const char* nameSpace;
  const char* identifier;
  const char* severity;
  const char* language;
  std::string text;
  const char* stamp;
};

struct Preservation {
  const char* what;
  std::string before;
  std::vector<Edit> edits;
  std::string after;
};

// A document with its root's attributes on two lines, in this order.
std::string collection(const std::string& declaration, const std::string& body,
                       const std::string& moreAttributes = "") {
  return declaration +
         "\n<MessageCollection xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
         "    xsi:noNamespaceSchemaLocation=\"messages.xsd\"" +
         moreAttributes + ">\n" + body + "</MessageCollection>\n";
}

const char kStamped[] = " xmlns:msgtool=\"urn:x-msg:msgtool:1\"";
const char kUtf8[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
const std::string kIndented =
    "    <MessageNamespace name=\"app\">\n"
    "        <Message id=\"start\">\n"
    "            <Text xml:lang=\"en\">Start</Text>\n"
    "        </Message>\n"
    "    </MessageNamespace>\n";
const std::string kStop =
    "        <Message id=\"stop\" severity=\"warning\">\n"
    "            <Text msgtool:translated-from=\"en:2\" xml:lang=\"de\">Halt</Text>\n"
    "        </Message>\n";
const std::string kIndentedAdded =
    "    <MessageNamespace name=\"app\">\n"
    "        <Message id=\"start\">\n"
    "            <Text xml:lang=\"en\">Start</Text>\n"
    "            <Text msgtool:translated-from=\"en:1\" xml:lang=\"fr\">D\u00E9but</Text>\n"
    "        </Message>\n" +
    kStop +
    "    </MessageNamespace>\n"
    "    <MessageNamespace name=\"other\">\n"
    "        <Message id=\"x\">\n"
    "            <Text msgtool:translated-from=\"en:3\" xml:lang=\"de\">&lt;&amp;1&gt;</Text>\n"
    "        </Message>\n"
    "    </MessageNamespace>\n";
const std::vector<Edit> kAdditions = {{"app", "start", "", "fr", "D\u00E9but", "en:1"},
                                      {"app", "stop", "warning", "de", "Halt", "en:2"},
                                      {"other", "x", "", "de", "<&1>", "en:3"}};

// Every byte the edits do not change stays as written: nothing is written
// for edits that change nothing. Line ends, and new text in the file's own
// encoding, are the markup editor's, and tested with it.
TEST_F(EditorTest, ChangesOnlyTheBytesOfWhatItEdits) {
  const std::string odd = "<?xml version='1.0' encoding='UTF-8' standalone='yes'?>";
  const std::string oddTags =
      "  <MessageNamespace name=\"app\">\n"
      "    <Message severity='info'  id='start'>\n"
      "      <Text xml:lang=\"en\">Start</Text>\n"
      "      <Text  msgtool:translated-from = 'en:old'   xml:lang='de' >Alt</Text>\n"
      "    </Message>\n"
      "  </MessageNamespace>\n";
  std::string newText = oddTags;
  newText.replace(newText.find("'en:old'"), 8, "'en:new'");
  newText.replace(newText.find(">Alt<"), 5, ">Neu &amp; &lt;mehr&gt;<");
  const std::string kept =
      "  <MessageNamespace name=\"app\">\n"
      "    <Message id=\"a\">\n"
      "      <!-- a comment, kept -->\n"
      "      <Text xml:lang=\"en\"><![CDATA[<b>]]>&#9;&#x26;</Text>\n"
      "    </Message>\n"
      "    <Message id=\"b\"/>\n"
      "  </MessageNamespace>\n";
  const std::string keptEdited =
      "  <MessageNamespace name=\"app\">\n"
      "    <Message id=\"a\">\n"
      "      <!-- a comment, kept -->\n"
      "      <Text xml:lang=\"en\"><![CDATA[<b>]]>&#9;&#x26;</Text>\n"
      "      <Text msgtool:translated-from=\"s\" xml:lang=\"de\">a&#xD;\nb</Text>\n"
      "    </Message>\n"
      "    <Message id=\"b\">\n"
      "      <Text msgtool:translated-from=\"t\" xml:lang=\"de\">B</Text>\n"
      "    </Message>\n"
      "  </MessageNamespace>\n";

  const std::vector<Preservation> cases = {
      {"the same text and stamp",
       collection(odd, oddTags, kStamped),
       {{"app", "start", "", "de", "Alt", "en:old"}},
       collection(odd, oddTags, kStamped)},
      {"one text: quotes, order, spacing, standalone",
       collection(odd, oddTags, kStamped),
       {{"app", "start", "", "de", "Neu & <mehr>", "en:new"}},
       collection(odd, newText, kStamped)},
      {"texts, a message, a namespace after their neighbours", collection(kUtf8, kIndented),
       kAdditions, collection(kUtf8, kIndentedAdded, kStamped)},
      {"comments, CDATA, references, an empty message",
       collection(kUtf8, kept),
       {{"app", "a", "", "de", "a\r\nb", "s"}, {"app", "b", "", "de", "B", "t"}},
       collection(kUtf8, keptEdited, kStamped)},
  };
  for (const Preservation& test : cases) {
    SCOPED_TRACE(test.what);
    writeFile(document(), test.before);
    {
      msgtool::MessageDocumentEditor editor(document(), "unused.xsd");
      for (const Edit& edit : test.edits) {
        editor.setText(edit.nameSpace, edit.identifier, edit.severity, edit.language, edit.text,
                       edit.stamp);
      }
      editor.save();
    }
    EXPECT_EQ(readFile(document()), test.after);
  }
}

// A key whose Message stands both in the document and in a part: of each
// language the loader keeps the text that comes last in the expanded
// document, and that is the one the editor finds and changes.
TEST_F(EditorTest, EditsTheTextTheLoaderKeeps) {
  const std::string part =
      "<?xml version=\"1.0\"?>\n"
      "<MessageNamespace name=\"app\">\n"
      "  <Message id=\"start\"><Text xml:lang=\"de\">Teil</Text></Message>\n"
      "</MessageNamespace>\n";
  const std::string own =
      "  <MessageNamespace name=\"app\">\n"
      "    <Message id=\"start\"><Text xml:lang=\"de\">Eigen</Text>"
      "<Text xml:lang=\"fr\">Propre</Text></Message>\n"
      "  </MessageNamespace>\n";
  const std::string include =
      "  <xi:include href=\"part.xml\" xmlns:xi=\"http://www.w3.org/2001/XInclude\"/>\n";
  const std::vector<std::tuple<std::string, const char*, const char*, const char*>> cases = {
      {own + include, "de", "Teil", "part.xml"},
      {own + include, "fr", "Propre", "messages.xml"},
      {include + own, "de", "Eigen", "messages.xml"},
  };
  for (const auto& [body, language, kept, edited] : cases) {
    SCOPED_TRACE(std::string(language) + (body.rfind(own, 0) == 0 ? ", part last" : ", own last"));
    const std::string before = collection(kUtf8, body);
    writeFile(scratch / "part.xml", part);
    writeFile(document(), before);
    {
      msgtool::MessageDocumentEditor editor(document(), "unused.xsd");
      const std::optional<Text> found = editor.find("app", "start", language);
      ASSERT_TRUE(found.has_value());
      EXPECT_EQ(found->text, kept);
      editor.setText("app", "start", "", language, "Neu", "en:1");
      editor.save();
    }
    const bool intoPart = std::string(edited) == "part.xml";
    EXPECT_EQ(readFile(scratch / "part.xml") == part, !intoPart);
    EXPECT_EQ(readFile(document()) == before, intoPart);
    std::string loaded;
    msg::forEachDocumentText(
        msg::findMessageCollection(msg::parseMessageDocument(document().c_str())),
        [&](const msg::DocumentText& text) {
          if (text.effectiveLanguage() == language) {
            loaded = text.readText();
          }
        });
    EXPECT_EQ(loaded, "Neu");
  }
}

TEST_F(EditorTest, NewDocumentNamesItsSchemaAndLoads) {
  const std::string fresh = (scratch / "fresh.xml").string();
  msgtool::MessageDocumentEditor editor(fresh, "messages.xsd");
  EXPECT_TRUE(editor.isNew());
  editor.setText("app", "hello", "info", "de", "Hallo", "en:5");
  editor.save();
  EXPECT_EQ(readFile(fresh),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<MessageCollection xmlns:msgtool=\"urn:x-msg:msgtool:1\" "
            "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
            "xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n"
            "  <MessageNamespace name=\"app\">\n"
            "    <Message id=\"hello\" severity=\"info\">\n"
            "      <Text msgtool:translated-from=\"en:5\" xml:lang=\"de\">Hallo</Text>\n"
            "    </Message>\n"
            "  </MessageNamespace>\n"
            "</MessageCollection>\n");
}

// The refusal ("file:line: error: message") of reading `path`, setting the
// German text of `nameSpace`:start and saving; "" if it is saved.
std::string refusalOfEdit(const std::string& path, const std::string& nameSpace = "app") {
  return test_support::refusalOf(
      [&nameSpace](const std::string& file) {
        msgtool::MessageDocumentEditor editor(file, "unused.xsd");
        editor.setText(nameSpace, "start", "", "de", "Neu", "en:1");
        editor.save();
      },
      path);
}

// A refusal names the file and the line the loader gives, and the document
// is byte for byte as it was; also when the loader refuses the edited one.
TEST_F(EditorTest, RefusedDocumentsAndEditsLeaveTheFileAsItWas) {
  const std::string file = document();
  std::string otherPrefix = kDocument;
  otherPrefix.insert(otherPrefix.find(" xmlns:xsi"), " xmlns:msgtool=\"urn:other\"");
  // Documents that do not load or that the editor cannot write back as they
  // are, and a namespace a part given on its own cannot hold.
  const std::vector<std::tuple<std::string, std::string, const char*, std::string>> refusals = {
      {"messages.xml",
       std::string(kHead) + "  <MessageNamespace bogus=\"1\"/>\n</MessageCollection>\n", "app",
       ":5: error: attribute 'bogus' is not declared for element 'MessageNamespace' (the "
       "document must load before texts can be imported into it)"},
      {"messages.xml",
       "<?xml version=\"1.0\" encoding=\"KOI8-R\"?>" + kDocument.substr(kDocument.find('\n')),
       "app", "the encoding \"KOI8-R\""},
      {"messages.xml", otherPrefix, "app", "binds the prefix \"msgtool\" to \"urn:other\""},
      {"part.xml", kPart, "other", "is a part that holds one MessageNamespace"}};
  for (const auto& [name, bytes, nameSpace, message] : refusals) {
    SCOPED_TRACE(message);
    const std::string path = (scratch / name).string();
    writeFile(path, bytes);
    const std::string refusal = refusalOfEdit(path, nameSpace);
    EXPECT_THAT(refusal, StartsWith(path + ":"));
    EXPECT_THAT(refusal, HasSubstr(message));
    EXPECT_EQ(readFile(path), bytes);
  }
  writeFile(file, kDocument);

  // The schema has gone since the document was read: the part, written
  // first, is put back.
  const std::string refusal = test_support::refusalOf(
      [this](const std::string& path) {
        msgtool::MessageDocumentEditor editor(path, "unused.xsd");
        editor.setText("app", "start", "", "de", "Neu", "en:1");
        editor.setText("part", "only", "", "de", "Neu", "en:1");
        fs::remove(scratch / "messages.xsd");
        editor.save();
      },
      file);
  EXPECT_THAT(refusal, StartsWith(file + ": error: the edited document would not load, so it "
                                         "was left as it was: "));
  EXPECT_THAT(refusal, HasSubstr("part.xml, written before, was put back as it was"));
  EXPECT_EQ(readFile(file), kDocument);
  EXPECT_EQ(readFile(scratch / "part.xml"), kPart);
  EXPECT_EQ(std::distance(fs::directory_iterator(scratch.path()), fs::directory_iterator()), 2)
      << "a temporary file was left beside messages.xml and part.xml";
}

}  // namespace
