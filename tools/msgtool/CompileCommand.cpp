// msgtool compile: writes the catalogue as one compiled file, which a
// program loads with MessageHandlerX::loadCompiledCatalogue in a fraction of
// the time a document takes.

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "CommandSupport.h"
#include "Placeholders.h"
#include "Subcommand.h"
#include "ToolError.h"
#include "message_documents/CompiledCatalogueWriter.h"

namespace msgtool {

namespace {

struct CompileOptions {
  std::vector<std::string> files;
  std::string output;
  bool force = false;
};

// Prints every key whose languages disagree on their placeholders, naming
// the text that differs from the key's first one; returns how many.
std::size_t reportPlaceholderMismatches(const Catalogue& catalogue) {
  std::size_t found = 0;
  for (const auto& [key, entries] : catalogue.byKey()) {
    const CatalogueEntry& reference = *entries.front();
    const std::set<unsigned> expected = placeholderNumbers(reference.text);
    for (const CatalogueEntry* entry : entries) {
      const std::set<unsigned> numbers = placeholderNumbers(entry->text);
      if (numbers != expected) {
        std::cerr << describePlace(entry->place) << ": error: " << key.first << ":"
                  << key.second << " [" << entry->packedLanguage << "] has placeholders "
                  << describePlaceholders(numbers) << ", its [" << reference.packedLanguage
                  << "] text " << describePlaceholders(expected) << '\n';
        ++found;
      }
    }
  }
  return found;
}

int runCompile(const CompileOptions& options) {
  const Catalogue catalogue = readWholeCatalogue(options.files);
  const std::size_t mismatches = reportPlaceholderMismatches(catalogue);
  if (mismatches > 0 && !options.force) {
    std::cerr << "msgtool compile: " << mismatches
              << " placeholder error(s); nothing written. Fix them, or pass --force to compile "
                 "anyway.\n";
    return kExitFindings;
  }
  // In reading order, so that a later text of a key replaces an earlier
  // one, as the loader does.
  msg::CompiledCatalogueWriter writer;
  for (const CatalogueEntry& entry : catalogue.entries()) {
    writer.add(entry.severity, entry.effectiveLanguage, entry.effectiveNamespace,
               entry.effectiveIdentifier, entry.text);
  }
  try {
    writer.writeFile(options.output);
  } catch (const std::exception& error) {
    throw ToolError(error.what());
  }
  return kExitClean;
}

Action setUpCompile(CLI::App& command) {
  auto options = std::make_shared<CompileOptions>();
  command.footer(
      "Every text of every language goes into the file; a program's language list picks "
      "among them when it loads the file. A later text of the same key and language "
      "replaces an earlier one, as when the documents are loaded in this order. The same "
      "documents always give the same bytes. Exit codes: 0 written, 1 placeholder errors "
      "(nothing written), 2 a document or the output failed.");
  command.add_option("-o,--output", options->output, "The compiled catalogue to write (app.msgc)")
      ->required();
  command.add_flag("--force", options->force,
                   "Compile even if the languages of a key disagree on their placeholders");
  addDocumentsArgument(command, options->files);
  return [options] { return runCompile(*options); };
}

const SubcommandRegistration registration(
    "compile", "Compile the documents into one file that loads in a millisecond", setUpCompile);

}  // namespace

}  // namespace msgtool
