// PluralNeeds: what the plural rules of a language give to numbers, which
// forms a plural message needs there, and which of a key's texts it has.
// The one place msgtool asks these questions: check, stats, the gettext
// forms of export and import all read LanguagePlurals.
//
// The forms come from the library's own rules (msg::Plurals): a language
// needs `other` and every category that some whole number reaches, since
// counts are whole numbers far more often than not. A category that only
// decimals reach (Lithuanian `many`) is welcome but not needed, and is the
// form a PO file cannot carry either. An exact value stands in for a
// category that exactly that one number reaches (=1 for English `one`).
//
// The rules are sampled: whole numbers 0 to 10,000 and every power of ten
// up to 10^18 (the rules look at the last digits, and a few, French `many`,
// at millions), and decimals k.0, k.5, ... for k below 110. A category is
// "for one number" when one number alone reaches it, however it is shown
// ("0" and "0.0"), and no number with a fraction does: Hebrew `one` takes 1
// but also 0.5, so its text must show the count.

#ifndef MSGTOOL_PLURALNEEDS_H_
#define MSGTOOL_PLURALNEEDS_H_

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Catalogue.h"
#include "message_documents/PluralMessage.h"
#include "msg/Language.h"
#include "msg/Plural.h"

namespace msgtool {

// What the rules of one language and kind give to numbers. Masks have bit
// (1 << category) for each category, as msg::Plurals::categories().
struct LanguagePlurals {
  unsigned named = 0;         // categories the rules name, `other` included
  unsigned wholeNumbers = 0;  // categories some whole number reaches
  // The only number that reaches a category, however it is shown ("0",
  // "0.0"), or -1 if more than one number or none does.
  std::array<std::int64_t, msg::kPluralCategoryCount> onlyNumber{};
  // Whether the category of onlyNumber is reached by its whole-number text
  // alone, so that an exact value of that number stands in for it.
  std::array<bool, msg::kPluralCategoryCount> onlyAsWhole{};

  bool names(msg::PluralCategory category) const { return (named & bit(category)) != 0; }
  static unsigned bit(msg::PluralCategory category) {
    return 1u << static_cast<unsigned>(category);
  }

  // Whether exactly one number reaches `category`, so that its text may
  // leave out the count ("No files deleted.").
  bool forOneNumber(msg::PluralCategory category) const {
    return onlyNumber[static_cast<std::size_t>(category)] >= 0;
  }

  // The categories of wholeNumbers in the order zero one two few many
  // other. Never empty.
  std::vector<msg::PluralCategory> wholeNumberCategories() const;

  // The rules of `language` and `kind`, read once per process and kept.
  // Safe to call from several threads.
  static const LanguagePlurals& of(const msg::Language& language, msg::PluralKind kind);
};

// The texts of one language of a plural key, as the loader keeps them: those
// of the last Message that gives the key a text in that language.
struct PluralTexts {
  std::string language;                   // packed
  const CatalogueEntry* other = nullptr;  // the text without a variant
  std::vector<std::pair<const CatalogueEntry*, msg::PluralVariant>> variants;
};

// A key read as a plural message: one whose Messages carry a count or
// whose texts carry plural or ordinal.
struct PluralKey {
  msg::PluralKind kind = msg::PluralKind::cardinal;
  unsigned count = 0;                  // the count placeholder of the first Message naming one
  std::vector<PluralTexts> languages;  // in the order of their first text
};

// The categories that `texts` needs and lacks, as a mask.
unsigned missingForms(const PluralTexts& texts, msg::PluralKind kind);

// Whether `variant` of `language` is chosen for exactly one number: an exact
// value, or a category that one number alone reaches.
bool choosesOneNumber(const msg::PluralVariant& variant, const msg::Language& language,
                      msg::PluralKind kind);

// Whether a text with the placeholders `found` may stand for one with
// `expected`: the same ones, or, for a variant chosen for one number
// (`forOneNumber`), the same without the count placeholder `count`, which
// the text may say in words ("No files deleted."). Check and import judge
// plural texts by this alone.
bool placeholdersFit(const std::set<unsigned>& found, const std::set<unsigned>& expected,
                     unsigned count, bool forOneNumber);

// Whether `entry` is a plural message's `other` text, or a plain text:
// one without a plural or ordinal variant.
bool isOtherText(const CatalogueEntry& entry);

// The count placeholder of the entry's Message as the loader reads it: 1
// for "&1", 0 when absent.
unsigned countPlaceholderOf(const CatalogueEntry& entry);

// The key's texts read as a plural message; false if the key is no plural
// message. `entries` are the key's texts in reading order (Catalogue::byKey).
bool readPluralKey(const std::vector<const CatalogueEntry*>& entries, PluralKey& key);

// The categories of `mask` by name, "one, few".
std::string describeCategories(unsigned mask);

}  // namespace msgtool

#endif  // MSGTOOL_PLURALNEEDS_H_
