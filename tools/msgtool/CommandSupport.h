// CommandSupport: small pieces that several subcommands share.

#ifndef MSGTOOL_COMMANDSUPPORT_H_
#define MSGTOOL_COMMANDSUPPORT_H_

#include <string>
#include <vector>

#include "Catalogue.h"

namespace CLI {
class App;
}

namespace msgtool {

enum class OutputFormat { text, json };

// Adds "--format text|json" to `command`, defaulting to text.
void addFormatOption(CLI::App& command, OutputFormat& format);

// Adds the positional FILE... argument: one or more message documents.
void addDocumentsArgument(CLI::App& command, std::vector<std::string>& files);

// "en,de, fr" as {"en", "de", "fr"}; empty items are dropped.
std::vector<std::string> splitList(const std::string& list);

// The lines of `text`, without their line ends; a last line without one
// counts too.
std::vector<std::string> linesOf(const std::string& text);

// "file:line:column", leaving out what is not known.
std::string describePlace(const SourcePlace& place);

// Reads the catalogue for a subcommand that needs every document loaded:
// prints the problems of each refused document on standard error and
// raises ToolError if there was one.
Catalogue readWholeCatalogue(const std::vector<std::string>& files);

}  // namespace msgtool

#endif  // MSGTOOL_COMMANDSUPPORT_H_
