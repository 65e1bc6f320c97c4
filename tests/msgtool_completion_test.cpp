// msgtool's bash completion, as bash runs it: the generated script is
// loaded into a real bash, which is handed a command line in COMP_WORDS
// and COMP_CWORD as readline would, and the completions it leaves in
// COMPREPLY are compared with the tool's own command-line definitions.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "CommandLineWalk.h"
#include "CommandSupport.h"
#include "Tool.h"
#include "tests/scratch_folder.h"

namespace {

using Words = std::set<std::string>;

class CompletionTest : public ::testing::Test {
 protected:
  CompletionTest() { script = scratch.write("msgtool.bash", tool.generate("complete-bash")); }

  // What bash completes the last of `words` to, run in the scratch folder.
  Words complete(const std::vector<std::string>& words) const {
    std::string command = "cd '" + scratch.path().string() +
                          "' && bash --norc -c 'source \"$1\" && shift && COMP_WORDS=(\"$@\") && "
                          "COMP_CWORD=$(($# - 1)) && _msgtool && printf \"%s\\n\" "
                          "\"${COMPREPLY[@]}\"' bash '" +
                          script + "'";
    for (const std::string& word : words) {
      command += " '" + word + "'";
    }
    FILE* bash = popen(command.c_str(), "r");
    std::string out;
    char buffer[256];
    while (bash != nullptr && std::fgets(buffer, sizeof buffer, bash) != nullptr) {
      out += buffer;
    }
    EXPECT_EQ(bash != nullptr ? pclose(bash) : -1, 0) << command;
    const std::vector<std::string> lines = msgtool::linesOf(out);
    Words completions(lines.begin(), lines.end());
    completions.erase("");  // printf's line for an empty COMPREPLY
    return completions;
  }

  // The names of `app`'s options that start with `prefix`.
  static Words optionNames(const CLI::App& app, const std::string& prefix) {
    Words names;
    for (const CLI::Option* option : msgtool::optionsOf(app)) {
      for (const std::string& name : msgtool::namesOf(*option)) {
        if (name.rfind(prefix, 0) == 0) {
          names.insert(name);
        }
      }
    }
    return names;
  }

  msgtool::Tool tool;
  test_support::ScratchFolder scratch;
  std::string script;
};

TEST_F(CompletionTest, CompletesTheSubcommandsAndTheToolsOwnOptions) {
  Words subcommands;
  for (const CLI::App* command : msgtool::subcommandsOf(tool.commandLine())) {
    subcommands.insert(command->get_name());
  }
  ASSERT_FALSE(subcommands.empty());
  EXPECT_EQ(complete({"msgtool", ""}), subcommands);
  EXPECT_EQ(complete({"msgtool", "ex"}), Words({"export"}));
  EXPECT_EQ(complete({"msgtool", "-"}), optionNames(tool.commandLine(), "-"));
  EXPECT_EQ(complete({"msgtool", "--generate", ""}), Words({"man", "complete-bash"}));
}

TEST_F(CompletionTest, CompletesEachSubcommandsOptionsAndOnlyThose) {
  for (const CLI::App* command : msgtool::subcommandsOf(tool.commandLine())) {
    SCOPED_TRACE(command->get_name());
    const Words expected = optionNames(*command, "--");
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(complete({"msgtool", command->get_name(), "--"}), expected);
  }
  // After another option and its value, and with files already named.
  EXPECT_EQ(complete({"msgtool", "import", "--format", "po", "de.po", "--in"}), Words({"--into"}));
}

TEST_F(CompletionTest, CompletesFixedChoicesWithValuesTheToolAccepts) {
  const Words formats = complete({"msgtool", "import", "--format", ""});
  EXPECT_EQ(formats, Words({"po", "xliff", "xliff2"}));
  for (const std::string& format : formats) {
    EXPECT_NO_THROW(tool.parseOnly("import --format " + format + " de.po --into app.xml"))
        << format;
  }
  // bash splits "--format=xl" into "--format", "=" and "xl".
  EXPECT_EQ(complete({"msgtool", "export", "--format", "=", "xl"}), Words({"xliff", "xliff2"}));
  EXPECT_EQ(complete({"msgtool", "check", "--format", "="}), Words({"text", "json"}));
}

TEST_F(CompletionTest, CompletesFilesForArgumentsAndForOptionValuesWithoutChoices) {
  scratch.write("app-en.xml", "");
  scratch.write("app-de.xml", "");
  scratch.write("de.po", "");
  scratch.write("-odd.xml", "");
  EXPECT_EQ(complete({"msgtool", "check", "app-"}), Words({"app-en.xml", "app-de.xml"}));
  EXPECT_EQ(complete({"msgtool", "import", "--format", "po", "d"}), Words({"de.po"}));
  EXPECT_EQ(complete({"msgtool", "import", "de.po", "--into", "app-e"}), Words({"app-en.xml"}));
  // After "--" a word that starts with "-" is a file, not an option.
  EXPECT_EQ(complete({"msgtool", "show", "app-en.xml", "--", "-"}), Words({"-odd.xml"}));
  EXPECT_EQ(complete({"msgtool", "check", "nothing-"}), Words());
}

}  // namespace
