#include "msg/LanguageList.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>

namespace msg {
namespace {

std::string tags(const LanguageList& list) {
  std::string text;
  for (int i = 0; i < list.getCount(); ++i) {
    text += (i > 0 ? "," : "") + list.getLanguage(i).toString();
  }
  return text;
}

TEST(LanguageListTest, WrittenAsPeopleWriteThem) {
  EXPECT_EQ(tags(LanguageList{"de-AT", "de", "en"}), "de-AT,de,en");

  EXPECT_EQ(tags(LanguageList::parse(" de-AT, DE ,en,, fr_ch-1996,")), "de-AT,de,en,fr-CH");
  for (const char* bad : {"", " , ", "de,deu", "de-A", "es-419", "zh-Hant", "d", "de AT", "1a"}) {
    try {
      LanguageList::parse(bad);
      ADD_FAILURE() << "accepted \"" << bad << "\"";
    } catch (const std::invalid_argument& error) {
      EXPECT_NE(std::string(error.what()).find(std::string("\"") + bad + "\""), std::string::npos)
          << error.what();
    }
  }
}

TEST(LanguageListTest, ReadsThePreferenceAsGettextDoes) {
  using Environment = std::map<std::string, std::string>;
  const struct {
    Environment environment;
    const char* expected;
  } cases[] = {
      {{}, "en"},
      {{{"LANG", "de_AT.UTF-8@euro"}}, "de-AT"},
      {{{"LANG", "fr_FR"}, {"LC_MESSAGES", "it_IT.UTF-8"}}, "it-IT"},
      {{{"LC_ALL", "pt_BR"}, {"LC_MESSAGES", "it_IT"}, {"LANG", "fr"}}, "pt-BR"},
      {{{"LC_ALL", ""}, {"LANG", "sv_SE"}}, "sv-SE"},  // empty counts as unset
      {{{"LANG", "de_DE.UTF-8"}, {"LANGUAGE", "de_AT:ast:de:sr@latin:de_AT:en"}}, "de-AT,de,sr,en"},
      {{{"LANG", "de_DE"}, {"LANGUAGE", "::ast"}}, "de-DE"},  // nothing usable in LANGUAGE
      {{{"LC_ALL", "C"}, {"LANGUAGE", "de"}, {"LANG", "de_DE"}}, "en"},
      {{{"LANG", "C.UTF-8"}, {"LANGUAGE", "de"}}, "en"},
      {{{"LANG", "POSIX"}, {"LANGUAGE", "de"}}, "en"},
      {{{"LANGUAGE", "de"}}, "en"},  // no locale is the C locale
      {{{"LANG", "ast_ES.UTF-8"}}, "en"},
  };
  for (const auto& test : cases) {
    const LanguageList list = LanguageList::fromEnvironment([&test](const char* name) {
      const auto found = test.environment.find(name);
      return found == test.environment.end() ? nullptr : found->second.c_str();
    });
    EXPECT_EQ(tags(list), test.expected) << "case " << &test - cases;
  }
}

}  // namespace
}  // namespace msg
