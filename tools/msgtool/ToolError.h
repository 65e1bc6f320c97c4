// ToolError: a failure that ends msgtool with exit code 2, such as a file
// that cannot be read or an option value that makes no sense. The message is
// one line that says what went wrong and, where it helps, what to do.

#ifndef MSGTOOL_TOOLERROR_H_
#define MSGTOOL_TOOLERROR_H_

#include <stdexcept>
#include <string>

namespace msgtool {

class ToolError : public std::runtime_error {
 public:
  explicit ToolError(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace msgtool

#endif  // MSGTOOL_TOOLERROR_H_
