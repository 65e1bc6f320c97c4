// Message records: placeholder scanning and substitution, the working
// buffers, clear/clean, records made by key, and number and boolean arguments.

#include "msg/Message.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <string>

#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandler.h"

namespace msg {
namespace {

Message record(const char* text, const char* language = "en") {
  return Message("test", "id", info, Language(language), text);
}

// Substitutes "x" and tells what the record shows then; a placeholder was
// found exactly when the text changed. The scanner's own test covers where
// runs end; here the number asked for must match a run's whole value.
TEST(MessageTest, SubstituteFindsPlaceholdersByTheirWholeDigitRun) {
  const struct {
    std::string text;
    unsigned int number;
    std::string shown;
  } cases[] = {{"&10", 1, "&10"},
               {"&10", 10, "x"},
               {"a&007b", 7, "axb"},
               {"&&1", 1, "&x"},
               {"&2147483647", 2147483647u, "x"},
               {"&2147483648", 2147483648u, "&2147483648"},
               {"&4294967296", 0, "&4294967296"}};
  for (const auto& c : cases) {
    Message message = record(c.text.c_str());
    EXPECT_EQ(message.substitute(c.number, "x"), c.shown != c.text) << c.text << " " << c.number;
    EXPECT_EQ(c.shown, message.getMessage()) << c.text << " " << c.number;
  }
  Message empty = record("a&0b");
  EXPECT_TRUE(empty.substitute(0, ""));
  EXPECT_STREQ("ab", empty.getMessage());
}

TEST(MessageTest, EachCallReplacesTheLeftmostOccurrenceAndValuesAreScannedToo) {
  Message twice = record("&0 and &0");
  EXPECT_TRUE(twice.substitute(0, "x"));
  EXPECT_STREQ("x and &0", twice.getMessage());
  EXPECT_TRUE(twice.substitute(0, "x"));
  EXPECT_FALSE(twice.substitute(0, "x"));
  EXPECT_STREQ("x and x", twice.getMessage());

  Message reversed = record("&1 of &0");
  EXPECT_TRUE(reversed.substitute(0, "&2"));
  EXPECT_TRUE(reversed.substitute(1, "b"));
  EXPECT_TRUE(reversed.substitute(2, "a"));
  EXPECT_STREQ("b of a", reversed.getMessage());

  // A value taken from the record itself while its buffers are replaced.
  Message self = record("&0 &0");
  const std::string longValue(120, 'v');
  EXPECT_TRUE(self.substitute(0, longValue.c_str()));
  EXPECT_TRUE(self.substitute(0, self.getMessage()));
  EXPECT_EQ(longValue + " " + longValue + " &0", self.getMessage());
}

TEST(MessageTest, BuffersGrowToAtLeast100BytesThenDoubleOrTakeTheRoomNeeded) {
  // Room is the shown text + value + NUL; the placeholder is not deducted.
  Message exact = record("&0");
  EXPECT_TRUE(exact.substitute(0, std::string(97, 'v').c_str()));
  EXPECT_EQ(100u, exact.getBufferSize());
  Message over = record("&0");
  EXPECT_TRUE(over.substitute(0, std::string(98, 'v').c_str()));
  EXPECT_EQ(101u, over.getBufferSize());

  Message growing = record("&0&1&2");
  EXPECT_TRUE(growing.substitute(0, std::string(60, 'a').c_str()));
  EXPECT_TRUE(growing.substitute(1, std::string(35, 'b').c_str()));  // 64 + 35 + 1 fits
  EXPECT_EQ(100u, growing.getBufferSize());
  EXPECT_TRUE(growing.substitute(2, "cccc"));  // 97 + 4 + 1: doubles
  EXPECT_EQ(200u, growing.getBufferSize());
  EXPECT_FALSE(growing.substitute(3, std::string(301, 'd').c_str()));  // 401 > 2 * 200
  EXPECT_EQ(401u, growing.getBufferSize());
  EXPECT_EQ(std::string(60, 'a') + std::string(35, 'b') + "cccc", growing.getMessage());
}

TEST(MessageTest, ClearRestartsFromTheTextAndCleanFreesTheBuffers) {
  Message message = record("a&0 &1");
  EXPECT_FALSE(message.substitute(0, static_cast<const char*>(nullptr)));
  EXPECT_EQ(message.getText(), message.getMessage());  // untouched: no buffers
  EXPECT_TRUE(message.substitute(0, "x"));
  message.clear();
  EXPECT_STREQ("", message.getMessage());
  EXPECT_TRUE(message.substitute(1, "z"));
  EXPECT_STREQ("a&0 z", message.getMessage());
  // Room is counted from the text again, and growth keeps the text.
  message.clear();
  EXPECT_TRUE(message.substitute(0, std::string(200, 'v').c_str()));
  EXPECT_EQ(207u, message.getBufferSize());
  EXPECT_EQ("a" + std::string(200, 'v') + " &1", message.getMessage());

  message.clean();
  message.clean();
  EXPECT_EQ(0u, message.getBufferSize());
  EXPECT_EQ(message.getText(), message.getMessage());
  EXPECT_TRUE(message.substitute(0, "b"));
  EXPECT_EQ(100u, message.getBufferSize());
  EXPECT_STREQ("ab &1", message.getMessage());
}

TEST(MessageTest, RecordFromStringsOwnsCopiesAndTurnsEmptyIntoNull) {
  char nameSpace[] = "app";
  char text[] = "Start &0";
  Message message(nameSpace, "start", warning, Language("de-AT"), text);
  std::strcpy(nameSpace, "xxx");
  std::strcpy(text, "xxxxxxxx");
  EXPECT_STREQ("app", message.getNamespace());
  const char* ownText = message.getText();
  EXPECT_TRUE(message.substitute(0, "now"));
  EXPECT_EQ(ownText, message.getText());
  EXPECT_STREQ("Start &0", message.getText());

  Message empty("", "", error, Language("en"), "");
  EXPECT_EQ(nullptr, empty.getNamespace());
  EXPECT_EQ(nullptr, empty.getIdentifier());
  EXPECT_EQ(nullptr, empty.getMessage());
  // A record without text substitutes into the empty text.
  EXPECT_FALSE(empty.substitute(0, "x"));
  empty.clear();
  EXPECT_STREQ("", empty.getMessage());
}

TEST(MessageTest, RecordByKeyBorrowsTheChosenEntryOrShowsTheNotFoundText) {
  MessageHandler handler;
  EXPECT_THROW(Message(&handler, "app", "start"), MessageNotFound);
  EXPECT_THROW(Message(nullptr, "app", "start"), MessageHandlerError);

  // Entries made with new belong to the handler's table.
  new MTE(info, "en", "app", "start", "Starting &0", &handler, false, true);
  const MTE* german = new MTE(warning, "de", "app", "start", "Start von &0", &handler, false, true);
  new MTE(error, "en", "msg", "notfound", "Missing &0:&1", &handler, false, true);
  new MTE(abort, "de", "msg", "notfound", "Fehlt: &0:&1", &handler, false, true);
  handler.setLanguageList(LanguageList(Language("de-AT"), Language("en")));
  Message found(&handler, "app", "start");
  EXPECT_EQ(Language("de"), found.getLanguage());
  EXPECT_EQ(warning, found.getSeverityLevel());
  // The very strings of the entry, which are its copies, not the caller's.
  EXPECT_EQ(german->getText(), found.getText());
  EXPECT_EQ(german->getNamespace(), found.getNamespace());
  EXPECT_EQ(german->getIdentifier(), found.getIdentifier());

  // A replacement is what the next lookup borrows from.
  const MTE* replacement = new MTE(error, "de", "app", "start", "Neu", &handler, false, true);
  std::unique_ptr<Message> again(handler.getMessage("app", "start"));
  EXPECT_EQ(replacement->getText(), again->getText());
  EXPECT_EQ(replacement->getIdentifier(), again->getIdentifier());
  EXPECT_EQ(error, again->getSeverityLevel());

  Message missing(&handler, "app", "stop");
  EXPECT_STREQ("notfound", missing.getIdentifier());
  EXPECT_STREQ("Fehlt: app:stop", missing.getMessage());
  EXPECT_EQ(abort, missing.getSeverityLevel());
  missing.clear();
  EXPECT_STREQ("", missing.getMessage());
}

TEST(MessageTest, NumbersAreWrittenByTheirFormats) {
  Message integer = record("[&0] [&1]");
  EXPECT_TRUE(integer.substitute(0, INT_MIN));
  EXPECT_TRUE(integer.substitute(1, 42));
  EXPECT_FALSE(integer.substitute(2, 5));
  EXPECT_STREQ("[-2147483648] [42]", integer.getMessage());

  const struct {
    double value;
    int precision;
    const char* shown;
  } cases[] = {{3.14159, 2, "3.14"},
               {1.5, 20, "1.5000000000000000"},
               {0.0, 0, "0.0"},
               {0.4, -3, "0"},
               {-1234567890123.5, 16, "-1234567890123.5000000000000000"},
               {-12345678901234.5, 16, "-1.2345678901234500e+13"},  // too long: exponential
               {-1.7976931348623157e308, 16, "-1.7976931348623157e+308"}};
  for (const auto& c : cases) {
    Message message = record("<&0>");
    EXPECT_TRUE(message.substitute(0, c.value, c.precision));
    EXPECT_EQ(std::string("<") + c.shown + ">", message.getMessage()) << c.shown;
  }
}

TEST(MessageTest, BooleanWordsFollowTheProcessWideListThenTheRecordLanguage) {
  MessageHandler* singleton = MessageHandler::object();
  const struct {
    const char* listLanguage;
    const char* recordLanguage;
    bool value;
    Message::BoolOption option;
    const char* word;
  } cases[] = {{"en", "de", true, Message::yesNo, "yes"},
               {"en", "en", true, static_cast<Message::BoolOption>(7), "true"},
               {"de", "en", false, Message::trueFalse, "Falsch"},
               // No catalogue word is acceptable: the words of the library's own
               // table, by the record's language.
               {"ja", "de-AT", false, Message::yesNo, "Nein"},
               {"ja", "de-AT", true, Message::trueFalse, "Wahr"},
               {"ja", "fr", false, Message::trueFalse, "false"}};
  for (const auto& c : cases) {
    singleton->setLanguageList(LanguageList(Language(c.listLanguage)));
    Message message = record("&0", c.recordLanguage);
    EXPECT_TRUE(message.substitute(0, c.value, c.option));
    EXPECT_STREQ(c.word, message.getMessage()) << c.listLanguage << " " << c.recordLanguage;
  }

  // Not the handler that the record came from.
  singleton->setLanguageList(LanguageList(Language("en")));
  MessageHandler german;
  german.setLanguageList(LanguageList(Language("de")));
  new MTE(info, "de", "app", "flag", "Schalter: &0", &german, false, true);
  Message message(&german, "app", "flag");
  EXPECT_TRUE(message.substitute(0, true, Message::yesNo));
  EXPECT_STREQ("Schalter: yes", message.getMessage());
}

}  // namespace
}  // namespace msg
