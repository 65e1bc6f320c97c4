// CommandLineWalk: msgtool's command line read back from CLI11, for the
// texts written from it (the manual page, the bash completion).
//
// The options are declared once, where each subcommand sets itself up;
// everything that describes them to a user reads them from the built
// CLI::App through these functions, so a change there shows everywhere.

#ifndef MSGTOOL_COMMANDLINEWALK_H_
#define MSGTOOL_COMMANDLINEWALK_H_

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace msgtool {

// The subcommands of `app` in the order they were added (the tool adds
// them sorted by name). The App keeps ownership.
std::vector<const CLI::App*> subcommandsOf(const CLI::App& app);

// The options of `app`, named ones and positional arguments alike, in the
// order they were declared. The App keeps ownership.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app);

// What a user types for a named option: "-o", "--output"; empty for a
// positional argument.
std::vector<std::string> namesOf(const CLI::Option& option);

// True if the option is followed by a value ("--format po"), false for a
// flag.
bool takesValue(const CLI::Option& option);

// The words a value must be one of, for an option that shows them as
// "po|xliff|xliff2" in the help; empty if any value goes.
std::vector<std::string> choicesOf(const CLI::Option& option);

// How the help shows the option's value: "po|xliff|xliff2", "LIST", "TEXT";
// empty for a flag.
std::string valueNameOf(const CLI::Option& option);

}  // namespace msgtool

#endif  // MSGTOOL_COMMANDLINEWALK_H_
