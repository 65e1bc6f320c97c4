// XliffSupport: what the XLIFF 1.2 and 2.0 readers and writers share.

#ifndef MSGTOOL_XLIFFSUPPORT_H_
#define MSGTOOL_XLIFFSUPPORT_H_

#include <string>
#include <vector>

#include "xml_access/DOMNode.h"

namespace msgtool {

inline constexpr char kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";
// The notes of a unit (XLIFF 1.2) and the extracted comments of a PO entry
// that carry the Message's severity and count placeholder.
inline constexpr char kSeverityNote[] = "severity: ";
inline constexpr char kCountNote[] = "count: ";

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

// Builds a document whose elements live in one namespace, indenting as it
// goes. The XML system must be up, with UTF-8 output.
class XliffBuilder {
 public:
  using Element = XercesXML::DOMNode;

  explicit XliffBuilder(const char* namespaceUri);

  Element root() const { return document.getFirstElementChild(); }

  // A new element in the namespace, not yet placed.
  Element element(const char* name) const;
  // Appends a new element to `parent` on a new line, indented `depth` steps.
  Element add(const Element& parent, const char* name, int depth) const;
  // Ends `element`'s content with a line break indented `depth` steps.
  static void close(const Element& element, int depth) { element.endOnNewLine(depth); }
  static void addText(const Element& element, const std::string& text) { element.appendText(text); }
  static void set(const Element& element, const char* name, const std::string& value) {
    element.setAttribute(name, value);
  }
  // xml:space="preserve" on `element`.
  static void preserveSpace(const Element& element);

  std::string serialize() const;

 private:
  const char* namespaceUri;
  XercesXML::DOMNode document;
};

struct XliffUnit;

// What one XLIFF version calls the parts XliffUnitPlacer writes.
struct XliffUnitNames {
  const char* unit;         // the unit element: "trans-unit" (1.2), "unit" (2.0)
  const char* name;         // the attribute naming the key: "resname", "name"
  const char* groupType;    // the attribute marking a plural group: "restype", "type"
  const char* pluralGroup;  // its value
};

// Places the units of a file under `parent` as both versions write them:
// the forms of one plural message (form 0, 1, ...) in a group of their own
// whose id and name are the key, each form's id "KEY[i]"; every other unit
// directly under `parent`, its id and name the key.
class XliffUnitPlacer {
 public:
  // Units go under `parent`, indented `depth` steps (a group's units one
  // more). `writer` and `names` must outlive the placer.
  XliffUnitPlacer(const XliffBuilder& writer, const XliffBuilder::Element& parent, int depth,
                  const XliffUnitNames& names)
      : writer(writer), parent(parent), depth(depth), names(names) {}

  // The new element of `unit`, with its id and name and nothing else yet;
  // `unitDepth` is set to its indentation. Closes the group before and
  // opens a new one where the unit asks for it.
  XliffBuilder::Element place(const XliffUnit& unit, int& unitDepth);

  // Closes the last group, if one is open. Call after the last unit.
  void finish();

 private:
  const XliffBuilder& writer;
  XliffBuilder::Element parent;
  int depth;
  const XliffUnitNames& names;
  XliffBuilder::Element group;
};

}  // namespace msgtool

#endif  // MSGTOOL_XLIFFSUPPORT_H_
