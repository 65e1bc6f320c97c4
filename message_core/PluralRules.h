// PluralRules: one set of CLDR plural rules, read from its rule text and
// evaluated on the operands of a number.
//
// Private to the library: not installed, nothing here is exported. The
// public face is msg/Plural.h.

#ifndef MSG_MESSAGE_CORE_PLURALRULES_H_
#define MSG_MESSAGE_CORE_PLURALRULES_H_

#include <cstdint>
#include <string>
#include <vector>

#include "message_core/PluralOperands.h"
#include "msg/Language.h"
#include "msg/Plural.h"
#include "platform/PrivateApi.h"

namespace msg {

// The rules of one language and kind, e.g. English cardinals
//   "one: i in 1..1 and v in 0..0; other: "
// in the syntax of CLDR's plural rules as ICU normalises them: rules
// "category: condition" separated by ";", a condition of relations joined by
// "and" and "or" ("and" binds closer), a relation
//   operand [("mod" | "%") m] ("in" | "not in" | "within" | "not within" |
//                              "is" | "is not" | "=" | "!=") ranges
// with operands n i v w f t c e and ranges "a..b" or "a" separated by ",".
// Samples ("@integer ...", "@decimal ...") are skipped. A rule with an empty
// condition (ICU writes "other: ") never matches: `other` is what is left.
//
// An object is immutable once read; select() may run in many threads.
class PluralRules {
 public:
  // Reads `text`. Returns false, with `problem` saying what and where, if it
  // is no rule text of the syntax above; *this is then empty (only other).
  bool read(const std::string& text, std::string& problem);

  // The first rule, in the order of the text, whose condition holds; `other`
  // if none does.
  PluralCategory select(const PluralOperands& operands) const;

  // The condition of the rule for `category` on a whole number n >= 0, as an
  // expression of C (and of gettext's Plural-Forms) in `n`: "n == 1",
  // "n % 10 >= 2 && n % 10 <= 4". Operands other than n and i are 0 for a
  // whole number, so relations on them are decided here and left out. "0" if
  // no whole number satisfies the rule text or it names no such rule; for
  // `other`, as for every category, only its own rule counts, not what is left.
  std::string integerCondition(PluralCategory category) const;

  // Bit (1 << category) for every category named, and always `other`.
  unsigned categories() const { return named; }

  // The rules the library holds for `language` and `kind`, with the fallback
  // that msg::pluralCategory documents. Reads the table on first use; the
  // result lives as long as the process.
  MSG_PRIVATE_API static const PluralRules& forLanguage(Language language, PluralKind kind);

  // The tag whose rules forLanguage uses ("" for the root).
  static Language rulesLanguage(Language language);

 private:
  enum class Operand : std::uint8_t { n, i, v, w, f, t, zero };
  struct Range {
    std::uint64_t low;
    std::uint64_t high;
  };
  struct Relation {
    Operand operand;
    bool negated;
    bool within;            // "within": the fraction of n may lie in the range
    std::uint32_t modulus;  // 0: none
    std::uint32_t firstRange;
    std::uint32_t rangeCount;
  };
  struct Conjunction {  // relations joined by "and"
    std::uint32_t firstRelation;
    std::uint32_t relationCount;
  };
  struct Rule {  // conjunctions joined by "or"
    PluralCategory category;
    std::uint32_t firstConjunction;
    std::uint32_t conjunctionCount;
  };

  bool holds(const Relation& relation, const PluralOperands& operands) const;

  std::vector<Rule> rules;
  std::vector<Conjunction> conjunctions;
  std::vector<Relation> relations;
  std::vector<Range> ranges;
  unsigned named = 1u << static_cast<unsigned>(PluralCategory::other);

  friend class PluralRuleReader;
};

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_PLURALRULES_H_
