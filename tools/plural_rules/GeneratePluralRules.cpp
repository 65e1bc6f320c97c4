// Writes the table of plural rules that the library evaluates at run time:
// the cardinal and ordinal rules of every language that ICU knows and that a
// msg language tag can hold (two letters, optionally a two-letter region),
// as ICU's normalised rule texts.
//
//   msg_plural_rules_generator <output.cpp>
//
// Runs at build time only: the library reads the table it writes and never
// loads ICU itself. A region gets a row of its own only where its rules
// differ from those of its language; at run time de-AT falls back to de,
// and a language without a row to the rules of the root ("other" alone).

#include <unicode/locid.h>
#include <unicode/plurrule.h>
#include <unicode/uvernum.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tools/icu_tables/HoldableLocales.h"

namespace {

std::string ruleText(const icu::Locale& locale, UPluralType type) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::PluralRules> rules(icu::PluralRules::forLocale(locale, type, status));
  if (U_FAILURE(status) || rules == nullptr) {
    std::cerr << "msg_plural_rules_generator: no rules for " << locale.getName() << ": "
              << u_errorName(status) << "\n";
    std::exit(1);
  }
  std::string text;
  rules->getRules().toUTF8String(text);
  return text;
}

// The text as a C++ string literal; ICU's rule texts are plain ASCII.
std::string literal(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
    }
    out += c;
  }
  return out + "\"";
}

struct Row {
  std::string tag;  // "de", "pt-PT"
  std::size_t cardinal;
  std::size_t ordinal;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: msg_plural_rules_generator <output.cpp>\n";
    return 2;
  }
  std::vector<std::string> texts;
  std::map<std::string, std::size_t> textIndex;
  const auto indexOf = [&](const std::string& text) {
    const auto found = textIndex.find(text);
    if (found != textIndex.end()) {
      return found->second;
    }
    texts.push_back(text);
    textIndex.emplace(text, texts.size() - 1);
    return texts.size() - 1;
  };
  const std::size_t root[2] = {indexOf(ruleText(icu::Locale::getRoot(), UPLURAL_TYPE_CARDINAL)),
                               indexOf(ruleText(icu::Locale::getRoot(), UPLURAL_TYPE_ORDINAL))};

  // Languages first, then regions compared with their language. The map
  // keeps the rows sorted by tag bytes, which is the order the library's
  // binary search expects (a tag packs into four bytes in the same order).
  std::map<std::string, Row> languages;
  std::map<std::string, Row> regions;
  for (const icu::Locale& locale : msg_tables::holdableLocales()) {
    const bool hasRegion = locale.getCountry()[0] != '\0';
    Row row{locale.getLanguage(), indexOf(ruleText(locale, UPLURAL_TYPE_CARDINAL)),
            indexOf(ruleText(locale, UPLURAL_TYPE_ORDINAL))};
    if (!hasRegion) {
      languages.emplace(row.tag, row);
      continue;
    }
    const auto language = languages.find(row.tag);
    const std::size_t base[2] = {language != languages.end() ? language->second.cardinal : root[0],
                                 language != languages.end() ? language->second.ordinal : root[1]};
    if (row.cardinal != base[0] || row.ordinal != base[1]) {
      row.tag += std::string("-") + locale.getCountry();
      regions.emplace(row.tag, row);
    }
  }
  std::map<std::string, Row> rows = languages;
  rows.insert(regions.begin(), regions.end());

  std::ofstream out(argv[1], std::ios::trunc);
  out << "// The plural rules of ICU " U_ICU_VERSION " for every language a msg tag can hold.\n"
      << "// Written at build time by msg_plural_rules_generator; do not edit.\n\n"
      << "#include \"message_core/PluralRuleData.h\"\n\nnamespace msg {\n\n"
      << "const char* const kPluralRuleTexts[] = {\n";
  for (const std::string& text : texts) {
    out << "    " << literal(text) << ",\n";
  }
  out << "};\nconst std::size_t kPluralRuleTextCount = " << texts.size() << ";\n\n"
      << "const std::size_t kPluralRootRules[2] = {" << root[0] << ", " << root[1] << "};\n\n"
      << "const PluralRuleRow kPluralRuleRows[] = {\n";
  for (const auto& entry : rows) {
    const Row& row = entry.second;
    out << "    {" << literal(row.tag) << ", " << row.cardinal << ", " << row.ordinal << "},\n";
  }
  out << "};\nconst std::size_t kPluralRuleRowCount = " << rows.size() << ";\n\n"
      << "}  // namespace msg\n";
  out.close();
  if (!out) {
    std::cerr << "msg_plural_rules_generator: cannot write " << argv[1] << "\n";
    return 1;
  }
  return 0;
}
