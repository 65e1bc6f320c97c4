// Tool: msgtool's command line, put together from the registered
// subcommands (see Subcommand.h).
//
// main() only hands its arguments to runTool(); tests build a Tool of their
// own to run the tool in this process, or to parse a command line without
// running it. The tool's --help and each subcommand's --help are written
// from the registrations, so a new subcommand is listed and explained there
// without touching this file.

#ifndef MSGTOOL_TOOL_H_
#define MSGTOOL_TOOL_H_

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Subcommand.h"

namespace CLI {
class App;
}

namespace msgtool {

class Tool {
 public:
  // Builds the command line with every registered subcommand.
  Tool();
  ~Tool();
  Tool(const Tool&) = delete;
  Tool& operator=(const Tool&) = delete;

  // Parses `argv` (argv[0] is the program's name) and runs the chosen
  // subcommand. --help, --version and --generate (the manual page or the
  // bash completion) print to standard output; a usage error or a failure
  // prints "msgtool: error: ..." (or CLI11's message) to standard error.
  // Returns the exit code (see ExitCode); raises nothing. Run it once per
  // Tool.
  int run(int argc, const char* const* argv);

  // Parses `commandLine` (without the program's name) and runs nothing:
  // for checking that a command line is one the tool accepts.
  // Raises CLI::ParseError (CLI::CallForHelp for --help) if it is not.
  void parseOnly(const std::string& commandLine);

  // The command line as built, every subcommand with its options: what the
  // manual page and the completion are written from. Owned by the Tool.
  const CLI::App& commandLine() const { return *app; }

  // What --generate KIND prints: "man" gives the manual page, in man(7)
  // markup, "complete-bash" the bash completion script.
  // REQUIRES: `kind` is one of the two.
  std::string generate(const std::string& kind) const;

 private:
  struct Chosen {
    CLI::App* command;  // owned by app
    Action action;
  };

  // The command line's `words` (without the program's name) in the order
  // CLI11 takes them, with the end of options marked for a subcommand that
  // sees it.
  std::vector<std::string> wordsFor(std::vector<std::string> words) const;

  std::unique_ptr<CLI::App> app;
  std::vector<Chosen> commands;
  std::set<std::string> marksEndOfOptions;  // subcommands that see "--"
  std::string generated;                    // the KIND of --generate, if given
};

// What main() does: Tool().run(argc, argv).
int runTool(int argc, const char* const* argv);

}  // namespace msgtool

#endif  // MSGTOOL_TOOL_H_
