#include "SourceStamp.h"

#include <cstdio>

// Header-only: the hash is compiled into the tool, no library to link.
#define XXH_INLINE_ALL
#include <xxhash.h>

#include "Catalogue.h"
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
  const CatalogueEntry* source = nullptr;
  for (const CatalogueEntry* entry : entriesOfKey) {
    if (entry->packedLanguage == sourceLanguage) {
      source = entry;
    }
  }
  return source == nullptr || stamp->isStaleFor(source->text);
}

}  // namespace msgtool
