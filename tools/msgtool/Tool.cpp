#include "Tool.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <new>
#include <sstream>

#include "BashCompletion.h"
#include "ManualPage.h"
#include "ToolError.h"
#include "msg/version.h"

namespace msgtool {

namespace {

// Lists each subcommand by the first line of its description only: the
// rest is for the subcommand's own --help.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_subcommand(const CLI::App* sub) const override {
    const std::string& description = sub->get_description();
    std::ostringstream out;
    CLI::detail::format_help(out, sub->get_name(), description.substr(0, description.find('\n')),
                             get_column_width());
    return out.str();
  }
};

// `text` with every line indented by two spaces.
std::string indented(const std::string& text) {
  std::string out;
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    out += (line.empty() ? "" : "  ") + line + '\n';
  }
  return out;
}

std::string footerOf(const SubcommandInfo& info) {
  std::string footer = "Examples:\n" + indented(info.examples) + "\nExit codes:\n";
  footer += indented(info.exitCodes);
  footer.pop_back();  // CLI11 ends the help with a newline of its own
  return footer;
}

// Writes the one line that says why the exception in flight ended the run;
// returns the exit code for it.
// REQUIRES: called from a catch block.
int reportFailure() {
  try {
    throw;
  } catch (const ToolError& error) {
    std::cerr << "msgtool: error: " << error.what() << '\n';
  } catch (const std::bad_alloc&) {
    std::cerr << "msgtool: error: out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << "msgtool: error: " << error.what() << '\n';
  } catch (...) {
    std::cerr << "msgtool: error: the library raised an unexpected exception\n";
  }
  return kExitFailure;
}

}  // namespace

Tool::Tool()
    : app(std::make_unique<CLI::App>(
          "msgtool: the command-line companion of an msg catalogue.\n"
          "Several message documents form one catalogue; keys are compared across them.\n",
          "msgtool")) {
  app->formatter(std::make_shared<HelpFormatter>());
  app->set_version_flag("--version", std::string("msgtool ") + MSG_VERSION_STRING);
  // Like --version, it ends the parse before a subcommand is asked for.
  app->add_option_function<std::string>(
         "--generate",
         [this](const std::string& kind) {
           generated = kind;
           throw CLI::Success();
         },
         "Print the manual page or the bash completion script and exit")
      ->check(CLI::IsMember({"man", "complete-bash"}))
      ->option_text("man|complete-bash");
  app->require_subcommand(1);
  app->fallthrough(false);
  app->footer(
      "Run 'msgtool SUBCOMMAND --help' for what a subcommand does, with examples.\n"
      "Exit codes: 0 clean, 1 findings at error level, 2 usage or input error.\n"
      "The manual is docs/msgtool.md.");
  for (const SubcommandInfo& info : registeredSubcommands()) {
    CLI::App* command = app->add_subcommand(info.name, info.summary + "\n\n" + info.details);
    command->footer(footerOf(info));
    commands.push_back(Chosen{command, info.setUp(*command)});
    if (info.seesEndOfOptions) {
      marksEndOfOptions.insert(info.name);
    }
  }
}

Tool::~Tool() = default;

std::string Tool::generate(const std::string& kind) const {
  return kind == "man" ? manualPage(*app, registeredSubcommands()) : bashCompletion(*app);
}

std::vector<std::string> Tool::wordsFor(std::vector<std::string> words) const {
  // The main command takes only flags, so its first other word names the
  // subcommand.
  const auto name = std::find_if(words.begin(), words.end(),
                                 [](const std::string& word) { return word.rfind('-', 0) != 0; });
  if (name != words.end() && marksEndOfOptions.count(*name) != 0) {
    for (auto word = std::find(name + 1, words.end(), std::string("--")); word != words.end();
         ++word) {
      word->insert(word->begin(), kEndOfOptionsMark);
    }
  }
  std::reverse(words.begin(), words.end());  // CLI11 takes them last first
  return words;
}

void Tool::parseOnly(const std::string& commandLine) {
  app->parse(wordsFor(CLI::detail::split_up(commandLine)));
}

int Tool::run(int argc, const char* const* argv) {
  try {
    app->parse(wordsFor(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc)));
  } catch (const CLI::ParseError& error) {
    if (!generated.empty()) {
      std::cout << generate(generated);
      return kExitClean;
    }
    // --help and --version end here too, with exit code 0.
    const int code = app->exit(error);
    return code == 0 ? kExitClean : kExitFailure;
  }

  try {
    for (const Chosen& chosen : commands) {
      if (chosen.command->parsed()) {
        return chosen.action();
      }
    }
  } catch (...) {
    return reportFailure();
  }
  return kExitFailure;
}

int runTool(int argc, const char* const* argv) {
  // Building the command line allocates too; nothing may escape main.
  try {
    return Tool().run(argc, argv);
  } catch (...) {
    return reportFailure();
  }
}

}  // namespace msgtool
