// msgtool: checks, counts, shows and turns into code the message documents
// of an msg catalogue. See docs/msgtool.md.

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "Subcommand.h"
#include "ToolError.h"

int main(int argc, char** argv) {
  CLI::App app(
      "msgtool: checks, counts, shows and turns into code the message documents of an "
      "msg catalogue.\nSeveral documents form one catalogue; keys are compared across "
      "them.\nExit codes: 0 clean, 1 findings at error level, 2 usage or input error.",
      "msgtool");
  app.set_version_flag("--version", std::string("msgtool ") + MSGTOOL_VERSION);
  app.require_subcommand(1);
  app.fallthrough(false);

  struct Chosen {
    CLI::App* command;
    msgtool::Action action;
  };
  std::vector<Chosen> commands;
  for (const msgtool::SubcommandInfo& info : msgtool::registeredSubcommands()) {
    CLI::App* command = app.add_subcommand(info.name, info.description);
    commands.push_back(Chosen{command, info.setUp(*command)});
  }

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // --help and --version end here too, with exit code 0.
    const int code = app.exit(error);
    return code == 0 ? msgtool::kExitClean : msgtool::kExitFailure;
  }

  try {
    for (const Chosen& chosen : commands) {
      if (chosen.command->parsed()) {
        return chosen.action();
      }
    }
  } catch (const msgtool::ToolError& error) {
    std::cerr << "msgtool: error: " << error.what() << '\n';
  } catch (const std::bad_alloc&) {
    std::cerr << "msgtool: error: out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << "msgtool: error: " << error.what() << '\n';
  } catch (...) {
    std::cerr << "msgtool: error: the library raised an unexpected exception\n";
  }
  return msgtool::kExitFailure;
}
