// ToolError: a failure that ends msgtool with exit code 2, such as a file
// that cannot be read or an option value that makes no sense. The message is
// one line that says what went wrong and, where it helps, what to do.
//
// An error about one file can name it, and the line of the fault, so that
// it reads like a finding of check ("file:line: error: message"). The
// command that reads the file decides how to report it; one that reaches
// main is printed with its message alone.

#ifndef MSGTOOL_TOOLERROR_H_
#define MSGTOOL_TOOLERROR_H_

#include <stdexcept>
#include <string>
#include <utility>

namespace msgtool {

class ToolError : public std::runtime_error {
 public:
  // An error that names no file; `message` says everything.
  explicit ToolError(const std::string& message) : std::runtime_error(message) {}

  // An error in `file` at `line` (0: the whole file).
  ToolError(std::string file, int line, const std::string& message)
      : std::runtime_error(message), file(std::move(file)), line(line) {}

  // The file the error is about; empty if it names none.
  const std::string& getFile() const { return file; }
  bool namesFile() const { return !file.empty(); }
  // The line of the fault; 0 for the whole file or none.
  int getLine() const { return line; }

  // "file:line: error: message" (no line for line 0), as check writes
  // findings; the message alone for an error that names no file.
  std::string describe() const {
    if (file.empty()) {
      return what();
    }
    return file + (line > 0 ? ":" + std::to_string(line) : std::string()) + ": error: " + what();
  }

 private:
  std::string file;
  int line = 0;
};

}  // namespace msgtool

#endif  // MSGTOOL_TOOLERROR_H_
