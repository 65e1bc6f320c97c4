// MessageHandler: threshold, channels and their ownership, lookup through a
// parent, and the writeMessage family.

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>

#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"
#include "msg/MessageHandler.h"
#include "tests/catalogue_support.h"

namespace msg {
namespace {

using test_support::textOf;

// Keeps what it is given, each text followed by '|', and counts its own destruction.
class RecordingChannel : public MessageChannel {
 public:
  explicit RecordingChannel(int* destructions = nullptr) : destructions(destructions) {}
  ~RecordingChannel() override {
    if (destructions != nullptr) {
      ++*destructions;
    }
  }
  void writeByDefault(const Message& message) { MessageChannel::onMessage(message); }
  std::string seen;

 protected:
  void onMessage(const Message& message) override {
    seen += message.getMessage() + std::string("|");
  }

 private:
  int* destructions;
};

// Counts the records it writes, to show that the write family calls the override.
class CountingHandler : public MessageHandler {
 public:
  void writeMessage(Message& message) override {
    ++writes;
    MessageHandler::writeMessage(message);
  }
  int writes = 0;
};

// Adds an entry that the table of `handler` owns.
void add(MessageHandler& handler, const char* language, const char* identifier, const char* text) {
  new MTE(info, language, "app", identifier, text, &handler, false, true);
}

TEST(MessageHandlerTest, DefaultChannelWritesOneLinePerRecordToStandardError) {
  MessageHandler handler;
  EXPECT_EQ(handler.getLanguageList().getCount(), 1);
  EXPECT_EQ(handler.getLanguageList().distance("en"), 0);
  std::ostringstream captured;
  std::streambuf* saved = std::cerr.rdbuf(captured.rdbuf());
  Message message("app", "start", info, Language("en"), "Hello &0");
  handler.writeMessage1(message, "world");
  RecordingChannel().writeByDefault(Message("", "", error, Language("en"), ""));
  std::cerr.rdbuf(saved);
  EXPECT_EQ(captured.str(), "app:start: Hello world\n:: \n");  // null pieces write nothing
}

TEST(MessageHandlerTest, ThresholdFiltersAfterSubstitutionAndBothChannelsGetTheRecord) {
  MessageHandler handler;
  RecordingChannel first, second;
  handler.setMessageChannel(&first, false);
  handler.setMessageChannel2(&second, false);
  Message warningRecord("app", "w", warning, Language("en"), "warning &0");
  Message errorRecord("app", "e", error, Language("en"), "error");
  Message abortRecord("app", "a", abort, Language("en"), "abort");
  handler.setSeverityLevel(error);
  handler.writeMessage1(warningRecord, "held");
  handler.writeMessage(errorRecord);
  handler.setSeverityLevel(abort);
  handler.writeMessage(errorRecord);
  handler.writeMessage(abortRecord);
  EXPECT_EQ(first.seen, "error|abort|");
  EXPECT_EQ(second.seen, "error|abort|");
  EXPECT_STREQ(warningRecord.getMessage(), "warning held");
  handler.setMessageChannel(nullptr, false);
  handler.setMessageChannel2(nullptr, false);
  handler.writeMessage(abortRecord);  // nowhere to go
}

TEST(MessageHandlerTest, OnlyOwnedChannelsAreDeletedAndAChildOwnsNone) {
  int destroyed = 0;
  RecordingChannel borrowed(&destroyed);
  {
    MessageHandler handler;
    handler.setMessageChannel(&borrowed, false);
    handler.setMessageChannel(&borrowed, false);
    handler.setMessageChannel2(&borrowed, false);
    handler.setMessageChannel(new RecordingChannel(&destroyed), true);
    handler.setMessageChannel(new RecordingChannel(&destroyed), true);
    EXPECT_EQ(destroyed, 1);
    handler.setMessageChannel2(new RecordingChannel(&destroyed), true);
    { MessageHandler child(&handler); }
    EXPECT_EQ(destroyed, 1);
  }
  EXPECT_EQ(destroyed, 3);
}

TEST(MessageHandlerTest, ChildCopiesSettingsOnceAndFallsBackOnItsParent) {
  MessageHandler parent;
  parent.setSeverityLevel(warning);
  parent.setLanguageList(LanguageList(Language("de"), Language("en")));
  add(parent, "en", "greeting", "Hello");
  add(parent, "de-AT", "greeting", "Servus");
  add(parent, "de", "both", "parent's");
  add(parent, "en", "hidden", "parent's");
  MessageHandler child(&parent);
  EXPECT_EQ(child.getSeverityLevel(), warning);
  EXPECT_EQ(child.getMessageChannel(), parent.getMessageChannel());
  child.setSeverityLevel(abort);
  child.setLanguageList(LanguageList(Language("en")));
  EXPECT_EQ(parent.getSeverityLevel(), warning);
  add(child, "en", "both", "child's");
  add(child, "fr", "hidden", "child's, unreadable");
  EXPECT_EQ(textOf(child, "app", "greeting"), "Servus");  // the parent's list decides
  EXPECT_EQ(textOf(child, "app", "both"), "child's");     // the child's own entry wins
  EXPECT_EQ(textOf(child, "app", "hidden"), "parent's");  // not acceptable counts as absent
  EXPECT_EQ(textOf(child, "app", "nowhere"), "<none>");
}

TEST(MessageHandlerTest, WriteFamilyFillsPlaceholdersInOrderFromTheTextEachTime) {
  CountingHandler handler;
  RecordingChannel recorder;
  handler.setMessageChannel(&recorder, false);
  Message three("app", "three", info, Language("en"), "&0-&1-&2");
  handler.writeMessage2(three, "a", "b");
  Message one("app", "one", info, Language("en"), "only &0");
  handler.writeMessage3(one, "x", "y", "z");
  Message four("app", "four", info, Language("en"), "&3&2&1&0");
  handler.writeMessage4(four, "a", "b", "c", "d");
  handler.writeMessage1(one, "again");
  handler.writeMessageN(one, 0, nullptr);  // cleared: nothing to show
  Message fresh("app", "f", info, Language("en"), "value &0");
  handler.writeMessageN(fresh, 0, nullptr);  // never filled: the text itself
  EXPECT_EQ(recorder.seen, "a-b-&2|only x|dcba|only again||value &0|");
  EXPECT_STREQ(three.getMessage(), "a-b-&2");  // the record keeps what the channels got
  EXPECT_EQ(handler.writes, 6);
}

}  // namespace
}  // namespace msg
