// msgtool export: the catalogue as PO or XLIFF files for translators, one
// file per target language.

#include <CLI/CLI.hpp>

#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "CommandSupport.h"
#include "FileReplacement.h"
#include "GettextPlurals.h"
#include "PluralNeeds.h"
#include "PoFile.h"
#include "SourceStamp.h"
#include "Subcommand.h"
#include "ToolError.h"
#include "TranslationFormat.h"
#include "XliffFile.h"
#include "XliffSupport.h"
#include "message_core/SeverityWords.h"
#include "msg/Language.h"
#include "msg/Plural.h"
#include "msg/version.h"

namespace msgtool {

namespace {

struct ExportOptions {
  TranslationFormat format = TranslationFormat::po;
  std::string source = "en";
  std::vector<std::string> targets;
  std::string output;
  std::string project;
  std::vector<std::string> files;
};

// One unit as it goes out: a key, or one variant of a plural message that
// has no gettext form (an exact value, an ordinal category), with its
// source and, if there is one, its translation.
struct OutgoingUnit {
  std::string key;  // "namespace:identifier", with a variant "[plural =0]"
  std::string severity;
  std::string count;  // the source Message's count placeholder as written, "" if it names none
  std::string source;
  const CatalogueEntry* sourceEntry = nullptr;
  std::optional<std::string> target;
  bool stale = false;
  // The cardinal forms of a plural message: msgid is `source` (the source's
  // `one`, else its `other`), msgid_plural the source's `other`, and each
  // form's translation, "" where the target has none.
  std::optional<std::string> sourcePlural;
  std::vector<std::string> targetForms;
};

// The texts of one language of a key, the last of each variant as the
// loader keeps it; variants by their attribute's value ("few", "=0").
struct LanguageTexts {
  const CatalogueEntry* other = nullptr;
  std::map<std::string, const CatalogueEntry*> variants;
  bool ordinal = false;

  LanguageTexts(const std::vector<const CatalogueEntry*>& entries, const std::string& packed) {
    for (const CatalogueEntry* entry : entries) {
      if (entry->packedLanguage != packed) {
        continue;
      }
      const std::string& variant = entry->plural.empty() ? entry->ordinal : entry->plural;
      ordinal = ordinal || !entry->ordinal.empty();
      (variant.empty() || variant == "other" ? other : variants[variant]) = entry;
    }
  }

  // The text of `variant`, else `other`; null if the language has neither.
  const CatalogueEntry* textOf(const std::string& variant) const {
    auto found = variants.find(variant);
    return found != variants.end() ? found->second : other;
  }
};

bool isStale(const CatalogueEntry* target, const std::vector<const CatalogueEntry*>& entries) {
  return target != nullptr && isStaleTranslation(*target, entries);
}

// The units of a plural message: the cardinal forms of the target language
// as gettext numbers them, then one unit for each exact value (and each
// ordinal category), which gettext cannot number.
void addPluralUnits(const OutgoingUnit& base, const LanguageTexts& source,
                    const LanguageTexts& target, const std::string& targetTag,
                    const std::vector<const CatalogueEntry*>& entries,
                    std::vector<OutgoingUnit>& units) {
  const bool ordinal = source.ordinal || target.ordinal;
  const char* attribute = ordinal ? "ordinal" : "plural";
  std::set<std::string> separate;
  for (const LanguageTexts* texts : {&source, &target}) {
    for (const auto& [variant, entry] : texts->variants) {
      if (variant[0] == '=') {
        separate.insert(variant);
      }
    }
  }
  if (ordinal) {
    for (msg::PluralCategory category :
         LanguagePlurals::of(msg::Language(targetTag.c_str()), msg::PluralKind::ordinal)
             .wholeNumberCategories()) {
      separate.insert(msg::Plurals::categoryName(category));
    }
  } else {
    OutgoingUnit forms = base;
    forms.source = source.textOf("one")->text;
    forms.sourcePlural = source.other->text;
    const GettextPlurals plurals = GettextPlurals::of(msg::Language(targetTag.c_str()));
    bool any = false;
    for (msg::PluralCategory category : plurals.forms) {
      const CatalogueEntry* text = target.textOf(msg::Plurals::categoryName(category));
      forms.targetForms.push_back(text != nullptr ? text->text : std::string());
      forms.stale = forms.stale || isStale(text, entries);
      any = any || text != nullptr;
    }
    if (!any) {
      forms.targetForms.clear();
    }
    units.push_back(std::move(forms));
  }
  for (const std::string& variant : separate) {
    OutgoingUnit unit = base;
    unit.key += "[" + std::string(attribute) + " " + variant + "]";
    unit.source = source.textOf(variant)->text;
    const CatalogueEntry* text = variant == "other" ? target.other : target.textOf(variant);
    if (text != nullptr && (variant[0] != '=' || target.variants.count(variant) != 0)) {
      unit.target = text->text;
      unit.stale = isStale(text, entries);
    }
    units.push_back(std::move(unit));
  }
}

std::vector<OutgoingUnit> collectUnits(const Catalogue& catalogue, const std::string& source,
                                       const std::string& target, std::ostream& notes) {
  std::vector<OutgoingUnit> units;
  const std::string sourcePacked = msg::Language(source.c_str()).toString();
  const std::string targetPacked = msg::Language(target.c_str()).toString();
  for (const auto& [key, entries] : catalogue.byKey()) {
    OutgoingUnit unit;
    unit.key = key.first + ":" + key.second;
    const LanguageTexts sourceTexts(entries, sourcePacked);
    unit.sourceEntry = sourceTexts.other;
    if (unit.sourceEntry == nullptr || unit.sourceEntry->text.empty()) {
      notes << describePlace(entries.front()->messagePlace) << ": note: " << unit.key << " has no "
            << source << " text to translate from; left out\n";
      continue;
    }
    unit.source = unit.sourceEntry->text;
    unit.severity = msg::severityText(unit.sourceEntry->severity);
    unit.count = unit.sourceEntry->count;
    const LanguageTexts targetTexts(entries, targetPacked);
    if (!sourceTexts.variants.empty() || !targetTexts.variants.empty() || sourceTexts.ordinal) {
      addPluralUnits(unit, sourceTexts, targetTexts, target, entries, units);
      continue;
    }
    if (targetTexts.other != nullptr) {
      unit.target = targetTexts.other->text;
      unit.stale = isStale(targetTexts.other, entries);
    }
    units.push_back(unit);
  }
  return units;
}

std::string poText(const std::vector<OutgoingUnit>& units, const ExportOptions& options,
                   const std::string& target) {
  PoFile file;
  file.headerComments.push_back("Exported by msgtool from " + options.files.front() +
                                "; translate msgstr only.");
  file.header = {{"Project-Id-Version", options.project},
                 {"Language", target},
                 {"MIME-Version", "1.0"},
                 {"Content-Type", "text/plain; charset=UTF-8"},
                 {"Content-Transfer-Encoding", "8bit"},
                 {"Plural-Forms", GettextPlurals::of(msg::Language(target.c_str())).header()},
                 {"X-Source-Language", options.source},
                 {"X-Generator", std::string("msgtool ") + MSG_VERSION_STRING}};
  for (const OutgoingUnit& unit : units) {
    PoEntry entry;
    entry.extractedComments.push_back(kSeverityNote + unit.severity);
    if (!unit.count.empty()) {
      entry.extractedComments.push_back(kCountNote + unit.count);
    }
    entry.references.push_back(
        describePlace(SourcePlace{unit.sourceEntry->place.file, unit.sourceEntry->place.line, 0}));
    if (unit.stale) {
      entry.flags.push_back("fuzzy");
    }
    entry.context = unit.key;
    entry.id = unit.source;
    entry.str = unit.target.value_or(std::string());
    if (unit.sourcePlural) {
      entry.idPlural = unit.sourcePlural;
      entry.forms = unit.targetForms;
      entry.forms.resize(GettextPlurals::of(msg::Language(target.c_str())).forms.size());
    }
    file.entries.push_back(std::move(entry));
  }
  std::ostringstream out;
  file.write(out);
  return out.str();
}

std::string xliffText(const std::vector<OutgoingUnit>& units, const ExportOptions& options,
                      const std::string& target) {
  XliffFile file;
  for (const std::string& document : options.files) {
    file.original += (file.original.empty() ? "" : " ") + document;
  }
  file.version2 = options.format == TranslationFormat::xliff2;
  file.sourceLanguage = options.source;
  file.targetLanguage = target;
  for (const OutgoingUnit& unit : units) {
    XliffUnit out;
    out.key = unit.key;
    out.source = unit.source;
    out.severity = unit.severity;
    out.count = unit.count;
    out.sourceFile = unit.sourceEntry->place.file;
    out.sourceLine = unit.sourceEntry->place.line;
    if (unit.target) {
      out.target = unit.target;
      out.state = unit.stale ? "needs-review-translation" : "translated";
      out.approved = !unit.stale;
    }
    if (!unit.sourcePlural) {
      file.units.push_back(std::move(out));
      continue;
    }
    // One unit per form, as gettext numbers them: the first has msgid as
    // its source, the others msgid_plural.
    const std::size_t count = GettextPlurals::of(msg::Language(target.c_str())).forms.size();
    for (std::size_t form = 0; form < count; ++form) {
      XliffUnit formUnit = out;
      formUnit.form = static_cast<int>(form);
      formUnit.source = form == 0 ? unit.source : *unit.sourcePlural;
      if (!unit.targetForms.empty()) {
        formUnit.target = unit.targetForms[form];
        formUnit.state = unit.stale ? "needs-review-translation" : "translated";
        formUnit.approved = !unit.stale;
      }
      file.units.push_back(std::move(formUnit));
    }
  }
  return file.write();
}

// Where the file of `target` goes: standard output ("-") for one target
// without -o, the -o file for one target, else <target>.<ext> in the -o
// folder (or the current one).
std::string outputFor(const ExportOptions& options, const std::string& target) {
  if (options.targets.size() == 1) {
    std::error_code ignored;
    if (std::filesystem::is_directory(options.output, ignored)) {
      throw ToolError(
          options.output + ": is a folder; with one target, -o names the file to write (" +
          (std::filesystem::path(options.output) / (target + extensionOf(options.format)))
              .string() +
          ", for instance)");
    }
    return options.output.empty() ? "-" : options.output;
  }
  std::filesystem::path folder = options.output.empty() ? "." : options.output;
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) {
    throw ToolError(folder.string() + ": cannot make the folder: " + error.message());
  }
  return (folder / (target + extensionOf(options.format))).string();
}

int runExport(ExportOptions options) {
  const Catalogue catalogue = readWholeCatalogue(options.files);
  if (options.project.empty()) {
    options.project = std::filesystem::path(options.files.front()).stem().string();
  }
  XmlSession session;
  for (const std::string& target : options.targets) {
    std::vector<OutgoingUnit> units = collectUnits(catalogue, options.source, target, std::cerr);
    std::string text = options.format == TranslationFormat::po ? poText(units, options, target)
                                                               : xliffText(units, options, target);
    std::string output = outputFor(options, target);
    if (output == "-") {
      std::cout << text;
      continue;
    }
    try {
      replaceFileAtomically(output, text, [](const std::string&) {});
    } catch (const ToolError& problem) {
      // Reaches main, which prints only the message: name the file in it.
      throw ToolError(problem.getFile() + ": " + problem.what());
    }
    std::cerr << output << ": " << units.size() << " messages for " << target << '\n';
  }
  return kExitClean;
}

Action setUpExport(CLI::App& command) {
  auto options = std::make_shared<ExportOptions>();
  addTranslationFormatOption(command, options->format);
  command.add_option("--source", options->source,
                     "Language translators translate from (default: en)");
  command
      .add_option_function<std::string>(
          "--target", [options](const std::string& list) { options->targets = splitList(list); },
          "Languages to translate into, comma-separated: one file each")
      ->required();
  command.add_option(
      "-o,--output", options->output,
      "File to write (one target; default: standard output), or folder for <target>.po/.xlf "
      "(several targets; default: the current folder)");
  command.add_option("--project", options->project,
                     "Project-Id-Version of a PO file (default: the first FILE's name)");
  addDocumentsArgument(command, options->files);
  return [options] {
    if (options->targets.empty()) {
      throw ToolError("--target names no language");
    }
    return runExport(*options);
  };
}

const SubcommandRegistration registration(
    {"export", "Write PO or XLIFF files for translators",
     "Every key with a text in the source language becomes one entry: msgctxt\n"
     "\"namespace:identifier\" in PO, a trans-unit with that id in XLIFF. A\n"
     "translation whose source text has changed since it was imported is marked\n"
     "fuzzy (PO), needs-review-translation (XLIFF 1.2) or initial (XLIFF 2.0).\n",
     "msgtool export --format po --source en --target de -o de.po messages.xml\n"
     "msgtool export --format xliff --target de,fr -o l10n/ messages.xml\n",
     "0  written\n"
     "2  usage error, or a document or the output failed\n",
     setUpExport});

}  // namespace

}  // namespace msgtool
