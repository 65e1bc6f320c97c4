// The document handler as the process-wide handler: stacking on first use,
// lookups through the plain handler behind it, the catalogue text of
// exceptions, and its destruction. The first test needs a process in which
// nothing has stacked yet, so it comes first in this file.

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"
#include "msg/MessageHandlerX.h"
#include "msg/structured_exception.h"
#include "tests/catalogue_support.h"
#include "xml_access/XMLSystem.h"

namespace {

using test_support::textOf;

const char kDocument[] = MSG_TEST_DATA_DIR "/documents/exception_texts.xml";

structured_exception stepFailed(const char* const* arguments, bool copyArguments) {
  return structured_exception("step failed", false, "app", "stepfailed", 3, arguments,
                              copyArguments);
}

TEST(MessageHandlerXTest, TheFirstCatalogueTextStacksTheHandlerOnce) {
  msg::MessageHandler* plain = msg::MessageHandler::object();
  ASSERT_EQ(dynamic_cast<msg::MessageHandlerX*>(plain), nullptr) << "stacked before the test";
  plain->setLanguageList(msg::LanguageList(msg::Language("de")));
  plain->setSeverityLevel(msg::abort);

  const char* arguments[] = {"xx"};
  EXPECT_STREQ(
      structured_exception("t", false, "msg", "langunknown", 1, arguments, true).getMessageText(),
      "Systemfehler: Die angegebene Sprache mit der Kennung xx ist nicht bekannt.");

  msg::MessageHandlerX* stacked = msg::MessageHandlerX::object();
  EXPECT_EQ(msg::MessageHandler::object(), stacked);
  EXPECT_EQ(stacked->getParent(), plain);
  EXPECT_TRUE(XercesXML::isSystemInitialized());
  // Nothing of the plain handler's settings passes over.
  EXPECT_EQ(stacked->getSeverityLevel(), msg::info);
  EXPECT_EQ(stacked->getLanguageList().getLanguage(0), msg::Language("en"));
  EXPECT_NE(stacked->getMessageChannel(), plain->getMessageChannel());
  plain->setLanguageList(msg::LanguageList(msg::Language("en")));
}

TEST(MessageHandlerXTest, OwnEntriesStandInFrontOfTheBuiltInOnes) {
  msg::MessageHandlerX* stacked = msg::MessageHandlerX::object();
  const msg::MessageHandler* plain = stacked->getParent();

  // An entry registered without a handler lands in the stacked table.
  new msg::MTE(msg::info, "en", "late", "entry", "registered late", nullptr, false, true);
  EXPECT_EQ(textOf(*stacked, "late", "entry"), "registered late");
  EXPECT_EQ(textOf(*plain, "late", "entry"), "<none>");

  stacked->loadMessageDocument(kDocument);
  EXPECT_EQ(textOf(*stacked, "msg", "true"), "yes, true");
  EXPECT_EQ(textOf(*plain, "msg", "true"), "true");

  // A key that only the parent has comes in the language of the parent's
  // list, whatever the stacked handler's list says.
  stacked->setLanguageList(msg::LanguageList(msg::Language("de")));
  EXPECT_EQ(textOf(*stacked, "msg", "yes"), "yes");
  stacked->setLanguageList(msg::LanguageList(msg::Language("en")));
}

TEST(MessageHandlerXTest, CatalogueTextsFollowTheLanguageOfTheMoment) {
  msg::MessageHandlerX* handler = msg::MessageHandlerX::object();
  handler->setLanguageList(msg::LanguageList(msg::Language("en"), msg::Language("de")));
  handler->loadMessageDocument(kDocument);

  // That an exception and its copies own their arguments is
  // StructuredExceptionTest's.
  const char* arguments[] = {"2", "5", "disk full"};
  const structured_exception failed = stepFailed(arguments, true);
  const char* english = failed.getMessageText();
  EXPECT_STREQ(english, "Step 2 of 5 failed: disk full.");
  handler->setLanguageList(msg::LanguageList(msg::Language("de")));
  EXPECT_STREQ(failed.getMessageText(), "Schritt 2 von 5 ist gescheitert: disk full.");
  EXPECT_STREQ(english, "Step 2 of 5 failed: disk full.");  // earlier texts stay valid

  const char* withNull[] = {"2", nullptr, "disk full"};
  EXPECT_STREQ(stepFailed(withNull, true).getMessageText(),
               "Schritt 2 von &1 ist gescheitert: disk full.");
  EXPECT_STREQ(stepFailed(withNull, false).getMessageText(),
               "Schritt &0 von &1 ist gescheitert: &2.");

  // An unknown key gives the not-found text, and "" once neither list
  // accepts a language of that text.
  const structured_exception unknown("t", false, "app", "nosuchkey", 0, nullptr, false);
  handler->setLanguageList(msg::LanguageList(msg::Language("en")));
  EXPECT_STREQ(unknown.getMessageText(), "System error: Message with key &0:&1 not found.");
  const msg::LanguageList french(msg::Language("fr"));
  handler->setLanguageList(french);
  const_cast<msg::MessageHandler*>(handler->getParent())->setLanguageList(french);
  EXPECT_STREQ(unknown.getMessageText(), "");
  const_cast<msg::MessageHandler*>(handler->getParent())
      ->setLanguageList(msg::LanguageList(msg::Language("en")));
  handler->setLanguageList(msg::LanguageList(msg::Language("en")));
}

// Sets a flag when the handler that owns it deletes it.
class DestructionSentinel : public msg::MessageChannel {
 public:
  explicit DestructionSentinel(bool* destroyed) : destroyed(destroyed) {}
  ~DestructionSentinel() override { *destroyed = true; }

 private:
  bool* destroyed;
};

TEST(MessageHandlerXDeathTest, DeletingTheStackedHandlerDeletesThePlainOneAndStopsXml) {
  // In a child process: the deleted handler stays in the slot, so nothing
  // may use the library afterwards.
  EXPECT_EXIT(
      {
        static bool plainDestroyed = false;
        msg::MessageHandlerX* stacked = msg::MessageHandlerX::object();
        const_cast<msg::MessageHandler*>(stacked->getParent())
            ->setMessageChannel(new DestructionSentinel(&plainDestroyed), true);
        delete stacked;
        std::exit(plainDestroyed && !XercesXML::isSystemInitialized() ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
