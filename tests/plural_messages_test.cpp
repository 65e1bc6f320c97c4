// Plural and ordinal messages from the document to the rendered text: the
// choice of a variant by the count as displayed, in the language the ranking
// chose; the record-level calls; and documents that break the rules of
// plural messages, which load nothing.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "msg/ErrorInMessageDocument.h"
#include "msg/LanguageList.h"
#include "msg/Message.h"
#include "msg/MessageHandlerX.h"
#include "msg/Typed.h"
#include "msg/XercesXMLException.h"
#include "tests/catalogue_support.h"
#include "tests/plural_catalogue.h"
#include "tests/scratch_folder.h"
#include "xml_access/Parser.h"

namespace msg {
namespace {

// A document of namespace "app" with `messages` inside, the first on line 4.
std::string document(const std::string& messages) {
  return test_support::messageDocument("<MessageNamespace name=\"app\">\n" + messages +
                                       "</MessageNamespace>\n");
}

using test_support::kPluralMessages;

class PluralMessagesTest : public ::testing::Test {
 protected:
  std::string write(const std::string& name, const std::string& messages) {
    test_support::copySchemaInto(scratch.path());
    return scratch.write(name, document(messages));
  }
  void load(const std::string& messages, const char* languages = "en") {
    handler.setLanguageList(LanguageList::parse(languages));
    handler.loadMessageDocument(write("catalogue.xml", messages).c_str());
  }

  test_support::ScratchFolder scratch;
  MessageHandlerX handler;
};

TEST_F(PluralMessagesTest, TheCountAsDisplayedChoosesTheVariantInEachLanguage) {
  load(kPluralMessages);
  const auto in = [&](const char* languages) -> MessageHandler& {
    handler.setLanguageList(LanguageList::parse(languages));
    return handler;
  };
  // Exact value before the category; integers, fixed() and plain doubles as
  // shown.
  EXPECT_EQ("No files deleted.", format(in("en"), "app", "deleted", 0));
  EXPECT_EQ("1 file deleted.", format(in("en"), "app", "deleted", 1));
  EXPECT_EQ("1.0 files deleted.", format(in("en"), "app", "deleted", fixed(1.0, 1)));
  EXPECT_EQ("1.000000 files deleted.", format(in("en"), "app", "deleted", 1.0));
  EXPECT_EQ("0.0 files deleted.", format(in("en"), "app", "deleted", fixed(0.0, 1)));
  EXPECT_EQ("21 files deleted.", format(in("en"), "app", "deleted", 21));
  // en ordinals.
  EXPECT_EQ("1st place", format(in("en"), "app", "place", 1));
  EXPECT_EQ("22nd place", format(in("en"), "app", "place", 22));
  EXPECT_EQ("13th place", format(in("en"), "app", "place", 13));
  EXPECT_EQ("103rd place", format(in("en"), "app", "place", 103));
  // The loader keeps the languages of the list: load them all.
  load(kPluralMessages, "en,pl,ar,ja,fr,pt,pt-PT");
  EXPECT_EQ("Usunięto 1 plik.", format(in("pl"), "app", "deleted", 1));
  EXPECT_EQ("Usunięto 22 pliki.", format(in("pl"), "app", "deleted", 22));
  EXPECT_EQ("Usunięto 12 plików.", format(in("pl"), "app", "deleted", 12));
  EXPECT_EQ("Usunięto 1.5 pliku.", format(in("pl"), "app", "deleted", fixed(1.5, 1)));
  EXPECT_EQ("لم يُحذف أي ملف (0).", format(in("ar"), "app", "deleted", 0));
  EXPECT_EQ("حُذف ملفان (2).", format(in("ar"), "app", "deleted", 2));
  EXPECT_EQ("حُذفت 103 ملفات.", format(in("ar"), "app", "deleted", 103));
  EXPECT_EQ("حُذف 111 ملفًا.", format(in("ar"), "app", "deleted", 111));
  EXPECT_EQ("حُذف 100 ملف.", format(in("ar"), "app", "deleted", 100));
  EXPECT_EQ("1 個のファイルを削除しました。", format(in("ja"), "app", "deleted", 1));
  EXPECT_EQ("1000000 de fichiers supprimés.", format(in("fr"), "app", "deleted", 1000000));
  EXPECT_EQ("1.5 fichier supprimé.", format(in("fr"), "app", "deleted", fixed(1.5, 1)));
  // fr has no text for 2, nor a form of its own: other.
  EXPECT_EQ("2 fichiers supprimés.", format(in("fr"), "app", "deleted", 2));
  // The ranking chose pt-PT, whose rules make 0 other; Brazilian pt makes it one.
  EXPECT_EQ("0 ficheiros eliminados.", format(in("pt-PT,pt"), "app", "deleted", 0));
  EXPECT_EQ("0 arquivo excluído.", format(in("pt-BR,pt"), "app", "deleted", 0));
  // A count that is no number takes other; a plain message is as ever.
  EXPECT_EQ("many files deleted.", format(in("en"), "app", "deleted", "many"));
  EXPECT_EQ("plain 1", format(in("en"), "app", "plain", 1));
}

TEST_F(PluralMessagesTest, RecordCallsTakeTheCountFirstWhereverItStands) {
  load(kPluralMessages);
  handler.setMessageChannel(nullptr, false);
  std::unique_ptr<Message> record(handler.getMessage("app", "moved"));
  ASSERT_TRUE(record->isPlural());
  EXPECT_EQ(1u, record->getCountPlaceholder());
  handler.writeMessage2(*record, "/srv", "1");
  EXPECT_STREQ("/srv: moved 1 file.", record->getMessage());
  const char* args[] = {"/srv", "7"};
  handler.writeMessageN(*record, 2, args);
  EXPECT_STREQ("/srv: moved 7 files.", record->getMessage());
  EXPECT_EQ("/tmp: moved 1 file.", format(handler, "app", "moved", "/tmp", 1));

  // By hand: the count chooses only while nothing else is filled in.
  record->clear();
  EXPECT_STREQ("&0: moved &1 files.", record->getText()) << "clear() goes back to other";
  record->substitute(1, 1);
  record->substitute(0, "/a");
  EXPECT_STREQ("/a: moved 1 file.", record->getMessage());
  record->clear();
  record->substitute(0, "/b");
  record->substitute(1, 1);
  EXPECT_STREQ("/b: moved 1 files.", record->getMessage()) << "the variant in use stays";

  std::unique_ptr<Message> plain(handler.getMessage("app", "plain"));
  EXPECT_FALSE(plain->isPlural());
  EXPECT_EQ(0u, plain->getCountPlaceholder());
}

TEST_F(PluralMessagesTest, DocumentsBreakingThePluralRulesAreRefusedWithTheirLineAndLoadNothing) {
  load(R"(<Message id="before"><Text>loaded before</Text></Message>)");
  // The loader reports a refusal through the handler before it throws.
  test_support::addRefusalReport(handler);
  handler.setMessageChannel(nullptr, false);
  const struct {
    const char* fault;
    std::string messages;
    const char* says;
    int line;  // 0: the schema finds it, and names a line of its own reading
  } cases[] = {
      {"missing other", "<Message id=\"m\">\n<Text plural=\"one\">&amp;0 file</Text>\n</Message>\n",
       "no other", 5},
      {"unknown category",
       "<Message id=\"m\">\n<Text plural=\"single\">&amp;0 file</Text>\n<Text>&amp;0</Text>\n"
       "</Message>\n",
       "single", 0},
      {"same category twice",
       "<Message id=\"m\">\n<Text plural=\"one\">a &amp;0</Text>\n<Text>b &amp;0</Text>\n"
       "<Text plural=\"one\">c &amp;0</Text>\n</Message>\n",
       "twice", 8},
      {"same exact value twice",
       "<Message id=\"m\">\n<Text plural=\"=2\">a</Text>\n<Text>b &amp;0</Text>\n"
       "<Text plural=\"=2\">c</Text>\n</Message>\n",
       "twice", 8},
      {"count placeholder in no text",
       "<Message id=\"m\" count=\"&amp;2\">\n<Text plural=\"one\">&amp;0 &amp;1</Text>\n"
       "<Text>&amp;0 &amp;1</Text>\n</Message>\n",
       "&2 is in no text", 5},
      {"plural and ordinal mixed",
       "<Message id=\"m\">\n<Text plural=\"one\">&amp;0</Text>\n<Text ordinal=\"two\">&amp;0"
       "</Text>\n<Text>&amp;0</Text>\n</Message>\n",
       "mixed", 7},
  };
  for (const auto& c : cases) {
    const std::string messages =
        "<Message id=\"first\"><Text>not loaded</Text></Message>\n" + c.messages;
    const std::string path = write("bad.xml", messages);
    try {
      handler.loadMessageDocument(path.c_str());
      ADD_FAILURE() << c.fault << ": loaded";
    } catch (const ErrorInMessageDocument& error) {
      ASSERT_FALSE(error.getProblems().empty()) << c.fault;
      const DocumentProblem& problem = error.getProblems().front();
      EXPECT_EQ(path, problem.file) << c.fault;
      if (c.line > 0) {
        EXPECT_EQ(c.line, problem.line) << c.fault << ": " << problem.message;
      } else {
        EXPECT_GT(problem.line, 0) << c.fault << ": " << problem.message;
      }
      EXPECT_NE(std::string::npos, problem.message.find(c.says))
          << c.fault << ": " << problem.message;
    }
    EXPECT_EQ(nullptr, getMessage(handler, "app", "first")) << c.fault;
    EXPECT_EQ(nullptr, getMessage(handler, "app", "m")) << c.fault;
    EXPECT_EQ("loaded before", format(handler, "app", "before")) << c.fault;
  }
}

// A loader that predates plural messages checks the schema's identity
// constraints, as Xerces-C does by default, and so refuses a plural
// document: it would otherwise keep one variant per language as the text.
TEST_F(PluralMessagesTest, TheSchemaStopsLoadersThatDoNotKnowPluralMessages) {
  const std::string plural = write("plural.xml", kPluralMessages);
  const std::string plain = write("plain.xml", "<Message id=\"p\"><Text>p</Text></Message>\n");
  const auto olderLoaderParses = [](const std::string& path) {
    XercesXML::Parser parser(false, false);
    parser.setXInclude(true, std::string());
    try {
      parser.parseFile(path);
      return std::string();
    } catch (const XercesXML::ParsingError& error) {
      return std::string(error.what());
    }
  };
  EXPECT_EQ("", olderLoaderParses(plain));
  EXPECT_NE(std::string::npos, olderLoaderParses(plural).find("identity constraint"))
      << olderLoaderParses(plural);
}

}  // namespace
}  // namespace msg
