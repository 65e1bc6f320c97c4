// Subcommand: how a subcommand of msgtool joins the command line.
//
// Each subcommand lives in its own file and registers itself there with a
// static SubcommandRegistration; the tool (Tool.cpp) knows none of them by
// name. A registration names the subcommand, says what it does (one line for
// the tool's --help, a few more for its own), gives an example and the
// meaning of its exit codes, and supplies a setup function. The tool makes
// the CLI11 subcommand, hands it to the setup function, which declares the
// options and returns the action to run when the user picked this
// subcommand.
//
//   namespace {
//   msgtool::Action setUp(CLI::App& command) {
//     auto options = std::make_shared<Options>();
//     command.add_option("FILE", options->files, "...")->required();
//     return [options] { return run(*options); };
//   }
//   const msgtool::SubcommandRegistration registration({
//       "stats", "Count translated and missing messages per language",
//       "For each language, how many messages ...\n",
//       "msgtool stats app-en.xml app-de.xml\n",
//       "0  counted\n2  usage or input error\n",
//       setUp});
//   }  // namespace

#ifndef MSGTOOL_SUBCOMMAND_H_
#define MSGTOOL_SUBCOMMAND_H_

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace msgtool {

// The exit codes scripts rely on.
enum ExitCode : int {
  kExitClean = 0,     // nothing found, or nothing to find
  kExitFindings = 1,  // findings at error level
  kExitFailure = 2,   // wrong usage, or an input or output that failed
};

// Runs the chosen subcommand once its options are parsed; returns its exit
// code. May raise ToolError (see ToolError.h) for exit code 2.
using Action = std::function<int()>;

// Declares the options of `command` and returns what to run.
using SetUp = std::function<Action(CLI::App& command)>;

// What the tool knows of a subcommand. The texts are the subcommand's
// help: lines end in "\n" and stay within 80 columns.
struct SubcommandInfo {
  std::string name;
  std::string summary;    // one line without "\n", for the tool's --help
  std::string details;    // what it does beyond the summary, a few lines
  std::string examples;   // command lines a user would type, one a line
  std::string exitCodes;  // "0  meaning", one code a line
  SetUp setUp;
  // True if the subcommand sees where the first "--" after its name stood
  // (see kEndOfOptionsMark), for one whose words change meaning there.
  // Otherwise "--" is left to the command-line parser.
  bool seesEndOfOptions = false;
};

// A subcommand that sees the end of options gets "--" and every word after
// it with this character in front, so that the command-line parser takes
// them all as plain words, "-5" too. No one types it.
inline constexpr char kEndOfOptionsMark = '\x1f';

// Adds a subcommand to the tool while the program starts. Make one static
// object per subcommand, in the subcommand's own file.
class SubcommandRegistration {
 public:
  explicit SubcommandRegistration(SubcommandInfo info);
};

// Every registered subcommand, sorted by name (registration order across
// files is not defined, and --help should not depend on the link order).
std::vector<SubcommandInfo> registeredSubcommands();

}  // namespace msgtool

#endif  // MSGTOOL_SUBCOMMAND_H_
