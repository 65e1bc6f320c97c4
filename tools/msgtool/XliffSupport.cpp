#include "XliffSupport.h"

#include <string>

#include "message_core/PlaceholderScanner.h"

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
    : namespaceUri(namespaceUri), document(XmlDocument::create(namespaceUri, "xliff")) {}

xercesc::DOMElement* XliffBuilder::element(const char* name) {
  return document.get()->createElementNS(XmlString(namespaceUri), XmlString(name));
}

xercesc::DOMElement* XliffBuilder::add(xercesc::DOMElement* parent, const char* name, int depth) {
  addText(parent, "\n" + std::string(2 * depth, ' '));
  xercesc::DOMElement* child = element(name);
  parent->appendChild(child);
  return child;
}

void XliffBuilder::close(xercesc::DOMElement* element, int depth) {
  addText(element, "\n" + std::string(2 * depth, ' '));
}

void XliffBuilder::addText(xercesc::DOMElement* element, const std::string& text) {
  element->appendChild(document.get()->createTextNode(XmlString(text)));
}

void XliffBuilder::set(xercesc::DOMElement* element, const char* name, const std::string& value) {
  element->setAttribute(XmlString(name), XmlString(value));
}

namespace {

void visitUnits(const std::string& path, const XmlDocument& document,
                const xercesc::DOMElement* parent, const char* unitName,
                const std::function<void(const xercesc::DOMElement*)>& visit, int depth) {
  if (depth > kMaxXliffNesting) {
    throw FileProblem(path, document.lineOf(parent),
                      "has groups nested more than " + std::to_string(kMaxXliffNesting) + " deep");
  }
  for (const xercesc::DOMElement* child = parent->getFirstElementChild(); child != nullptr;
       child = child->getNextElementSibling()) {
    const std::string name = localNameOf(child);
    if (name == "group") {
      visitUnits(path, document, child, unitName, visit, depth + 1);
    } else if (name == unitName) {
      visit(child);
    }
  }
}

}  // namespace

void forEachUnit(const std::string& path, const XmlDocument& document,
                 const xercesc::DOMElement* parent, const char* unitName,
                 const std::function<void(const xercesc::DOMElement*)>& visit) {
  visitUnits(path, document, parent, unitName, visit, 0);
}

}  // namespace msgtool
