#include "SourceStamp.h"

#include <cstdio>

// Header-only: the hash is compiled into the tool, no library to link.
#define XXH_INLINE_ALL
#include <xxhash.h>

#include "Catalogue.h"
#include "PluralNeeds.h"
#include "msg/Language.h"

namespace msgtool {

namespace {

std::string hashOf(const std::string& text) {
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx",
                static_cast<unsigned long long>(XXH64(text.data(), text.size(), 0)));
  return digits;
}

}  // namespace

SourceStamp SourceStamp::of(const std::string& language, const std::string& text) {
  return SourceStamp{language, hashOf(text)};
}

std::optional<SourceStamp> SourceStamp::parse(const std::string& value) {
  std::size_t colon = value.rfind(':');
  if (colon == std::string::npos || colon == 0 || value.size() - colon - 1 != 16) {
    return std::nullopt;
  }
  std::string hash = value.substr(colon + 1);
  if (hash.find_first_not_of("0123456789abcdef") != std::string::npos) {
    return std::nullopt;
  }
  return SourceStamp{value.substr(0, colon), hash};
}

bool SourceStamp::isStaleFor(const std::string& sourceText) const {
  return hashOf(sourceText) != hash;
}

bool isStaleTranslation(const CatalogueEntry& translation,
                        const std::vector<const CatalogueEntry*>& entriesOfKey) {
  std::optional<SourceStamp> stamp = SourceStamp::parse(translation.translatedFrom);
  if (!stamp) {
    return false;
  }
  const std::string sourceLanguage = msg::Language(stamp->language.c_str()).toString();
  // The forms of a plural message travel together and are all stamped with
  // the source's `other`; an exact value and an ordinal category travel on
  // their own, with the source's text of the same variant where it has one.
  const bool ownVariant =
      !isOtherText(translation) && (!translation.ordinal.empty() || translation.plural[0] == '=');
  const CatalogueEntry* other = nullptr;
  const CatalogueEntry* same = nullptr;
  for (const CatalogueEntry* entry : entriesOfKey) {
    if (entry->packedLanguage != sourceLanguage) {
      continue;
    }
    other = isOtherText(*entry) ? entry : other;
    same =
        ownVariant && entry->plural == translation.plural && entry->ordinal == translation.ordinal
            ? entry
            : same;
  }
  const CatalogueEntry* source = same != nullptr ? same : other;
  return source == nullptr || stamp->isStaleFor(source->text);
}

}  // namespace msgtool
