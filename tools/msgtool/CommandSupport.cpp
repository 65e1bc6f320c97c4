#include "CommandSupport.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <map>
#include <sstream>

#include "ToolError.h"

namespace msgtool {

void addFormatOption(CLI::App& command, OutputFormat& format) {
  const std::map<std::string, OutputFormat> formats{{"text", OutputFormat::text},
                                                    {"json", OutputFormat::json}};
  command.add_option("--format", format, "Output format: text (default) or json")
      ->transform(CLI::CheckedTransformer(formats, CLI::ignore_case))
      ->option_text("text|json");
}

void addDocumentsArgument(CLI::App& command, std::vector<std::string>& files) {
  command.add_option("FILE", files, "Message documents that together form the catalogue")
      ->required()
      ->option_text("...");
}

std::vector<std::string> splitList(const std::string& list) {
  std::vector<std::string> items;
  std::string item;
  for (std::size_t i = 0; i <= list.size(); ++i) {
    if (i == list.size() || list[i] == ',') {
      const std::size_t begin = item.find_first_not_of(" \t");
      if (begin != std::string::npos) {
        items.push_back(item.substr(begin, item.find_last_not_of(" \t") - begin + 1));
      }
      item.clear();
    } else {
      item += list[i];
    }
  }
  return items;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::string describePlace(const SourcePlace& place) {
  std::string out = place.file;
  if (place.line > 0) {
    out += ':' + std::to_string(place.line);
    if (place.column > 0) {
      out += ':' + std::to_string(place.column);
    }
  }
  return out;
}

Catalogue readWholeCatalogue(const std::vector<std::string>& files) {
  Catalogue catalogue = Catalogue::read(files);
  if (catalogue.refused().empty()) {
    return catalogue;
  }
  for (const RefusedDocument& document : catalogue.refused()) {
    for (const msg::DocumentProblem& problem : document.problems) {
      const SourcePlace place{problem.file.empty() ? document.file : problem.file, problem.line,
                              problem.column};
      std::cerr << describePlace(place) << ": error: " << problem.message << '\n';
    }
  }
  throw ToolError(std::to_string(catalogue.refused().size()) +
                  " document(s) could not be loaded; `msgtool check` tells more");
}

}  // namespace msgtool
