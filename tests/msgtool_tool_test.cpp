// The tool's command line, run in this process: its --help is written from
// the subcommand registrations, every subcommand teaches its own use, and
// the examples it shows are command lines the tool accepts.

#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

#include <sstream>
#include <string>
#include <vector>

#include "Subcommand.h"
#include "Tool.h"
#include "msg/version.h"

namespace {

struct Outcome {
  int exitCode;
  std::string out;
  std::string err;
};

Outcome runInProcess(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "msgtool");
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int code = msgtool::runTool(static_cast<int>(arguments.size()), arguments.data());
  std::string out = testing::internal::GetCapturedStdout();
  return Outcome{code, out, testing::internal::GetCapturedStderr()};
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

TEST(ToolTest, HelpListsEveryRegisteredSubcommandWithItsSummary) {
  const std::vector<msgtool::SubcommandInfo> subcommands = msgtool::registeredSubcommands();
  ASSERT_FALSE(subcommands.empty());
  const Outcome help = runInProcess({"--help"});
  EXPECT_EQ(help.exitCode, msgtool::kExitClean);
  EXPECT_EQ(help.err, "");
  const std::vector<std::string> lines = linesOf(help.out);
  for (const msgtool::SubcommandInfo& info : subcommands) {
    bool listed = false;
    for (const std::string& line : lines) {
      // "  name    summary": the name as a word, then its one-line summary.
      listed = listed || (line.rfind("  " + info.name + " ", 0) == 0 &&
                          line.find(info.summary) != std::string::npos);
    }
    EXPECT_TRUE(listed) << info.name << " is not listed in\n" << help.out;
    // Only the summary: the details belong to the subcommand's own --help.
    EXPECT_EQ(help.out.find(info.details), std::string::npos) << info.name;
  }
}

TEST(ToolTest, EachSubcommandHelpTeachesWhatItDoesExamplesAndExitCodes) {
  for (const msgtool::SubcommandInfo& info : msgtool::registeredSubcommands()) {
    SCOPED_TRACE(info.name);
    ASSERT_EQ(info.summary.find('\n'), std::string::npos);
    ASSERT_FALSE(info.details.empty());
    const Outcome help = runInProcess({info.name.c_str(), "--help"});
    EXPECT_EQ(help.exitCode, msgtool::kExitClean);
    for (const std::string* part : {&info.summary, &info.details}) {
      for (const std::string& line : linesOf(*part)) {
        EXPECT_NE(help.out.find(line), std::string::npos) << line;
        EXPECT_LE(line.size(), 80u) << line;
      }
    }
    EXPECT_NE(help.out.find("Usage: msgtool " + info.name), std::string::npos) << help.out;

    const std::vector<std::string> examples = linesOf(info.examples);
    ASSERT_FALSE(examples.empty());
    EXPECT_NE(help.out.find("Examples:\n  " + examples.front() + "\n"), std::string::npos)
        << help.out;
    for (const std::string& example : examples) {
      // An example that the tool would refuse teaches the wrong thing.
      const std::string prefix = "msgtool " + info.name + " ";
      ASSERT_EQ(example.rfind(prefix, 0), 0u) << example;
      msgtool::Tool tool;
      EXPECT_NO_THROW(tool.parseOnly(example.substr(8))) << example;
    }

    const std::vector<std::string> codes = linesOf(info.exitCodes);
    ASSERT_FALSE(codes.empty());
    EXPECT_NE(help.out.find("Exit codes:\n  " + codes.front() + "\n"), std::string::npos);
    for (const std::string& code : codes) {
      EXPECT_TRUE(code.size() > 3 && code[0] >= '0' && code[0] <= '2' && code[1] == ' ') << code;
    }
  }
}

TEST(ToolTest, UsageErrorsEndWithExitCodeTwoAndVersionWithZero) {
  const Outcome unknownOption = runInProcess({"check", "--no-such-option", "x.xml"});
  EXPECT_EQ(unknownOption.exitCode, msgtool::kExitFailure);
  EXPECT_NE(unknownOption.err.find("--no-such-option"), std::string::npos);
  EXPECT_EQ(unknownOption.out, "");

  const Outcome unknownSubcommand = runInProcess({"frobnicate"});
  EXPECT_EQ(unknownSubcommand.exitCode, msgtool::kExitFailure);
  EXPECT_NE(unknownSubcommand.err.find("--help"), std::string::npos) << unknownSubcommand.err;

  EXPECT_EQ(runInProcess({}).exitCode, msgtool::kExitFailure);  // a subcommand is required

  const Outcome version = runInProcess({"--version"});
  EXPECT_EQ(version.exitCode, msgtool::kExitClean);
  EXPECT_EQ(version.out, std::string("msgtool ") + MSG_VERSION_STRING + "\n");
}

TEST(ToolTest, AFailingSubcommandSaysWhyOnOneLine) {
  const Outcome missing = runInProcess({"stats", "/nonexistent/msgtool/app.xml"});
  EXPECT_EQ(missing.exitCode, msgtool::kExitFailure);
  EXPECT_EQ(missing.out, "");
  EXPECT_EQ(missing.err.rfind("msgtool: error: /nonexistent/msgtool/app.xml: ", 0), 0u)
      << missing.err;
}

}  // namespace
