// OutsideXml: reads and writes the XML files that msgtool exchanges with
// translators' tools and the message documents it edits.
//
// Files read here come from outside. They go through the library's bounded
// parser, which limits element depth and entity expansion, and here it also
// allows no DOCTYPE (so no entities and no external DTD) and opens nothing
// but the one file (no XInclude, no schema, no network). Files larger than
// kMaxXmlFileBytes are refused before the parse. Every element remembers
// the line where it starts, for error messages.

#ifndef MSGTOOL_OUTSIDEXML_H_
#define MSGTOOL_OUTSIDEXML_H_

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include <xercesc/dom/DOM.hpp>

#include "xml_access/PositionTable.h"

namespace msgtool {

// The largest XLIFF or PO file read: far above any real translation file.
inline constexpr std::size_t kMaxXmlFileBytes = 64u * 1024u * 1024u;

// A file that cannot be used, with the place of the fault (line 0: the
// whole file).
class FileProblem : public std::runtime_error {
 public:
  FileProblem(std::string file, int line, const std::string& message)
      : std::runtime_error(message), file(std::move(file)), line(line) {}

  const std::string& getFile() const { return file; }
  int getLine() const { return line; }
  // "file:line: error: message" (no line for line 0), as check writes findings.
  std::string describe() const;

 private:
  std::string file;
  int line;
};

// A UTF-8 string as a zero-terminated XMLCh string, owned.
class XmlString {
 public:
  explicit XmlString(const std::string& utf8);
  const XMLCh* get() const { return text.get(); }
  operator const XMLCh*() const { return text.get(); }

 private:
  std::unique_ptr<XMLCh[]> text;
};

// The UTF-8 bytes of an XMLCh string; empty for null.
std::string toUtf8(const XMLCh* text);

// The value of an attribute of `element` ("" when absent); `namespaceUri`
// empty means an attribute without namespace.
std::string attributeOf(const xercesc::DOMElement* element, const char* localName,
                        const char* namespaceUri = "");

// The local name of an element (its node name when it has none).
std::string localNameOf(const xercesc::DOMNode* node);

// One DOM document, owned. The XML system (XercesXML::initializeSystem)
// must be up for as long as an XmlDocument lives.
class XmlDocument {
 public:
  // Parses `path` with the protections above. `keepComments` keeps comment
  // nodes, for documents that are edited and written back.
  // Raises FileProblem with the parser's line for a file that cannot be
  // read, is too large, is not well formed or has a DOCTYPE.
  static XmlDocument parse(const std::string& path, bool keepComments);

  // A new document whose root element is `qualifiedName` in `namespaceUri`
  // (empty: no namespace).
  static XmlDocument create(const std::string& namespaceUri, const std::string& qualifiedName);

  XmlDocument(XmlDocument&&) noexcept;
  XmlDocument& operator=(XmlDocument&&) noexcept;
  ~XmlDocument();

  xercesc::DOMDocument* get() const { return document; }
  xercesc::DOMElement* root() const { return document->getDocumentElement(); }

  // The line recorded for an element of this document when it was parsed;
  // 0 if none.
  int lineOf(const xercesc::DOMNode* node) const;

  // The document as UTF-8 XML text, with an XML declaration, written as
  // the tree stands (no reformatting).
  std::string serialize() const;

 private:
  explicit XmlDocument(xercesc::DOMDocument* document) : document(document) {}
  xercesc::DOMDocument* document;
  XercesXML::PositionTable positions;  // of the parse; empty for a new document
};

// Replaces `path` by `bytes` so that a reader sees the old file or the new
// one, never a part: writes a temporary file in the same folder, calls
// `verify` on it (which raises to stop), and renames it over `path`. A file
// that existed keeps its permissions. On failure the temporary file is
// removed and `path` is untouched.
// Raises FileProblem (or what `verify` raises).
void replaceFileAtomically(const std::string& path, const std::string& bytes,
                           const std::function<void(const std::string& temporaryPath)>& verify);

}  // namespace msgtool

#endif  // MSGTOOL_OUTSIDEXML_H_
