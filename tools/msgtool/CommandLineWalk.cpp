#include "CommandLineWalk.h"

#include <CLI/CLI.hpp>

namespace msgtool {

std::vector<const CLI::App*> subcommandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
  return app.get_options();
}

std::vector<std::string> namesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) {
    names.push_back("-" + name);
  }
  for (const std::string& name : option.get_lnames()) {
    names.push_back("--" + name);
  }
  return names;
}

bool takesValue(const CLI::Option& option) {
  return option.get_type_size() != 0;
}

std::vector<std::string> choicesOf(const CLI::Option& option) {
  const std::string& text = option.get_option_text();
  if (!takesValue(option) || text.find('|') == std::string::npos) {
    return {};
  }
  std::vector<std::string> choices(1);
  for (const char c : text) {
    if (c == '|') {
      choices.emplace_back();
    } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-') {
      choices.back() += c;
    } else {
      return {};  // a pattern such as "... [--] ...", not a list of words
    }
  }
  for (const std::string& choice : choices) {
    if (choice.empty()) {
      return {};
    }
  }
  return choices;
}

std::string valueNameOf(const CLI::Option& option) {
  if (!takesValue(option)) {
    return "";
  }
  if (!option.get_option_text().empty()) {
    return option.get_option_text();
  }
  // CLI11 appends the descriptions of validators after a colon.
  const std::string type = option.get_type_name();
  return type.substr(0, type.find(':'));
}

}  // namespace msgtool
