// Runs msgtool in the test's own process, as its main would, and keeps what
// it wrote: for the tests of the tool's subcommands that link its code; and
// the refusals of its readers.

#ifndef MSG_TESTS_MSGTOOL_RUN_H_
#define MSG_TESTS_MSGTOOL_RUN_H_

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Tool.h"
#include "ToolError.h"
#include "catalogue_support.h"

namespace test_support {

struct ToolRun {
  int code;
  std::string out;
  std::string err;
};

// Runs msgtool with `arguments` (without the program's name) in `folder`,
// or in the current folder if `folder` is empty; the current folder is the
// same again on return. Standard output and error are captured.
inline ToolRun runMsgtool(std::vector<const char*> arguments,
                          const std::filesystem::path& folder = {}) {
  arguments.insert(arguments.begin(), "msgtool");
  const std::filesystem::path previous = std::filesystem::current_path();
  if (!folder.empty()) {
    std::filesystem::current_path(folder);
  }
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int code = msgtool::runTool(static_cast<int>(arguments.size()), arguments.data());
  std::string out = testing::internal::GetCapturedStdout();
  std::string err = testing::internal::GetCapturedStderr();
  std::filesystem::current_path(previous);
  return ToolRun{code, std::move(out), std::move(err)};
}

// "file:line: error: message" of the refusal that `read(path)` raises, ""
// if it reads the file.
template <typename Read>
std::string refusalOf(Read read, const std::string& path) {
  try {
    read(path);
  } catch (const msgtool::ToolError& problem) {
    return problem.describe();
  }
  return std::string();
}

}  // namespace test_support

#endif  // MSG_TESTS_MSGTOOL_RUN_H_
