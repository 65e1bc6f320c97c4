#include "XliffSupport.h"

#include <string>

#include "xml_access/DocumentSerializer.h"

namespace msgtool {

std::vector<TextPiece> splitPlaceholders(const std::string& text) {
  std::vector<TextPiece> pieces;
  std::string plain;
  std::size_t i = 0;
  while (i < text.size()) {
    std::size_t digits = 0;
    if (text[i] == '&') {
      while (i + 1 + digits < text.size() && text[i + 1 + digits] >= '0' &&
             text[i + 1 + digits] <= '9') {
        ++digits;
      }
    }
    if (digits == 0) {
      plain += text[i++];
      continue;
    }
    if (!plain.empty()) {
      pieces.push_back(TextPiece{false, plain});
      plain.clear();
    }
    pieces.push_back(TextPiece{true, text.substr(i, digits + 1)});
    i += digits + 1;
  }
  if (!plain.empty()) {
    pieces.push_back(TextPiece{false, plain});
  }
  return pieces;
}

bool isPlaceholder(const std::string& text) {
  std::vector<TextPiece> pieces = splitPlaceholders(text);
  return pieces.size() == 1 && pieces[0].placeholder;
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
