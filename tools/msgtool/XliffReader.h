// XliffReader: the walk that reads an XLIFF file, shared by both versions.
//
// Both versions hold files, groups nested in them, and units with a key,
// a source and a target whose inline elements stand for placeholders. The
// reader walks that shape once; an XliffDialect names what differs: the
// element and attribute names, where the header and the units sit, what a
// unit holds, and which inline elements stand for a placeholder.

#ifndef MSGTOOL_XLIFFREADER_H_
#define MSGTOOL_XLIFFREADER_H_

#include <functional>
#include <string>

#include "XliffFile.h"
#include "xml_access/DOMNode.h"

namespace msgtool {

class XliffReader;

// What one version of XLIFF names and holds. The hooks raise ToolError
// through XliffReader::fail.
struct XliffDialect {
  const char* unitName;       // "trans-unit", "unit"
  const char* nameAttribute;  // the key, tried before "id": "resname", "name"
  // The child of a <file> that holds the units and groups ("body"); null
  // when they sit in the <file> itself.
  const char* unitContainer;
  // Inline elements that stand for one placeholder; every other inline
  // element passes its text through.
  bool (*standsForPlaceholder)(const std::string& localName);
  // What the root element and each <file> element say of the whole file.
  void (*readRoot)(const XercesXML::DOMNode& root, XliffFile& file);
  void (*readFile)(const XercesXML::DOMNode& fileElement, XliffFile& file);
  // The content of a unit whose key and line are read.
  void (*readUnit)(const XliffReader& reader, const XercesXML::DOMNode& element, XliffUnit& unit);
  // True for a group that holds the forms of one plural message.
  bool (*isPluralGroup)(const XercesXML::DOMNode& group);
};

// Version 1.0 to 1.2 (XliffFile.cpp) and 2.x (Xliff2.cpp).
extern const XliffDialect kXliff12Dialect;
extern const XliffDialect kXliff2Dialect;

class XliffReader {
 public:
  // Reads `path`: XLIFF 1.0 to 1.2, or 2.0 and 2.1.
  // Raises ToolError with the line of the fault for a file that cannot be
  // read, is not well formed, is no XLIFF or of another version, nests
  // groups or inline elements deeper than limits::kMaxExchangeNesting, or
  // has a unit that the dialect refuses.
  // REQUIRES: the XML system is up (UTF-8 output).
  static XliffFile read(const std::string& path);

  // For the dialects: raises ToolError naming the file and the line of `at`.
  [[noreturn]] void fail(const XercesXML::DOMNode& at, const std::string& message) const;

  // Appends the text of `element` to `out`: text and CDATA as they are,
  // each inline element that stands for a placeholder as the placeholder
  // `placeholderOf` gives for it, and the text of every other inline
  // element as if it were not there.
  void readInline(const XercesXML::DOMNode& element, std::string& out,
                  const std::function<std::string(const XercesXML::DOMNode&)>& placeholderOf) const;

 private:
  XliffReader(std::string path, const XliffDialect& dialect);

  XliffFile readAll(const XercesXML::DOMNode& root);
  // Reads the units below `parent`, descending into groups.
  void readUnits(const XercesXML::DOMNode& parent, int depth, XliffFile& file) const;
  XliffUnit readUnit(const XercesXML::DOMNode& element) const;
  // Reads the forms of a plural group: units "KEY[0]", "KEY[1]" ... in any
  // order, appended in the order of their index. Raises ToolError for an
  // empty group or a unit whose id is no index of the group or repeats one.
  void readForms(const XercesXML::DOMNode& group, XliffFile& file) const;
  void readInlineAt(const XercesXML::DOMNode& element, std::string& out,
                    const std::function<std::string(const XercesXML::DOMNode&)>& placeholderOf,
                    int depth) const;

  std::string path;
  const XliffDialect* dialect;
};

}  // namespace msgtool

#endif  // MSGTOOL_XLIFFREADER_H_
