// Documents from outside: where a document failed, positions for tools, and
// the refusals that keep a hostile document from stalling the process,
// opening connections or reading files it has no business reading. Every
// document is written at run time into a scratch folder of the test.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "message_documents/MessageDocumentReader.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"
#include "msg/MessageHandlerX.h"
#include "xml_access/XercesXML.h"

namespace {

using ::testing::HasSubstr;

const char kSchemaAttributes[] =
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
    "xsi:noNamespaceSchemaLocation=\"messages.xsd\"";

// A message document whose MessageCollection holds `body`.
std::string messageDocument(const std::string& body) {
  return std::string("<?xml version=\"1.0\"?>\n<MessageCollection ") + kSchemaAttributes +
         " xmlns:xi=\"http://www.w3.org/2001/XInclude\">\n" + body + "</MessageCollection>\n";
}

class Counting : public msg::MessageChannel {
 public:
  int written = 0;

 protected:
  void onMessage(const msg::Message&) override { ++written; }
};

class DocumentSafetyTest : public ::testing::Test {
 protected:
  DocumentSafetyTest() {
    std::filesystem::create_directories(folder / "docs");
    std::filesystem::copy_file(std::string(MSG_SOURCE_DIR) + "/schema/messages.xsd",
                               folder / "docs" / "messages.xsd");
    handler.setMessageChannel(&channel, false);
    new msg::MTE(msg::error, "en", "msgx", "MessageDocumentError", "Cannot load &0.", &handler,
                 false, true);
    write("docs/base.xml", messageDocument("<MessageNamespace name=\"base\"><Message id=\"kept\">"
                                           "<Text>loaded before</Text></Message>"
                                           "</MessageNamespace>\n"));
    handler.loadMessageDocument(path("docs/base.xml").c_str());
  }
  ~DocumentSafetyTest() override { std::filesystem::remove_all(folder); }

  std::string path(const std::string& name) const { return (folder / name).string(); }

  void write(const std::string& name, const std::string& content) const {
    std::ofstream(folder / name, std::ios::binary) << content;
  }

  // Loads `name` and expects a refusal that leaves the table as it was;
  // gives the problems the exception carried.
  std::vector<msg::DocumentProblem> refusalOf(const std::string& name) {
    const int writtenBefore = channel.written;
    std::vector<msg::DocumentProblem> problems;
    try {
      handler.loadMessageDocument(path(name).c_str());
      ADD_FAILURE() << name << " was loaded";
    } catch (const msg::ErrorInMessageDocument& failure) {
      EXPECT_EQ(std::string(failure.getText()),
                "Message document \"" + path(name) + "\" contains syntactical error.");
      problems = failure.getProblems();
    }
    EXPECT_EQ(channel.written, writtenBefore + 1);
    EXPECT_EQ(text("base", "kept"), "loaded before");
    EXPECT_FALSE(problems.empty());
    return problems;
  }

  std::string text(const char* nameSpace, const char* id) const {
    std::unique_ptr<msg::Message> record(handler.getMessage(nameSpace, id));
    return record != nullptr && record->getText() != nullptr ? record->getText() : "<none>";
  }

  // All problem messages joined, for matching.
  static std::string joined(const std::vector<msg::DocumentProblem>& problems) {
    std::string all;
    for (const msg::DocumentProblem& problem : problems) {
      all += problem.message + "\n";
    }
    return all;
  }

  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() /
      ("document_safety_test_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()));
  msg::MessageHandlerX handler;
  Counting channel;
};

TEST_F(DocumentSafetyTest, ErrorsCarryTheirPlace) {
  write("docs/broken.xml", messageDocument("<MessageNamespace>\n  <Message></Mesage>\n"));
  const std::vector<msg::DocumentProblem> problems = refusalOf("docs/broken.xml");
  EXPECT_THAT(problems[0].file, HasSubstr("broken.xml"));
  EXPECT_EQ(problems[0].line, 4);
  EXPECT_GT(problems[0].column, 0);
  EXPECT_FALSE(problems[0].message.empty());
}

TEST_F(DocumentSafetyTest, TheFirstParseKeepsWhereEachElementStarts) {
  write("docs/part.xml", "<MessageNamespace name=\"part\"/>\n");
  write("docs/positions.xml",
        messageDocument("<!-- a comment -->\n  <MessageNamespace name=\"n\">\n"
                        "    <Message id=\"m\"><Text\n xml:lang=\"de\">a&amp;b</Text></Message>\n"
                        "  </MessageNamespace><xi:include href=\"part.xml\"/>\n"));
  const XercesXML::DOMNode document =
      msg::parseMessageDocumentWithPositions(path("docs/positions.xml").c_str());
  const XercesXML::DOMNode collection = msg::findMessageCollection(document);
  EXPECT_EQ(collection.getSourceLine(), 2);
  EXPECT_EQ(collection.getSourceColumn(), 1);
  std::vector<std::pair<int, int>> places;
  msg::forEachDocumentText(collection, [&](const msg::DocumentText& entry) {
    places.push_back(
        {entry.namespaceElement.getSourceLine(), entry.namespaceElement.getSourceColumn()});
    places.push_back(
        {entry.messageElement.getSourceLine(), entry.messageElement.getSourceColumn()});
    places.push_back({entry.textElement.getSourceLine(), entry.textElement.getSourceColumn()});
    EXPECT_EQ(entry.readText(), "a&b");
  });
  EXPECT_EQ(places, (std::vector<std::pair<int, int>>{{4, 3}, {5, 5}, {5, 21}}));
  // The included part is there, without a place of its own; the document of
  // the full round trip keeps no places.
  const XercesXML::DOMNode included =
      collection.findFirstNodeByName("MessageNamespace").getNextElementSibling();
  ASSERT_TRUE(included.isValid());
  EXPECT_EQ(included.getSourceLine(), 0);
  const XercesXML::DOMNode validated =
      msg::parseMessageDocument(path("docs/positions.xml").c_str());
  EXPECT_EQ(msg::findMessageCollection(validated).getSourceLine(), 0);
}

}  // namespace
