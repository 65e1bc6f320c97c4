// DOMNode: a counted handle on a node of a parsed document.

#ifndef MSG_XML_ACCESS_DOMNODE_H_
#define MSG_XML_ACCESS_DOMNODE_H_

#include <cstdint>
#include <string>
#include <vector>

#include <xercesc/dom/DOMNode.hpp>
#include <xercesc/util/XercesDefs.hpp>

#include "xml_access/SourcePosition.h"

XERCES_CPP_NAMESPACE_BEGIN
class MemBufFormatTarget;
XERCES_CPP_NAMESPACE_END

namespace XercesXML {

class PositionTable;

// The ownership block of one document, shared by every handle into it. The
// last handle to go releases the document and frees the block.
struct NodeOwnerBlock {
  std::int32_t count;                  // number of non-null handles that share the block
  xercesc::DOMNode* node;              // the owned node: for a parsed document, the document
  NodeOwnerBlock* parent;              // block that owns `node` instead; null in every
                                       // block this layer makes
  PositionTable* positions = nullptr;  // owned, may be null: where the elements of the
                                       // document start
};

// A value handle on a node of a document, two pointers wide, that may be null.
//
// All handles reached from one document share that document's
// NodeOwnerBlock; a handle never owns its own node. The first handle of a
// document (made by the parser with a null owner) creates the block, every
// non-null copy, assignment or walk adds a reference, and whichever handle
// goes last releases the document, exactly once. A child handle alone keeps
// the whole document alive.
//
// Text comes out as std::string in the output encoding of the XML system
// (see XMLSystem.h). DOM failures leave as the exceptions of
// msg/XercesXMLException.h.
//
// Every handle must be gone before the last terminateSystem(). Handles into
// one document share their block without a lock: they belong to one thread
// at a time.
class DOMNode {
 public:
  // A null handle.
  // Raises NotInitialized if the XML system is not started.
  DOMNode();

  // Another handle on the node of `other`, sharing its block; a copy of a
  // null handle is null and touches no block.
  // Raises NotInitialized if the XML system is not started.
  DOMNode(const DOMNode& other);

  // Internal: a handle on `node` under `owner`. With a null `node` the
  // handle is null and no count changes. With a null `owner` a new block is
  // made that takes ownership of `node` (the parser passes the document
  // node); otherwise the block's count rises by one. Checks no system state.
  DOMNode(xercesc::DOMNode* node, NodeOwnerBlock* owner);

  // Internal: the first handle on a parsed `document`, which takes it and
  // `positions` (may be null: no positions) into its own new block.
  static DOMNode adopt(xercesc::DOMNode* document, PositionTable* positions);

  // Drops this handle's reference, if any.
  ~DOMNode();

  // Drops the old reference first, then takes one on the node of `other`.
  // Assigning a handle on the node this handle already refers to (itself
  // included, and null to null) changes nothing.
  DOMNode& operator=(const DOMNode& other);

  // True unless the handle is null. Never raises.
  bool isValid() const { return node != nullptr; }

  // Walking. Each gives a new handle, null at the end of the list.
  // Raise NullPointer on a null handle and ParsingError if the DOM fails.

  // The first child, of any node type.
  DOMNode getFirstChild() const;
  // The first child that is an element; skips text and other nodes.
  DOMNode getFirstElementChild() const;
  // The next sibling, of any node type.
  DOMNode getNextSibling() const;
  // The next sibling that is an element; skips text and other nodes.
  DOMNode getNextElementSibling() const;

  // The previous sibling, of any node type.
  DOMNode getPreviousSibling() const;
  // The last child, of any node type.
  DOMNode getLastChild() const;

  // Kinds. Raise NullPointer on a null handle.
  bool isElement() const;
  // True for text and CDATA sections.
  bool isText() const;

  // Reading. Raise NullPointer on a null handle, NavigationError if the DOM
  // fails, and what transcodeFromXMLCh raises.

  // The local name of an element (a prefix never shows); the DOM node name
  // of every other node ("#document", "#text", the target of a processing
  // instruction, ...).
  std::string getNodeName() const;

  // The DOM node value; empty for nodes without one (element, document).
  std::string getNodeValue() const;

  // The values of the direct children joined in document order, with
  // nothing between: text and CDATA give their text, a processing
  // instruction its data, a child element nothing (its text is not
  // included). Empty for a node without children.
  std::string getChildText() const;

  // The text of every text and CDATA node below this one, in document order
  // (the DOM text content).
  std::string getTextContent() const;

  // The value of an attribute of this element. With an empty `namespaceUri`
  // `name` is the qualified name as written ("xml:lang"); otherwise `name`
  // is the local name within `namespaceUri`. Both are read in the local code
  // page, whatever the output encoding. An absent attribute, an empty value
  // and a node without attributes all give an empty string.
  std::string getAttributeByName(const std::string& name,
                                 const std::string& namespaceUri = std::string()) const;

  // True if `other` comes after this node in document order.
  // Raises NullPointer if either handle is null.
  bool precedes(const DOMNode& other) const;

  // Where the element starts in its file: the 1-based line and column of
  // its '<', for an element of a document read by
  // Parser::parseFileWithPositions (the document keeps a table of them
  // beside it), also for one that XInclude brought in from a part (then
  // counted in the part). 0 for every other node and for elements of other
  // documents.
  // Raises NullPointer on a null handle.
  int getSourceLine() const;
  int getSourceColumn() const;

  // The file the element was read from when XInclude brought it in from a
  // part (the innermost part, for a part of a part), named as the document
  // was (see Parser::parseFileWithPositions); empty for an element of the
  // document's own file and wherever getSourceLine is 0.
  // Raises NullPointer on a null handle.
  std::string getSourceFile() const;

  // Building and editing (NodeEditing.cpp). A handle is like a pointer: a
  // const handle edits its node all the same. Text going in is read in the
  // output encoding of the XML system, as text coming out is written.
  // Every operation raises NullPointer on a null handle and ParsingError if
  // the DOM refuses the change (a name that is no XML name, for instance).

  // A new document whose root element is `qualifiedName` in `namespaceUri`
  // (empty: in no namespace); the handle owns it.
  // Raises NotInitialized if the XML system is not started.
  static DOMNode createDocument(const std::string& namespaceUri, const std::string& qualifiedName);

  // A new element of this node's document (or of this document), not yet
  // placed, in `namespaceUri` (empty: in no namespace).
  DOMNode createElement(const std::string& namespaceUri, const std::string& qualifiedName) const;

  // Sets an attribute of this element: with an empty `namespaceUri` the
  // attribute `name` without namespace, else `name` is a qualified name
  // ("xml:lang", "xmlns:x") within `namespaceUri`.
  void setAttribute(const std::string& name, const std::string& value,
                    const std::string& namespaceUri = std::string()) const;

  // True if this element has the attribute `localName` in `namespaceUri`
  // (empty: without namespace).
  bool hasAttribute(const std::string& localName,
                    const std::string& namespaceUri = std::string()) const;

  // Appends `child` (a node of the same document) as the last child.
  void appendChild(const DOMNode& child) const;

  // Appends a text node holding `text`.
  void appendText(const std::string& text) const;

  // Removes every child and appends one text node holding `text`.
  // REQUIRES: no other handle refers to a node below this one.
  void replaceContentWithText(const std::string& text) const;

  // Indentation, two spaces a step, for documents that people read.

  // Appends a line break and `depth` steps, then `child`; gives `child`.
  DOMNode appendOnNewLine(const DOMNode& child, int depth) const;

  // Appends a line break and `depth` steps: the line of the end tag.
  void endOnNewLine(int depth) const;

  // Inserts `element` into this element after `sibling`, a child of it, on
  // a line of its own indented as `sibling` is (a document written on one
  // line stays on one line). With a null `sibling` the element goes at the
  // end, one step deeper than this element, before the blank that closes
  // it, on a new line of its own.
  void insertIndented(const DOMNode& sibling, const DOMNode& element) const;

  // Searching, breadth first below and including this node, with no
  // recursion. A node matches if getNodeName() equals one entry of `names`
  // whole, byte for byte; the entries are alternatives, and their order does
  // not matter. Every node type is visited, attributes are not. Gives a
  // handle on the shallowest match, the first in document order among equals,
  // or a null handle if nothing matches or this handle is null.
  // Raises NavigationError if the DOM fails, and what the walking and reading
  // operations raise.
  DOMNode findFirstNodeByNameList(const std::vector<std::string>& names) const;

  // findFirstNodeByNameList with `name` as the one entry, taken whole (no
  // separator inside it has any meaning).
  DOMNode findFirstNodeByName(const std::string& name) const;

 private:
  // The parser hands a document to its first handle, and reads and gives up
  // the node of a handle during serialisation.
  friend class Parser;
  friend std::string serializeAsWritten(const DOMNode& document);
  friend void serializeDocument(const DOMNode& document, const std::string& fileName,
                                xercesc::MemBufFormatTarget*& memoryTarget,
                                const std::string& encoding);

  // Drops one reference on `block`; the last one releases the owned node
  // (or, for a block with a parent, the parent's reference) and frees the
  // block.
  static void releaseOwnerBlock(NodeOwnerBlock* block);

  // The recorded start of this node; zeros if none.
  SourcePosition getSourcePosition() const;

  xercesc::DOMNode* node;  // may be null: then the handle is null
  NodeOwnerBlock* owner;   // meaningful only while `node` is not null
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_DOMNODE_H_
