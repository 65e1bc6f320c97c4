#include "OutsideFiles.h"

#include <limits>

#include "BinaryFiles.h"
#include "ToolError.h"
#include "xml_access/OutsideFile.h"

namespace msgtool {

XercesXML::DOMNode readOutsideFile(const std::string& path, std::uintmax_t maxBytes,
                                   bool keepComments) {
  if (looksBinary(headOf(path), true)) {
    throw ToolError(path, 0, "is a binary file, not an XML file");
  }
  try {
    return XercesXML::parseOutsideFile(path, XercesXML::OutsideFileRules{maxBytes, keepComments});
  } catch (const XercesXML::FileRefused& refused) {
    const std::uint64_t line = refused.getProblem().line;
    constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<int>::max());
    throw ToolError(path, static_cast<int>(line > kLargest ? kLargest : line), refused.what());
  }
}

}  // namespace msgtool
