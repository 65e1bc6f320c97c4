#include "LanguageTags.h"

namespace msgtool {

namespace {

bool isAsciiLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

std::optional<std::string> languageTagOf(const std::string& name) {
  const std::string locale = name.substr(0, name.find_first_of(".@"));
  if (locale.size() != 2 && locale.size() != 5) {
    return std::nullopt;
  }
  if (!isAsciiLetter(locale[0]) || !isAsciiLetter(locale[1])) {
    return std::nullopt;
  }
  std::string tag{lower(locale[0]), lower(locale[1])};
  if (locale.size() == 5) {
    if ((locale[2] != '_' && locale[2] != '-') || !isAsciiLetter(locale[3]) ||
        !isAsciiLetter(locale[4])) {
      return std::nullopt;
    }
    tag += {'-', upper(locale[3]), upper(locale[4])};
  }
  return tag;
}

}  // namespace msgtool
