// RoundTripPlaces: where a problem found in the serialised copy of an
// expanded document lies in the files the document was read from.

#ifndef MSG_XML_ACCESS_ROUNDTRIPPLACES_H_
#define MSG_XML_ACCESS_ROUNDTRIPPLACES_H_

#include <string>
#include <vector>

#include "xml_access/BoundedDOMParser.h"
#include "xml_access/ParseProblem.h"
#include "xml_access/SourcePosition.h"

namespace XercesXML {

// The strict parse of an XInclude round trip reads a copy: the expanded
// document written out again, with its declaration and root start tag on
// one line, its parts inline and its attributes in the serialiser's layout.
// The parser's lines and columns count in that copy, which no user has
// seen. This map takes a problem back to the element it concerns and names
// the file and the place where that element starts: the document, or the
// part (the innermost one, for a part of a part) it came from.
//
// The element a problem concerns: Xerces-C reports a fault of a start tag
// (its attributes, an element not allowed there) just after that tag, and
// a fault of content (incomplete, or a value of the wrong type) just after
// the end tag. A problem exactly there belongs to that element; one
// anywhere else belongs to the last element that starts before it.
//
// Both documents have the same elements in the same order, so the n-th
// marks of the copy and the n-th start of the original are one element.
// Where that does not hold (the file changed between the parses), or the
// element has no start of its own (it came from a fallback), the map
// leaves the place alone or clears it: no place is better than a wrong one.
class RoundTripPlaces {
 public:
  // Places nothing.
  RoundTripPlaces() = default;

  // `copyId` is the system id the copy was parsed with (the document's name
  // as the caller gave it), `copy` the marks of the copy's elements and
  // `original` the starts of the expanded document's elements, both in
  // document order. A start with file number n lies in `partNames[n - 1]`.
  RoundTripPlaces(std::string copyId, std::vector<ElementMarks> copy,
                  std::vector<SourcePosition> original, std::vector<std::string> partNames);

  // Whether place() can move anything.
  bool empty() const { return copy.empty(); }

  // Moves a problem of the copy (file `copyId`, with a line) to the start of
  // the element it concerns, in that element's file; leaves every other
  // problem as it is. An element without a start of its own gives the
  // document with line and column 0.
  void place(ParseProblem& problem) const;

 private:
  // The index of the element `at` concerns; copy.size() for none.
  std::size_t elementAt(SourcePosition at) const;

  std::string copyId;
  std::vector<ElementMarks> copy;
  std::vector<SourcePosition> original;
  std::vector<std::string> partNames;
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_ROUNDTRIPPLACES_H_
