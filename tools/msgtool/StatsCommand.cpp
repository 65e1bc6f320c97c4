// msgtool stats: how far each language is translated.

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "CommandSupport.h"
#include "PluralNeeds.h"
#include "SourceStamp.h"
#include "Subcommand.h"
#include "msg/Language.h"

namespace msgtool {

namespace {

struct StatsOptions {
  std::vector<std::string> files;
  std::string languages;
  OutputFormat format = OutputFormat::text;
};

struct LanguageCount {
  std::string language;
  std::size_t translated = 0;
  std::size_t missing = 0;
  std::size_t stale = 0;  // translated, but from a source text changed since
  double share = 0.0;     // translated / messages, 0 with no messages
};

// The plural messages of `keys`, each with its texts by language.
std::map<MessageKey, PluralKey> pluralKeysOf(const Catalogue::EntriesByKey& keys) {
  std::map<MessageKey, PluralKey> plurals;
  for (const auto& key : keys) {
    PluralKey plural;
    if (readPluralKey(key.second, plural)) {
      plurals.emplace(key.first, std::move(plural));
    }
  }
  return plurals;
}

// Whether `key` is complete in `language`: a plural message is translated
// into a language only with every form the language needs.
bool hasEveryForm(const std::map<MessageKey, PluralKey>& plurals, const MessageKey& key,
                  const std::string& language) {
  const auto plural = plurals.find(key);
  if (plural == plurals.end()) {
    return true;
  }
  for (const PluralTexts& texts : plural->second.languages) {
    if (texts.language == language) {
      return missingForms(texts, plural->second.kind) == 0;
    }
  }
  return false;
}

LanguageCount countLanguage(const std::string& language, const Catalogue::EntriesByKey& keys,
                            const std::map<MessageKey, PluralKey>& plurals) {
  LanguageCount count{language};
  for (const auto& key : keys) {
    // A key is stale in a language if any of its texts there is: each
    // form of a plural message is judged on its own, as check judges it.
    bool found = false;
    bool stale = false;
    for (const CatalogueEntry* entry : key.second) {
      if (entry->packedLanguage == language) {
        found = true;
        stale = stale || isStaleTranslation(*entry, key.second);
      }
    }
    ++(found && hasEveryForm(plurals, key.first, language) ? count.translated : count.missing);
    count.stale += stale ? 1 : 0;
  }
  count.share = keys.empty() ? 0.0 : static_cast<double>(count.translated) / keys.size();
  return count;
}

void printCounts(const std::vector<LanguageCount>& counts, std::size_t messages,
                 OutputFormat format) {
  if (format == OutputFormat::json) {
    nlohmann::ordered_json out;
    out["messages"] = messages;
    out["languages"] = nlohmann::ordered_json::array();
    for (const LanguageCount& count : counts) {
      out["languages"].push_back({{"language", count.language},
                                  {"translated", count.translated},
                                  {"missing", count.missing},
                                  {"stale", count.stale},
                                  {"share", count.share}});
    }
    std::cout << out.dump(2) << '\n';
    return;
  }
  for (const LanguageCount& count : counts) {
    char share[16];
    std::snprintf(share, sizeof share, "%.1f%%", 100.0 * count.share);
    std::cout << count.language << ": " << count.translated << " translated, " << count.missing
              << " missing, " << share << " of " << messages << " messages";
    if (count.stale > 0) {
      std::cout << ", " << count.stale << " stale";
    }
    std::cout << '\n';
  }
}

int runStats(const StatsOptions& options) {
  const Catalogue catalogue = readWholeCatalogue(options.files);
  const Catalogue::EntriesByKey keys = catalogue.byKey();

  std::vector<std::string> languages;
  for (const std::string& tag : splitList(options.languages)) {
    languages.push_back(msg::Language(tag.c_str()).toString());
  }
  if (languages.empty()) {
    languages = catalogue.languages();
  }

  const std::map<MessageKey, PluralKey> plurals = pluralKeysOf(keys);
  std::vector<LanguageCount> counts;
  counts.reserve(languages.size());
  for (const std::string& language : languages) {
    counts.push_back(countLanguage(language, keys, plurals));
  }
  printCounts(counts, keys.size(), options.format);
  return kExitClean;
}

Action setUpStats(CLI::App& command) {
  auto options = std::make_shared<StatsOptions>();
  command
      .add_option("--languages", options->languages,
                  "Languages to count, comma-separated (default: every language present)")
      ->type_name("LIST");
  addFormatOption(command, options->format);
  addDocumentsArgument(command, options->files);
  return [options] { return runStats(*options); };
}

const SubcommandRegistration registration(
    {"stats", "Count translated and missing messages per language",
     "For each language: how many messages have a text, how many miss one, and\n"
     "how many were translated from a source text that has changed since.\n",
     "msgtool stats app-en.xml app-de.xml\n"
     "msgtool stats --languages de,fr --format json app-*.xml\n",
     "0  counted\n"
     "2  usage error, or a document that cannot be loaded\n",
     setUpStats});

}  // namespace

}  // namespace msgtool
