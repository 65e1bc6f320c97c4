// Message records: placeholder scanning and substitution, the working
// buffers, clear/clean, and records made by key.

#include "msg/Message.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandler.h"

namespace msg {
namespace {

// A record that owns a copy of `text`, in English.
Message record(const char* text) {
  return Message("test", "id", info, Language("en"), text);
}

struct ScanCase {
  std::string text;
  unsigned int number;
  const char* value;
  bool found;
  std::string shown;
};

TEST(MessageTest, SubstituteFindsPlaceholdersByTheirWholeDigitRun) {
  const std::string zeros22(22, '0');
  const std::string nines23(23, '9');
  const std::vector<ScanCase> cases = {
      {"&10", 1, "x", false, "&10"},
      {"&10", 10, "x", true, "x"},
      {"&1x", 1, "y", true, "yx"},
      {"a&00b", 0, "x", true, "axb"},
      {"a&000b", 0, "x", true, "axb"},
      {"&007", 7, "x", true, "x"},
      {"&007", 0, "x", false, "&007"},
      {"<&" + zeros22 + ">", 0, "x", true, "<x>"},
      {"<&0" + zeros22 + ">", 0, "x", false, "<&0" + zeros22 + ">"},
      {"100&", 100, "x", false, "100&"},
      {"& 1", 1, "x", false, "& 1"},
      {"end&", 0, "x", false, "end&"},
      {"Total &0", 0, "5", true, "Total 5"},
      {"&0 end", 0, "x", true, "x end"},
      {"&0&1", 1, "b", true, "&0b"},
      {"&&1", 1, "b", true, "&b"},
      {"&x&1", 1, "b", true, "&xb"},
      // A run that is too long is plain text, but the "&" that ends it opens
      // the next candidate.
      {"&" + nines23 + "&5", 5, "b", true, "&" + nines23 + "b"},
      {"a&0b", 0, "", true, "ab"},
      {"", 0, "x", false, ""},
      // Values beyond INT_MAX name no number.
      {"&2147483647", 2147483647u, "x", true, "x"},
      {"&2147483648", 2147483648u, "x", false, "&2147483648"},
      {"&4294967296", 0, "x", false, "&4294967296"},
      {"&4294967295", 4294967295u, "x", false, "&4294967295"},
  };
  for (const ScanCase& c : cases) {
    SCOPED_TRACE("text \"" + c.text + "\", number " + std::to_string(c.number));
    Message message = record(c.text.c_str());
    EXPECT_EQ(c.found, message.substitute(c.number, c.value));
    EXPECT_EQ(c.shown, message.getMessage());
  }
}

TEST(MessageTest, SubstituteReplacesOneOccurrenceAtATimeInCallerOrder) {
  Message twice = record("&0 and &0");
  EXPECT_TRUE(twice.substitute(0, "x"));
  EXPECT_STREQ("x and &0", twice.getMessage());
  EXPECT_TRUE(twice.substitute(0, "x"));
  EXPECT_STREQ("x and x", twice.getMessage());
  EXPECT_FALSE(twice.substitute(0, "x"));
  EXPECT_STREQ("x and x", twice.getMessage());

  Message reversed = record("&1 of &0");
  EXPECT_TRUE(reversed.substitute(0, "a"));
  EXPECT_TRUE(reversed.substitute(1, "b"));
  EXPECT_STREQ("b of a", reversed.getMessage());

  // A value takes part in later scans.
  Message nested = record("&0");
  EXPECT_TRUE(nested.substitute(0, "&1"));
  EXPECT_TRUE(nested.substitute(1, "x"));
  EXPECT_STREQ("x", nested.getMessage());
}

TEST(MessageTest, NullValueChangesNothingAndMakesNoBuffer) {
  Message message = record("a &0");
  EXPECT_FALSE(message.substitute(0, static_cast<const char*>(nullptr)));
  EXPECT_EQ(0u, message.getBufferSize());
  EXPECT_EQ(message.getText(), message.getMessage());

  EXPECT_TRUE(message.substitute(0, "b"));
  EXPECT_FALSE(message.substitute(1, static_cast<const char*>(nullptr)));
  EXPECT_STREQ("a b", message.getMessage());
}

TEST(MessageTest, ValueMayComeFromTheRecordItself) {
  Message message = record("&0|&1");
  EXPECT_TRUE(message.substitute(0, "ab"));
  EXPECT_TRUE(message.substitute(1, message.getMessage()));
  EXPECT_STREQ("ab|ab|&1", message.getMessage());

  // The same while the buffers are replaced under the value.
  Message growing = record("&0 &0");
  const std::string longValue(120, 'v');
  EXPECT_TRUE(growing.substitute(0, longValue.c_str()));
  EXPECT_EQ(126u, growing.getBufferSize());
  EXPECT_TRUE(growing.substitute(0, growing.getMessage()));
  EXPECT_EQ(252u, growing.getBufferSize());
  EXPECT_EQ(longValue + " " + longValue + " &0", growing.getMessage());
}

TEST(MessageTest, BuffersGrowToAtLeast100BytesThenDoubleOrTakeTheRoomNeeded) {
  Message small = record("&0");
  EXPECT_TRUE(small.substitute(0, "x"));
  EXPECT_EQ(100u, small.getBufferSize());

  // Room is the shown text + value + NUL; the placeholder is not deducted.
  Message exact = record("&0");
  EXPECT_TRUE(exact.substitute(0, std::string(97, 'v').c_str()));
  EXPECT_EQ(100u, exact.getBufferSize());
  Message over = record("&0");
  EXPECT_TRUE(over.substitute(0, std::string(98, 'v').c_str()));
  EXPECT_EQ(101u, over.getBufferSize());

  Message growing = record("&0&1&2");
  EXPECT_TRUE(growing.substitute(0, std::string(60, 'a').c_str()));
  EXPECT_EQ(100u, growing.getBufferSize());
  // Shown 64 + 35 + 1 = 100: equal to the capacity, so nothing grows.
  EXPECT_TRUE(growing.substitute(1, std::string(35, 'b').c_str()));
  EXPECT_EQ(100u, growing.getBufferSize());
  // Shown 97 + 4 + 1 = 102: the capacity doubles.
  EXPECT_TRUE(growing.substitute(2, "cccc"));
  EXPECT_EQ(200u, growing.getBufferSize());
  // Shown 99 + 301 + 1 = 401 is more than twice 200.
  EXPECT_FALSE(growing.substitute(3, std::string(301, 'd').c_str()));
  EXPECT_EQ(401u, growing.getBufferSize());
  EXPECT_EQ(std::string(60, 'a') + std::string(35, 'b') + "cccc", growing.getMessage());
}

TEST(MessageTest, ClearTakesBackSubstitutionsAndKeepsTheBuffers) {
  Message fresh = record("a&0");
  fresh.clear();
  EXPECT_EQ(0u, fresh.getBufferSize());
  EXPECT_EQ(fresh.getText(), fresh.getMessage());

  Message message = record("a&0 &1");
  EXPECT_TRUE(message.substitute(0, "x"));
  EXPECT_TRUE(message.substitute(1, "y"));
  message.clear();
  EXPECT_STREQ("", message.getMessage());
  EXPECT_STREQ("a&0 &1", message.getText());
  EXPECT_EQ(100u, message.getBufferSize());

  // Nothing of the earlier substitutions remains.
  EXPECT_TRUE(message.substitute(1, "z"));
  EXPECT_STREQ("a&0 z", message.getMessage());

  // After clear the room is counted from the text again; growth still
  // starts from the text.
  message.clear();
  const std::string longValue(200, 'v');
  EXPECT_TRUE(message.substitute(0, longValue.c_str()));
  EXPECT_EQ(207u, message.getBufferSize());
  EXPECT_EQ("a" + longValue + " &1", message.getMessage());
}

TEST(MessageTest, CleanFreesTheBuffersAndShowsTheTextAgain) {
  Message message = record("a&0");
  message.clean();
  message.clean();
  EXPECT_EQ(0u, message.getBufferSize());
  EXPECT_EQ(message.getText(), message.getMessage());

  EXPECT_TRUE(message.substitute(0, std::string(150, 'v').c_str()));
  EXPECT_EQ(154u, message.getBufferSize());
  message.clean();
  EXPECT_EQ(0u, message.getBufferSize());
  EXPECT_EQ(message.getText(), message.getMessage());

  // The next substitution starts as on a new record.
  EXPECT_TRUE(message.substitute(0, "b"));
  EXPECT_EQ(100u, message.getBufferSize());
  EXPECT_STREQ("ab", message.getMessage());
}

TEST(MessageTest, RecordFromStringsOwnsCopiesAndTurnsEmptyIntoNull) {
  char nameSpace[] = "app";
  char identifier[] = "start";
  char text[] = "Start &0";
  Message message(nameSpace, identifier, warning, Language("de-AT"), text);
  std::strcpy(nameSpace, "xxx");
  std::strcpy(identifier, "xxxxx");
  std::strcpy(text, "xxxxxxxx");
  EXPECT_STREQ("app", message.getNamespace());
  EXPECT_STREQ("start", message.getIdentifier());
  EXPECT_STREQ("Start &0", message.getText());
  EXPECT_EQ(warning, message.getSeverityLevel());
  EXPECT_EQ(Language("de-AT"), message.getLanguage());

  // The text never changes, whatever is substituted.
  const char* ownText = message.getText();
  EXPECT_EQ(ownText, message.getMessage());
  EXPECT_TRUE(message.substitute(0, "now"));
  EXPECT_EQ(ownText, message.getText());
  EXPECT_STREQ("Start &0", message.getText());
  EXPECT_STREQ("Start now", message.getMessage());

  Message empty("", "", error, Language("en"), "");
  EXPECT_EQ(nullptr, empty.getNamespace());
  EXPECT_EQ(nullptr, empty.getIdentifier());
  EXPECT_EQ(nullptr, empty.getText());
  EXPECT_EQ(nullptr, empty.getMessage());

  // A record without text substitutes into the empty text.
  Message nullText(nullptr, nullptr, info, Language("en"), nullptr);
  EXPECT_EQ(nullptr, nullText.getMessage());
  nullText.clear();
  EXPECT_FALSE(nullText.substitute(0, "x"));
  EXPECT_STREQ("", nullText.getMessage());
  nullText.clear();
  EXPECT_STREQ("", nullText.getMessage());
  EXPECT_EQ(nullptr, nullText.getText());
}

// A handler of its own with entries that its table owns.
class MessageByKeyTest : public ::testing::Test {
 protected:
  // The table takes the entry over; it must be made with new.
  void add(SeverityLevel severity, const char* language, const char* nameSpace,
           const char* identifier, const char* text) {
    new MTE(severity, language, nameSpace, identifier, text, &handler, false, true);
  }

  MessageHandler handler;
};

TEST_F(MessageByKeyTest, FoundKeyGivesTheChosenEntryAndBorrowsItsStrings) {
  add(info, "en", "app", "start", "Starting &0");
  add(warning, "de", "app", "start", "Start von &0");
  handler.setLanguageList(LanguageList(Language("de-AT"), Language("en")));

  Message message(&handler, "app", "start");
  EXPECT_EQ(Language("de"), message.getLanguage());
  EXPECT_EQ(warning, message.getSeverityLevel());
  EXPECT_STREQ("Start von &0", message.getText());
  EXPECT_EQ(message.getText(), message.getMessage());
  EXPECT_EQ(0u, message.getBufferSize());

  std::unique_ptr<Message> fromHandler(handler.getMessage("app", "start"));
  ASSERT_NE(nullptr, fromHandler);
  EXPECT_EQ(fromHandler->getText(), message.getText());
  EXPECT_EQ(fromHandler->getNamespace(), message.getNamespace());
  EXPECT_EQ(fromHandler->getIdentifier(), message.getIdentifier());

  EXPECT_TRUE(message.substitute(0, "msg"));
  EXPECT_STREQ("Start von msg", message.getMessage());
}

TEST_F(MessageByKeyTest, MissingKeyShowsTheNotFoundTextWithTheKeyFilledIn) {
  add(error, "en", "msg", "notfound", "Missing &0:&1");
  add(abort, "de", "msg", "notfound", "Fehlt: &0:&1");

  Message message(&handler, "app", "start");
  EXPECT_STREQ("msg", message.getNamespace());
  EXPECT_STREQ("notfound", message.getIdentifier());
  EXPECT_STREQ("Missing &0:&1", message.getText());
  EXPECT_STREQ("Missing app:start", message.getMessage());
  EXPECT_EQ(error, message.getSeverityLevel());
  EXPECT_EQ(Language("en"), message.getLanguage());

  // The key went in as ordinary substitutions: clear takes it back.
  message.clear();
  EXPECT_STREQ("", message.getMessage());

  handler.setLanguageList(LanguageList(Language("de")));
  Message german(&handler, "app", "start");
  EXPECT_STREQ("Fehlt: app:start", german.getMessage());
  EXPECT_EQ(abort, german.getSeverityLevel());
  EXPECT_EQ(Language("de"), german.getLanguage());
}

TEST_F(MessageByKeyTest, MissingKeyWithoutAcceptableNotFoundEntryThrows) {
  const char* nameSpace = "app";
  const char* identifier = "start";
  try {
    Message message(&handler, nameSpace, identifier);
    FAIL() << "no MessageNotFound for a handler without the not-found entry";
  } catch (const MessageNotFound& e) {
    EXPECT_EQ(nameSpace, e.getNamespace());
    EXPECT_EQ(identifier, e.getIdentifier());
  }

  // A not-found entry in a language the list does not accept counts as none.
  add(error, "de", "msg", "notfound", "Fehlt: &0:&1");
  EXPECT_THROW({ Message message(&handler, nameSpace, identifier); }, MessageNotFound);
}

TEST(MessageByKeyNullHandlerTest, NullHandlerThrowsMessageHandlerError) {
  try {
    Message message(nullptr, "app", "start");
    FAIL() << "no MessageHandlerError for a null handler";
  } catch (const MessageHandlerError& e) {
    EXPECT_STREQ("MessageHandler corrupted.", e.getText());
  }
}

TEST(MessageByKeyBuiltInTest, MissingKeyUsesTheLibraryCatalogue) {
  MessageHandler child(MessageHandler::object());
  Message message(&child, "app", "start");
  EXPECT_STREQ("System error: Message with key app:start not found.", message.getMessage());
}

}  // namespace
}  // namespace msg
