// Plural: the plural categories of numbers, by the CLDR rules of a language.

#ifndef MSG_PLURAL_H_
#define MSG_PLURAL_H_

#include <cstdint>

#include "msg/Language.h"
#include "msg/export.h"

namespace msg {

// The six categories of CLDR. Every language has `other`; most have only a
// few of the others. The numbers are stable: compiled catalogues and
// Plurals::categories() masks use them.
enum class PluralCategory : std::uint8_t {
  zero = 0,
  one = 1,
  two = 2,
  few = 3,
  many = 4,
  other = 5
};

// The number of categories, one more than the highest PluralCategory.
inline constexpr int kPluralCategoryCount = 6;

// Cardinal rules choose "1 file, 2 files"; ordinal rules "1st, 2nd, 3rd".
enum class PluralKind : std::uint8_t { cardinal = 0, ordinal = 1 };

// The plural rules of CLDR (from the ICU the library was built with, compiled
// into the library, which does not load ICU), for the languages a msg tag
// can hold. Static members only.
class MSG_EXPORT Plurals {
 public:
  Plurals() = delete;

  // "zero", "one", "two", "few", "many" or "other".
  static const char* categoryName(PluralCategory category);

  // The category named `name` (one of the six words above, exactly). Returns
  // false, leaving `category` alone, for any other text or a null one.
  static bool categoryFromName(const char* name, PluralCategory& category);

  // The category of `number`, a number as it is displayed ("5", "1.0",
  // "-2.50"), under the `kind` rules of `language`. The rules are those of the
  // language with its region if they differ from the language's own (pt-PT),
  // otherwise of the language (de-AT reads de), otherwise of the root, whose
  // only category is `other`.
  //
  // The operands come from the text as written, so visible fraction digits
  // count: in English "1" is one, "1.0" and "1.000000" are other. The text
  // is an optional "-" and decimal digits with an optional "." and more digits,
  // as integers, msg::fixed() and plain doubles are shown. Anything else (an
  // empty or null text, spaces, an exponent as in "1.00e+30", "inf") is not a
  // number here and gives `other`.
  //
  // Thread-safe; the first call in a process reads the library's table of
  // rules (a few hundred microseconds), later calls allocate nothing.
  static PluralCategory category(Language language, PluralKind kind, const char* number);

  // The categories that the `kind` rules of `language` name, as a mask with
  // bit (1 << category) for each; `other` is always in it. A category may be
  // named but reached by decimals alone (Polish cardinal `other`).
  static unsigned categories(Language language, PluralKind kind);

  // The tag whose rules `language` follows, as category() falls back:
  // "pt-PT" for pt-PT, "de" for de-AT, "" for a language without rules of its
  // own (which then has `other` alone).
  static Language rulesLanguage(Language language);
};

}  // namespace msg

#endif  // MSG_PLURAL_H_
