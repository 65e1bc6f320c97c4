#include "XliffSupport.h"

#include <string>

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

}  // namespace msgtool
