// The ICU locales whose tags a msg Language can hold: a two-letter language
// and perhaps a two-letter region, without script or variant. The tests
// that hold the library's tables against ICU go through all of them.

#ifndef MSG_TESTS_ICU_LOCALES_H_
#define MSG_TESTS_ICU_LOCALES_H_

#include <unicode/locid.h>

#include <cctype>
#include <cstring>
#include <string>
#include <vector>

namespace test_support {

struct TaggedLocale {
  std::string tag;  // "de", "pt-PT"
  icu::Locale locale;
};

inline bool twoLetters(const char* text, bool upper) {
  return std::strlen(text) == 2 && (upper ? std::isupper(text[0]) && std::isupper(text[1])
                                          : std::islower(text[0]) && std::islower(text[1]));
}

inline std::vector<TaggedLocale> holdableLocales() {
  std::vector<TaggedLocale> result;
  int32_t count = 0;
  const icu::Locale* locales = icu::Locale::getAvailableLocales(count);
  for (int32_t k = 0; k < count; ++k) {
    const icu::Locale& locale = locales[k];
    const char* region = locale.getCountry();
    if (!twoLetters(locale.getLanguage(), false) || locale.getScript()[0] != '\0' ||
        locale.getVariant()[0] != '\0' || (region[0] != '\0' && !twoLetters(region, true))) {
      continue;
    }
    std::string tag = locale.getLanguage();
    if (region[0] != '\0') {
      tag += std::string("-") + region;
    }
    result.push_back(TaggedLocale{tag, locale});
  }
  return result;
}

}  // namespace test_support

#endif  // MSG_TESTS_ICU_LOCALES_H_
