#include "msg/LanguageList.h"

#include <algorithm>

namespace msg {

LanguageList::LanguageList(Language only) : languages(new Language[1]{only}), count(1) {}

LanguageList::LanguageList(Language first, Language second)
    : languages(new Language[2]{first, second}), count(2) {}

// A negative count makes the new-expression throw std::bad_array_new_length
// before anything is copied.
LanguageList::LanguageList(int count, const Language languages[])
    : languages(new Language[count]), count(count) {
  std::copy(languages, languages + count, this->languages);
}

LanguageList::LanguageList(const LanguageList& other)
    : languages(new Language[other.count]), count(other.count) {
  std::copy(other.languages, other.languages + other.count, languages);
}

LanguageList& LanguageList::operator=(const LanguageList& other) {
  if (this == &other) {
    return *this;
  }
  // Allocate first, so a failed allocation leaves this list as it was.
  Language* copy = new Language[other.count];
  std::copy(other.languages, other.languages + other.count, copy);
  delete[] languages;
  languages = copy;
  count = other.count;
  return *this;
}

LanguageList::~LanguageList() {
  delete[] languages;
}

int LanguageList::distance(Language language) const {
  if (count < 1) {
    return -1;
  }
  int barePosition = -1;         // first list entry that names the bare language
  int otherRegionPosition = -1;  // last list entry of the language with another region
  for (int i = 0; i < count; ++i) {
    const Language& wanted = languages[i];
    if (wanted.tagChars[0] != language.tagChars[0] || wanted.tagChars[1] != language.tagChars[1]) {
      continue;
    }
    if (wanted == language) {
      return 3 * i;  // an exact match decides at once
    }
    if (!wanted.hasRegion()) {
      if (barePosition < 0) {
        barePosition = i;
      }
    } else {
      // Also a list entry with a region when `language` has none.
      otherRegionPosition = i;
    }
  }
  if (barePosition >= 0) {
    return 3 * barePosition + 1;
  }
  if (otherRegionPosition >= 0) {
    return 3 * otherRegionPosition + 2;
  }
  return -1;
}

}  // namespace msg
