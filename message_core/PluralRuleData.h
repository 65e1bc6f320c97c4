// PluralRuleData: the table of plural rule texts that the build writes from
// ICU (tools/plural_rules). Only PluralRules reads it.
//
// Private to the library: not installed, nothing here is exported.

#ifndef MSG_MESSAGE_CORE_PLURALRULEDATA_H_
#define MSG_MESSAGE_CORE_PLURALRULEDATA_H_

#include <cstddef>

namespace msg {

// One language (or language and region) with the indices into
// kPluralRuleTexts of its cardinal and ordinal rules.
struct PluralRuleRow {
  const char* tag;  // "de", "pt-PT"
  std::size_t cardinal;
  std::size_t ordinal;
};

// Rule texts in the syntax of CLDR's plural rules, as ICU normalises them:
// "one: i in 1..1 and v in 0..0; other: ". Each distinct text once.
extern const char* const kPluralRuleTexts[];
extern const std::size_t kPluralRuleTextCount;

// The texts of the root: what a language without a row of its own uses.
extern const std::size_t kPluralRootRules[2];  // cardinal, ordinal

extern const PluralRuleRow kPluralRuleRows[];
extern const std::size_t kPluralRuleRowCount;

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_PLURALRULEDATA_H_
