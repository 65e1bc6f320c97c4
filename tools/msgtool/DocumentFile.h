// DocumentFile: one file of a message document that msgtool edits, the
// document itself or a part it includes: its DOM as written, for finding
// elements, and its text, for changing them.

#ifndef MSGTOOL_DOCUMENTFILE_H_
#define MSGTOOL_DOCUMENTFILE_H_

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "xml_access/DOMNode.h"
#include "xml_access/MarkupEditor.h"

namespace msgtool {

// The DOM is read under the library's profile for files from outside
// (includes not expanded, comments kept); each of its elements is matched
// to the element written at the same place in the file's text, which the
// MarkupEditor edits. The root element is element 0.
class DocumentFile {
 public:
  // Reads the file at `path` (at most limits::kMaxMessageDocumentBytes).
  // Raises ToolError naming the file if it cannot be read, is not well
  // formed, or is in an encoding the editor cannot write.
  explicit DocumentFile(std::string path);

  // A file that is not yet on disk, holding `bytes`; it has no DOM.
  DocumentFile(std::string path, std::string bytes);

  const std::string& path() const { return filePath; }
  const std::string& originalBytes() const { return original; }
  // The document node; null for a file that is not yet on disk.
  const XercesXML::DOMNode& document() const { return dom; }
  XercesXML::MarkupEditor& markup() { return editor; }
  const XercesXML::MarkupEditor& markup() const { return editor; }

  // The id in markup() of `element`, an element of document().
  // Raises ToolError if the file's elements could not be matched.
  int idOf(const XercesXML::DOMNode& element) const;

  // True if the root is a MessageNamespace, or a MessageCollection that
  // names no schema: a part, which loads only as part of a document.
  bool isPart() const;

  // A file this one includes with XInclude (a whole file, as XML): the
  // include element's id in markup() and the file's path.
  struct Inclusion {
    int element;
    std::string path;
  };
  // The inclusions of this file in document order.
  std::vector<Inclusion> includedFiles() const;

  // The edited file; raises ToolError naming it for an edit that cannot be
  // written.
  std::string editedBytes() const;

 private:
  void matchElements();
  bool isXIncludeElement(int id) const;

  std::string filePath;
  XercesXML::DOMNode dom;  // read first: it checks the size and the XML
  std::string original;
  XercesXML::MarkupEditor editor;
  std::unordered_map<std::uint64_t, int> ids;  // line << 32 | column -> id
  std::vector<XercesXML::DOMNode> includes;    // XInclude elements
};

}  // namespace msgtool

#endif  // MSGTOOL_DOCUMENTFILE_H_
