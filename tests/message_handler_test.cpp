// MessageHandler: threshold, channels and their ownership, lookup through a
// parent, and the writeMessage family.

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"
#include "msg/MessageHandler.h"

namespace msg {
namespace {

// Keeps what it is given, and counts its own destruction.
class RecordingChannel : public MessageChannel {
 public:
  explicit RecordingChannel(int* destructions = nullptr) : destructions(destructions) {}
  ~RecordingChannel() override {
    if (destructions != nullptr) {
      ++*destructions;
    }
  }

  std::vector<std::string> texts;

 protected:
  void onMessage(const Message& message) override {
    const char* shown = message.getMessage();
    texts.push_back(shown == nullptr ? "<null>" : shown);
  }

 private:
  int* destructions;
};

// Makes the base class's default output callable from a test.
class DefaultChannel : public MessageChannel {
 public:
  void write(const Message& message) { onMessage(message); }
};

// Sends std::cerr into a string while it lives.
class CerrCapture {
 public:
  CerrCapture() : saved(std::cerr.rdbuf(captured.rdbuf())) {}
  ~CerrCapture() { std::cerr.rdbuf(saved); }
  std::string text() const { return captured.str(); }

 private:
  std::ostringstream captured;
  std::streambuf* saved;
};

// A root handler whose first channel records; entries it gets are owned by
// its table.
class HandlerTest : public ::testing::Test {
 protected:
  HandlerTest() {
    recorder = new RecordingChannel();
    handler.setMessageChannel(recorder, true);
  }

  static void add(MessageHandler& target, const char* language, const char* identifier,
                  const char* text, SeverityLevel severity = info) {
    new MTE(static_cast<short>(severity), language, "app", identifier, text, &target, false, true);
  }

  // The text of a key as `target` finds it, or "<none>".
  static std::string lookUp(const MessageHandler& target, const char* identifier) {
    std::unique_ptr<Message> found(target.getMessage("app", identifier));
    return found == nullptr ? "<none>" : found->getText();
  }

  MessageHandler handler;
  RecordingChannel* recorder;  // owned by `handler`
};

TEST(DefaultHandlerTest, NewRootHandlerWritesThroughItsDefaultChannel) {
  MessageHandler handler;
  EXPECT_EQ(handler.getParent(), nullptr);
  EXPECT_EQ(handler.getSeverityLevel(), info);
  LanguageList list = handler.getLanguageList();
  ASSERT_EQ(list.getCount(), 1);
  EXPECT_EQ(list.getLanguage(0), Language("en"));
  EXPECT_NE(handler.getMessageChannel(), nullptr);
  EXPECT_TRUE(handler.getMessageChannelOwnership());
  EXPECT_EQ(handler.getMessageChannel2(), nullptr);
  EXPECT_FALSE(handler.getMessageChannel2Ownership());

  Message message("app", "start", info, Language("en"), "Hello &0");
  CerrCapture capture;
  handler.writeMessage1(message, "world");
  EXPECT_EQ(capture.text(), "app:start: Hello world\n");
}

TEST(DefaultHandlerTest, DefaultChannelLeavesOutNullPieces) {
  DefaultChannel channel;
  Message empty("", "", error, Language("en"), "");  // all three pieces null
  Message noKey(nullptr, nullptr, error, Language("en"), "text only");
  CerrCapture capture;
  channel.write(empty);
  channel.write(noKey);
  EXPECT_EQ(capture.text(), ":: \n:: text only\n");
}

TEST_F(HandlerTest, ThresholdLetsThroughItsLevelAndAbove) {
  Message warningRecord("app", "w", warning, Language("en"), "warning");
  Message errorRecord("app", "e", error, Language("en"), "error");
  Message abortRecord("app", "a", abort, Language("en"), "abort");

  handler.setSeverityLevel(error);
  EXPECT_EQ(handler.getSeverityLevel(), error);
  handler.writeMessage(warningRecord);
  handler.writeMessage(errorRecord);
  handler.setSeverityLevel(abort);
  handler.writeMessage(errorRecord);
  handler.writeMessage(abortRecord);
  EXPECT_EQ(recorder->texts, (std::vector<std::string>{"error", "abort"}));

  // Substitution happens even when the record is then held back.
  handler.writeMessage1(warningRecord, "x");
  EXPECT_EQ(recorder->texts.size(), 2u);
  EXPECT_STREQ(warningRecord.getMessage(), "warning");
  Message held("app", "h", warning, Language("en"), "held &0");
  handler.writeMessage1(held, "back");
  EXPECT_STREQ(held.getMessage(), "held back");
}

TEST_F(HandlerTest, BothChannelsGetEachRecordAndNullChannelsAreOff) {
  RecordingChannel second;
  handler.setMessageChannel2(&second, false);
  Message record("app", "r", info, Language("en"), "one");
  handler.writeMessage(record);
  EXPECT_EQ(recorder->texts, std::vector<std::string>{"one"});
  EXPECT_EQ(second.texts, std::vector<std::string>{"one"});

  handler.setMessageChannel(nullptr, false);
  handler.setMessageChannel2(nullptr, false);
  EXPECT_EQ(handler.getMessageChannel(), nullptr);
  CerrCapture capture;
  handler.writeMessage(record);  // nowhere to go
  EXPECT_EQ(second.texts.size(), 1u);
  EXPECT_EQ(capture.text(), "");
}

TEST(ChannelOwnershipTest, OnlyOwnedChannelsAreDeleted) {
  int destroyed = 0;
  RecordingChannel borrowed(&destroyed);
  {
    MessageHandler handler;
    handler.setMessageChannel(&borrowed, false);
    handler.setMessageChannel(&borrowed, false);  // the old one is not owned
    EXPECT_FALSE(handler.getMessageChannelOwnership());
    handler.setMessageChannel2(&borrowed, false);
    EXPECT_EQ(destroyed, 0);

    handler.setMessageChannel(new RecordingChannel(&destroyed), true);
    handler.setMessageChannel(new RecordingChannel(&destroyed), true);
    EXPECT_EQ(destroyed, 1);  // the first owned one
    handler.setMessageChannel2(new RecordingChannel(&destroyed), true);
    EXPECT_TRUE(handler.getMessageChannel2Ownership());
    EXPECT_EQ(destroyed, 1);
  }
  EXPECT_EQ(destroyed, 3);  // the two owned ones at the end, not `borrowed`
}

TEST(ChannelOwnershipTest, ChildSharesItsParentsChannelsWithoutOwningThem) {
  int destroyed = 0;
  MessageHandler parent;
  parent.setMessageChannel(new RecordingChannel(&destroyed), true);
  parent.setMessageChannel2(new RecordingChannel(&destroyed), true);
  {
    MessageHandler child(&parent);
    EXPECT_EQ(child.getParent(), &parent);
    EXPECT_EQ(child.getMessageChannel(), parent.getMessageChannel());
    EXPECT_EQ(child.getMessageChannel2(), parent.getMessageChannel2());
    EXPECT_FALSE(child.getMessageChannelOwnership());
    EXPECT_FALSE(child.getMessageChannel2Ownership());
  }
  EXPECT_EQ(destroyed, 0);
}

TEST_F(HandlerTest, ChildCopiesSettingsOnceAndThenGoesItsOwnWay) {
  handler.setSeverityLevel(warning);
  handler.setLanguageList(LanguageList(Language("de"), Language("en")));
  MessageHandler child(&handler);
  EXPECT_EQ(child.getSeverityLevel(), warning);
  EXPECT_EQ(child.getLanguageList().getCount(), 2);

  child.setSeverityLevel(abort);
  child.setLanguageList(LanguageList(Language("fr")));
  child.setMessageChannel(nullptr, false);
  EXPECT_EQ(handler.getSeverityLevel(), warning);
  EXPECT_EQ(handler.getLanguageList().distance("de"), 0);
  EXPECT_EQ(handler.getMessageChannel(), recorder);
  handler.setSeverityLevel(info);
  EXPECT_EQ(child.getSeverityLevel(), abort);
}

TEST_F(HandlerTest, ChildFallsBackOnItsParent) {
  add(handler, "en", "greeting", "Hello");
  add(handler, "de", "greeting", "Hallo");
  add(handler, "en", "both", "parent's");
  add(handler, "en", "hidden", "parent's");
  MessageHandler child(&handler);
  child.setLanguageList(LanguageList(Language("de"), Language("en")));
  add(child, "en", "both", "child's");
  add(child, "fr", "hidden", "child's, unreadable");

  // Only in the parent: found in the language the parent's list prefers.
  EXPECT_EQ(lookUp(child, "greeting"), "Hello");
  // In both: the child's acceptable entry wins, though the parent's list
  // would rank the parent's entry just as well.
  EXPECT_EQ(lookUp(child, "both"), "child's");
  // An entry the child's list does not accept counts as absent.
  EXPECT_EQ(lookUp(child, "hidden"), "parent's");
  EXPECT_EQ(lookUp(child, "nowhere"), "<none>");
  EXPECT_EQ(lookUp(handler, "nowhere"), "<none>");
}

TEST_F(HandlerTest, RecordsTakeSeverityAndLanguageOfTheChosenEntry) {
  add(handler, "en", "disk", "Disk full", error);
  add(handler, "de-AT", "disk", "Platte voll", warning);
  handler.setLanguageList(LanguageList(Language("de"), Language("en")));
  std::unique_ptr<Message> found(handler.getMessage("app", "disk"));
  ASSERT_NE(found, nullptr);
  EXPECT_STREQ(found->getText(), "Platte voll");
  EXPECT_EQ(found->getLanguage(), Language("de-AT"));
  EXPECT_EQ(found->getSeverityLevel(), warning);
  EXPECT_STREQ(found->getNamespace(), "app");
  EXPECT_STREQ(found->getIdentifier(), "disk");
}

TEST_F(HandlerTest, NotFoundMessageNeedsAnAcceptableLanguage) {
  EXPECT_EQ(handler.getMessageNotFound(), nullptr);  // an empty table
  new MTE(error, "de", "msg", "notfound", "&0:&1 fehlt", &handler, false, true);
  EXPECT_EQ(handler.getMessageNotFound(), nullptr);  // the list is [en]
  handler.setLanguageList(LanguageList(Language("de-AT")));
  std::unique_ptr<Message> notFound(handler.getMessageNotFound());
  ASSERT_NE(notFound, nullptr);
  EXPECT_STREQ(notFound->getMessage(), "&0:&1 fehlt");  // nothing filled in
}

TEST_F(HandlerTest, WriteMessageFamilyFillsPlaceholdersInOrder) {
  Message three("app", "three", info, Language("en"), "&0-&1-&2");
  handler.writeMessage2(three, "a", "b");
  Message one("app", "one", info, Language("en"), "only &0");
  handler.writeMessage3(one, "x", "y", "z");
  Message four("app", "four", info, Language("en"), "&3&2&1&0");
  handler.writeMessage4(four, "a", "b", "c", "d");
  const char* args[] = {"1", "2", "3", "4", "5"};
  Message five("app", "five", info, Language("en"), "&4,&3,&2,&1,&0");
  handler.writeMessageN(five, 5, args);
  EXPECT_EQ(recorder->texts, (std::vector<std::string>{"a-b-&2", "only x", "dcba", "5,4,3,2,1"}));
  // The record keeps what the channels got.
  EXPECT_STREQ(three.getMessage(), "a-b-&2");
}

TEST_F(HandlerTest, EachWriteStartsFromTheTextAgain) {
  Message record("app", "r", info, Language("en"), "value &0");
  handler.writeMessage1(record, "first");
  handler.writeMessage1(record, "second");
  handler.writeMessageN(record, 0, nullptr);  // cleared: nothing to show
  Message fresh("app", "f", info, Language("en"), "value &0");
  handler.writeMessageN(fresh, 0, nullptr);  // never filled: the text itself
  EXPECT_EQ(recorder->texts,
            (std::vector<std::string>{"value first", "value second", "", "value &0"}));
}

// A derived handler that stamps every record it writes.
class StampingHandler : public MessageHandler {
 public:
  int writes = 0;
  void writeMessage(Message& message) override {
    ++writes;
    MessageHandler::writeMessage(message);
  }
};

TEST(DerivedHandlerTest, WriteFamilyGoesThroughTheOverride) {
  StampingHandler handler;
  auto* recorder = new RecordingChannel();
  handler.setMessageChannel(recorder, true);
  Message record("app", "r", info, Language("en"), "&0");
  handler.writeMessage1(record, "a");
  handler.writeMessage4(record, "a", "b", "c", "d");
  EXPECT_EQ(handler.writes, 2);
  EXPECT_EQ(recorder->texts.size(), 2u);
}

}  // namespace
}  // namespace msg
