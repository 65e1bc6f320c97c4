#include "xml_access/DOMNode.h"

#include <limits>
#include <sstream>

#include <xercesc/dom/DOMException.hpp>
#include <xercesc/dom/DOMNamedNodeMap.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

#include "msg/XercesXMLException.h"
#include "xml_access/PositionTable.h"
#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace {

void requireNode(const xercesc::DOMNode* node) {
  if (node == nullptr) {
    throw NullPointer("XercesXML - Access to DOM null pointer.");
  }
}

// The text of a DOM failure: the operation's prefix, the DOM error code in
// decimal and one line end.
std::string domFailureText(const char* prefix, const xercesc::DOMException& failure) {
  std::ostringstream text;
  text << prefix << "Error code = " << failure.code << std::endl;
  return text.str();
}

// A stored position as an int; one beyond the range of int saturates.
int clampPosition(std::uint64_t value) {
  constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<int>::max());
  return static_cast<int>(value > kLargest ? kLargest : value);
}

// The first element among `candidate` and its following siblings, or null.
xercesc::DOMNode* firstElementFrom(xercesc::DOMNode* candidate) {
  while (candidate != nullptr && candidate->getNodeType() != xercesc::DOMNode::ELEMENT_NODE) {
    candidate = candidate->getNextSibling();
  }
  return candidate;
}

// A narrow string converted to XMLCh in the local code page, released when
// the holder ends.
class WideString {
 public:
  explicit WideString(const std::string& narrow)
      : text(xercesc::XMLString::transcode(narrow.c_str(),
                                           xercesc::XMLPlatformUtils::fgMemoryManager)) {}
  WideString(const WideString&) = delete;
  WideString& operator=(const WideString&) = delete;
  ~WideString() { xercesc::XMLString::release(&text, xercesc::XMLPlatformUtils::fgMemoryManager); }
  const XMLCh* get() const { return text; }

 private:
  XMLCh* text;
};

}  // namespace

DOMNode::DOMNode() : node(nullptr), owner(nullptr) {
  if (!isSystemInitialized()) {
    throw NotInitialized("XercesXML - DOMNode object created without initializing system.");
  }
}

// The test comes before a reference is taken: a constructor that raises
// runs no destructor, so a reference taken first would never be dropped.
DOMNode::DOMNode(const DOMNode& other) : node(nullptr), owner(nullptr) {
  if (!isSystemInitialized()) {
    throw NotInitialized("XercesXML - DOMNode object created without initializing system.");
  }
  if (other.node != nullptr) {
    node = other.node;
    owner = other.owner;
    ++owner->count;
  }
}

DOMNode::DOMNode(xercesc::DOMNode* node, NodeOwnerBlock* owner) : node(node), owner(owner) {
  if (node == nullptr) {
    return;
  }
  if (owner != nullptr) {
    ++owner->count;
  } else {
    this->owner = new NodeOwnerBlock{1, node, nullptr, nullptr};
  }
}

DOMNode::~DOMNode() {
  if (node != nullptr) {
    releaseOwnerBlock(owner);
  }
}

DOMNode& DOMNode::operator=(const DOMNode& other) {
  if (&other == this || other.node == node) {
    return *this;
  }
  // Dropping first is safe when `other` was reached from this handle (as in
  // `handle = handle.getNextSibling()`): `other` holds a reference of its own.
  if (node != nullptr) {
    releaseOwnerBlock(owner);
    node = nullptr;
    owner = nullptr;
  }
  if (other.node == nullptr) {
    return *this;
  }
  node = other.node;
  owner = other.owner;
  ++owner->count;
  return *this;
}

void DOMNode::releaseOwnerBlock(NodeOwnerBlock* block) {
  --block->count;
  if (block->count != 0) {
    return;
  }
  if (block->parent != nullptr) {
    // The node belongs to the parent block; only the parent's reference goes.
    releaseOwnerBlock(block->parent);
    delete block;
    return;
  }
  if (block->node != nullptr) {
    block->node->release();
  }
  delete block->positions;
  delete block;
}

DOMNode DOMNode::getFirstChild() const {
  requireNode(node);
  try {
    return DOMNode(node->getFirstChild(), owner);
  } catch (const xercesc::DOMException& failure) {
    throw ParsingError(
        domFailureText("XercesXML - Abort: error in DOM \"getFirstChild\": ", failure));
  }
}

DOMNode DOMNode::getFirstElementChild() const {
  requireNode(node);
  try {
    xercesc::DOMNode* element = firstElementFrom(node->getFirstChild());
    if (element == nullptr) {
      return DOMNode();
    }
    return DOMNode(element, owner);
  } catch (const xercesc::DOMException& failure) {
    throw ParsingError(
        domFailureText("XercesXML - Abort: error in DOM \"getFirstElementChild\": ", failure));
  }
}

DOMNode DOMNode::getNextSibling() const {
  requireNode(node);
  try {
    return DOMNode(node->getNextSibling(), owner);
  } catch (const xercesc::DOMException& failure) {
    throw ParsingError(
        domFailureText("XercesXML - Abort: error in DOM \"getNextSibling\": ", failure));
  }
}

DOMNode DOMNode::getNextElementSibling() const {
  requireNode(node);
  try {
    xercesc::DOMNode* element = firstElementFrom(node->getNextSibling());
    if (element == nullptr) {
      return DOMNode();
    }
    return DOMNode(element, owner);
  } catch (const xercesc::DOMException& failure) {
    throw ParsingError(
        domFailureText("XercesXML - Abort: error in DOM \"getNextElementSibling\": ", failure));
  }
}

std::string DOMNode::getNodeName() const {
  requireNode(node);
  try {
    if (node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE) {
      return transcodeFromXMLCh(node->getLocalName());
    }
    return transcodeFromXMLCh(node->getNodeName());
  } catch (const xercesc::DOMException& failure) {
    throw NavigationError(
        domFailureText("XercesXML - Abort: error in DOM at \"getNodeName\": ", failure));
  }
}

std::string DOMNode::getNodeValue() const {
  requireNode(node);
  try {
    return transcodeFromXMLCh(node->getNodeValue());
  } catch (const xercesc::DOMException& failure) {
    throw NavigationError(
        domFailureText("XercesXML - Abort: error in DOM at \"getNodeValue\": ", failure));
  }
}

std::string DOMNode::getChildText() const {
  std::string text;
  for (DOMNode child = getFirstChild(); child.isValid(); child = child.getNextSibling()) {
    text += child.getNodeValue();
  }
  return text;
}

std::string DOMNode::getAttributeByName(const std::string& name,
                                        const std::string& namespaceUri) const {
  requireNode(node);
  try {
    const WideString wideName(name);
    const xercesc::DOMNamedNodeMap* attributes = node->getAttributes();
    if (attributes == nullptr) {
      return std::string();
    }
    xercesc::DOMNode* attribute = nullptr;
    if (!namespaceUri.empty()) {
      const WideString wideNamespace(namespaceUri);
      attribute = attributes->getNamedItemNS(wideNamespace.get(), wideName.get());
    } else {
      attribute = attributes->getNamedItem(wideName.get());
    }
    if (attribute == nullptr) {
      return std::string();
    }
    return transcodeFromXMLCh(attribute->getNodeValue());
  } catch (const xercesc::DOMException& failure) {
    throw NavigationError(
        domFailureText("XercesXML - Abort: error in DOM at \"getAttributeByName\": ", failure));
  }
}

SourcePosition DOMNode::getSourcePosition() const {
  requireNode(node);
  return owner->positions != nullptr ? owner->positions->find(node) : SourcePosition{};
}

int DOMNode::getSourceLine() const {
  return clampPosition(getSourcePosition().line);
}

int DOMNode::getSourceColumn() const {
  return clampPosition(getSourcePosition().column);
}

std::string DOMNode::getSourceFile() const {
  const SourcePosition position = getSourcePosition();
  return position.file == 0 ? std::string() : owner->positions->fileName(position.file);
}

}  // namespace XercesXML
