#include "msg/LanguageList.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace msg {

LanguageList::LanguageList(Language only) : languages(new Language[1]{only}), count(1) {}

LanguageList::LanguageList(Language first, Language second)
    : languages(new Language[2]{first, second}), count(2) {}

// A negative count makes the new-expression throw std::bad_array_new_length
// before anything is copied.
namespace {

// new[] with a negative count throws std::bad_array_new_length in g++ builds;
// clang may fold it into a plain allocation failure, so say it here.
int checkedCount(int count) {
  if (count < 0) {
    throw std::bad_array_new_length();
  }
  return count;
}

}  // namespace

LanguageList::LanguageList(int count, const Language languages[])
    : languages(new Language[checkedCount(count)]), count(count) {
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

// ---------------------------------------------------------------------------
// Lists written as text and read from the environment.

namespace msg {

namespace {

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

char lower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

char upper(char c) {
  return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isSeparator(char c) {
  return c == '-' || c == '_';
}

// "de", "de-AT", "DE_at-1996" as a Language with normalised case; false for
// anything else.
bool toLanguage(std::string_view tag, Language& language) {
  if (tag.size() < 2 || !isLetter(tag[0]) || !isLetter(tag[1]) ||
      (tag.size() > 2 && !isSeparator(tag[2]))) {
    return false;
  }
  char text[6] = {lower(tag[0]), lower(tag[1]), 0, 0, 0, 0};
  if (tag.size() > 2) {
    if (tag.size() < 5 || !isLetter(tag[3]) || !isLetter(tag[4]) ||
        (tag.size() > 5 && !isSeparator(tag[5]))) {
      return false;
    }
    text[2] = '-';
    text[3] = upper(tag[3]);
    text[4] = upper(tag[4]);
  }
  language = Language(text);
  return true;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) {
    return {};
  }
  const std::size_t last = text.find_last_not_of(" \t");
  return text.substr(first, last - first + 1);
}

// Calls `each` for every piece of `text` between `separator`s.
template <typename Each>
void forEachItem(std::string_view text, char separator, Each each) {
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find(separator, start);
    if (end == std::string_view::npos) {
      end = text.size();
    }
    each(text.substr(start, end - start));
    start = end + 1;
  }
}

// A locale name without its codeset and modifier: "de_AT.UTF-8@euro" -> "de_AT".
std::string_view localeLanguage(std::string_view locale) {
  return locale.substr(0, locale.find_first_of(".@"));
}

void addOnce(std::vector<Language>& list, Language language) {
  if (std::find(list.begin(), list.end(), language) == list.end()) {
    list.push_back(language);
  }
}

LanguageList fromVector(const std::vector<Language>& list) {
  return LanguageList(static_cast<int>(list.size()), list.data());
}

}  // namespace

LanguageList::LanguageList(std::initializer_list<Language> list)
    : languages(new Language[list.size()]), count(static_cast<std::int32_t>(list.size())) {
  std::copy(list.begin(), list.end(), languages);
}

LanguageList LanguageList::parse(std::string_view text) {
  std::vector<Language> list;
  forEachItem(text, ',', [&](std::string_view item) {
    item = trimmed(item);
    if (item.empty()) {
      return;
    }
    Language language;
    if (!toLanguage(item, language)) {
      throw std::invalid_argument("language list \"" + std::string(text) + "\": \"" +
                                  std::string(item) +
                                  "\" is not a language tag (two letters and an optional "
                                  "two-letter region, as in \"de\" or \"de-AT\")");
    }
    list.push_back(language);
  });
  if (list.empty()) {
    throw std::invalid_argument("language list \"" + std::string(text) +
                                "\" names no language (write tags such as \"de-AT,de,en\")");
  }
  return fromVector(list);
}

LanguageList LanguageList::fromEnvironment() {
  return fromEnvironment([](const char* name) -> const char* { return std::getenv(name); });
}

LanguageList LanguageList::fromEnvironment(const std::function<const char*(const char*)>& lookup) {
  const auto value = [&lookup](const char* name) {
    const char* text = lookup(name);
    return std::string_view(text != nullptr ? text : "");
  };
  std::string_view locale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    locale = value(name);
    if (!locale.empty()) {
      break;
    }
  }
  const std::string_view localeTag = localeLanguage(locale);
  std::vector<Language> list;
  forEachItem(value("LANGUAGE"), ':', [&list](std::string_view item) {
    Language language;
    if (toLanguage(localeLanguage(item), language)) {
      addOnce(list, language);
    }
  });
  Language language;
  const bool plainLocale = localeTag.empty() || localeTag == "C" || localeTag == "POSIX";
  if (list.empty() && !plainLocale && toLanguage(localeTag, language)) {
    list.push_back(language);
  }
  if (list.empty()) {
    list.push_back(Language("en"));
  }
  return fromVector(list);
}

}  // namespace msg
