#include "msg/Typed.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "msg/MTE.h"
#include "msg/MessageExceptions.h"
#include "tests/catalogue_support.h"

namespace msg {
namespace {

// A handler on the process-wide one (for the built-in not-found texts) with
// a few entries of its own and a channel that keeps what it gets.
class TypedCallTest : public ::testing::Test {
 protected:
  TypedCallTest() : handler(MessageHandler::object()) {
    handler.setMessageChannel(&channel, false);
    handler.setMessageChannel2(nullptr, false);
    new MTE(warning, "en", "app", "diskfull", "Only &0 MB left on &1.", &handler, true, true);
    new MTE(info, "en", "app", "all", "&0|&1|&2|&3|&4|&5|&6|&7|&8|&9|&10|&11", &handler, true,
            true);
  }
  test_support::RecordingChannel channel;
  MessageHandler handler;
};

TEST_F(TypedCallTest, EachArgumentTypeFillsItsPlaceholder) {
  const std::string text = "string";
  const std::string longer = "view and more";
  EXPECT_EQ(format(handler, "app", "all", -7, 4000000000U, LLONG_MIN, ULLONG_MAX,
                   static_cast<short>(-3), 2.5, fixed(3.14159, 2), true, yesNo(false), "literal",
                   text, std::string_view(longer).substr(0, 4)),
            "-7|4000000000|-9223372036854775808|18446744073709551615|-3|2.500000|3.14|true|no|"
            "literal|string|view");
  const char* none = nullptr;
  EXPECT_EQ(format(&handler, "app", "diskfull", 512), "Only 512 MB left on &1.");
  EXPECT_EQ(format(&handler, "app", "diskfull", none, "/var"), "Only &0 MB left on /var.");
}

TEST_F(TypedCallTest, WriteGoesThroughThresholdAndChannels) {
  constexpr Key<2> diskfull{"app", "diskfull"};
  write(handler, diskfull, 512, "/var");
  write(&handler, "app", "diskfull", 1, std::string("/tmp"));
  handler.setSeverityLevel(error);
  write(handler, diskfull, 2, "/home");  // a warning, below the threshold
  EXPECT_EQ(channel.lines, (std::vector<std::string>{"app:diskfull: Only 512 MB left on /var.",
                                                     "app:diskfull: Only 1 MB left on /tmp."}));
  EXPECT_EQ(format(handler, diskfull, 3, "/"), "Only 3 MB left on /.");
}

TEST_F(TypedCallTest, MissingKeyShowsTheNotFoundTextWithoutArguments) {
  // The key's own "&0" must not take an argument meant for the missing text.
  EXPECT_EQ(format(handler, "app&0", "gone", "X"),
            "System error: Message with key app&0:gone not found.");
  write(handler, "app", "gone", 1);
  EXPECT_EQ(channel.lines, std::vector<std::string>{
                               "msg:notfound: System error: Message with key app:gone not found."});
  EXPECT_EQ(getMessage(handler, "app", "gone"), nullptr);
  EXPECT_STREQ(getMessage(handler, Key<2>{"app", "diskfull"})->getText(), "Only &0 MB left on &1.");

  MessageHandler bare;  // no catalogue at all, not even the not-found text
  bare.setMessageChannel(&channel, false);
  EXPECT_THROW(format(bare, "app", "gone"), MessageNotFound);
  EXPECT_THROW(write(bare, "app", "gone"), MessageNotFound);
  EXPECT_EQ(channel.lines.size(), 1U);

  MessageHandler* noHandler = nullptr;
  EXPECT_THROW(write(noHandler, "app", "diskfull", 1, "/"), MessageHandlerError);
}

}  // namespace
}  // namespace msg
