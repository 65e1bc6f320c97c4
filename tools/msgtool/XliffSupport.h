// XliffSupport: what the XLIFF 1.2 and 2.0 readers and writers share.

#ifndef MSGTOOL_XLIFFSUPPORT_H_
#define MSGTOOL_XLIFFSUPPORT_H_

#include <functional>
#include <string>
#include <vector>

#include "OutsideXml.h"

namespace msgtool {

inline constexpr char kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";
inline constexpr char kSeverityNote[] = "severity: ";
// Deeper groups or inline elements are refused.
inline constexpr int kMaxXliffNesting = 32;

// A text cut into plain runs and placeholder-like runs: "&" and every digit
// behind it. All of them are protected, also runs too long for substitution
// to replace, so that each comes back byte for byte.
struct TextPiece {
  bool placeholder;
  std::string text;
};
std::vector<TextPiece> splitPlaceholders(const std::string& text);

// True if `text` is one placeholder-like run and nothing else.
bool isPlaceholder(const std::string& text);

// Calls `visit` for each child of `parent` named `unitName` (trans-unit in
// XLIFF 1.2, unit in 2.0), in document order, descending into <group>
// elements, which both versions use to nest units.
// Raises FileProblem (naming `path`, the file of `document`) at groups
// nested deeper than kMaxXliffNesting.
void forEachUnit(const std::string& path, const XmlDocument& document,
                 const xercesc::DOMElement* parent, const char* unitName,
                 const std::function<void(const xercesc::DOMElement*)>& visit);

// Builds a document whose elements live in one namespace, indenting as it
// goes.
class XliffBuilder {
 public:
  explicit XliffBuilder(const char* namespaceUri);

  xercesc::DOMElement* root() const { return document.root(); }

  // A new element in the namespace, not yet placed.
  xercesc::DOMElement* element(const char* name);
  // Appends a new element to `parent` on a new line, indented `depth` steps.
  xercesc::DOMElement* add(xercesc::DOMElement* parent, const char* name, int depth);
  // Ends `element`'s content with a line break indented `depth` steps.
  void close(xercesc::DOMElement* element, int depth);
  void addText(xercesc::DOMElement* element, const std::string& text);
  static void set(xercesc::DOMElement* element, const char* name, const std::string& value);

  std::string serialize() const { return document.serialize(); }

 private:
  const char* namespaceUri;
  XmlDocument document;
};

}  // namespace msgtool

#endif  // MSGTOOL_XLIFFSUPPORT_H_
