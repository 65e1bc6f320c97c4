// BashCompletion: a bash completion function for msgtool, written from the
// same definitions as --help.
//
// The script completes the subcommands, each subcommand's options, the
// words of an option with fixed choices ("--format po|xliff|xliff2"), and
// file names everywhere else: positional arguments and option values alike.
// It needs bash 4 and nothing of the bash-completion package, which loads it
// from share/bash-completion/completions/msgtool. `msgtool --generate
// complete-bash` prints it, and the build writes it to
// msgtool.bash-completion.

#ifndef MSGTOOL_BASHCOMPLETION_H_
#define MSGTOOL_BASHCOMPLETION_H_

#include <string>

namespace CLI {
class App;
}

namespace msgtool {

// The script for the tool's command line `tool`; it defines the function
// "_<name>" and registers it with `complete` for the tool's name.
std::string bashCompletion(const CLI::App& tool);

}  // namespace msgtool

#endif  // MSGTOOL_BASHCOMPLETION_H_
