#include "LanguageTags.h"

#include <stdexcept>

#include "msg/LanguageList.h"

namespace msgtool {

std::optional<std::string> languageTagOf(const std::string& name) {
  // The library reads a tag in either spelling ("de_AT", "DE-at") and gives
  // it back in the usual one; left to this side are the codeset and
  // modifier of a locale name, and anything longer than a language and a
  // region, or more than one of them.
  const std::string locale = name.substr(0, name.find_first_of(".@"));
  if ((locale.size() != 2 && locale.size() != 5) ||
      locale.find_first_of(", \t") != std::string::npos) {
    return std::nullopt;
  }
  try {
    return msg::LanguageList::parse(locale).getLanguage(0).toString();
  } catch (const std::invalid_argument&) {
    return std::nullopt;
  }
}

}  // namespace msgtool
