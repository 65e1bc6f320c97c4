// PartPositions: where the elements that XInclude brings in from parts
// start, each counted in its own part.

#ifndef MSG_XML_ACCESS_PARTPOSITIONS_H_
#define MSG_XML_ACCESS_PARTPOSITIONS_H_

#include <map>
#include <string>
#include <vector>

#include <xercesc/dom/DOMNode.hpp>

#include "xml_access/PositionTable.h"
#include "xml_access/SourcePosition.h"

namespace XercesXML {

// The positions of the parts of one parse. XInclude reads a part with a
// parser of its own, so the parse of the document cannot see where the
// part's elements start; ReferenceGuard parses every part once on its own
// before it hands the part out, and records here where that parse found
// each element. Once the includes are expanded, place() finds the part's
// elements in the expanded document and gives them those positions.
//
// An element XInclude brought in is recognised by its xml:base attribute,
// which names the part relative to the file that includes it; the elements
// below it follow the part's own elements in document order. A part of a
// part is an xi:include element in its including part, and is placed in
// the same way. When the elements of a part do not line up with its own
// parse (a fallback took the place of a nested include, for one), that
// part's elements get no position: none is better than a wrong one.
//
// Holds no node: record() copies what it needs. One parse at a time.
class PartPositions {
 public:
  // Records the part at `path` (absolute and lexically normal, as the guard
  // resolves it) from its own parse `part`, in which includes stay
  // elements, and the positions of that parse. A part included twice keeps
  // its first record.
  // REQUIRES: `positions` is sealed and describes `part`.
  void record(const std::string& path, const xercesc::DOMNode* part,
              const PositionTable& positions);

  // Forgets every part.
  void clear() { parts.clear(); }

  // Gives the elements that XInclude brought into `document` from recorded
  // parts their positions in `table`, with the part's file. `document` is
  // the expanded document whose own elements `table` describes (elements
  // without a record there are not the document's own), and `documentName`
  // names it as the caller did: a part's file is named the same way, by
  // the folder of `documentName` and the part's path from there (parts of
  // a message document lie in its folder or below it).
  // REQUIRES: `table` is sealed; it is sealed again on return.
  void place(const xercesc::DOMNode* document, const std::string& documentName,
             PositionTable& table) const;

 private:
  // One element of a part's own parse, in document order. An include of a
  // further part stands for that part's whole expansion.
  struct Element {
    SourcePosition position;
    bool isInclude = false;
  };

  class Placement;

  std::map<std::string, std::vector<Element>> parts;  // by path
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_PARTPOSITIONS_H_
