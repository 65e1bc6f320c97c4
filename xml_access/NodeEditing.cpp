// The building and editing operations of DOMNode, and the readings that
// editing needs.

#include <cstring>
#include <memory>
#include <sstream>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/dom/DOMImplementation.hpp>
#include <xercesc/dom/DOMImplementationRegistry.hpp>
#include <xercesc/dom/DOMText.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLString.hpp>

#include "msg/XercesXMLException.h"
#include "xml_access/DOMNode.h"
#include "xml_access/PositionTable.h"
#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace {

void requireNode(const xercesc::DOMNode* node) {
  if (node == nullptr) {
    throw NullPointer("XercesXML - Access to DOM null pointer.");
  }
}

// A narrow string in the output encoding as a zero-terminated XMLCh string,
// owned.
class InputText {
 public:
  explicit InputText(const std::string& narrow) {
    if (getOutputEncoding() == UTF8) {
      xercesc::TranscodeFromStr converted(reinterpret_cast<const XMLByte*>(narrow.data()),
                                          narrow.size(), "UTF-8");
      const XMLSize_t length = converted.length();
      text.reset(new XMLCh[length + 1]);
      std::memcpy(text.get(), converted.str(), length * sizeof(XMLCh));
      text[length] = 0;
      return;
    }
    XMLCh* local = xercesc::XMLString::transcode(narrow.c_str());
    const XMLSize_t length = xercesc::XMLString::stringLen(local);
    text.reset(new XMLCh[length + 1]);
    std::memcpy(text.get(), local, (length + 1) * sizeof(XMLCh));
    xercesc::XMLString::release(&local);
  }
  operator const XMLCh*() const { return text.get(); }

 private:
  std::unique_ptr<XMLCh[]> text;
};

// Runs `change`, turning a DOM failure into this layer's exception.
template <typename Change>
auto domChange(const char* operation, Change change) -> decltype(change()) {
  try {
    return change();
  } catch (const xercesc::DOMException& failure) {
    std::ostringstream text;
    text << "XercesXML - Abort: error in DOM at \"" << operation
         << "\": Error code = " << failure.code << std::endl;
    throw ParsingError(text.str());
  }
}

xercesc::DOMElement* asElement(xercesc::DOMNode* node) {
  requireNode(node);
  if (node->getNodeType() != xercesc::DOMNode::ELEMENT_NODE) {
    throw ParsingError("XercesXML - The node is no element.");
  }
  return static_cast<xercesc::DOMElement*>(node);
}

xercesc::DOMDocument* documentOf(xercesc::DOMNode* node) {
  requireNode(node);
  if (node->getNodeType() == xercesc::DOMNode::DOCUMENT_NODE) {
    return static_cast<xercesc::DOMDocument*>(node);
  }
  return node->getOwnerDocument();
}

bool isBlank(const xercesc::DOMNode* node) {
  if (node == nullptr || node->getNodeType() != xercesc::DOMNode::TEXT_NODE) {
    return false;
  }
  return transcodeFromXMLCh(node->getNodeValue()).find_first_not_of(" \t\r\n") == std::string::npos;
}

// The indentation in front of `element`: the part of the blank text before
// it that follows its last line break ("" if there is none).
std::string indentationOf(const xercesc::DOMNode* element) {
  const xercesc::DOMNode* before = element->getPreviousSibling();
  if (!isBlank(before)) {
    return std::string();
  }
  const std::string blank = transcodeFromXMLCh(before->getNodeValue());
  const std::size_t lineBreak = blank.rfind('\n');
  return lineBreak == std::string::npos ? blank : blank.substr(lineBreak + 1);
}

std::string steps(int depth) {
  return "\n" + std::string(2 * static_cast<std::size_t>(depth), ' ');
}

}  // namespace

DOMNode DOMNode::adopt(xercesc::DOMNode* document, PositionTable* positions) {
  DOMNode handle(document, nullptr);
  if (handle.isValid()) {
    handle.owner->positions = positions;
  } else {
    delete positions;
  }
  return handle;
}

DOMNode DOMNode::getPreviousSibling() const {
  requireNode(node);
  return DOMNode(node->getPreviousSibling(), owner);
}

DOMNode DOMNode::getLastChild() const {
  requireNode(node);
  return DOMNode(node->getLastChild(), owner);
}

bool DOMNode::isElement() const {
  requireNode(node);
  return node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE;
}

bool DOMNode::isText() const {
  requireNode(node);
  const auto type = node->getNodeType();
  return type == xercesc::DOMNode::TEXT_NODE || type == xercesc::DOMNode::CDATA_SECTION_NODE;
}

std::string DOMNode::getTextContent() const {
  requireNode(node);
  return domChange("getTextContent", [&] { return transcodeFromXMLCh(node->getTextContent()); });
}

bool DOMNode::precedes(const DOMNode& other) const {
  requireNode(node);
  requireNode(other.node);
  return (node->compareDocumentPosition(other.node) &
          xercesc::DOMNode::DOCUMENT_POSITION_FOLLOWING) != 0;
}

DOMNode DOMNode::createDocument(const std::string& namespaceUri, const std::string& qualifiedName) {
  static const XMLCh kCore[] = {'C', 'o', 'r', 'e', 0};
  if (!isSystemInitialized()) {
    throw NotInitialized("XercesXML - Document created without initializing system.");
  }
  xercesc::DOMImplementation* implementation =
      xercesc::DOMImplementationRegistry::getDOMImplementation(kCore);
  if (implementation == nullptr) {
    throw ParsingError("XercesXML - No DOM implementation available.");
  }
  const InputText name(qualifiedName);
  return domChange("createDocument", [&] {
    xercesc::DOMDocument* document =
        namespaceUri.empty()
            ? implementation->createDocument(nullptr, name, nullptr)
            : implementation->createDocument(InputText(namespaceUri), name, nullptr);
    return DOMNode(document, nullptr);
  });
}

DOMNode DOMNode::createElement(const std::string& namespaceUri,
                               const std::string& qualifiedName) const {
  xercesc::DOMDocument* document = documentOf(node);
  const InputText name(qualifiedName);
  return domChange("createElement", [&] {
    if (namespaceUri.empty()) {
      return DOMNode(document->createElementNS(nullptr, name), owner);
    }
    return DOMNode(document->createElementNS(InputText(namespaceUri), name), owner);
  });
}

void DOMNode::setAttribute(const std::string& name, const std::string& value,
                           const std::string& namespaceUri) const {
  xercesc::DOMElement* element = asElement(node);
  domChange("setAttribute", [&] {
    if (namespaceUri.empty()) {
      element->setAttribute(InputText(name), InputText(value));
    } else {
      element->setAttributeNS(InputText(namespaceUri), InputText(name), InputText(value));
    }
  });
}

bool DOMNode::hasAttribute(const std::string& localName, const std::string& namespaceUri) const {
  xercesc::DOMElement* element = asElement(node);
  return namespaceUri.empty()
             ? element->hasAttributeNS(nullptr, InputText(localName))
             : element->hasAttributeNS(InputText(namespaceUri), InputText(localName));
}

void DOMNode::appendChild(const DOMNode& child) const {
  requireNode(node);
  requireNode(child.node);
  domChange("appendChild", [&] { node->appendChild(child.node); });
}

void DOMNode::appendText(const std::string& text) const {
  requireNode(node);
  domChange("appendText",
            [&] { node->appendChild(documentOf(node)->createTextNode(InputText(text))); });
}

void DOMNode::replaceContentWithText(const std::string& text) const {
  requireNode(node);
  domChange("replaceContentWithText", [&] {
    while (node->getFirstChild() != nullptr) {
      node->removeChild(node->getFirstChild())->release();
    }
  });
  appendText(text);
}

DOMNode DOMNode::appendOnNewLine(const DOMNode& child, int depth) const {
  appendText(steps(depth));
  appendChild(child);
  return child;
}

void DOMNode::endOnNewLine(int depth) const {
  appendText(steps(depth));
}

void DOMNode::insertIndented(const DOMNode& sibling, const DOMNode& element) const {
  requireNode(node);
  requireNode(element.node);
  xercesc::DOMDocument* document = documentOf(node);
  domChange("insertIndented", [&] {
    if (sibling.isValid()) {
      xercesc::DOMNode* after = sibling.node->getNextSibling();
      if (isBlank(sibling.node->getPreviousSibling())) {
        node->insertBefore(document->createTextNode(InputText("\n" + indentationOf(sibling.node))),
                           after);
      }
      node->insertBefore(element.node, after);
      return;
    }
    const std::string outer = indentationOf(node);
    xercesc::DOMNode* last = node->getLastChild();
    if (isBlank(last)) {
      // The blank that closes this element stays after the new one.
      node->insertBefore(document->createTextNode(InputText("\n" + outer + "  ")), last);
      node->insertBefore(element.node, last);
      return;
    }
    node->appendChild(document->createTextNode(InputText("\n" + outer + "  ")));
    node->appendChild(element.node);
    node->appendChild(document->createTextNode(InputText("\n" + outer)));
  });
}

}  // namespace XercesXML
