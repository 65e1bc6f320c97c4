#include "Peers.h"

#include <libintl.h>

#include <clocale>
#include <memory>
#include <vector>

#include "BenchSupport.h"

#ifdef MSG_BENCH_WITH_ICU
#include <unicode/ustring.h>
#endif

namespace msg_bench {

const std::vector<const char*>& standardSequenceKeys() {
  static const IdentifierPool pool = identifierPool(kStandardKeyCount);
  static const std::vector<const char*> keys = sequenceKeys(pool, standardSequence());
  return keys;
}

const std::unordered_map<std::string_view, const char*>& floorMap() {
  static const std::vector<std::string> texts = [] {
    std::vector<std::string> made;
    const std::vector<Entry>& entries = standardEntries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
      made.push_back(preferredText(entries[i], i).render(PlaceholderSyntax::kMsg));
    }
    return made;
  }();
  static const std::unordered_map<std::string_view, const char*> map = [] {
    std::unordered_map<std::string_view, const char*> made;
    const std::vector<Entry>& entries = standardEntries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
      made.emplace(entries[i].identifier, texts[i].c_str());
    }
    return made;
  }();
  return map;
}

#ifdef MSG_BENCH_WITH_GETTEXT
const char* gettextDomain() {
  static const char* domain = [] {
    // The preference is set by LANGUAGE (main() sets it before anything
    // runs); glibc honours it under any locale but plain "C".
    const std::string dir = catalogueDir() + "/locale";
    bindtextdomain("msgbench", dir.c_str());
    bind_textdomain_codeset("msgbench", "UTF-8");
    return "msgbench";
  }();
  return domain;
}

std::string checkGettext() {
  const char* domain = gettextDomain();
  const std::vector<Entry>& entries = standardEntries();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::string expected = preferredText(entries[i], i).render(PlaceholderSyntax::kPrintf);
    const char* got = dcgettext(domain, entries[i].identifier.c_str(), LC_MESSAGES);
    if (expected != got) {
      return "gettext: key " + entries[i].identifier + " gives \"" + got + "\", expected \"" +
             expected + "\" (is the locale C.UTF-8 and LANGUAGE de_AT:de:en?)";
    }
  }
  return {};
}
#endif

#ifdef MSG_BENCH_WITH_ICU
UResourceBundle* icuBundle() {
  static UResourceBundle* bundle = [] {
    // A path that ends in a separator names a directory of .res files.
    const std::string dir = catalogueDir() + "/icu/";
    UErrorCode status = U_ZERO_ERROR;
    UResourceBundle* opened = ures_open(dir.c_str(), "de_AT", &status);
    return U_FAILURE(status) ? nullptr : opened;
  }();
  return bundle;
}

std::string checkIcu() {
  UResourceBundle* bundle = icuBundle();
  if (bundle == nullptr) {
    return "ICU: cannot open the de_AT bundle in " + catalogueDir() + "/icu/";
  }
  const std::vector<Entry>& entries = standardEntries();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::string expected = preferredText(entries[i], i).render(PlaceholderSyntax::kBraces);
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    const UChar* text =
        ures_getStringByKey(bundle, entries[i].identifier.c_str(), &length, &status);
    char utf8[512];
    int32_t utf8Length = 0;
    if (U_SUCCESS(status)) {
      u_strToUTF8(utf8, sizeof utf8, &utf8Length, text, length, &status);
    }
    if (U_FAILURE(status) || expected != std::string(utf8, static_cast<std::size_t>(utf8Length))) {
      return "ICU: key " + entries[i].identifier + " does not give \"" + expected + "\"";
    }
  }
  return {};
}

std::string formatIcu(const icu::MessageFormat& format, const icu::Formattable (&arguments)[2]) {
  icu::UnicodeString result;
  icu::FieldPosition ignored;
  UErrorCode error = U_ZERO_ERROR;
  format.format(arguments, 2, result, ignored, error);
  std::string text;
  result.toUTF8String(text);
  return text;
}
#endif

}  // namespace msg_bench
