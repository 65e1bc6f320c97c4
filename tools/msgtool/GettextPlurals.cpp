#include "GettextPlurals.h"

#include "PluralNeeds.h"
#include "message_core/PluralRules.h"

namespace msgtool {

GettextPlurals GettextPlurals::of(msg::Language language) {
  GettextPlurals plurals;
  plurals.forms = LanguagePlurals::of(language, msg::PluralKind::cardinal).wholeNumberCategories();
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
