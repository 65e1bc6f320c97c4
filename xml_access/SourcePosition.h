// Where an element starts, in the document's own file or in a part.

#ifndef MSG_XML_ACCESS_SOURCEPOSITION_H_
#define MSG_XML_ACCESS_SOURCEPOSITION_H_

#include <cstdint>

namespace XercesXML {

struct SourcePosition {
  std::uint32_t line = 0;    // 1-based; 0 when not known
  std::uint32_t column = 0;  // 1-based; 0 when not known
  std::uint32_t file = 0;    // 0: the document's own file; else the number of
                             // an included part in its PositionTable
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_SOURCEPOSITION_H_
