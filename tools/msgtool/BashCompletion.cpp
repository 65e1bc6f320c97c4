#include "BashCompletion.h"

#include <CLI/CLI.hpp>

#include <sstream>
#include <vector>

#include "CommandLineWalk.h"

namespace msgtool {

namespace {

std::string joined(const std::vector<std::string>& words, const char* separator) {
  std::string out;
  for (const std::string& word : words) {
    out += (out.empty() ? "" : separator) + word;
  }
  return out;
}

// Sets `choices` after an option of `app` with fixed choices, and `options`
// to every option name of `app`.
void writeOptionsOf(std::ostream& out, const CLI::App& app, const char* indent) {
  std::vector<std::string> all;
  std::string arms;
  for (const CLI::Option* option : optionsOf(app)) {
    const std::vector<std::string> names = namesOf(*option);
    all.insert(all.end(), names.begin(), names.end());
    const std::vector<std::string> choices = choicesOf(*option);
    if (!names.empty() && !choices.empty()) {
      arms += std::string(indent) + "  " + joined(names, "|") + ") choices='" +
              joined(choices, " ") + "' ;;\n";
    }
  }
  if (!arms.empty()) {
    out << indent << "case $prev in\n" << arms << indent << "esac\n";
  }
  out << indent << "options='" << joined(all, " ") << "'\n";
}

}  // namespace

std::string bashCompletion(const CLI::App& tool) {
  const std::string& name = tool.get_name();
  std::vector<std::string> names;
  for (const CLI::App* command : subcommandsOf(tool)) {
    names.push_back(command->get_name());
  }

  std::ostringstream out;
  out << "# bash completion for " << name << "; written by `" << name
      << " --generate complete-bash`\n"
      << "# from the tool's own definitions of its command line.\n\n"
      << '_' << name << "() {\n"
      << "  local cur=${COMP_WORDS[COMP_CWORD]} prev= command= ended= i\n"
      << "  ((COMP_CWORD > 0)) && prev=${COMP_WORDS[COMP_CWORD - 1]}\n"
      // bash splits "--format=po" at the "=" into three words.
      << "  if [[ $cur == = ]]; then\n"
      << "    cur=\n"
      << "  elif [[ $prev == = ]] && ((COMP_CWORD > 1)); then\n"
      << "    prev=${COMP_WORDS[COMP_CWORD - 2]}\n"
      << "  fi\n"
      << "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
      << "    case ${COMP_WORDS[i]} in\n"
      << "      --) [[ -n $command ]] && ended=1 ;;\n"
      << "      " << joined(names, "|") << ") [[ -z $command ]] && command=${COMP_WORDS[i]} ;;\n"
      << "    esac\n"
      << "  done\n\n"
      << "  local choices= options=\n"
      << "  case $command in\n"
      << "    '')\n";
  writeOptionsOf(out, tool, "      ");
  out << "      [[ $cur == -* ]] || options='" << joined(names, " ") << "'\n"
      << "      ;;\n";
  for (const CLI::App* command : subcommandsOf(tool)) {
    out << "    " << command->get_name() << ")\n";
    writeOptionsOf(out, *command, "      ");
    out << "      ;;\n";
  }
  out << "  esac\n\n"
      << "  if [[ -n $choices ]]; then\n"
      << "    mapfile -t COMPREPLY < <(compgen -W \"$choices\" -- \"$cur\")\n"
      << "  elif [[ -z $command || ( -z $ended && $cur == -* ) ]]; then\n"
      << "    mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$cur\")\n"
      << "  else\n"
      << "    compopt -o filenames 2>/dev/null\n"
      << "    mapfile -t COMPREPLY < <(compgen -f -- \"$cur\")\n"
      << "  fi\n"
      << "}\n\n"
      << "complete -F _" << name << ' ' << name << '\n';
  return out.str();
}

}  // namespace msgtool
