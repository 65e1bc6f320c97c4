// PositionTable: where the elements of one parsed document start, kept
// beside the document rather than in it.

#ifndef MSG_XML_ACCESS_POSITIONTABLE_H_
#define MSG_XML_ACCESS_POSITIONTABLE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <xercesc/dom/DOMNode.hpp>

#include "xml_access/SourcePosition.h"

namespace XercesXML {

// Maps element nodes to the line and column of their '<', and for an
// element that XInclude brought in from a part, to the part's file (the
// table keeps the names; a position holds a number). The table is kept
// out of the DOM on purpose: once a Xerces-C document holds any user data,
// every node that is imported into it, cloned or released walks the
// document's whole user-data table, which made reading a large document
// with positions quadratic.
//
// Records are made while a document is built (add, truncate) and read once
// it is complete (find), after seal(). The nodes are only compared, never
// followed, except by the document-order functions, which walk a live
// document. A table does not own or keep alive the document it describes.
class PositionTable {
 public:
  // Records that `element` starts at `line` and `column`; values beyond
  // the range of a position saturate.
  void add(const xercesc::DOMNode* element, std::uint64_t line, std::uint64_t column);

  // Records `position` for `element`; its file number must come from
  // addFile (or be 0).
  void add(const xercesc::DOMNode* element, SourcePosition position);

  // Names an included part; returns its number for SourcePosition::file.
  std::uint32_t addFile(const std::string& name);

  // The name of file number `file`: empty for 0, the document itself.
  const std::string& fileName(std::uint32_t file) const;

  // The names of the parts, file number n at index n - 1.
  const std::vector<std::string>& partFiles() const { return files; }

  // The number of records made so far.
  std::size_t size() const { return records.size(); }
  bool empty() const { return records.empty(); }

  // Forgets the records made after the first `count` (elements that left
  // the document while it was built).
  void truncate(std::size_t count);

  // Orders the records for find(). Of two records of one node, the later
  // one counts.
  void seal();

  // Where `node` starts; zeros for a node without a record.
  // REQUIRES: seal() was called after the last add.
  SourcePosition find(const xercesc::DOMNode* node) const;

  // The positions of the elements below `document`, in document order.
  // REQUIRES: sealed.
  std::vector<SourcePosition> inDocumentOrder(const xercesc::DOMNode* document) const;

  // A sealed table that gives the n-th element below `document`, in
  // document order, the n-th entry of `positions`. Carries positions over
  // to a document that was serialised and parsed again: both have the same
  // elements in the same order. Should the numbers differ, the table is
  // empty: no position is better than a wrong one. The file names of
  // `namesFrom` (the table of the first document) come along.
  static PositionTable fromDocumentOrder(const xercesc::DOMNode* document,
                                         const std::vector<SourcePosition>& positions,
                                         const PositionTable& namesFrom);

 private:
  struct Record {
    const xercesc::DOMNode* node;
    SourcePosition position;
  };

  std::vector<Record> records;
  std::vector<std::string> files;  // of the parts; file number n is files[n - 1]
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_POSITIONTABLE_H_
