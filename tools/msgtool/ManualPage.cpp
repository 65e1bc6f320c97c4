#include "ManualPage.h"

#include <CLI/CLI.hpp>

#include <sstream>

#include "CommandLineWalk.h"
#include "CommandSupport.h"
#include "FindingCodes.h"
#include "msg/version.h"

namespace msgtool {

namespace {

std::string bold(const std::string& text) {
  return "\\fB" + roffText(text) + "\\fR";
}

std::string italic(const std::string& text) {
  return "\\fI" + roffText(text) + "\\fR";
}

std::string joined(const std::vector<std::string>& items, const std::string& separator) {
  std::string out;
  for (const std::string& item : items) {
    out += (out.empty() ? "" : separator) + item;
  }
  return out;
}

// "FILE...", "IN", "ARGUMENTS... [--] ...", as the help shows them.
std::string positionalUsage(const CLI::Option& option) {
  std::string usage = italic(option.get_single_name());
  const std::string& more = option.get_option_text();
  if (more.empty()) {
    return usage + (option.get_expected_max() > 1 ? "..." : "");
  }
  return usage + roffText(more.rfind("...", 0) == 0 ? more : " " + more);
}

// "\fB-o\fR, \fB--output\fR \fITEXT\fR" for a named option, the usage for a
// positional one.
std::string optionUsage(const CLI::Option& option, bool firstNameOnly) {
  if (!option.nonpositional()) {
    return positionalUsage(option);
  }
  std::vector<std::string> names;
  for (const std::string& name : namesOf(option)) {
    names.push_back(bold(name));
  }
  if (firstNameOnly) {
    names.resize(1);
  }
  const std::string value = valueNameOf(option);
  return joined(names, ", ") + (value.empty() ? "" : " " + italic(value));
}

// Plain lines fill a paragraph; lines indented by two spaces are a sample,
// set apart and kept as written; an empty line starts a new paragraph.
void writeText(std::ostream& out, const std::string& text) {
  bool inSample = false;
  for (const std::string& line : linesOf(text)) {
    const bool sample = line.rfind("  ", 0) == 0;
    if (sample != inSample || line.empty()) {
      out << (inSample ? ".fi\n.RE\n" : "") << (line.empty() ? ".PP\n" : "")
          << (sample ? ".RS 4\n.nf\n" : "");
      inSample = sample;
    }
    if (!line.empty()) {
      out << roffText(sample ? line.substr(2) : line) << '\n';
    }
  }
  out << (inSample ? ".fi\n.RE\n" : "");
}

void writeOptions(std::ostream& out, const CLI::App& app) {
  for (const CLI::Option* option : optionsOf(app)) {
    out << ".TP\n" << optionUsage(*option, false) << '\n';
    std::string description = option->get_description();
    if (!option->get_default_str().empty()) {
      description += " (default: " + option->get_default_str() + ")";
    }
    writeText(out, description + '\n');
  }
}

// "msgtool check [OPTION]... FILE..." with the options it cannot do
// without.
std::string synopsisOf(const std::string& tool, const CLI::App& command) {
  std::string line = bold(tool + ' ' + command.get_name()) + " [" + italic("OPTION") + "]...";
  for (const CLI::Option* option : optionsOf(command)) {
    if (option->nonpositional() && option->get_required()) {
      line += ' ' + optionUsage(*option, true);
    }
  }
  for (const CLI::Option* option : optionsOf(command)) {
    if (!option->nonpositional()) {
      const std::string usage = positionalUsage(*option);
      line += ' ' + (option->get_required() ? usage : '[' + usage + ']');
    }
  }
  return line;
}

std::string sentence(const std::string& text) {
  return text.empty() || text.back() == '.' ? text : text + '.';
}

void writeHeading(std::ostream& out, const CLI::App& tool) {
  const std::string& name = tool.get_name();
  const std::vector<std::string> description = linesOf(tool.get_description());
  std::string title = description.empty() ? name : description.front();
  if (title.rfind(name + ": ", 0) == 0) {
    title.erase(0, name.size() + 2);
  }
  if (!title.empty() && title.back() == '.') {
    title.pop_back();
  }
  std::string upper = name;
  for (char& c : upper) {
    c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  }
  out << ".TH " << upper << " 1 \"\" \"" << name << ' ' << MSG_VERSION_STRING
      << "\" \"User Commands\"\n"
      // Option names and file names read better unbroken, and a ragged
      // right edge keeps the synopsis from being stretched.
      << ".nh\n.ad l\n"
      << ".SH NAME\n"
      << roffText(name + " - " + title) << '\n';
}

}  // namespace

std::string roffText(const std::string& text) {
  std::string out;
  bool lineStart = true;
  for (const char c : text) {
    if (lineStart && (c == '.' || c == '\'')) {
      out += "\\&";
    }
    out += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    lineStart = c == '\n';
  }
  return out;
}

namespace {

// Each subcommand's information beside its parser, in the order of the
// information.
using Commands = std::vector<std::pair<const SubcommandInfo*, const CLI::App*>>;

void writeSynopsis(std::ostream& out, const CLI::App& tool, const Commands& commands) {
  const std::string& name = tool.get_name();
  out << ".SH SYNOPSIS\n" << bold(name);
  for (const CLI::Option* option : optionsOf(tool)) {
    out << " [" << optionUsage(*option, true) << ']';
  }
  out << '\n';
  for (const auto& command : commands) {
    out << ".br\n" << synopsisOf(name, *command.second) << '\n';
  }
}

void writeExitStatus(std::ostream& out, const std::string& name, const Commands& commands) {
  out << ".SH EXIT STATUS\n";
  for (const auto& command : commands) {
    out << ".SS " << bold(name + ' ' + command.first->name) << '\n';
    for (const std::string& line : linesOf(command.first->exitCodes)) {
      const std::size_t space = line.find(' ');
      const std::size_t meaning = line.find_first_not_of(' ', space);
      out << ".TP\n"
          << bold(line.substr(0, space)) << '\n'
          << roffText(meaning == std::string::npos ? "" : line.substr(meaning)) << '\n';
    }
  }
}

void writeFindings(std::ostream& out, const std::string& name) {
  out << ".SH FINDINGS\n"
      << "Each finding of " << bold(name + " check") << " names one of these codes, with its "
      << "severity; a code never changes meaning.\n";
  for (const FindingCode& finding : findingCodes()) {
    out << ".TP\n"
        << bold(finding.code) << " (" << roffText(finding.severity) << ")\n"
        << roffText(sentence(finding.meaning)) << '\n';
  }
}

}  // namespace

std::string manualPage(const CLI::App& tool, const std::vector<SubcommandInfo>& subcommands) {
  const std::string& name = tool.get_name();
  Commands commands;
  for (const SubcommandInfo& info : subcommands) {
    for (const CLI::App* command : subcommandsOf(tool)) {
      if (command->get_name() == info.name) {
        commands.emplace_back(&info, command);
      }
    }
  }

  std::ostringstream out;
  writeHeading(out, tool);
  writeSynopsis(out, tool, commands);

  out << ".SH DESCRIPTION\n";
  const std::string description = tool.get_description();
  writeText(out, description.substr(description.find('\n') + 1));
  out << ".PP\nEach subcommand takes the options listed with it below; " << bold(name) << ' '
      << italic("SUBCOMMAND") << ' ' << bold("--help") << " prints them too.\n";

  out << ".SH OPTIONS\n";
  writeOptions(out, tool);

  out << ".SH COMMANDS\n";
  for (const auto& command : commands) {
    out << ".SS " << bold(name + ' ' + command.first->name) << '\n';
    writeText(out, sentence(command.first->summary) + "\n\n" + command.first->details);
    writeOptions(out, *command.second);
  }

  writeExitStatus(out, name, commands);
  writeFindings(out, name);

  out << ".SH EXAMPLES\n";
  for (const auto& command : commands) {
    out << ".PP\n.RS 4\n.nf\n" << roffText(command.first->examples) << ".fi\n.RE\n";
  }

  out << ".SH SEE ALSO\n"
      << "The guide docs/msgtool.md in the msg sources explains each finding code with an "
         "example and its fix.\n";
  return out.str();
}

}  // namespace msgtool
