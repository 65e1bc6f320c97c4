// msgtool's manual page, written from the command line's own definitions:
// it names every subcommand, option, exit code and finding code that the
// tool has (read here from the same definitions, not from a copy), a change
// of a definition changes the page, and text cannot turn into a request.
// That man renders it without warnings is checked on the built page
// (tests/cmake/msgtool_manual.cmake).

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "CommandLineWalk.h"
#include "FindingCodes.h"
#include "Findings.h"
#include "ManualPage.h"
#include "SourceStamp.h"
#include "Subcommand.h"
#include "Tool.h"
#include "tests/msgtool_run.h"
#include "tests/scratch_folder.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const std::string kData = std::string(MSG_TEST_DATA_DIR) + "/msgtool/";

// The page's sections by title (".SH TITLE"), and within one the blocks of
// its ".SS" subsections by heading.
std::map<std::string, std::string> partsOf(const std::string& page, const std::string& request) {
  std::map<std::string, std::string> parts;
  std::string* current = nullptr;
  std::istringstream lines(page);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(request, 0) == 0) {
      current = &parts[line.substr(request.size())];
    } else if (current != nullptr) {
      *current += line + '\n';
    }
  }
  return parts;
}

std::string heading(const std::string& subcommand) {
  return "\\fBmsgtool " + subcommand + "\\fR";
}

class ManualPageTest : public ::testing::Test {
 protected:
  msgtool::Tool tool;
  const std::string page = tool.generate("man");
  std::map<std::string, std::string> sections = partsOf(page, ".SH ");
};

TEST_F(ManualPageTest, HasTheSectionsOfACommandsPageInOrder) {
  EXPECT_EQ(page.rfind(".TH MSGTOOL 1 ", 0), 0u) << page.substr(0, 80);
  std::vector<std::string> titles;
  std::istringstream lines(page);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(".SH ", 0) == 0) {
      titles.push_back(line.substr(4));
    }
  }
  EXPECT_THAT(titles,
              ::testing::ElementsAre("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "COMMANDS",
                                     "EXIT STATUS", "FINDINGS", "EXAMPLES", "SEE ALSO"));
  // whatis and apropos read "name \- summary".
  EXPECT_THAT(sections["NAME"], ::testing::StartsWith("msgtool \\- the command\\-line companion"));
}

TEST_F(ManualPageTest, ExplainsEverySubcommandWithEachOfItsOptions) {
  const std::map<std::string, std::string> commands = partsOf(sections["COMMANDS"], ".SS ");
  const std::vector<const CLI::App*> subcommands = msgtool::subcommandsOf(tool.commandLine());
  ASSERT_FALSE(subcommands.empty());
  EXPECT_EQ(commands.size(), subcommands.size());
  for (const CLI::App* command : subcommands) {
    SCOPED_TRACE(command->get_name());
    ASSERT_EQ(commands.count(heading(command->get_name())), 1u);
    const std::string& block = commands.at(heading(command->get_name()));
    EXPECT_THAT(sections["SYNOPSIS"], HasSubstr(heading(command->get_name()) + " ["));
    const std::vector<const CLI::Option*> options = msgtool::optionsOf(*command);
    ASSERT_FALSE(options.empty());
    for (const CLI::Option* option : options) {
      SCOPED_TRACE(option->get_single_name());
      // Each option is an item of its own: the names, then what it does.
      std::string item = ".TP\n";
      for (const std::string& name : msgtool::namesOf(*option)) {
        item += (item == ".TP\n" ? "" : ", ") + ("\\fB" + msgtool::roffText(name) + "\\fR");
      }
      if (!option->nonpositional()) {
        item += "\\fI" + option->get_single_name() + "\\fR";
      }
      EXPECT_THAT(block, HasSubstr(item));
      EXPECT_THAT(block, HasSubstr(msgtool::roffText(option->get_description())));
      if (!option->get_default_str().empty()) {
        EXPECT_THAT(block, HasSubstr("(default: " + option->get_default_str() + ")"));
      }
    }
  }
  // The tool's own options, --generate among them.
  for (const CLI::Option* option : msgtool::optionsOf(tool.commandLine())) {
    EXPECT_THAT(sections["OPTIONS"], HasSubstr(msgtool::roffText(option->get_description())));
  }
  EXPECT_THAT(sections["OPTIONS"], HasSubstr("\\fB\\-\\-generate\\fR \\fIman|complete\\-bash\\fR"));
}

TEST_F(ManualPageTest, ListsEveryExitCodeAndExampleOfEverySubcommand) {
  const std::map<std::string, std::string> status = partsOf(sections["EXIT STATUS"], ".SS ");
  for (const msgtool::SubcommandInfo& info : msgtool::registeredSubcommands()) {
    SCOPED_TRACE(info.name);
    ASSERT_EQ(status.count(heading(info.name)), 1u);
    std::istringstream codes(info.exitCodes);
    int listed = 0;
    for (std::string line; std::getline(codes, line); ++listed) {
      const std::size_t space = line.find(' ');
      const std::string meaning = line.substr(line.find_first_not_of(' ', space));
      EXPECT_THAT(status.at(heading(info.name)),
                  HasSubstr(".TP\n\\fB" + line.substr(0, space) + "\\fR\n" +
                            msgtool::roffText(meaning) + "\n"));
    }
    EXPECT_GE(listed, 2);  // success and usage error at least
    EXPECT_THAT(sections["EXAMPLES"], HasSubstr(msgtool::roffText(info.examples)));
  }
}

TEST_F(ManualPageTest, ListsEveryFindingCodeWithItsSeverity) {
  for (const msgtool::FindingCode& finding : msgtool::findingCodes()) {
    EXPECT_THAT(sections["FINDINGS"],
                HasSubstr("\\fB" + msgtool::roffText(finding.code) + "\\fR (" +
                          msgtool::roffText(finding.severity) + ")\n"));
  }
}

// The list of codes is the one the rules use: documents with every kind of
// fault planted give findings of every listed code and of no other, each
// with the severity it is listed with.
TEST(FindingCodesTest, TheListedCodesAreTheCodesOfTheRulesWithTheirSeverities) {
  std::map<std::string, std::string> listed;
  for (const msgtool::FindingCode& finding : msgtool::findingCodes()) {
    listed[finding.code] = finding.severity;
  }
  // What the shared documents leave out: a stale translation, a form the
  // rules never choose, texts for many numbers without the count.
  test_support::ScratchFolder scratch;
  test_support::copySchemaInto(scratch.path());
  const std::string stamp = msgtool::SourceStamp::of("en", "&0 file(s)").toString();
  const std::string more = scratch.write(
      "more.xml", test_support::messageDocument(
                      "<MessageNamespace name=\"more\" xmlns:msgtool=\"urn:x-msg:msgtool:1\">\n"
                      "<Message id=\"m\">\n"
                      "<Text xml:lang=\"en\" plural=\"one\">&amp;0 file</Text>\n"
                      "<Text xml:lang=\"en\" plural=\"few\">&amp;0 files</Text>\n"
                      "<Text xml:lang=\"en\">&amp;0 files</Text>\n"
                      "<Text xml:lang=\"pl\" plural=\"one\">&amp;0 plik</Text>\n"
                      "<Text xml:lang=\"pl\" plural=\"few\">pliki</Text>\n"
                      "<Text xml:lang=\"pl\" plural=\"many\">&amp;0 plik\u00f3w</Text>\n"
                      "<Text xml:lang=\"pl\" msgtool:translated-from=\"" +
                      stamp +
                      "\">&amp;0 pliku</Text>\n</Message>\n"
                      "<Message id=\"n\">\n"
                      "<Text xml:lang=\"en\" plural=\"one\">a file</Text>\n"
                      "<Text xml:lang=\"en\">files</Text>\n"
                      "</Message></MessageNamespace>\n"));
  const msgtool::Catalogue catalogue = msgtool::Catalogue::read(
      {kData + "faults-en.xml", kData + "faults-de.xml", kData + "broken.xml",
       kData + "plurals-en.xml", kData + "plurals-pl.xml", more});
  std::set<std::string> found;
  for (const msgtool::Finding& finding :
       msgtool::findFindings(catalogue, msgtool::CheckSettings())) {
    SCOPED_TRACE(finding.code);
    found.insert(finding.code);
    ASSERT_EQ(listed.count(finding.code), 1u);
    // "warning; error with --strict" is a warning unless --strict is given.
    EXPECT_EQ(listed[finding.code].rfind(msgtool::severityName(finding.severity), 0), 0u);
  }
  std::set<std::string> all;
  for (const auto& code : listed) {
    all.insert(code.first);
  }
  EXPECT_EQ(found, all);
  EXPECT_EQ(listed.size(), msgtool::findingCodes().size()) << "a code is listed twice";
}

// The page is a function of the definitions: a generator given another
// command line writes another page, with nothing else to edit.
TEST(ManualPageSourceTest, ADescriptionChangedInTheDefinitionsChangesThePage) {
  CLI::App app("demo: a tool to try the page on.\nIt does little.\n", "demo");
  CLI::App* run = app.add_subcommand("run", "Run it");
  int depth = 0;
  std::string output, file;
  CLI::Option* level = run->add_option("--level", depth, "How far to go")->type_name("N");
  run->add_option("-o,--output", output, "Where to write")->required();
  run->add_option("FILE", file, "What to read")->required();
  const std::vector<msgtool::SubcommandInfo> infos{
      {"run", "Run it", "Runs.\n", "demo run -o x in\n", "0  ran\n2  did not\n", nullptr}};

  const std::string before = msgtool::manualPage(app, infos);
  EXPECT_THAT(before, HasSubstr(".SH NAME\ndemo \\- a tool to try the page on\n"));
  EXPECT_THAT(before, HasSubstr("\\fBdemo run\\fR [\\fIOPTION\\fR]... \\fB\\-o\\fR \\fITEXT\\fR "
                                "\\fIFILE\\fR\n"));
  EXPECT_THAT(before, HasSubstr(".TP\n\\fB\\-\\-level\\fR \\fIN\\fR\nHow far to go\n"));

  level->description("How deep to dig, -1 for no end");
  const std::string after = msgtool::manualPage(app, infos);
  EXPECT_THAT(after, HasSubstr(".TP\n\\fB\\-\\-level\\fR \\fIN\\fR\nHow deep to dig, \\-1 for no "
                               "end\n"));
  EXPECT_THAT(after, Not(HasSubstr("How far to go")));
}

TEST(ManualPageSourceTest, TextCannotBecomeARequestOrAnEscape) {
  EXPECT_EQ(msgtool::roffText(".so /etc/passwd"), "\\&.so /etc/passwd");
  EXPECT_EQ(msgtool::roffText("first\n'br\nthird."), "first\n\\&'br\nthird.");
  EXPECT_EQ(msgtool::roffText("C:\\fB\\-x"), "C:\\efB\\e\\-x");
  EXPECT_EQ(msgtool::roffText("--format=po"), "\\-\\-format=po");

  // A sample in a subcommand's details is kept apart, as written.
  CLI::App app("demo: x.\n", "demo");
  app.add_subcommand("run", "Run it");
  const std::vector<msgtool::SubcommandInfo> infos{
      {"run", "Run it", "Before:\n  .sample -1\nAfter.\n", "", "0  ran\n", nullptr}};
  EXPECT_THAT(msgtool::manualPage(app, infos),
              HasSubstr("Before:\n.RS 4\n.nf\n\\&.sample \\-1\n.fi\n.RE\nAfter.\n"));
}

TEST(GenerateOptionTest, PrintsWhatTheToolGeneratesAndRefusesAnUnknownKind) {
  for (const char* kind : {"man", "complete-bash"}) {
    SCOPED_TRACE(kind);
    const test_support::ToolRun run = test_support::runMsgtool({"--generate", kind});
    EXPECT_EQ(run.code, msgtool::kExitClean);
    EXPECT_EQ(run.out, msgtool::Tool().generate(kind));
  }
  const test_support::ToolRun refused = test_support::runMsgtool({"--generate", "pdf"});
  EXPECT_EQ(refused.code, msgtool::kExitFailure);
  EXPECT_EQ(refused.out, "");
  EXPECT_THAT(refused.err, HasSubstr("--generate"));
}

}  // namespace
