// Where an element starts in its file.

#ifndef MSG_XML_ACCESS_SOURCEPOSITION_H_
#define MSG_XML_ACCESS_SOURCEPOSITION_H_

#include <cstdint>

namespace XercesXML {

struct SourcePosition {
  std::uint32_t line = 0;    // 1-based; 0 when not known
  std::uint32_t column = 0;  // 1-based; 0 when not known
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_SOURCEPOSITION_H_
