// A plural message exported to PO, checked by msgfmt -c and compiled to a
// .mo: for every n from 0 to 1,000, libc's ngettext picks the same text as
// msg does, in each language.

#include <gtest/gtest.h>
#include <libintl.h>

#include <clocale>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "GettextPlurals.h"
#include "PluralNeeds.h"
#include "msg/LanguageList.h"
#include "msg/MessageHandlerX.h"
#include "msg/Typed.h"
#include "tests/msgtool_run.h"
#include "tests/scratch_folder.h"

namespace {

std::string replaceCount(std::string text, unsigned long n) {
  const std::size_t at = text.find("&0");
  return at == std::string::npos ? text : text.replace(at, 2, std::to_string(n));
}

// The forms in the order Weblate and Poedit give them (CLDR 42).
TEST(GettextPluralsTest, FormsFollowTheOrderTranslatorsToolsUse) {
  // Which categories each language needs is PluralNeedsTest's; here the
  // order, and the form that stands for `other`.
  const std::vector<std::pair<const char*, const char*>> rows{{"en", "one other"},
                                                              {"pl", "one few many"},
                                                              {"cs", "one few other"},
                                                              {"ar", "zero one two few many other"},
                                                              {"ga", "one two few many other"},
                                                              {"ja", "other"}};
  for (const auto& [language, expected] : rows) {
    const msgtool::GettextPlurals plurals = msgtool::GettextPlurals::of(msg::Language(language));
    std::string forms;
    for (msg::PluralCategory category : plurals.forms) {
      forms += (forms.empty() ? "" : " ") + std::string(msg::Plurals::categoryName(category));
    }
    EXPECT_EQ(forms, expected) << language;
    // Polish and Russian `other` is for decimals: the last form holds it.
    EXPECT_EQ(plurals.lastStandsForOther, forms.find("other") == std::string::npos) << language;
    EXPECT_EQ(plurals.indexOf(msg::PluralCategory::other),
              static_cast<int>(plurals.forms.size()) - 1)
        << language;
  }
  EXPECT_EQ(msgtool::GettextPlurals::of(msg::Language("ja")).header(), "nplurals=1; plural=0;");
  EXPECT_EQ(msgtool::GettextPlurals::of(msg::Language("en")).indexOf(msg::PluralCategory::few), -1);
}

class GettextTest : public ::testing::TestWithParam<const char*> {
 protected:
  test_support::ScratchFolder scratch;
};

TEST_P(GettextTest, NgettextChoosesTheTextMsgChooses) {
  const std::string language = GetParam();
  // Each form of the language says which it is; the source is Esperanto,
  // so that English can be a target.
  std::string texts =
      "<Text xml:lang=\"eo\" plural=\"one\">&amp;0 file</Text><Text xml:lang=\"eo\">&amp;0 "
      "files</Text>";
  for (msg::PluralCategory category :
       msgtool::LanguagePlurals::of(msg::Language(language.c_str()), msg::PluralKind::cardinal)
           .wholeNumberCategories()) {
    if (category != msg::PluralCategory::other) {
      const std::string name = msg::Plurals::categoryName(category);
      texts += "<Text xml:lang=\"" + language + "\" plural=\"" + name + "\">" + language + " " +
               name + " &amp;0</Text>";
    }
  }
  texts += "<Text xml:lang=\"" + language + "\">" + language + " other &amp;0</Text>";
  test_support::copySchemaInto(scratch.path());
  const std::string document = scratch.write(
      "app.xml", test_support::messageDocument("<MessageNamespace name=\"app\"><Message "
                                               "id=\"deleted\">" +
                                               texts + "</Message></MessageNamespace>\n"));
  const std::string po = (scratch / "app.po").string();
  const std::string mo = (scratch / language / "LC_MESSAGES" / "app.mo").string();
  std::filesystem::create_directories(scratch / language / "LC_MESSAGES");
  const test_support::ToolRun exported =
      test_support::runMsgtool({"export", "--format", "po", "--source", "eo", "--target",
                                language.c_str(), "-o", po.c_str(), document.c_str()});
  ASSERT_EQ(exported.code, 0) << exported.err;
  ASSERT_EQ(0, std::system(("msgfmt -c -o '" + mo + "' '" + po + "' 2>/dev/null").c_str()))
      << "msgfmt -c refuses " << po;

  msg::MessageHandlerX handler;
  handler.setLanguageList(msg::LanguageList::parse(language.c_str()));
  handler.loadMessageDocument(document.c_str());
  ASSERT_NE(nullptr, std::setlocale(LC_ALL, "C.UTF-8"));
  ::setenv("LANGUAGE", language.c_str(), 1);
  ::bindtextdomain("app", scratch.path().c_str());
  const std::string id = std::string("app:deleted") + '\004' + "&0 file";
  for (unsigned long n = 0; n <= 1000; ++n) {
    const std::string chosen = ::dngettext("app", id.c_str(), "&0 files", n);
    ASSERT_EQ(msg::format(handler, "app", "deleted", n), replaceCount(chosen, n))
        << language << ", n = " << n;
  }
}

INSTANTIATE_TEST_SUITE_P(Languages, GettextTest,
                         ::testing::Values("en", "de", "fr", "pl", "ru", "cs", "ar", "ga", "cy",
                                           "he", "ja", "uk", "lt", "ro"));

}  // namespace
