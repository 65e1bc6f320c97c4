// Plural rules: the library's table and evaluator against ICU, which the
// table was written from, for every language a msg tag can hold; and the
// reading of operands and rule texts where ICU's own texts do not reach.

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/numberformatter.h>
#include <unicode/plurrule.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "message_core/PluralOperands.h"
#include "message_core/PluralRules.h"
#include "msg/Plural.h"
#include "tests/icu_locales.h"

namespace msg {
namespace {

using test_support::holdableLocales;
using Tagged = test_support::TaggedLocale;

std::string nameOf(const icu::UnicodeString& keyword) {
  std::string name;
  keyword.toUTF8String(name);
  return name;
}

// Decimals as msg shows them: 1 to 3 fraction digits, trailing zeros kept.
struct Decimal {
  std::string text;
  double value;
  int digits;
};

std::vector<Decimal> decimals() {
  std::vector<Decimal> result;
  const auto add = [&](long units, int digits) {
    const long scale = digits == 1 ? 10 : digits == 2 ? 100 : 1000;
    std::string fraction = std::to_string(units % scale);
    fraction.insert(0, static_cast<std::size_t>(digits) - fraction.size(), '0');
    result.push_back(Decimal{std::to_string(units / scale) + "." + fraction,
                             static_cast<double>(units) / static_cast<double>(scale), digits});
  };
  for (long k = 0; k <= 300; ++k)
    add(k, 1);
  for (long k = 0; k <= 250; ++k)
    add(k, 2);
  for (long k = 1000; k <= 1120; ++k)
    add(k, 2);
  for (long k = 0; k <= 120; ++k)
    add(k, 3);
  for (long k = 990; k <= 1030; ++k)
    add(k, 3);
  for (long k : {10000L, 10001L, 21000L, 101010L, 1000000L})
    add(k, 3);
  return result;
}

std::vector<long> integers() {
  std::vector<long> result;
  for (long n = 0; n <= 10000; ++n)
    result.push_back(n);
  for (long n : {100000L, 1000000L, 2000000L, 1000001L, 10000000L, 100000000L, 1000000000L}) {
    result.push_back(n);
  }
  return result;
}

TEST(PluralRulesTest, EveryHoldableLanguageAgreesWithIcuOnIntegersAndShownDecimals) {
  const std::vector<Tagged> locales = holdableLocales();
  ASSERT_GT(locales.size(), 100u);
  const std::vector<long> wholes = integers();
  const std::vector<Decimal> fractions = decimals();

  UErrorCode status = U_ZERO_ERROR;
  // select(FormattedNumber) counts the fraction digits as shown: "1.0" is
  // not 1. The formatter's own locale does not matter for the operands.
  std::vector<icu::number::LocalizedNumberFormatter> formatters;
  for (int digits = 1; digits <= 3; ++digits) {
    formatters.push_back(icu::number::NumberFormatter::with()
                             .precision(icu::number::Precision::fixedFraction(digits))
                             .locale(icu::Locale::getRoot()));
  }
  std::vector<icu::number::FormattedNumber> shown;
  for (const Decimal& decimal : fractions) {
    shown.push_back(formatters[static_cast<std::size_t>(decimal.digits - 1)].formatDouble(
        decimal.value, status));
  }
  ASSERT_TRUE(U_SUCCESS(status));

  // ICU's answers depend on its rules alone, so they are worked out once per
  // rule text. A region whose rules ICU gives as its language's is checked
  // on the first 201 integers and the decimals: enough to tell any two rule
  // sets apart, and so to catch a wrong fallback.
  std::map<std::string, std::vector<std::string>> icuAnswers;
  std::map<std::string, std::string> languageRules;
  for (const Tagged& tagged : locales) {
    const Language language(tagged.tag.c_str());
    for (const PluralKind kind : {PluralKind::cardinal, PluralKind::ordinal}) {
      std::unique_ptr<icu::PluralRules> icu(icu::PluralRules::forLocale(
          tagged.locale,
          kind == PluralKind::cardinal ? UPLURAL_TYPE_CARDINAL : UPLURAL_TYPE_ORDINAL, status));
      ASSERT_TRUE(U_SUCCESS(status)) << tagged.tag;
      const char* kindName = kind == PluralKind::cardinal ? "cardinal" : "ordinal";
      const std::string rules = nameOf(icu->getRules());
      std::vector<std::string>& expected = icuAnswers[rules];
      if (expected.empty()) {
        for (const long n : wholes) {
          expected.push_back(nameOf(icu->select(static_cast<double>(n))));
        }
        for (const icu::number::FormattedNumber& number : shown) {
          expected.push_back(nameOf(icu->select(number, status)));
        }
      }
      const std::string languageKey = tagged.locale.getLanguage() + std::string(kindName);
      const bool sameAsLanguage = tagged.tag.size() > 2 && languageRules[languageKey] == rules;
      if (tagged.tag.size() == 2) {
        languageRules[languageKey] = rules;
      }
      int mismatches = 0;
      const auto compare = [&](const std::string& text, const std::string& icuCategory) {
        const char* actual = Plurals::categoryName(Plurals::category(language, kind, text.c_str()));
        if (icuCategory != actual && ++mismatches <= 3) {
          ADD_FAILURE() << tagged.tag << " " << kindName << " " << text << ": ICU " << icuCategory
                        << ", msg " << actual;
        }
      };
      for (std::size_t k = 0; k < wholes.size() && !(sameAsLanguage && k > 200); ++k) {
        compare(std::to_string(wholes[k]), expected[k]);
      }
      for (std::size_t k = 0; k < fractions.size(); ++k) {
        compare(fractions[k].text, expected[wholes.size() + k]);
      }
      EXPECT_EQ(0, mismatches) << tagged.tag << " " << kindName;

      // The categories named are ICU's keywords.
      std::unique_ptr<icu::StringEnumeration> keywords(icu->getKeywords(status));
      unsigned expectedMask = 0;
      while (const icu::UnicodeString* keyword = keywords->snext(status)) {
        PluralCategory category = PluralCategory::other;
        ASSERT_TRUE(Plurals::categoryFromName(nameOf(*keyword).c_str(), category));
        expectedMask |= 1u << static_cast<unsigned>(category);
      }
      EXPECT_EQ(expectedMask, Plurals::categories(language, kind)) << tagged.tag << " " << kindName;
    }
  }
}

TEST(PluralRulesTest, LanguagesFallBackFromRegionToLanguageToRoot) {
  EXPECT_EQ(Language("pt-PT"), Plurals::rulesLanguage(Language("pt-PT")));
  EXPECT_EQ(Language("pt"), Plurals::rulesLanguage(Language("pt-BR")));
  EXPECT_EQ(Language("de"), Plurals::rulesLanguage(Language("de-AT")));
  EXPECT_EQ(Language(), Plurals::rulesLanguage(Language("qq")));
  // Brazilian Portuguese says "0 arquivo" with one, Portugal's other.
  EXPECT_EQ(PluralCategory::one, Plurals::category(Language("pt-BR"), PluralKind::cardinal, "0"));
  EXPECT_EQ(PluralCategory::other, Plurals::category(Language("pt-PT"), PluralKind::cardinal, "0"));
  EXPECT_EQ(PluralCategory::other, Plurals::category(Language("qq"), PluralKind::cardinal, "1"));
}

TEST(PluralRulesTest, OperandsComeFromTheTextAsShown) {
  PluralOperands o;
  ASSERT_TRUE(o.read("-12.50"));
  EXPECT_EQ(12u, o.i);
  EXPECT_EQ(2u, o.v);
  EXPECT_EQ(1u, o.w);
  EXPECT_EQ(50u, o.f);
  EXPECT_EQ(5u, o.t);
  // Twenty digits: i keeps the last 18, enough for every modulus of CLDR.
  ASSERT_TRUE(o.read("12345678901234567891"));
  EXPECT_TRUE(o.wide);
  EXPECT_EQ(345678901234567891u, o.i);
  EXPECT_EQ(PluralCategory::one,
            Plurals::category(Language("ru"), PluralKind::cardinal, "12345678901234567891"));
  EXPECT_EQ(PluralCategory::other,
            Plurals::category(Language("en"), PluralKind::cardinal, "100000000000000000001"));
  for (const char* text : {"", "-", "1.", ".5", " 1", "1 ", "1e5", "1.00e+30", "inf", "-nan", "1,5",
                           "+1", "0.0000000000000000001"}) {
    EXPECT_FALSE(o.read(text)) << '"' << text << '"';
    EXPECT_EQ(PluralCategory::other, Plurals::category(Language("ar"), PluralKind::cardinal, text));
  }
  EXPECT_FALSE(o.read(nullptr));
}

// ICU's normalised texts use "in", "not in" and "mod" alone; the reader also
// takes CLDR's other spellings and skips samples.
TEST(PluralRulesTest, ReaderTakesEverySpellingOfRelationsAndRefusesBrokenTexts) {
  PluralRules rules;
  std::string problem;
  ASSERT_TRUE(
      rules.read("one: n % 10 = 1 and n % 100 != 11 @integer 1, 21, 31; "
                 "two: n within 2..3 and n is not 3, 4; few: i = 5,7..8 or v is 3; "
                 "other: @integer 0, 5~20",
                 problem))
      << problem;
  const auto category = [&](const char* text) {
    PluralOperands operands;
    EXPECT_TRUE(operands.read(text)) << text;
    return rules.select(operands);
  };
  EXPECT_EQ(PluralCategory::one, category("21"));
  EXPECT_EQ(PluralCategory::other, category("11"));
  EXPECT_EQ(PluralCategory::two, category("2.5"));  // within: fractions count
  EXPECT_EQ(PluralCategory::other, category("3"));
  EXPECT_EQ(PluralCategory::few, category("8"));
  EXPECT_EQ(PluralCategory::few, category("6.123"));
  EXPECT_EQ((1u << 1) | (1u << 2) | (1u << 3) | (1u << 5), rules.categories());

  for (const char* broken :
       {"one i = 1", "single: i = 1", "one: i = ", "one: q = 1", "one: i = 2..1",
        "one: i mod 0 = 1", "one: i = 1 and", "one: i in x"}) {
    EXPECT_FALSE(rules.read(broken, problem)) << broken;
    EXPECT_FALSE(problem.empty());
    EXPECT_EQ(1u << 5, rules.categories()) << "a refused text leaves only other";
  }
}

}  // namespace
}  // namespace msg
