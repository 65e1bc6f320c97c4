// Numbers and booleans as message arguments.

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageHandler.h"

namespace msg {
namespace {

Message record(const char* language, const char* text) {
  return Message("test", "id", info, Language(language), text);
}

TEST(TypedArgumentsTest, IntegerIsWrittenInDecimal) {
  const std::vector<std::pair<int, std::string>> cases = {
      {0, "0"}, {42, "42"}, {-7, "-7"}, {INT_MAX, "2147483647"}, {INT_MIN, "-2147483648"}};
  for (const auto& c : cases) {
    Message message = record("en", "[&0]");
    EXPECT_TRUE(message.substitute(0, c.first));
    EXPECT_EQ("[" + c.second + "]", message.getMessage());
  }
  Message missing = record("en", "no placeholder");
  EXPECT_FALSE(missing.substitute(0, 5));
  EXPECT_STREQ("no placeholder", missing.getMessage());
}

struct DoubleCase {
  double value;
  int precision;
  std::string shown;
};

TEST(TypedArgumentsTest, DoubleFollowsThePrecisionTable) {
  const std::vector<DoubleCase> cases = {
      {3.14159, 2, "3.14"},
      {3.14159, 1, "3.1"},
      {-1.5, 3, "-1.500"},
      {0.1, 16, "0.1000000000000000"},
      {1.5, 17, "1.5000000000000000"},
      {1.5, 20, "1.5000000000000000"},
      {0.0, 0, "0.0"},
      {0.0, -5, "0.0"},
      {0.0, 2, "0.00"},
      {0.4, 0, "0"},
      {7.0, -3, "7"},
      {2.6, 0, "3"},
  };
  for (const DoubleCase& c : cases) {
    SCOPED_TRACE(std::to_string(c.value) + " with precision " + std::to_string(c.precision));
    Message message = record("en", "&0");
    EXPECT_TRUE(message.substitute(0, c.value, c.precision));
    EXPECT_EQ(c.shown, message.getMessage());
  }
}

TEST(TypedArgumentsTest, DoubleTooLongForFixedNotationIsShownExponential) {
  const std::vector<DoubleCase> cases = {
      // 31 characters still fit the fixed form.
      {12345678901234.5, 16, "12345678901234.5000000000000000"},
      {-1234567890123.5, 16, "-1234567890123.5000000000000000"},
      // One more does not.
      {123456789012345.0, 16, "1.2345678901234500e+14"},
      {-12345678901234.5, 16, "-1.2345678901234500e+13"},
      {1e20, 20, "1.0000000000000000e+20"},
      {1e30, 2, "1.00e+30"},
      {-1e300, 0, "-1e+300"},
      {-1.7976931348623157e308, 16, "-1.7976931348623157e+308"},
  };
  for (const DoubleCase& c : cases) {
    SCOPED_TRACE(c.shown);
    Message message = record("en", "<&0>");
    EXPECT_TRUE(message.substitute(0, c.value, c.precision));
    EXPECT_EQ("<" + c.shown + ">", message.getMessage());
  }
}

// The boolean words come from the process-wide handler, whose language list
// each test sets and the fixture puts back.
class BooleanArgumentTest : public ::testing::Test {
 protected:
  BooleanArgumentTest() : savedList(MessageHandler::object()->getLanguageList()) {}
  ~BooleanArgumentTest() override { MessageHandler::object()->setLanguageList(savedList); }

  static void useLanguage(const char* tag) {
    MessageHandler::object()->setLanguageList(LanguageList(Language(tag)));
  }

  // The word that `language`'s record shows for `value`.
  static std::string word(const char* language, bool value, Message::BoolOption option) {
    Message message = record(language, "&0");
    EXPECT_TRUE(message.substitute(0, value, option));
    return message.getMessage();
  }

  LanguageList savedList;
};

TEST_F(BooleanArgumentTest, EnglishListGivesTheEnglishCatalogueWords) {
  useLanguage("en");
  EXPECT_EQ("yes", word("de", true, Message::yesNo));
  EXPECT_EQ("no", word("de", false, Message::yesNo));
  EXPECT_EQ("true", word("de", true, Message::trueFalse));
  EXPECT_EQ("false", word("de", false, Message::trueFalse));
  // Any option other than yesNo reads as trueFalse.
  EXPECT_EQ("true", word("en", true, static_cast<Message::BoolOption>(7)));
}

TEST_F(BooleanArgumentTest, GermanListGivesTheGermanCatalogueWords) {
  useLanguage("de");
  EXPECT_EQ("Ja", word("en", true, Message::yesNo));
  EXPECT_EQ("Nein", word("en", false, Message::yesNo));
  EXPECT_EQ("Wahr", word("en", true, Message::trueFalse));
  EXPECT_EQ("Falsch", word("en", false, Message::trueFalse));
}

TEST_F(BooleanArgumentTest, WithoutAcceptableCatalogueWordTheRecordLanguageDecides) {
  useLanguage("ja");
  EXPECT_EQ("Ja", word("de-AT", true, Message::yesNo));
  EXPECT_EQ("Nein", word("de-AT", false, Message::yesNo));
  EXPECT_EQ("Wahr", word("de-AT", true, Message::trueFalse));
  EXPECT_EQ("Falsch", word("de-AT", false, Message::trueFalse));
  EXPECT_EQ("yes", word("fr", true, Message::yesNo));
  EXPECT_EQ("no", word("fr", false, Message::yesNo));
  EXPECT_EQ("true", word("fr", true, Message::trueFalse));
  EXPECT_EQ("false", word("fr", false, Message::trueFalse));
}

TEST_F(BooleanArgumentTest, TheProcessWideHandlerDecidesNotTheRecordsHandler) {
  useLanguage("en");
  MessageHandler german;
  german.setLanguageList(LanguageList(Language("de")));
  new MTE(info, "de", "app", "flag", "Schalter: &0", &german, false, true);

  Message message(&german, "app", "flag");
  EXPECT_TRUE(message.substitute(0, true, Message::yesNo));
  EXPECT_STREQ("Schalter: yes", message.getMessage());
}

}  // namespace
}  // namespace msg
