// LanguageTags: the language tag msg uses for the name a translator's file
// gives its language. gettext names locales ("fr_FR.UTF-8", "de_AT@euro"),
// XLIFF names tags ("de-AT"); the library keeps a lower-case two-letter
// language and an optional upper-case two-letter region ("de", "de-AT"), and
// compares tags byte for byte. A name is turned into that form here once,
// so that import never writes a tag that check then warns about.

#ifndef MSGTOOL_LANGUAGETAGS_H_
#define MSGTOOL_LANGUAGETAGS_H_

#include <optional>
#include <string>

namespace msgtool {

// The tag for `name`: the codeset (".UTF-8") and modifier ("@euro") are
// dropped, '_' becomes '-' and the case is made the usual one, so that
// "fr_FR.UTF-8" gives "fr-FR" and "DE" gives "de". Returns nullopt for a
// name that has no such tag ("", "C", "deu", "zh_Hant_TW", "es_419").
std::optional<std::string> languageTagOf(const std::string& name);

}  // namespace msgtool

#endif  // MSGTOOL_LANGUAGETAGS_H_
