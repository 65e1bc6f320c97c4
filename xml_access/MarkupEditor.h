// MarkupEditor: changes a few attributes and contents of an XML file, and
// adds elements to it, by editing the file's own text: every character it
// is not asked to change stays as written (encoding, line ends, quotes,
// attribute order and spacing, the XML declaration, comments, CDATA).

#ifndef MSG_XML_ACCESS_MARKUPEDITOR_H_
#define MSG_XML_ACCESS_MARKUPEDITOR_H_

#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "xml_access/MarkupEncoding.h"
#include "xml_access/MarkupScan.h"

namespace XercesXML {

// Elements are named by an ElementId: the elements of the file are
// 0 .. elementCount() - 1 in document order, the order in which a parser
// meets their start tags; elements added by addElement follow.
//
// Edits are recorded, not applied: fileBytes() builds the edited file once,
// so any number of edits costs time linear in the file and the edits. New
// elements are indented as their neighbours are, one step (the document's
// own, else two spaces) deeper than their parent, and their lines end as the
// file's first line does. Text going in is UTF-8 and is escaped and written
// in the file's encoding (see MarkupEncoding).
//
// The editor checks no XML rule beyond what it needs to find the elements:
// a caller that must write a valid document parses the result.
class MarkupEditor {
 public:
  using ElementId = int;

  // Reads `fileBytes`, a well-formed XML document without a document type
  // declaration (parse it first).
  // Raises ParsingError for an encoding MarkupEncoding cannot edit, or text
  // whose elements the scan cannot follow.
  explicit MarkupEditor(std::string fileBytes);

  // The number of elements in the file as read.
  int elementCount() const { return static_cast<int>(scanned.size()); }

  // The qualified name of element `id` of the file, and its parent's id
  // (-1 for the root).
  std::string writtenName(ElementId id) const;
  ElementId parentOf(ElementId id) const { return scanned[id].parent; }

  // The value of the attribute `qualifiedName` of element `id` of the file,
  // as written (references are not replaced); nullopt if it has none.
  std::optional<std::string> writtenAttribute(ElementId id, const std::string& qualifiedName) const;

  // Gives element `id` the attribute `qualifiedName` with `value`: an
  // attribute that is there keeps its place and quotes, a new one goes after
  // the last.
  void setAttribute(ElementId id, const std::string& qualifiedName, const std::string& value);

  // Makes `text` the whole content of element `id`.
  // REQUIRES: no element is added into `id`.
  void setContent(ElementId id, const std::string& text);

  // Adds an element `name` to `parent`: right after `after`, one of its
  // children (after an element of the file: behind the elements added after
  // it before), or, with -1, after its last child. Returns its id.
  // REQUIRES: `after` is -1 or a child of `parent`.
  ElementId addElement(ElementId parent, ElementId after, const std::string& name);

  // True once anything was set or added.
  bool changed() const { return !changes.empty(); }

  // The file with every edit applied, in its own encoding; the bytes as read
  // if nothing was changed.
  // Raises ParsingError for edits that overlap: an edit of an element inside
  // one whose content is set.
  std::string fileBytes() const;

 private:
  using Attributes = std::vector<std::pair<std::string, std::string>>;

  // What is set and added at one element, of the file or new.
  struct Changes {
    Attributes attributes;  // set, in the order they were first set
    std::optional<std::string> content;
    std::vector<ElementId> children;   // added at the end of the element
    std::vector<ElementId> following;  // added right after the element
  };
  struct Added {
    std::string name;
    ElementId parent;
    ElementId after;  // the element whose `following` list holds it; -1: a child
  };
  // Replaces `length` bytes of the working text at `offset`; of two at one
  // offset, the lower rank goes first.
  struct Splice {
    std::size_t offset;
    std::size_t length;
    std::string replacement;
    int rank;
  };

  bool isNew(ElementId id) const { return id >= elementCount(); }
  std::vector<ElementId>& listHolding(ElementId id);
  std::string indentOf(ElementId id) const;
  std::string childIndent(ElementId parent) const;
  std::string leadingOf(ElementId id) const;
  const MarkupAttribute* attributeOf(ElementId id, const std::string& qualifiedName) const;
  std::string renderNew(ElementId id, const std::string& indent) const;
  std::string renderAttributes(const Attributes& attributes, char quote) const;
  void spliceChanges(ElementId id, const Changes& at, std::vector<Splice>& splices) const;

  MarkupEncoding encoding;
  std::string original;
  std::string text;  // the working text
  std::vector<MarkupElement> scanned;
  std::string lineEnd = "\n";
  std::string indentStep = "  ";
  char quote = '"';
  std::vector<Added> added;  // element elementCount() + i is added[i]
  std::unordered_map<ElementId, Changes> changes;
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_MARKUPEDITOR_H_
