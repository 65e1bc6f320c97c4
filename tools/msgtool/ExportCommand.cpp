// msgtool export: the catalogue as PO or XLIFF files for translators, one
// file per target language.

#include <CLI/CLI.hpp>

#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "CommandSupport.h"
#include "FileReplacement.h"
#include "PoFile.h"
#include "SourceStamp.h"
#include "Subcommand.h"
#include "ToolError.h"
#include "TranslationFormat.h"
#include "XliffFile.h"
#include "message_core/SeverityWords.h"
#include "msg/Language.h"
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

// One key as it goes out: its source and, if there is one, its translation.
struct OutgoingUnit {
  std::string key;
  std::string severity;
  std::string source;
  const CatalogueEntry* sourceEntry = nullptr;
  const CatalogueEntry* target = nullptr;
  bool stale = false;
};

const CatalogueEntry* lastIn(const std::vector<const CatalogueEntry*>& entries,
                             const std::string& packed) {
  const CatalogueEntry* found = nullptr;
  for (const CatalogueEntry* entry : entries) {
    if (entry->packedLanguage == packed) {
      found = entry;
    }
  }
  return found;
}

std::vector<OutgoingUnit> collectUnits(const Catalogue& catalogue, const std::string& source,
                                       const std::string& target, std::ostream& notes) {
  std::vector<OutgoingUnit> units;
  const std::string sourcePacked = msg::Language(source.c_str()).toString();
  const std::string targetPacked = msg::Language(target.c_str()).toString();
  for (const auto& [key, entries] : catalogue.byKey()) {
    OutgoingUnit unit;
    unit.key = key.first + ":" + key.second;
    unit.sourceEntry = lastIn(entries, sourcePacked);
    if (unit.sourceEntry == nullptr || unit.sourceEntry->text.empty()) {
      notes << describePlace(entries.front()->messagePlace) << ": note: " << unit.key << " has no "
            << source << " text to translate from; left out\n";
      continue;
    }
    unit.source = unit.sourceEntry->text;
    unit.severity = msg::severityText(unit.sourceEntry->severity);
    unit.target = lastIn(entries, targetPacked);
    unit.stale = unit.target != nullptr && isStaleTranslation(*unit.target, entries);
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
                 {"X-Source-Language", options.source},
                 {"X-Generator", std::string("msgtool ") + MSG_VERSION_STRING}};
  for (const OutgoingUnit& unit : units) {
    PoEntry entry;
    entry.extractedComments.push_back("severity: " + unit.severity);
    entry.references.push_back(
        describePlace(SourcePlace{unit.sourceEntry->place.file, unit.sourceEntry->place.line, 0}));
    if (unit.stale) {
      entry.flags.push_back("fuzzy");
    }
    entry.context = unit.key;
    entry.id = unit.source;
    entry.str = unit.target != nullptr ? unit.target->text : std::string();
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
    out.sourceFile = unit.sourceEntry->place.file;
    out.sourceLine = unit.sourceEntry->place.line;
    if (unit.target != nullptr) {
      out.target = unit.target->text;
      out.state = unit.stale ? "needs-review-translation" : "translated";
      out.approved = !unit.stale;
    }
    file.units.push_back(std::move(out));
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
