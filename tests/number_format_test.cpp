// msg::number() and msg::percent(): the text equals ICU's
// LocalizedNumberFormatter for every language of the table and a range of
// values; the language is that of the text chosen for the message; a plural
// count given as a number chooses its form by the digits shown; plain
// numbers keep their C form.

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/numberformatter.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageHandler.h"
#include "msg/Number.h"
#include "msg/PluralMTE.h"
#include "msg/Typed.h"
#include "tests/icu_locales.h"

namespace msg {
namespace {

std::string shown(const char* tag, const NumberArgument& argument) {
  Message message("t", "t", info, Language(tag), "&0");
  EXPECT_TRUE(message.substitute(0, argument));
  return message.getMessage();
}

struct Style {
  const char16_t* skeleton;
  NumberArgument (*make)(double);
  NumberArgument (*makeInteger)(std::int64_t);
};

const Style kStyles[] = {
    {u".###", [](double v) { return number(v); }, [](std::int64_t v) { return number(v); }},
    {u"precision-integer", [](double v) { return number(v, 0); },
     [](std::int64_t v) { return number(v, 0); }},
    {u".00", [](double v) { return number(v, 2); }, [](std::int64_t v) { return number(v, 2); }},
    {u".0000000000000000", [](double v) { return number(v, 16); },
     [](std::int64_t v) { return number(v, 16); }},
    {u"percent .###", [](double v) { return percent(v); },
     [](std::int64_t v) { return percent(v); }},
    {u"percent .0", [](double v) { return percent(v, 1); },
     [](std::int64_t v) { return percent(v, 1); }},
};

// 0.125, 0.375 and 2.5 round ties to even; 1.005 has the shortest digits
// 1.005, though the double is below; 0.30000000000000004 is 0.1 + 0.2;
// -0.0004 rounds to a negative zero.
const double kDoubles[] = {0.0,     1.0,          -1.0,     0.5,
                           1234.5,  -1234.5,      1e6,      12345678.9,
                           1000.0,  10000.0,      123456.0, 0.125,
                           0.375,   2.5,          1.005,    999.9995,
                           9.99999, 0.0005,       0.0015,   0.30000000000000004,
                           -0.0004, -0.0,         1e21,     123456789012345678.0,
                           1e300,   DBL_MAX,      -DBL_MAX, 1e-300,
                           DBL_MIN, DBL_TRUE_MIN, HUGE_VAL, -HUGE_VAL,
                           NAN,     -NAN};

const std::int64_t kIntegers[] = {0, 1, -1, 7, 1234, -12345, 1234567890, INT64_MAX, INT64_MIN};

TEST(NumberFormatTest, EqualsIcuForEveryLanguageStyleAndValue) {
  const std::vector<test_support::TaggedLocale> locales = test_support::holdableLocales();
  ASSERT_GT(locales.size(), 150u) << "ICU lists too few locales for a proof";
  int compared = 0;
  std::vector<std::string> differences;
  for (const auto& [tag, locale] : locales) {
    for (const Style& style : kStyles) {
      UErrorCode status = U_ZERO_ERROR;
      const icu::number::LocalizedNumberFormatter icu =
          icu::number::NumberFormatter::forSkeleton(style.skeleton, status).locale(locale);
      ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
      const auto check = [&](const icu::number::FormattedNumber& formatted,
                             const NumberArgument& argument, const std::string& value) {
        std::string expected;
        formatted.toString(status).toUTF8String(expected);
        ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
        const std::string got = shown(tag.c_str(), argument);
        ++compared;
        if (got != expected && differences.size() < 20) {
          std::string skeleton;
          icu::UnicodeString(style.skeleton).toUTF8String(skeleton);
          differences.push_back(tag + " " + skeleton + " " + value + ": msg \"" + got +
                                "\", ICU \"" + expected + "\"");
        }
      };
      for (const double value : kDoubles) {
        check(icu.formatDouble(value, status), style.make(value), std::to_string(value));
      }
      for (const std::int64_t value : kIntegers) {
        check(icu.formatInt(value, status), style.makeInteger(value), std::to_string(value));
      }
    }
  }
  EXPECT_EQ(compared, static_cast<int>(locales.size() * std::size(kStyles) *
                                       (std::size(kDoubles) + std::size(kIntegers))));
  for (const std::string& difference : differences) {
    ADD_FAILURE() << difference;
  }
}

TEST(NumberFormatTest, WideIntegersKeepEveryDigit) {
  EXPECT_EQ(shown("en", number(std::numeric_limits<std::uint64_t>::max())),
            "18,446,744,073,709,551,615");
  EXPECT_EQ(shown("hi", number(std::int16_t{-32768})), "-32,768");
  EXPECT_EQ(shown("hi", number(1234567u)), "12,34,567");
}

TEST(NumberFormatTest, RegionsFallBackToTheirLanguageAndUnknownLanguagesToTheRoot) {
  EXPECT_EQ(shown("de-CH", number(1234.5)), "1\u2019234.5");  // a row of its own
  EXPECT_EQ(shown("de-DE", number(1234.5)), "1.234,5");       // no row: de
  EXPECT_EQ(shown("xx", number(-1234.5)), "-1,234.5");        // the root
  EXPECT_EQ(shown("xx-YY", percent(12.5)), "12.5%");
}

// Entries made in code, the way a program's built-in catalogue is; the
// handler's table owns them.
void add(MessageHandler& handler, const char* language, const char* identifier, const char* text) {
  new MTE(info, language, "app", identifier, text, &handler, false, true);
}

TEST(NumberFormatTest, WrittenInTheLanguageOfTheChosenTextAndPlainNumbersKeepTheirCForm) {
  MessageHandler handler;
  add(handler, "de-AT", "size", "Größe: &0 (&1)");
  add(handler, "en", "size", "Size: &0 (&1)");
  add(handler, "de", "n", "&0 &1 &2 &3");
  handler.setLanguageList(LanguageList::parse("fr, de-AT, en"));
  // No French text: the de-AT text is chosen, and its numbers are de-AT's,
  // not those of French, the first language asked for.
  EXPECT_EQ(format(handler, "app", "size", number(1234.5), percent(50)),
            "Größe: 1\u00a0234,5 (50\u00a0%)");
  handler.setLanguageList(LanguageList::parse("en"));
  EXPECT_EQ(format(handler, "app", "size", number(1234.5), percent(50)), "Size: 1,234.5 (50%)");
  handler.setLanguageList(LanguageList::parse("de"));
  EXPECT_EQ(format(handler, "app", "n", 1234567, 1234.5, fixed(1234.5, 2), number(1234.5)),
            "1234567 1234.500000 1234.50 1.234,5");
}

TEST(NumberFormatTest, APluralCountChoosesItsFormByTheDigitsShown) {
  MessageHandler handler;
  const PluralMTE french(info, "fr", "app", "files", PluralKind::cardinal, 0, "&0 fichiers",
                         {{"one", "&0 fichier"}}, &handler);
  const PluralMTE english(info, "en", "app", "files", PluralKind::cardinal, 0, "&0 files",
                          {{"one", "&0 file"}}, &handler);
  const PluralMTE arabic(info, "ar", "app", "files", PluralKind::cardinal, 0, "&0 ملف",
                         {{"two", "ملفان (&0)"}, {"few", "&0 ملفات"}}, &handler);
  const PluralKey<1, 0> files{"app", "files"};

  handler.setLanguageList(LanguageList::parse("fr"));
  EXPECT_EQ(format(handler, files, number(1.5)), "1,5 fichier");
  EXPECT_EQ(format(handler, files, number(1.9999)), "2 fichiers");  // rounded to 2 as shown
  EXPECT_EQ(format(handler, files, number(0.0004)), "0 fichier");

  handler.setLanguageList(LanguageList::parse("en"));
  EXPECT_EQ(format(handler, files, number(1)), "1 file");
  EXPECT_EQ(format(handler, files, number(1, 1)), "1.0 files");
  EXPECT_EQ(format(handler, files, number(1.0004)), "1 file");
  EXPECT_EQ(format(handler, files, number(-1)), "-1 file");
  // No digits to read: `other`.
  EXPECT_EQ(format(handler, files, number(std::nan(""))), "NaN files");
  EXPECT_EQ(format(handler, files, number(-HUGE_VAL)), "-\u221e files");

  // Arabic-Indic digits are shown; the rule reads the number itself.
  handler.setLanguageList(LanguageList::parse("ar"));
  EXPECT_EQ(format(handler, files, number(2)), "ملفان (\u0662)");
  EXPECT_EQ(format(handler, files, number(1003)), "\u0661\u066c\u0660\u0660\u0663 ملفات");
}

// How each language writes them is a row of the proof against ICU above.
TEST(NumberFormatTest, NotANumberAndInfinityLeaveTheRestOfTheMessageAsUsual) {
  Message message("t", "t", info, Language("fr"), "&0 / &1 / &2");
  EXPECT_TRUE(message.substitute(0, number(std::numeric_limits<double>::infinity())));
  EXPECT_TRUE(message.substitute(1, number(std::numeric_limits<double>::quiet_NaN(), 2)));
  EXPECT_TRUE(message.substitute(2, number(0.5, 2)));
  EXPECT_STREQ(message.getMessage(), "\u221e / NaN / 0,50");
}

}  // namespace
}  // namespace msg
