// ManualPage: msgtool(1), written in man(7) markup from the same
// definitions as --help.
//
// Nothing on the page is written twice: the subcommands, their options,
// value names, descriptions and defaults come from the built CLI::App; what
// each subcommand does, its examples and exit codes from its registration
// (Subcommand.h); the finding codes from FindingCodes.h. `msgtool
// --generate man` prints it, and the build writes it to msgtool.1.

#ifndef MSGTOOL_MANUALPAGE_H_
#define MSGTOOL_MANUALPAGE_H_

#include <string>
#include <vector>

#include "Subcommand.h"

namespace CLI {
class App;
}

namespace msgtool {

// The page for the tool's command line `tool`, whose subcommands are
// `subcommands` (matched by name; one the App lacks is left out). Returns
// the page's source text.
std::string manualPage(const CLI::App& tool, const std::vector<SubcommandInfo>& subcommands);

// `text` as plain text on a page: backslashes and minus signs escaped, and
// a line that would start with "." or "'" (a request) kept as text.
std::string roffText(const std::string& text);

}  // namespace msgtool

#endif  // MSGTOOL_MANUALPAGE_H_
