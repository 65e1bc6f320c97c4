// Where an element starts in its file, kept on the element itself.

#ifndef MSG_XML_ACCESS_SOURCEPOSITION_H_
#define MSG_XML_ACCESS_SOURCEPOSITION_H_

#include <cstdint>

#include <xercesc/dom/DOMNode.hpp>

namespace XercesXML {

struct SourcePosition {
  std::uint64_t line = 0;    // 1-based; 0 when not known
  std::uint64_t column = 0;  // 1-based; 0 when not known
};

// Stores `position` as the user data of `element`. The position travels in
// the data pointer itself, so nothing is allocated and nothing needs to be
// freed with the document: the upper half of its bits holds the line, the
// lower half the column, each saturating at the largest value it can hold.
void storeSourcePosition(xercesc::DOMNode* element, std::uint64_t line, std::uint64_t column);

// The position stored on `node`, or zeros.
SourcePosition readSourcePosition(const xercesc::DOMNode* node);

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_SOURCEPOSITION_H_
