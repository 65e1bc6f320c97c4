// Plural and ordinal entries registered in code: the count chooses among
// their variants as for a loaded document, and a bad form links nothing.

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "msg/LanguageList.h"
#include "msg/Message.h"
#include "msg/MessageHandler.h"
#include "msg/PluralMTE.h"
#include "msg/Typed.h"

namespace msg {
namespace {

TEST(PluralMTETest, TheCountChoosesAmongTheVariantsOfEachLanguage) {
  MessageHandler handler;
  handler.setMessageChannel(nullptr, false);
  handler.setLanguageList(LanguageList::parse("pl,en"));
  const PluralMTE english(info, "en", "app", "deleted", PluralKind::cardinal, 0,
                          "&0 files deleted.",
                          {{"one", "&0 file deleted."}, {"=0", "No files deleted."}}, &handler);
  const PluralMTE polish(info, "pl", "app", "deleted", PluralKind::cardinal, 0,
                         "Usunięto &0 pliku.",
                         {{"one", "Usunięto &0 plik."},
                          {"few", "Usunięto &0 pliki."},
                          {"many", "Usunięto &0 plików."}},
                         &handler);
  const PluralMTE place(info, "en", "app", "place", PluralKind::ordinal, 1, "&0: &1th",
                        {{"one", "&0: &1st"}, {"two", "&0: &1nd"}, {"few", "&0: &1rd"}}, &handler);
  const struct {
    const char* languages;
    const char* count;
    const char* expected;
  } cases[] = {
      {"pl", "1", "Usunięto 1 plik."},     {"pl", "22", "Usunięto 22 pliki."},
      {"pl", "5", "Usunięto 5 plików."},   {"pl", "1.5", "Usunięto 1.5 pliku."},
      {"en", "0", "No files deleted."},    {"en", "1", "1 file deleted."},
      {"en", "1.0", "1.0 files deleted."}, {"en", "many", "many files deleted."},
  };
  for (const auto& c : cases) {
    handler.setLanguageList(LanguageList::parse(c.languages));
    EXPECT_EQ(format(handler, "app", "deleted", c.count), c.expected)
        << c.languages << " " << c.count;
  }
  EXPECT_EQ(format(handler, "app", "place", "race", "22"), "race: 22nd");
  EXPECT_EQ(format(handler, "app", "place", "race", "13"), "race: 13th");
  std::unique_ptr<Message> record(handler.getMessage("app", "place"));
  ASSERT_TRUE(record->isPlural());
  EXPECT_EQ(record->getCountPlaceholder(), 1u);
  EXPECT_STREQ(english.entry().getText(), "&0 files deleted.");
}

TEST(PluralMTETest, ABadFormIsRefusedAndLinksNothing) {
  MessageHandler handler;
  handler.setMessageChannel(nullptr, false);
  handler.setLanguageList(LanguageList::parse("en"));
  const MTE kept(info, "en", "app", "k", "before", &handler, false, false);
  // Made with new: should one be accepted, it stays valid while linked.
  const auto make = [&](std::initializer_list<PluralMTE::Form> forms) {
    static_cast<void>(new PluralMTE(info, "en", "app", "k", PluralKind::cardinal, 0, "&0 files",
                                    forms, &handler));
  };
  EXPECT_THROW(make({{"other", "&0 files"}}), std::invalid_argument);
  EXPECT_THROW(make({{"several", "&0 files"}}), std::invalid_argument);
  EXPECT_THROW(make({{"=", "none"}}), std::invalid_argument);
  EXPECT_THROW(make({{"=1234567890123456789", "big"}}), std::invalid_argument);
  EXPECT_THROW(make({{"one", "a"}, {"one", "b"}}), std::invalid_argument);
  EXPECT_THROW(make({{"=2", "a"}, {"=2", "b"}}), std::invalid_argument);
  EXPECT_THROW(make({{"one", nullptr}}), std::invalid_argument);
  std::unique_ptr<Message> record(handler.getMessage("app", "k"));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(record->getText(), "before");
  EXPECT_FALSE(record->isPlural());
}

}  // namespace
}  // namespace msg
