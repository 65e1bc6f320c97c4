// OutsideFile: the profile for XML files from outside the catalogue, such as
// the exchange files of translators' tools and message documents read as
// written for editing.

#ifndef MSG_XML_ACCESS_OUTSIDEFILE_H_
#define MSG_XML_ACCESS_OUTSIDEFILE_H_

#include <cstdint>
#include <stdexcept>
#include <string>

#include "xml_access/DOMNode.h"
#include "xml_access/ParseProblem.h"

namespace XercesXML {

// What a file read under the profile may be.
struct OutsideFileRules {
  // Files larger than this are refused before they are parsed; the limits
  // of each kind of file are in platform/InputLimits.h.
  std::uintmax_t maxBytes = 0;
  // Keep comment nodes, for a document that is edited and written back.
  bool keepComments = false;
};

// A file that the profile refuses. `problem` names the file as the caller
// gave it, the line of the fault (0: the whole file) and the reason; what()
// is the reason alone.
class FileRefused : public std::runtime_error {
 public:
  explicit FileRefused(ParseProblem problem);
  const ParseProblem& getProblem() const { return problem; }

 private:
  ParseProblem problem;
};

// Parses `path` under the profile for files from outside:
//  - the file must be a readable regular file of at most `rules.maxBytes`;
//  - it is parsed by a BoundedDOMParser (element depth and entity expansion
//    bounded), which refuses a document type declaration, so no entity is
//    declared and no DTD is read;
//  - nothing but the one file is opened: no XInclude, no schema, no
//    validation, and the library's ReferenceGuard answers any external
//    reference with a refusal;
//  - the first error ends the parse;
//  - every element of the file knows the line where it starts
//    (DOMNode::getSourceLine).
// Returns the document node, which owns the document.
// Raises FileRefused for a file that is missing, a folder, unreadable, too
// large, not well formed, has a DOCTYPE or holds no root element; the
// problem's line is the parser's where it has one.
// REQUIRES: the XML system is started.
DOMNode parseOutsideFile(const std::string& path, const OutsideFileRules& rules);

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_OUTSIDEFILE_H_
