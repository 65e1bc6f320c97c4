#include "Findings.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "LanguageTags.h"
#include "Placeholders.h"
#include "PluralNeeds.h"
#include "SourceStamp.h"
#include "message_documents/MessageDocumentReader.h"

namespace msgtool {

namespace {

constexpr char kSpaces[] = " \t\r\n";

std::string quoted(const std::string& text) {
  return '"' + text + '"';
}

std::string keyName(const CatalogueEntry& entry) {
  return quoted(entry.effectiveNamespace + ':' + entry.effectiveIdentifier);
}

std::string placeText(const SourcePlace& place) {
  return place.file + ':' + std::to_string(place.line) + ':' + std::to_string(place.column);
}

std::string leadingSpace(const std::string& text) {
  return text.substr(0, std::min(text.find_first_not_of(kSpaces), text.size()));
}

std::string trailingSpace(const std::string& text) {
  const std::size_t last = text.find_last_not_of(kSpaces);
  return last == std::string::npos ? text : text.substr(last + 1);
}

// "en" or "de-AT": a tag the library uses exactly as written and that
// language lists written the usual way match.
bool isUsualTag(const std::string& tag) {
  return languageTagOf(tag) == tag;
}

// The form a text gives a plural message: "other" for a text without one.
std::string formOf(const CatalogueEntry& entry) {
  return isOtherText(entry) ? "other" : entry.plural.empty() ? entry.ordinal : entry.plural;
}

// " (form few)" for a variant, "" for an `other` or plain text.
std::string formText(const CatalogueEntry& entry) {
  return isOtherText(entry) ? std::string() : " (form " + formOf(entry) + ")";
}

// Whether `entry` is a plural variant chosen for exactly one number, which
// may leave out the count.
bool isForOneNumber(const CatalogueEntry& entry, msg::PluralKind kind) {
  msg::PluralVariant variant;
  return !isOtherText(entry) && msg::PluralMessage::readVariant(formOf(entry), variant) &&
         choosesOneNumber(variant, msg::Language(entry.packedLanguage.c_str()), kind);
}

class Collector {
 public:
  explicit Collector(std::vector<Finding>& findings) : findings(findings) {}

  Finding& add(const SourcePlace& place, FindingSeverity severity, const char* code,
               std::string message, const CatalogueEntry* entry = nullptr) {
    Finding finding;
    finding.place = place;
    finding.severity = severity;
    finding.code = code;
    finding.message = std::move(message);
    if (entry != nullptr) {
      finding.nameSpace = entry->effectiveNamespace;
      finding.identifier = entry->effectiveIdentifier;
      finding.language = entry->packedLanguage;
    }
    findings.push_back(std::move(finding));
    return findings.back();
  }

 private:
  std::vector<Finding>& findings;
};

void findRefusals(const Catalogue& catalogue, Collector& out) {
  for (const RefusedDocument& document : catalogue.refused()) {
    for (const msg::DocumentProblem& problem : document.problems) {
      const SourcePlace place{problem.file.empty() ? document.file : problem.file, problem.line,
                              problem.column};
      out.add(place, FindingSeverity::error, code::kDocumentRefused, problem.message);
    }
  }
}

// Attributes the loader replaces by a default without a word. Each Message
// and MessageNamespace is reported once, not once per Text.
void findDefaultedAttributes(const Catalogue& catalogue, Collector& out) {
  using Seen = std::tuple<std::string, int, int, std::string, std::string>;
  std::set<Seen> messages;
  std::set<Seen> namespaces;
  for (const CatalogueEntry& entry : catalogue.entries()) {
    const SourcePlace& message = entry.messagePlace;
    const bool newMessage =
        messages
            .insert(Seen(message.file, message.line, message.column,
                         entry.nameSpace + '\n' + entry.identifier, entry.severityWord))
            .second;
    if (newMessage && !entry.severityWord.empty() &&
        !msg::DocumentText::isSeverityWord(entry.severityWord)) {
      out.add(message, FindingSeverity::error, code::kUnknownSeverity,
              "severity " + quoted(entry.severityWord) + " of " + keyName(entry) +
                  " is not info, warning, error or abort; the loader reads it as error",
              &entry)
          .language.clear();
    }
    if (newMessage && entry.identifier.empty()) {
      out.add(message, FindingSeverity::error, code::kMissingId,
              std::string("Message has no id; the loader files its texts under \"") +
                  msg::kDefaultIdentifier + '"',
              &entry)
          .language.clear();
    }
    const SourcePlace& space = entry.namespacePlace;
    if (entry.nameSpace.empty() &&
        namespaces.insert(Seen(space.file, space.line, space.column, "", "")).second) {
      out.add(space, FindingSeverity::error, code::kMissingNamespaceName,
              std::string("MessageNamespace has no name; the loader files its messages under \"") +
                  msg::kDefaultNamespace + '"');
    }
  }
}

// A tag the library reads otherwise than written is reported once per file.
void findLanguageTags(const Catalogue& catalogue, Collector& out) {
  std::set<std::pair<std::string, std::string>> seen;
  for (const CatalogueEntry& entry : catalogue.entries()) {
    if (entry.language.empty() || isUsualTag(entry.language) ||
        !seen.insert({entry.place.file, entry.language}).second) {
      continue;
    }
    std::string message = "language " + quoted(entry.language);
    if (entry.packedLanguage != entry.language) {
      message += " is read as " + quoted(entry.packedLanguage) + ";";
    } else {
      message += " is kept as written, and tags are compared byte for byte;";
    }
    message +=
        " write a lower-case language and an optional upper-case region, like \"de\" or "
        "\"de-AT\"";
    out.add(entry.place, FindingSeverity::warning, code::kLanguageTag, message, &entry);
  }
}

// Faults of one text on its own.
void findTextFaults(const CatalogueEntry& entry, Collector& out) {
  if (entry.text.find_first_not_of(kSpaces) == std::string::npos) {
    out.add(entry.place, FindingSeverity::warning, code::kEmptyText,
            "text of " + keyName(entry) + " in " + quoted(entry.packedLanguage) + " is empty",
            &entry);
  }
  for (const IgnoredRun& run : scanPlaceholders(entry.text).ignored) {
    const std::string written =
        entry.text.substr(run.offset, std::min<std::size_t>(run.digits + 1, 12));
    const std::string shown = run.digits + 1 > 12 ? written + "..." : written;
    out.add(entry.place, FindingSeverity::warning, code::kIgnoredPlaceholder,
            quoted(shown) + " in " + keyName(entry) + " is plain text: " +
                (run.digits > kMaxPlaceholderDigits
                     ? "a placeholder has at most " + std::to_string(kMaxPlaceholderDigits) +
                           " digits, this one " + std::to_string(run.digits)
                     : std::string("its number is too large for a placeholder")),
            &entry);
  }
}

// The text of `entries` that the others are compared with.
// In a plural message it is the `other` text, which serves most numbers.
const CatalogueEntry* referenceOf(const std::vector<const CatalogueEntry*>& entries,
                                  const std::string& reference) {
  const CatalogueEntry* inLanguage = nullptr;
  const CatalogueEntry* firstOther = nullptr;
  for (const CatalogueEntry* entry : entries) {
    const bool other = isOtherText(*entry);
    if (entry->packedLanguage == reference && other) {
      return entry;
    }
    inLanguage = inLanguage == nullptr && entry->packedLanguage == reference ? entry : inLanguage;
    firstOther = firstOther == nullptr && other ? entry : firstOther;
  }
  return inLanguage != nullptr ? inLanguage : firstOther != nullptr ? firstOther : entries.front();
}

// Faults of a plural message: forms the rules need and the texts lack,
// forms the rules never choose, and texts for many numbers without the
// count. `checked` are the texts whose placeholders match the reference;
// the others have been reported already.
void findPluralFaults(const PluralKey& key, const std::set<const CatalogueEntry*>& checked,
                      Collector& out) {
  for (const PluralTexts& texts : key.languages) {
    const CatalogueEntry& first = texts.other != nullptr ? *texts.other : *texts.variants[0].first;
    const unsigned lacking = missingForms(texts, key.kind);
    if (lacking != 0) {
      out.add(first.place, FindingSeverity::error, code::kPluralFormMissing,
              keyName(first) + " in " + quoted(texts.language) + " has no form " +
                  describeCategories(lacking) +
                  ", which its plural rules give to whole numbers; the library shows the "
                  "\"other\" text for them",
              &first);
    }
    const LanguagePlurals& plurals =
        LanguagePlurals::of(msg::Language(texts.language.c_str()), key.kind);
    for (const auto& variant : texts.variants) {
      if (!variant.second.exact && !plurals.names(variant.second.category)) {
        out.add(variant.first->place, FindingSeverity::warning, code::kPluralFormUnused,
                keyName(*variant.first) + " in " + quoted(texts.language) + " has a form " +
                    msg::Plurals::categoryName(variant.second.category) +
                    " that its plural rules never choose",
                variant.first);
      }
    }
  }
  for (const CatalogueEntry* entry : checked) {
    const unsigned count = countPlaceholderOf(*entry);
    if (!isForOneNumber(*entry, key.kind) && placeholderNumbers(entry->text).count(count) == 0) {
      out.add(entry->place, FindingSeverity::error, code::kPluralCountMissing,
              keyName(*entry) + " in " + quoted(entry->packedLanguage) + formText(*entry) +
                  " does not show its count &" + std::to_string(count) +
                  ", and is chosen for more than one number",
              entry);
    }
  }
}

// Texts of one key in a language that already has one. Returns the first
// text of each language.
std::map<std::string, const CatalogueEntry*> findDuplicateTexts(
    const std::vector<const CatalogueEntry*>& entries, Collector& out) {
  // The variants of one Message are no duplicates; a later Message with
  // texts in the language is, once.
  std::map<std::string, const CatalogueEntry*> firstOfLanguage;
  std::set<std::pair<std::string, std::string>> formsOfFirst;  // language, form
  std::set<std::tuple<std::string, int, int, std::string>> laterMessages;
  for (const CatalogueEntry* entry : entries) {
    const CatalogueEntry* first =
        firstOfLanguage.emplace(entry->packedLanguage, entry).first->second;
    const SourcePlace& message = entry->messagePlace;
    const bool duplicate =
        first->messagePlace == message
            ? !formsOfFirst.emplace(entry->packedLanguage, formOf(*entry)).second
            : laterMessages
                  .emplace(message.file, message.line, message.column, entry->packedLanguage)
                  .second;
    if (duplicate) {
      out.add(entry->place, FindingSeverity::error, code::kDuplicateText,
              keyName(*entry) + " has a second text in " + quoted(entry->packedLanguage) +
                  "; the first is at " + placeText(first->place) +
                  ", and the loader keeps the last",
              entry)
          .related.push_back(first->place);
    }
  }
  return firstOfLanguage;
}

void findStaleTexts(const std::vector<const CatalogueEntry*>& entries, Collector& out) {
  // Every stamped text is judged by its stamp alone, as stats and export
  // judge it: with no text in the reference language the first text stands
  // in as the reference, but may still be stale.
  for (const CatalogueEntry* entry : entries) {
    if (isStaleTranslation(*entry, entries)) {
      out.add(entry->place, FindingSeverity::warning, code::kStaleTranslation,
              keyName(*entry) + " in " + quoted(entry->packedLanguage) +
                  " was translated from a source text that has changed since; review it",
              entry);
    }
  }
}

// Placeholders and whitespace of every text against the reference text, and
// the plural faults of the texts whose placeholders fit.
void findPlaceholderFaults(const std::vector<const CatalogueEntry*>& entries,
                           const CheckSettings& settings, Collector& out) {
  const CatalogueEntry* reference = referenceOf(entries, settings.reference);
  const std::set<unsigned> expected = placeholderNumbers(reference->text);
  if (!expected.empty() && *expected.rbegin() + 1 != expected.size()) {
    out.add(reference->place, FindingSeverity::warning, code::kPlaceholderGap,
            "placeholders of " + keyName(*reference) +
                " skip numbers: " + describePlaceholders(expected),
            reference);
  }
  PluralKey plural;
  const bool isPlural = readPluralKey(entries, plural);
  std::set<const CatalogueEntry*> matching{reference};
  const std::string lead = leadingSpace(reference->text);
  const std::string trail = trailingSpace(reference->text);
  for (const CatalogueEntry* entry : entries) {
    if (entry == reference) {
      continue;
    }
    const std::set<unsigned> numbers = placeholderNumbers(entry->text);
    if (placeholdersFit(numbers, expected, countPlaceholderOf(*entry),
                        isPlural && isForOneNumber(*entry, plural.kind))) {
      matching.insert(entry);
    } else {
      out.add(entry->place, FindingSeverity::error, code::kPlaceholderMismatch,
              keyName(*entry) + " in " + quoted(entry->packedLanguage) + formText(*entry) +
                  " has placeholders " + describePlaceholders(numbers) + ", but " +
                  quoted(reference->packedLanguage) + " at " + placeText(reference->place) +
                  " has " + describePlaceholders(expected),
              entry)
          .related.push_back(reference->place);
    }
    if (leadingSpace(entry->text) != lead || trailingSpace(entry->text) != trail) {
      out.add(entry->place, FindingSeverity::warning, code::kWhitespaceMismatch,
              keyName(*entry) + " in " + quoted(entry->packedLanguage) +
                  " starts or ends with other whitespace than " +
                  quoted(reference->packedLanguage) + " at " + placeText(reference->place),
              entry)
          .related.push_back(reference->place);
    }
  }

  if (isPlural) {
    findPluralFaults(plural, matching, out);
  }
}

void findMissingLanguages(const std::vector<const CatalogueEntry*>& entries,
                          const std::map<std::string, const CatalogueEntry*>& firstOfLanguage,
                          const std::vector<std::string>& required, const CheckSettings& settings,
                          Collector& out) {
  // A regional language is served by its bare language when it has no text
  // of its own, so only a key with neither misses it.
  for (const std::string& language : required) {
    const bool present = firstOfLanguage.count(language) != 0 ||
                         (language.size() > 2 && firstOfLanguage.count(language.substr(0, 2)) != 0);
    if (!present) {
      const CatalogueEntry& first = *entries.front();
      Finding& finding = out.add(
          first.messagePlace, settings.strict ? FindingSeverity::error : FindingSeverity::warning,
          code::kMissingTranslation, keyName(first) + " has no text in " + quoted(language),
          &first);
      finding.language = language;
    }
  }
}

// Faults between the texts of one key.
void findKeyFaults(const std::vector<const CatalogueEntry*>& entries,
                   const std::vector<std::string>& required, const CheckSettings& settings,
                   Collector& out) {
  const std::map<std::string, const CatalogueEntry*> firstOfLanguage =
      findDuplicateTexts(entries, out);
  findStaleTexts(entries, out);
  findPlaceholderFaults(entries, settings, out);
  findMissingLanguages(entries, firstOfLanguage, required, settings, out);
}

}  // namespace

std::vector<Finding> findFindings(const Catalogue& catalogue, const CheckSettings& settings) {
  std::vector<Finding> findings;
  Collector out(findings);
  findRefusals(catalogue, out);
  findDefaultedAttributes(catalogue, out);
  findLanguageTags(catalogue, out);
  for (const CatalogueEntry& entry : catalogue.entries()) {
    findTextFaults(entry, out);
  }
  const std::vector<std::string> required =
      settings.languages.empty() ? catalogue.languages() : settings.languages;
  for (const auto& key : catalogue.byKey()) {
    findKeyFaults(key.second, required, settings, out);
  }
  std::stable_sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
    return std::tie(a.place.file, a.place.line, a.place.column, a.code) <
           std::tie(b.place.file, b.place.line, b.place.column, b.code);
  });
  return findings;
}

const char* severityName(FindingSeverity severity) {
  return severity == FindingSeverity::error ? "error" : "warning";
}

}  // namespace msgtool
