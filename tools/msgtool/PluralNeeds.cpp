#include "PluralNeeds.h"

#include <map>
#include <mutex>
#include <set>

namespace msgtool {

namespace {

using msg::PluralCategory;

// Whole numbers up to this, and every power of ten above it up to 10^18,
// show every category the rules give to whole numbers: the rules look at
// the last two or three digits, and a few (French `many`) at millions.
constexpr std::uint64_t kWholeNumbersSampled = 10000;
constexpr std::uint64_t kLargestPowerSampled = 1000000000000000000ULL;
// Decimals k.0, k.5, ... for k below this show whether a category is given
// to more than one number.
constexpr std::int64_t kDecimalsSampled = 110;
constexpr const char* kFractions[] = {".0", ".00", ".1", ".5", ".25", ".05"};

struct Reach {
  std::set<std::int64_t> values;  // at most two kept
  bool byDecimalText = false;     // reached by some "k.0"
  bool byFraction = false;        // reached by a number with a fraction
};

LanguagePlurals sample(const msg::Language& language, msg::PluralKind kind) {
  LanguagePlurals plurals;
  plurals.named = msg::Plurals::categories(language, kind);
  std::array<Reach, msg::kPluralCategoryCount> reach;
  auto note = [&](const std::string& text, std::int64_t value, bool wholeText, bool fraction) {
    const PluralCategory found = msg::Plurals::category(language, kind, text.c_str());
    Reach& category = reach[static_cast<std::size_t>(found)];
    if (category.values.size() < 2) {
      category.values.insert(value);
    }
    category.byDecimalText |= !wholeText;
    category.byFraction |= fraction;
    plurals.wholeNumbers |= wholeText ? LanguagePlurals::bit(found) : 0;
  };
  const auto whole = [&](std::uint64_t number) {
    note(std::to_string(number), static_cast<std::int64_t>(number), true, false);
  };
  for (std::uint64_t number = 0; number <= kWholeNumbersSampled; ++number) {
    whole(number);
  }
  for (std::uint64_t power = kWholeNumbersSampled * 10; power <= kLargestPowerSampled;
       power *= 10) {
    whole(power);
  }
  for (std::int64_t number = 0; number < kDecimalsSampled; ++number) {
    for (const std::string fraction : kFractions) {
      const bool zero = fraction.find_first_not_of(".0") == std::string::npos;
      note(std::to_string(number) + fraction, number, false, !zero);
    }
  }
  for (std::size_t c = 0; c < reach.size(); ++c) {
    const Reach& category = reach[c];
    plurals.onlyNumber[c] =
        category.values.size() == 1 && !category.byFraction ? *category.values.begin() : -1;
    plurals.onlyAsWhole[c] = !category.byDecimalText;
  }
  return plurals;
}

}  // namespace

std::vector<PluralCategory> LanguagePlurals::wholeNumberCategories() const {
  std::vector<PluralCategory> categories;
  for (int c = 0; c < msg::kPluralCategoryCount; ++c) {
    if ((wholeNumbers & (1u << c)) != 0) {
      categories.push_back(static_cast<PluralCategory>(c));
    }
  }
  return categories;
}

const LanguagePlurals& LanguagePlurals::of(const msg::Language& language, msg::PluralKind kind) {
  // Sampling takes some ten thousand choices; export and import ask once
  // per entry. Entries of a std::map stay where they are, so the reference
  // outlives the lock.
  static std::mutex mutex;
  static std::map<std::pair<std::string, msg::PluralKind>, LanguagePlurals> known;
  const std::lock_guard<std::mutex> lock(mutex);
  const std::pair<std::string, msg::PluralKind> key(language.toString(), kind);
  const auto found = known.find(key);
  if (found != known.end()) {
    return found->second;
  }
  return known.emplace(key, sample(language, kind)).first->second;
}

unsigned missingForms(const PluralTexts& texts, msg::PluralKind kind) {
  const LanguagePlurals& plurals = LanguagePlurals::of(msg::Language(texts.language.c_str()), kind);
  const unsigned other = LanguagePlurals::bit(PluralCategory::other);
  unsigned present = texts.other != nullptr ? other : 0;
  std::set<std::uint64_t> exact;
  for (const auto& variant : texts.variants) {
    if (variant.second.exact) {
      exact.insert(variant.second.value);
    } else {
      present |= LanguagePlurals::bit(variant.second.category);
    }
  }
  unsigned lacking = (plurals.wholeNumbers | other) & ~present;
  for (std::size_t c = 0; c < plurals.onlyNumber.size(); ++c) {
    const std::int64_t only = plurals.onlyNumber[c];
    if (only >= 0 && plurals.onlyAsWhole[c] && exact.count(static_cast<std::uint64_t>(only))) {
      lacking &= ~(1u << c);
    }
  }
  return lacking;
}

bool choosesOneNumber(const msg::PluralVariant& variant, const msg::Language& language,
                      msg::PluralKind kind) {
  return variant.exact || LanguagePlurals::of(language, kind).forOneNumber(variant.category);
}

bool placeholdersFit(const std::set<unsigned>& found, const std::set<unsigned>& expected,
                     unsigned count, bool forOneNumber) {
  if (found == expected) {
    return true;
  }
  std::set<unsigned> withoutCount = expected;
  return forOneNumber && withoutCount.erase(count) == 1 && found == withoutCount;
}

bool isOtherText(const CatalogueEntry& entry) {
  const std::string& form = entry.plural.empty() ? entry.ordinal : entry.plural;
  return form.empty() || form == msg::Plurals::categoryName(PluralCategory::other);
}

unsigned countPlaceholderOf(const CatalogueEntry& entry) {
  unsigned count = 0;
  msg::PluralMessage::readCount(entry.count, count);
  return count;
}

bool readPluralKey(const std::vector<const CatalogueEntry*>& entries, PluralKey& key) {
  bool plural = false;
  key = PluralKey();
  bool countNamed = false;
  for (const CatalogueEntry* entry : entries) {
    plural |= !entry->count.empty() || !entry->plural.empty() || !entry->ordinal.empty();
    if (!countNamed && !entry->count.empty()) {
      key.count = countPlaceholderOf(*entry);
      countNamed = true;
    }
    if (!entry->ordinal.empty()) {
      key.kind = msg::PluralKind::ordinal;
    }
  }
  if (!plural) {
    return false;
  }
  // The Message each language's texts come from; a later one replaces them.
  std::vector<const SourcePlace*> messageOf;
  for (const CatalogueEntry* entry : entries) {
    std::size_t index = 0;
    while (index < key.languages.size() && key.languages[index].language != entry->packedLanguage) {
      ++index;
    }
    if (index == key.languages.size()) {
      key.languages.push_back(PluralTexts{entry->packedLanguage, nullptr, {}});
      messageOf.push_back(&entry->messagePlace);
    } else if (!(*messageOf[index] == entry->messagePlace)) {
      key.languages[index] = PluralTexts{entry->packedLanguage, nullptr, {}};
      messageOf[index] = &entry->messagePlace;
    }
    PluralTexts& texts = key.languages[index];
    const std::string& attribute = entry->plural.empty() ? entry->ordinal : entry->plural;
    msg::PluralVariant variant;
    if (attribute.empty() || (msg::PluralMessage::readVariant(attribute, variant) &&
                              !variant.exact && variant.category == PluralCategory::other)) {
      texts.other = entry;
    } else if (msg::PluralMessage::readVariant(attribute, variant)) {
      texts.variants.emplace_back(entry, variant);
    }
  }
  return true;
}

std::string describeCategories(unsigned mask) {
  std::string out;
  for (int c = 0; c < msg::kPluralCategoryCount; ++c) {
    if ((mask & (1u << c)) != 0) {
      out += (out.empty() ? "" : ", ") +
             std::string(msg::Plurals::categoryName(static_cast<PluralCategory>(c)));
    }
  }
  return out;
}

}  // namespace msgtool
