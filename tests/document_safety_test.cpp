// Documents from outside: where a document failed, positions for tools, and
// the refusals that keep a hostile document from stalling the process,
// opening connections or reading files it has no business reading. Every
// document is written at run time into a scratch folder of the test.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "message_documents/MessageDocumentReader.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/MessageHandlerX.h"
#include "platform/InputLimits.h"
#include "tests/catalogue_support.h"
#include "tests/scratch_folder.h"
#include "xml_access/XercesXML.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

using test_support::entityBomb;
using test_support::messageDocument;
using test_support::textOf;

// A TCP listener on 127.0.0.1 that accepts and counts connections until it
// ends. Whatever a document names on it must never be fetched.
class CountingListener {
 public:
  CountingListener() : socketId(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (socketId < 0 || ::bind(socketId, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        ::listen(socketId, 16) != 0 ||
        ::getsockname(socketId, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
      ADD_FAILURE() << "no listener on 127.0.0.1";
      return;
    }
    port = ntohs(address.sin_port);
    acceptor = std::thread([this] {
      for (pollfd waiting{socketId, POLLIN, 0}; !stopping;) {
        if (::poll(&waiting, 1, 20) > 0 && ::close(::accept(socketId, nullptr, nullptr)) == 0) {
          ++connections;
        }
      }
    });
  }
  ~CountingListener() {
    stopping = true;
    if (acceptor.joinable()) {
      acceptor.join();
    }
    ::close(socketId);
  }

  std::string url(const std::string& name) const {
    return "http://127.0.0.1:" + std::to_string(port) + "/" + name;
  }

  std::atomic<int> connections{0};

 private:
  int socketId;
  int port = 0;
  std::atomic<bool> stopping{false};
  std::thread acceptor;
};

// One entity of 50,000 characters referenced 20,000 times in content and
// as often in an attribute: 10^9 characters from 150 kB.
std::string quadraticBlowup(bool inAttribute) {
  std::string references;
  for (int i = 0; i < 20000; ++i) {
    references += "&big;";
  }
  return "<!DOCTYPE r [<!ENTITY big \"" + std::string(50000, 'x') + "\">]>\n" +
         (inAttribute ? "<r a=\"" + references + "\"/>" : "<r>" + references + "</r>") + "\n";
}

class DocumentSafetyTest : public ::testing::Test {
 protected:
  DocumentSafetyTest() {
    std::filesystem::create_directories(folder / "docs");
    test_support::copySchemaInto(folder / "docs");
    handler.setMessageChannel(&channel, false);
    test_support::addRefusalReport(handler);
    write("docs/base.xml", messageDocument("<MessageNamespace name=\"base\"><Message id=\"kept\">"
                                           "<Text>loaded before</Text></Message>"
                                           "</MessageNamespace>\n"));
    handler.loadMessageDocument(path("docs/base.xml").c_str());
  }
  std::string path(const std::string& name) const { return (folder / name).string(); }
  void write(const std::string& name, const std::string& content) const {
    scratch.write(name, content);
  }
  // The text of the error the generic parser raises for `content`, or "".
  std::string parseError(const std::string& content) {
    write("docs/entities.xml", content);
    try {
      XercesXML::Parser(true, false).parseFile(path("docs/entities.xml"));
    } catch (const XercesXML::ParsingError& error) {
      return error.getText();
    }
    return "";
  }

  // Loads `name` and expects a refusal that leaves the table as it was;
  // gives the problems the exception carried. How a refusal is reported is
  // DocumentLoaderTest's.
  std::vector<msg::DocumentProblem> refusalOf(const std::string& name) {
    std::vector<msg::DocumentProblem> problems;
    try {
      handler.loadMessageDocument(path(name).c_str());
      ADD_FAILURE() << name << " was loaded";
    } catch (const msg::ErrorInMessageDocument& failure) {
      problems = failure.getProblems();
    }
    EXPECT_EQ(textOf(handler, "base", "kept"), "loaded before");
    EXPECT_FALSE(problems.empty());
    return problems;
  }

  // All problem messages joined, for matching.
  static std::string joined(const std::vector<msg::DocumentProblem>& problems) {
    std::string all;
    for (const msg::DocumentProblem& problem : problems) {
      all += problem.message + "\n";
    }
    return all;
  }

  test_support::ScratchFolder scratch;
  const std::filesystem::path& folder = scratch.path();
  msg::MessageHandlerX handler;
  test_support::RecordingChannel channel;
};

TEST_F(DocumentSafetyTest, TheLoadersParseKeepsWhereEachElementStarts) {
  const std::string namespaceN =
      "<MessageNamespace name=\"n\"><Message id=\"m\"><Text>a&amp;b</Text></Message>";
  write("docs/part.xml", namespaceN + "</MessageNamespace>\n");
  write("docs/positions.xml",
        messageDocument("<!-- a comment -->\n  <MessageNamespace name=\"n\">\n"
                        "    <Message id=\"m\"><Text\n xml:lang=\"de\">a&amp;b</Text></Message>\n"
                        "  </MessageNamespace><xi:include href=\"part.xml\"/>\n  " +
                        namespaceN + "</MessageNamespace>\n"));
  const XercesXML::DOMNode document =
      msg::parseMessageDocumentWithPositions(path("docs/positions.xml").c_str());
  const XercesXML::DOMNode collection = msg::findMessageCollection(document);
  EXPECT_EQ(collection.getSourceLine(), 2);
  EXPECT_EQ(collection.getSourceColumn(), 1);
  std::vector<std::pair<int, int>> places;
  std::vector<std::string> files;
  msg::forEachDocumentText(collection, [&](const msg::DocumentText& entry) {
    places.push_back(
        {entry.namespaceElement.getSourceLine(), entry.namespaceElement.getSourceColumn()});
    places.push_back(
        {entry.messageElement.getSourceLine(), entry.messageElement.getSourceColumn()});
    places.push_back({entry.textElement.getSourceLine(), entry.textElement.getSourceColumn()});
    files.push_back(entry.textElement.getSourceFile());
    EXPECT_EQ(entry.readText(), "a&b");
  });
  // The included part's elements have their places in the part, which
  // they name as the document is named; the elements after it keep theirs.
  // A parse that asks for no places keeps none.
  EXPECT_EQ(places,
            (std::vector<std::pair<int, int>>{
                {4, 3}, {5, 5}, {5, 21}, {1, 1}, {1, 28}, {1, 44}, {8, 3}, {8, 30}, {8, 46}}));
  EXPECT_EQ(files, (std::vector<std::string>{"", path("docs/part.xml"), ""}));
  const XercesXML::DOMNode validated =
      msg::parseMessageDocument(path("docs/positions.xml").c_str());
  EXPECT_EQ(msg::findMessageCollection(validated).getSourceLine(), 0);
}

TEST_F(DocumentSafetyTest, NothingIsFetchedOverTheNetwork) {
  CountingListener listener;
  const std::string places[] = {
      // schema location
      "<?xml version=\"1.0\"?>\n<MessageCollection "
      "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:noNamespaceSchemaLocation=\"" +
          listener.url("messages.xsd") + "\"/>\n",
      // external DTD
      "<!DOCTYPE MessageCollection SYSTEM \"" + listener.url("m.dtd") + "\">\n" +
          messageDocument(""),
      // external entity
      "<!DOCTYPE MessageCollection [<!ENTITY e SYSTEM \"" + listener.url("e.xml") + "\">]>\n" +
          messageDocument("&e;"),
      // include, with a fallback that must not hide the refusal
      messageDocument("<xi:include href=\"" + listener.url("part.xml") +
                      "\"><xi:fallback/></xi:include>\n"),
  };
  for (const std::string& content : places) {
    SCOPED_TRACE(content.substr(0, 120));
    write("docs/remote.xml", content);
    const std::string problems = joined(refusalOf("docs/remote.xml"));
    if (content.find("<!DOCTYPE") != std::string::npos) {
      EXPECT_THAT(problems, HasSubstr("DOCTYPE"));
    } else {
      EXPECT_THAT(problems, HasSubstr(listener.url("")));
      EXPECT_THAT(problems, HasSubstr("not a local file"));
    }
  }
  // The generic parser keeps DTDs, but fetches neither an external DTD nor
  // an external entity, and neither opens a URL it is given as a file name.
  for (const std::string& content :
       {"<!DOCTYPE r SYSTEM \"" + listener.url("r.dtd") + "\">\n<r/>\n",
        "<!DOCTYPE r [<!ENTITY e SYSTEM \"" + listener.url("e") + "\">]><r>&e;</r>"}) {
    EXPECT_THAT(parseError(content), AllOf(HasSubstr("XercesXML - Refused: "),
                                           HasSubstr("external entities and DTDs are refused")));
  }
  EXPECT_THROW(XercesXML::Parser(true, false).parseFile(listener.url("r.xml")),
               XercesXML::ParsingError);
  EXPECT_EQ(listener.connections, 0);
}

TEST_F(DocumentSafetyTest, ADoctypeIsRefusedInTheDocumentAndInEveryPart) {
  write("docs/bomb.xml", entityBomb("MessageCollection") +
                             "<MessageCollection><MessageNamespace name=\"&l9;\"/>"
                             "</MessageCollection>\n");
  const std::vector<msg::DocumentProblem> problems = refusalOf("docs/bomb.xml");
  EXPECT_THAT(problems.back().message, HasSubstr("document type declaration (DOCTYPE)"));
  EXPECT_EQ(problems.back().line, 1);

  write("docs/part.xml", "<!DOCTYPE MessageNamespace>\n<MessageNamespace name=\"part\"/>\n");
  write("docs/with_part.xml", messageDocument("<xi:include href=\"part.xml\"/>\n"));
  const std::vector<msg::DocumentProblem> inPart = refusalOf("docs/with_part.xml");
  EXPECT_THAT(inPart.back().file, HasSubstr("part.xml"));
  EXPECT_THAT(joined(inPart), HasSubstr("DOCTYPE"));
  EXPECT_EQ(textOf(handler, "part", "x"), "<none>");
}

TEST_F(DocumentSafetyTest, IncludesStayInTheFolderOfTheDocument) {
  std::filesystem::create_directories(folder / "docs" / "sub");
  write("outside.xml",
        "<MessageNamespace name=\"outside\"><Message id=\"m\"><Text>secret</Text>"
        "</Message></MessageNamespace>\n");
  write("docs/sub/inner.xml",
        "<MessageNamespace name=\"inner\"><Message id=\"m\"><Text>inner</Text>"
        "</Message></MessageNamespace>\n");
  std::filesystem::create_symlink(folder / "outside.xml", folder / "docs" / "link.xml");
  for (const std::string& href :
       {std::string("../outside.xml"), path("outside.xml"), "file://" + path("outside.xml"),
        std::string("sub/../../outside.xml"), std::string("link.xml")}) {
    SCOPED_TRACE(href);
    write("docs/escape.xml", messageDocument("<xi:include href=\"" + href + "\"/>\n"));
    const std::string problems = joined(refusalOf("docs/escape.xml"));
    EXPECT_THAT(problems, HasSubstr("\"" + href + "\" lies outside the folder of the document"));
    EXPECT_EQ(textOf(handler, "outside", "m"), "<none>");
  }
  // Below the folder is fine, and so is a part that includes its neighbour
  // through a path that leaves and re-enters its folder.
  write("docs/sub/outer.xml",
        "<MessageNamespace name=\"outer\" xmlns:xi=\"http://www.w3.org/2001/XInclude\">"
        "<xi:include href=\"../sub/leaf.xml\"/></MessageNamespace>\n");
  write("docs/sub/leaf.xml", "<Message id=\"m\"><Text>leaf</Text></Message>\n");
  write("docs/inside.xml", messageDocument("<xi:include href=\"sub/../sub/outer.xml\"/>"
                                           "<xi:include href=\"sub/inner.xml\"/>\n"));
  handler.loadMessageDocument(path("docs/inside.xml").c_str());
  EXPECT_EQ(textOf(handler, "outer", "m"), "leaf");
  EXPECT_EQ(textOf(handler, "inner", "m"), "inner");
}

// The collection is level 1: 999 levels below it are the deepest allowed.
// The schema would refuse <Deep> and the extra attributes, so the bounds
// show in a parse without validation; a load is refused before the schema
// is asked, naming the line of the element that crosses the bound.
TEST_F(DocumentSafetyTest, DepthAndAttributeCountAreBoundedWhileParsing) {
  const auto nested = [](int levels) {
    std::string deep;
    for (int i = 0; i < levels; ++i) {
      deep = "<Deep>" + deep + "</Deep>";
    }
    return messageDocument(deep);
  };
  EXPECT_EQ(parseError(nested(999)), "");
  EXPECT_THAT(parseError(nested(1000)), HasSubstr("deeper than the limit of 1000 levels"));
  std::string crowded = "<MessageNamespace name=\"n\"";
  for (std::size_t i = 1; i < msg::limits::kMaxAttributesPerElement + 1; ++i) {
    crowded += " a" + std::to_string(i) + "=\"\"";
  }
  const std::pair<std::string, const char*> bounded[] = {
      {nested(1000), "deeper than the limit of 1000 levels"},
      {messageDocument(crowded + "/>\n"),
       "an element has 129 attributes, more than the limit of 128"}};
  for (const auto& [content, why] : bounded) {
    write("docs/bounded.xml", content);
    const std::vector<msg::DocumentProblem> problems = refusalOf("docs/bounded.xml");
    EXPECT_THAT(problems.back().message, HasSubstr(why));
    EXPECT_EQ(problems.back().line, 3);
  }
}

TEST_F(DocumentSafetyTest, TheCollectionIsTheFirstElementOfThatName) {
  write("docs/wrapped.xml",
        "<Wrapper><?MessageCollection not this one?><Other/>"
        "<MessageCollection><MessageNamespace name=\"w\"/></MessageCollection>"
        "</Wrapper>\n");
  XercesXML::Parser unvalidated(true, false);
  const XercesXML::DOMNode collection =
      msg::findMessageCollection(unvalidated.parseFile(path("docs/wrapped.xml")));
  ASSERT_TRUE(collection.isValid());
  EXPECT_EQ(collection.getFirstElementChild().getAttributeByName("name", ""), "w");
}

// The generic parser keeps internal DTDs, entities included, within bounds.
TEST_F(DocumentSafetyTest, EntityExpansionIsBoundedInCountAndSize) {
  EXPECT_THAT(parseError(entityBomb("r") + "<r>&l9;</r>\n"),
              HasSubstr("more than '10000' entity expansions"));
  EXPECT_THAT(parseError(entityBomb("r") + "<r a=\"&l9;\"/>\n"),
              HasSubstr("more than '10000' entity expansions"));
  // 200 references of 50,000 characters reach the bound of 10,000,000.
  EXPECT_THAT(parseError(quadraticBlowup(false)), HasSubstr("more than '100' entity expansions"));
  EXPECT_THAT(parseError(quadraticBlowup(true)), HasSubstr("more than '100' entity expansions"));
  XercesXML::Parser parser(true, false);
  EXPECT_THROW(parser.parseFile(path("docs/entities.xml")), XercesXML::ParsingError);
  EXPECT_THAT(parser.getProblems().back().message,
              HasSubstr("lowered to 100: with entity values of up to 50000 characters, more would "
                        "exceed the entity expansion limit of 10000000 characters"));
  // Within the bounds entities work as ever.
  EXPECT_EQ(parseError("<!DOCTYPE r [<!ELEMENT r (#PCDATA)><!ATTLIST r a CDATA #IMPLIED>"
                       "<!ENTITY e \"" +
                       std::string(40000, 'e') + "\">]><r a=\"&e;\">&e;&e;</r>"),
            "");
}

}  // namespace
