#include "XliffSupport.h"

#include <string>

#include "XliffFile.h"
#include "message_core/PlaceholderScanner.h"
#include "xml_access/DocumentSerializer.h"

namespace msgtool {

std::vector<TextPiece> splitPlaceholders(const std::string& text) {
  std::vector<TextPiece> pieces;
  msg::PlaceholderScanner scanner(text.data(), text.data() + text.size());
  msg::PlaceholderRun run{};
  std::size_t plainStart = 0;
  while (scanner.next(run)) {
    if (run.offset > plainStart) {
      pieces.push_back(TextPiece{false, text.substr(plainStart, run.offset - plainStart)});
    }
    pieces.push_back(TextPiece{true, text.substr(run.offset, run.length)});
    plainStart = run.offset + run.length;
  }
  if (plainStart < text.size()) {
    pieces.push_back(TextPiece{false, text.substr(plainStart)});
  }
  return pieces;
}

bool isPlaceholder(const std::string& text) {
  msg::PlaceholderScanner scanner(text.data(), text.data() + text.size());
  msg::PlaceholderRun run{};
  return scanner.next(run) && run.offset == 0 && run.length == text.size();
}

XliffBuilder::XliffBuilder(const char* namespaceUri)
    : namespaceUri(namespaceUri),
      document(XercesXML::DOMNode::createDocument(namespaceUri, "xliff")) {}

XliffBuilder::Element XliffBuilder::element(const char* name) const {
  return document.createElement(namespaceUri, name);
}

XliffBuilder::Element XliffBuilder::add(const Element& parent, const char* name, int depth) const {
  return parent.appendOnNewLine(element(name), depth);
}

void XliffBuilder::preserveSpace(const Element& element) {
  element.setAttribute("xml:space", "preserve", kXmlNamespace);
}

std::string XliffBuilder::serialize() const {
  return XercesXML::serializeAsWritten(document);
}

XliffBuilder::Element XliffUnitPlacer::place(const XliffUnit& unit, int& unitDepth) {
  if (unit.form <= 0) {
    finish();
  }
  if (unit.form == 0) {
    group = writer.add(parent, "group", depth);
    XliffBuilder::set(group, "id", unit.key);
    XliffBuilder::set(group, names.name, unit.key);
    XliffBuilder::set(group, names.groupType, names.pluralGroup);
  }
  unitDepth = group.isValid() ? depth + 1 : depth;
  XliffBuilder::Element element =
      writer.add(group.isValid() ? group : parent, names.unit, unitDepth);
  if (unit.form >= 0) {
    XliffBuilder::set(element, "id", unit.key + "[" + std::to_string(unit.form) + "]");
  } else {
    XliffBuilder::set(element, "id", unit.key);
    XliffBuilder::set(element, names.name, unit.key);
  }
  return element;
}

void XliffUnitPlacer::finish() {
  if (group.isValid()) {
    XliffBuilder::close(group, depth);
    group = XliffBuilder::Element();
  }
}

}  // namespace msgtool
