// The ICU locales whose tags msg's languages can hold: a two-letter
// language, optionally with a two-letter region, no script and no variant.
// Shared by the build-time generators that turn ICU data into the library's
// tables, so that both tables cover the same languages.

#ifndef MSG_TOOLS_ICU_TABLES_HOLDABLELOCALES_H_
#define MSG_TOOLS_ICU_TABLES_HOLDABLELOCALES_H_

#include <unicode/locid.h>

#include <cctype>
#include <cstring>
#include <vector>

namespace msg_tables {

inline bool isLetters(const char* text, std::size_t count, bool upper) {
  if (std::strlen(text) != count) {
    return false;
  }
  for (std::size_t i = 0; i < count; ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (!(upper ? std::isupper(c) : std::islower(c))) {
      return false;
    }
  }
  return true;
}

// Every holdable locale ICU has data for: the bare languages first, then
// the locales with a region, so that a region can be compared with its
// language.
inline std::vector<icu::Locale> holdableLocales() {
  std::vector<icu::Locale> languages;
  std::vector<icu::Locale> regions;
  int32_t count = 0;
  const icu::Locale* available = icu::Locale::getAvailableLocales(count);
  for (int32_t k = 0; k < count; ++k) {
    const icu::Locale& locale = available[k];
    if (!isLetters(locale.getLanguage(), 2, false) || locale.getScript()[0] != '\0' ||
        locale.getVariant()[0] != '\0') {
      continue;
    }
    if (locale.getCountry()[0] == '\0') {
      languages.push_back(locale);
    } else if (isLetters(locale.getCountry(), 2, true)) {
      regions.push_back(locale);
    }
  }
  languages.insert(languages.end(), regions.begin(), regions.end());
  return languages;
}

}  // namespace msg_tables

#endif  // MSG_TOOLS_ICU_TABLES_HOLDABLELOCALES_H_
