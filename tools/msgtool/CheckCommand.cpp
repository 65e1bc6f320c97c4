// msgtool check: finds the faults the loader would settle silently, and the
// ones that break a translation at run time.

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "CommandSupport.h"
#include "Findings.h"
#include "Subcommand.h"
#include "msg/Language.h"

namespace msgtool {

namespace {

// Version of the JSON report; raised only for a change that breaks readers.
constexpr int kReportVersion = 1;

struct CheckOptions {
  std::vector<std::string> files;
  std::string languages;
  std::string reference = "en";
  bool strict = false;
  OutputFormat format = OutputFormat::text;
};

nlohmann::ordered_json placeJson(const SourcePlace& place) {
  return {{"file", place.file}, {"line", place.line}, {"column", place.column}};
}

void writeJson(const std::vector<Finding>& findings, std::size_t errors, std::size_t warnings,
               std::size_t documents) {
  nlohmann::ordered_json report;
  report["version"] = kReportVersion;
  report["findings"] = nlohmann::ordered_json::array();
  for (const Finding& finding : findings) {
    nlohmann::ordered_json item = placeJson(finding.place);
    item["severity"] = severityName(finding.severity);
    item["code"] = finding.code;
    item["message"] = finding.message;
    if (!finding.identifier.empty()) {
      item["namespace"] = finding.nameSpace;
      item["identifier"] = finding.identifier;
    }
    if (!finding.language.empty()) {
      item["language"] = finding.language;
    }
    if (!finding.related.empty()) {
      item["related"] = nlohmann::ordered_json::array();
      for (const SourcePlace& place : finding.related) {
        item["related"].push_back(placeJson(place));
      }
    }
    report["findings"].push_back(std::move(item));
  }
  report["summary"] = {{"documents", documents}, {"errors", errors}, {"warnings", warnings}};
  // Invalid UTF-8 in a document's text is replaced rather than refused.
  std::cout << report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

int runCheck(const CheckOptions& options) {
  CheckSettings settings;
  for (const std::string& tag : splitList(options.languages)) {
    settings.languages.push_back(msg::Language(tag.c_str()).toString());
  }
  settings.reference = msg::Language(options.reference.c_str()).toString();
  settings.strict = options.strict;

  const Catalogue catalogue = Catalogue::read(options.files);
  const std::vector<Finding> findings = findFindings(catalogue, settings);
  std::size_t errors = 0;
  for (const Finding& finding : findings) {
    errors += finding.severity == FindingSeverity::error ? 1 : 0;
  }
  const std::size_t warnings = findings.size() - errors;

  if (options.format == OutputFormat::json) {
    writeJson(findings, errors, warnings, options.files.size());
  } else {
    // file:line:column: severity: message [code], the form compilers use and
    // editors and CI problem matchers read; 0 stands for an unknown line or
    // column.
    for (const Finding& finding : findings) {
      std::cout << finding.place.file << ':' << finding.place.line << ':' << finding.place.column
                << ": " << severityName(finding.severity) << ": " << finding.message << " ["
                << finding.code << "]\n";
    }
    std::cerr << "msgtool check: " << options.files.size() << " document(s), "
              << catalogue.byKey().size() << " message(s): " << errors << " error(s), " << warnings
              << " warning(s)\n";
  }
  return errors > 0 ? kExitFindings : kExitClean;
}

Action setUpCheck(CLI::App& command) {
  auto options = std::make_shared<CheckOptions>();
  command
      .add_option("--languages", options->languages,
                  "Languages every message must have, comma-separated (default: every "
                  "language present)")
      ->type_name("LIST");
  command.add_option("--reference", options->reference, "Language the others are compared with")
      ->capture_default_str()
      ->type_name("TAG");
  command.add_flag("--strict", options->strict, "Report missing translations as errors");
  addFormatOption(command, options->format);
  addDocumentsArgument(command, options->files);
  return [options] { return runCheck(*options); };
}

const SubcommandRegistration registration(
    {"check", "Find faults in a catalogue: placeholders, duplicates, missing translations, ...",
     "Reads the documents as the loader does and reports what it would settle\n"
     "silently or what breaks a translation at run time, one finding a line as\n"
     "file:line:column: severity: message [code]. Every finding code is explained\n"
     "in docs/msgtool.md.\n",
     "msgtool check app-en.xml app-de.xml\n"
     "msgtool check --languages de,fr --strict --format json app-*.xml\n",
     "0  no errors (warnings may have been found)\n"
     "1  errors found\n"
     "2  usage or input error\n",
     setUpCheck});

}  // namespace

}  // namespace msgtool
