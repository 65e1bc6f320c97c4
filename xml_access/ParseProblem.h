// ParseProblem: one reason a parse failed, with the place it names.

#ifndef MSG_XML_ACCESS_PARSEPROBLEM_H_
#define MSG_XML_ACCESS_PARSEPROBLEM_H_

#include <cstdint>
#include <string>

namespace XercesXML {

// An error the parser reported, a refusal of this layer, or the abort line
// of a failed parse. `file` is the system id of the document or part it
// concerns (empty when none is known); `line` and `column` are 1-based, 0
// when not known. `message` is one line without a line end.
struct ParseProblem {
  std::string file;
  std::uint64_t line = 0;
  std::uint64_t column = 0;
  std::string message;
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_PARSEPROBLEM_H_
