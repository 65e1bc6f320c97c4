// BoundedDOMParser: the Xerces-C DOM parser with the limits, refusals and
// records that this library's documents need.

#ifndef MSG_XML_ACCESS_BOUNDEDDOMPARSER_H_
#define MSG_XML_ACCESS_BOUNDEDDOMPARSER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include "platform/InputLimits.h"
#include "xml_access/ParseProblem.h"
#include "xml_access/PositionTable.h"
#include "xml_access/SourcePosition.h"

namespace XercesXML {

// The limits every parse of this library applies (see platform/InputLimits.h
// for the values and the reasons). Trusted parsers bound hostile documents in
// the same way.
using msg::limits::kMaxAttributesPerElement;
using msg::limits::kMaxElementDepth;
using msg::limits::kMaxEntityExpansion;
using msg::limits::kMaxEntityReferences;

// Where one element's markup lies: its '<', the end of its start tag and
// the end of its end tag (the place just after each '>'). For an empty
// element written "<a/>" both ends are the same. The file is not used.
struct ElementMarks {
  SourcePosition start;
  SourcePosition tagEnd;
  SourcePosition close;
};

// Thrown from the parser's callbacks when a document breaks one of the
// rules above, or a rule its client switched on. It ends the parse at once;
// the parser object is left as after any failed parse.
struct ParseRefused {
  ParseProblem problem;
};

// A XercesDOMParser that
//  - refuses elements nested deeper than kMaxElementDepth as they open, and
//    elements with more than kMaxAttributesPerElement attributes before the
//    DOM builder takes them in (it is quadratic in their number), at the
//    line and column where the element starts;
//  - bounds entity expansion: at most kMaxEntityReferences references, and
//    no more than kMaxEntityExpansion characters from them in all (see
//    parseBounded);
//  - refuses a document type declaration if asked to (setRefuseDoctype),
//    and always one that names an external DTD, before the parser reads
//    anything of its subsets;
//  - records where each element of the document's own file starts (line
//    and column of its '<') if asked to (setKeepPositions), in a table
//    beside the document (see takePositions); elements that XInclude
//    brings in from a part get no record here (see PartPositions);
//  - notes the marks of every element it reads itself, in document order,
//    into a list that its client lends it (setMarks);
//  - appends text that follows an entity reference through the public
//    appendData, which keeps long texts with many references linear (the
//    parser's own fast append rescans the document's block list each time);
//  - tells its entity resolver whether the reference it is asked about is
//    an XInclude (isExpandingInclude).
// Everything else is the XercesDOMParser. One parse at a time, one thread.
class BoundedDOMParser : public xercesc::XercesDOMParser {
 public:
  BoundedDOMParser();
  ~BoundedDOMParser() override;

  BoundedDOMParser(const BoundedDOMParser&) = delete;
  BoundedDOMParser& operator=(const BoundedDOMParser&) = delete;

  void setRefuseDoctype(bool refuse) { refuseDoctype = refuse; }
  void setKeepPositions(bool keep) { keepPositions = keep; }

  // With a list (borrowed, not null), every later parse appends the marks
  // of the elements it reads to it; null notes nothing. Stays until changed.
  void setMarks(std::vector<ElementMarks>* list) { marks = list; }

  // The positions recorded by the last parse with setKeepPositions(true),
  // sealed; the parser keeps none. They describe the document that
  // adoptDocument gives, and must go with it.
  PositionTable takePositions();

  // True while the parser expands an xi:include element (and its nested
  // includes); every external reference asked about then is a part to
  // include.
  bool isExpandingInclude() const { return includeDepth > 0; }

  // Parses `source` with the bounds above. The number of references is
  // bounded by the scanner, which fixes its limit when a parse starts; when
  // the internal subset declares entities long enough that the limit would
  // allow more than kMaxEntityExpansion characters, the parse stops at the
  // end of the subset and starts again with a lower reference limit, so
  // every reference in content and in attribute values stays within the
  // bound. Raises what parse raises, and ParseRefused.
  void parseBounded(const xercesc::InputSource& source);
  void parseBounded(const char* systemId);

  // Empty, or when the last parse ran with a lowered reference limit, a
  // sentence that says so and why, for the report of a failed parse (the
  // scanner's own message names only the number of references).
  std::string referenceLimitNote() const;

  // The XMLDocumentHandler and DocTypeHandler callbacks this class watches.
  void startDocument() override;
  void startElement(const xercesc::XMLElementDecl& elemDecl, unsigned int urlId,
                    const XMLCh* elemPrefix, const xercesc::RefVectorOf<xercesc::XMLAttr>& attrList,
                    XMLSize_t attrCount, bool isEmpty, bool isRoot) override;
  void endElement(const xercesc::XMLElementDecl& elemDecl, unsigned int urlId, bool isRoot,
                  const XMLCh* elemPrefix) override;
  void docCharacters(const XMLCh* chars, XMLSize_t length, bool cdataSection) override;
  void ignorableWhitespace(const XMLCh* chars, XMLSize_t length, bool cdataSection) override;
  void docComment(const XMLCh* comment) override;
  void docPI(const XMLCh* target, const XMLCh* data) override;
  void doctypeDecl(const xercesc::DTDElementDecl& elemDecl, const XMLCh* publicId,
                   const XMLCh* systemId, bool hasIntSubset, bool hasExtSubset) override;
  void entityDecl(const xercesc::DTDEntityDecl& entityDecl, bool isPEDecl, bool isIgnored) override;
  void endIntSubset() override;

 private:
  // Thrown at the end of the internal subset when the reference limit must
  // come down; parseBounded catches it and starts again.
  struct RestartWithLimit {
    std::size_t referenceLimit;
  };

  template <typename Source>
  void parseWithRestarts(const Source& source);

  // Whether the element is an xi:include that XInclude processing expands.
  bool isInclude(const xercesc::XMLElementDecl& elemDecl, unsigned int urlId) const;

  // Remembers where the scanner stands: the next element starts here.
  void markPosition();

  // A refusal at the scanner's position.
  ParseRefused refusal(const std::string& reason) const;

  // A refusal at `line` and `column` of the file the scanner reads.
  ParseRefused refusalAt(std::uint64_t line, std::uint64_t column, const std::string& reason) const;

  xercesc::SecurityManager securityManager;
  std::basic_string<XMLCh> appendBuffer;
  std::size_t referenceLimit = kMaxEntityReferences;  // of the running parse
  std::size_t longestEntityValue = 0;
  std::size_t depth = 0;
  int includeDepth = 0;
  bool refuseDoctype = false;
  bool keepPositions = false;
  std::uint64_t lastLine = 1;
  std::uint64_t lastColumn = 1;
  PositionTable positions;                     // of the running parse
  std::vector<std::size_t> openIncludes;       // first record of each open xi:include
  std::vector<ElementMarks>* marks = nullptr;  // borrowed, may be null
  std::vector<std::size_t> openMarks;          // of the open elements, in `marks`
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_BOUNDEDDOMPARSER_H_
