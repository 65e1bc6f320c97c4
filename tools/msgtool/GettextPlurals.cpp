#include "GettextPlurals.h"

#include <array>
#include <cstdint>

#include "message_core/PluralRules.h"

namespace msgtool {

namespace {

// How many of the sampled whole numbers fall in each category.
std::array<std::uint64_t, msg::kPluralCategoryCount> sampleCounts(msg::Language language,
                                                                  msg::PluralKind kind) {
  std::array<std::uint64_t, msg::kPluralCategoryCount> counts{};
  const auto count = [&](std::uint64_t n) {
    ++counts[static_cast<std::size_t>(
        msg::Plurals::category(language, kind, std::to_string(n).c_str()))];
  };
  for (std::uint64_t n = 0; n <= 10000; ++n) {
    count(n);
  }
  for (std::uint64_t power = 100000; power <= 1000000000000000000ULL; power *= 10) {
    count(power);
  }
  return counts;
}

}  // namespace

std::vector<msg::PluralCategory> integerCategories(msg::Language language, msg::PluralKind kind) {
  const auto counts = sampleCounts(language, kind);
  std::vector<msg::PluralCategory> reached;
  for (int category = 0; category < msg::kPluralCategoryCount; ++category) {
    if (counts[static_cast<std::size_t>(category)] > 0) {
      reached.push_back(static_cast<msg::PluralCategory>(category));
    }
  }
  return reached;
}

bool coversOneInteger(msg::Language language, msg::PluralKind kind, msg::PluralCategory category) {
  return sampleCounts(language, kind)[static_cast<std::size_t>(category)] == 1;
}

GettextPlurals GettextPlurals::of(msg::Language language) {
  GettextPlurals plurals;
  plurals.forms = integerCategories(language, msg::PluralKind::cardinal);
  plurals.lastStandsForOther = plurals.forms.back() != msg::PluralCategory::other;
  const msg::PluralRules& rules =
      msg::PluralRules::forLanguage(language, msg::PluralKind::cardinal);
  // Each form but the last in turn; a whole number that none of them takes
  // falls into the last. CLDR's rules exclude one another, so the order of
  // the chain does not change the choice.
  std::string chain;
  for (std::size_t i = 0; i + 1 < plurals.forms.size(); ++i) {
    chain += "(" + rules.integerCondition(plurals.forms[i]) + ") ? " + std::to_string(i) + " : ";
  }
  plurals.formula = chain + std::to_string(plurals.forms.size() - 1);
  return plurals;
}

std::string GettextPlurals::header() const {
  return "nplurals=" + std::to_string(forms.size()) + "; plural=" + formula + ";";
}

int GettextPlurals::indexOf(msg::PluralCategory category) const {
  for (std::size_t i = 0; i < forms.size(); ++i) {
    if (forms[i] == category) {
      return static_cast<int>(i);
    }
  }
  if (category == msg::PluralCategory::other && lastStandsForOther) {
    return static_cast<int>(forms.size()) - 1;
  }
  return -1;
}

}  // namespace msgtool
