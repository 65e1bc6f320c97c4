// msgtool compile: writes the catalogue as one compiled file, which a
// program loads with MessageHandlerX::loadCompiledCatalogue in a fraction of
// the time a document takes.

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "CommandSupport.h"
#include "Findings.h"
#include "Subcommand.h"
#include "ToolError.h"
#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "message_documents/DocumentCompilation.h"
#include "message_documents/MessageDocumentReader.h"

namespace msgtool {

namespace {

struct CompileOptions {
  std::vector<std::string> files;
  std::string output;
  bool force = false;
};

// Prints the placeholder findings at error level that `msgtool check`
// reports, in its format; returns how many.
std::size_t reportPlaceholderErrors(const Catalogue& catalogue) {
  std::size_t found = 0;
  for (const Finding& finding : findFindings(catalogue, CheckSettings{})) {
    if (finding.severity == FindingSeverity::error && finding.code == code::kPlaceholderMismatch) {
      std::cerr << describePlace(finding.place) << ": error: " << finding.message << " ["
                << finding.code << "]\n";
      ++found;
    }
  }
  return found;
}

int runCompile(const CompileOptions& options) {
  const Catalogue catalogue = readWholeCatalogue(options.files);
  const std::size_t mismatches = reportPlaceholderErrors(catalogue);
  if (mismatches > 0 && !options.force) {
    std::cerr << "msgtool compile: " << mismatches
              << " placeholder error(s); nothing written. Fix them, or pass --force to compile "
                 "anyway.\n";
    return kExitFindings;
  }
  // Each document read again with the loader's own rules, in the order
  // given, so that a later text of a key replaces an earlier one and plural
  // messages keep their variants exactly as a load would register them.
  msg::CompiledCatalogueWriter writer;
  try {
    XmlSession session;
    for (const std::string& file : options.files) {
      msg::addMessageDocument(writer, file.c_str());
    }
  } catch (const msg::DocumentRefused& refused) {
    for (const msg::DocumentProblem& problem : refused.problems) {
      std::cerr << describePlace(SourcePlace{problem.file, problem.line, problem.column})
                << ": error: " << problem.message << '\n';
    }
    throw ToolError("a document could not be compiled; `msgtool check` tells more");
  } catch (const std::invalid_argument& error) {
    throw ToolError(error.what());
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
  command.add_option("-o,--output", options->output, "The compiled catalogue to write (app.msgc)")
      ->required();
  command.add_flag("--force", options->force,
                   "Compile even if the languages of a key disagree on their placeholders");
  addDocumentsArgument(command, options->files);
  return [options] { return runCompile(*options); };
}

const SubcommandRegistration registration(
    {"compile", "Compile the documents into one file that loads in a millisecond",
     "Every text of every language goes into the file; a program's language list\n"
     "picks among them when it loads the file. A later text of the same key and\n"
     "language replaces an earlier one, as when the documents are loaded in this\n"
     "order. The same documents always give the same bytes.\n",
     "msgtool compile -o app.msgc app-en.xml app-de.xml\n",
     "0  written\n"
     "1  the languages of a key disagree on their placeholders (nothing written)\n"
     "2  usage error, or a document or the output failed\n",
     setUpCompile});

}  // namespace

}  // namespace msgtool
