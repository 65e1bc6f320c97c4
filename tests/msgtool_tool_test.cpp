// The tool's command line, run in this process: its --help is written from
// the subcommand registrations, every subcommand teaches its own use, and
// the examples it shows are command lines the tool accepts.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include "CommandSupport.h"
#include "Subcommand.h"
#include "Tool.h"
#include "msg/version.h"
#include "tests/msgtool_run.h"

namespace {

using test_support::runMsgtool;
using test_support::ToolRun;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

using msgtool::linesOf;

TEST(ToolTest, HelpListsEverySubcommandWhoseOwnHelpTeachesWhatItDoesExamplesAndExitCodes) {
  const std::vector<msgtool::SubcommandInfo> subcommands = msgtool::registeredSubcommands();
  ASSERT_FALSE(subcommands.empty());
  const ToolRun overview = runMsgtool({"--help"});
  EXPECT_EQ(overview.code, msgtool::kExitClean);
  EXPECT_EQ(overview.err, "");
  const std::vector<std::string> listing = linesOf(overview.out);
  for (const msgtool::SubcommandInfo& info : subcommands) {
    SCOPED_TRACE(info.name);
    // "  name    summary": the name as a word, then its one-line summary; the
    // details belong to the subcommand's own --help.
    EXPECT_TRUE(std::any_of(listing.begin(), listing.end(), [&](const std::string& line) {
      return line.rfind("  " + info.name + " ", 0) == 0 &&
             line.find(info.summary) != std::string::npos;
    })) << overview.out;
    EXPECT_EQ(overview.out.find(info.details), std::string::npos);

    ASSERT_EQ(info.summary.find('\n'), std::string::npos);
    ASSERT_FALSE(info.details.empty());
    const ToolRun help = runMsgtool({info.name.c_str(), "--help"});
    EXPECT_EQ(help.code, msgtool::kExitClean);
    for (const std::string* part : {&info.summary, &info.details}) {
      for (const std::string& line : linesOf(*part)) {
        EXPECT_THAT(help.out, HasSubstr(line));
        EXPECT_LE(line.size(), 80u) << line;
      }
    }
    EXPECT_THAT(help.out, HasSubstr("Usage: msgtool " + info.name));

    const std::vector<std::string> examples = linesOf(info.examples);
    ASSERT_FALSE(examples.empty());
    EXPECT_THAT(help.out, HasSubstr("Examples:\n  " + examples.front() + "\n"));
    for (const std::string& example : examples) {
      // An example that the tool would refuse teaches the wrong thing.
      const std::string prefix = "msgtool " + info.name + " ";
      ASSERT_EQ(example.rfind(prefix, 0), 0u) << example;
      msgtool::Tool tool;
      EXPECT_NO_THROW(tool.parseOnly(example.substr(8))) << example;
    }

    const std::vector<std::string> codes = linesOf(info.exitCodes);
    ASSERT_FALSE(codes.empty());
    EXPECT_THAT(help.out, HasSubstr("Exit codes:\n  " + codes.front() + "\n"));
    EXPECT_THAT(codes, Each(MatchesRegex("[0-2] ..+")));
  }
}

TEST(ToolTest, UsageErrorsEndWithExitCodeTwoAndVersionWithZero) {
  const ToolRun unknownOption = runMsgtool({"check", "--no-such-option", "x.xml"});
  EXPECT_EQ(unknownOption.code, msgtool::kExitFailure);
  EXPECT_THAT(unknownOption.err, HasSubstr("--no-such-option"));
  EXPECT_EQ(unknownOption.out, "");

  const ToolRun unknownSubcommand = runMsgtool({"frobnicate"});
  EXPECT_EQ(unknownSubcommand.code, msgtool::kExitFailure);
  EXPECT_THAT(unknownSubcommand.err, HasSubstr("--help"));

  EXPECT_EQ(runMsgtool({}).code, msgtool::kExitFailure);  // a subcommand is required

  const ToolRun version = runMsgtool({"--version"});
  EXPECT_EQ(version.code, msgtool::kExitClean);
  EXPECT_EQ(version.out, std::string("msgtool ") + MSG_VERSION_STRING + "\n");
}

}  // namespace
