// PluralRuleTable: the rules of every language, read once from the table the
// build wrote, and the public calls of msg/Plural.h.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "message_core/PluralRuleData.h"
#include "message_core/PluralRules.h"
#include "msg/Plural.h"

namespace msg {
namespace {

constexpr const char* kCategoryNames[kPluralCategoryCount] = {"zero", "one",  "two",
                                                              "few",  "many", "other"};

std::uint32_t packed(Language language) {
  // Big-endian, so that the order of the numbers is that of the tags.
  const auto byte = [&](int k) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(language.tagChars[k]));
  };
  return byte(0) << 24 | byte(1) << 16 | byte(2) << 8 | byte(3);
}

class RuleTable {
 public:
  struct Row {
    std::uint32_t key;
    Language language;
    std::size_t rules[2];
  };

  RuleTable() : sets(kPluralRuleTextCount) {
    for (std::size_t k = 0; k < kPluralRuleTextCount; ++k) {
      std::string problem;
      // The table is written from ICU by the build and read back by the
      // tests; a text this reader does not understand is a fault of the
      // build, and a library that chose forms by it would print wrong text.
      if (!sets[k].read(kPluralRuleTexts[k], problem)) {
        std::abort();
      }
    }
    rows.reserve(kPluralRuleRowCount);
    for (std::size_t k = 0; k < kPluralRuleRowCount; ++k) {
      const PluralRuleRow& row = kPluralRuleRows[k];
      rows.push_back(
          Row{packed(Language(row.tag)), Language(row.tag), {row.cardinal, row.ordinal}});
    }
    std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.key < b.key; });
  }

  // The row of `language`, falling back from a region to its language;
  // null for the root.
  const Row* find(Language language) const {
    const Row* row = exact(language);
    if (row == nullptr && language.hasRegion()) {
      Language bare = language;
      bare.tagChars[2] = 0;
      bare.tagChars[3] = 0;
      row = exact(bare);
    }
    return row;
  }

  const PluralRules& rules(Language language, PluralKind kind) const {
    const Row* row = find(language);
    const auto k = static_cast<std::size_t>(kind);
    return sets[row != nullptr ? row->rules[k] : kPluralRootRules[k]];
  }

 private:
  const Row* exact(Language language) const {
    const std::uint32_t key = packed(language);
    const auto found = std::lower_bound(
        rows.begin(), rows.end(), key, [](const Row& row, std::uint32_t k) { return row.key < k; });
    return found != rows.end() && found->key == key ? &*found : nullptr;
  }

  std::vector<PluralRules> sets;
  std::vector<Row> rows;
};

const RuleTable& table() {
  // Built on first use; C++ makes the first use from several threads safe.
  static const RuleTable instance;
  return instance;
}

}  // namespace

const PluralRules& PluralRules::forLanguage(Language language, PluralKind kind) {
  return table().rules(language, kind);
}

Language PluralRules::rulesLanguage(Language language) {
  const RuleTable::Row* row = table().find(language);
  return row != nullptr ? row->language : Language();
}

const char* Plurals::categoryName(PluralCategory category) {
  const auto k = static_cast<std::size_t>(category);
  return k < static_cast<std::size_t>(kPluralCategoryCount) ? kCategoryNames[k] : "other";
}

bool Plurals::categoryFromName(const char* name, PluralCategory& category) {
  if (name == nullptr) {
    return false;
  }
  for (int k = 0; k < kPluralCategoryCount; ++k) {
    if (std::strcmp(name, kCategoryNames[k]) == 0) {
      category = static_cast<PluralCategory>(k);
      return true;
    }
  }
  return false;
}

PluralCategory Plurals::category(Language language, PluralKind kind, const char* number) {
  PluralOperands operands;
  if (!operands.read(number)) {
    return PluralCategory::other;
  }
  return PluralRules::forLanguage(language, kind).select(operands);
}

unsigned Plurals::categories(Language language, PluralKind kind) {
  return PluralRules::forLanguage(language, kind).categories();
}

Language Plurals::rulesLanguage(Language language) {
  return PluralRules::rulesLanguage(language);
}

}  // namespace msg
