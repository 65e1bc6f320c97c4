#include "xml_access/PartPositions.h"

#include <filesystem>
#include <utility>

#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/util/XMLString.hpp>

#include "xml_access/ReferenceGuard.h"
#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace fs = std::filesystem;

namespace {

const XMLCh kXIncludeNamespace[] = {
    u'h', u't', u't', u'p', u':', u'/', u'/', u'w', u'w', u'w', u'.', u'w', u'3', u'.', u'o', u'r',
    u'g', u'/', u'2', u'0', u'0', u'1', u'/', u'X', u'I', u'n', u'c', u'l', u'u', u'd', u'e', 0};
const XMLCh kXmlNamespace[] = {u'h', u't', u't', u'p', u':', u'/', u'/', u'w', u'w', u'w',
                               u'.', u'w', u'3', u'.', u'o', u'r', u'g', u'/', u'X', u'M',
                               u'L', u'/', u'1', u'9', u'9', u'8', u'/', u'n', u'a', u'm',
                               u'e', u's', u'p', u'a', u'c', u'e', 0};
const XMLCh kInclude[] = {u'i', u'n', u'c', u'l', u'u', u'd', u'e', 0};
const XMLCh kBase[] = {u'b', u'a', u's', u'e', 0};
const XMLCh kXmlBase[] = {u'x', u'm', u'l', u':', u'b', u'a', u's', u'e', 0};

bool isInclude(const xercesc::DOMNode* element) {
  return xercesc::XMLString::equals(element->getNamespaceURI(), kXIncludeNamespace) &&
         xercesc::XMLString::equals(element->getLocalName(), kInclude);
}

// The xml:base attribute of `element`; empty if it has none.
std::string xmlBaseOf(const xercesc::DOMNode* element) {
  // XInclude sets the attribute by its qualified name, without a namespace.
  const auto* asElement = static_cast<const xercesc::DOMElement*>(element);
  const XMLCh* base = asElement->getAttribute(kXmlBase);
  if (base == nullptr || *base == 0) {
    base = asElement->getAttributeNS(kXmlNamespace, kBase);
  }
  return base == nullptr ? std::string() : transcodeFromXMLCh(base);
}

// Walks the elements below `root` in document order, without recursion
// (documents nest up to the parser's depth limit): `enter` sees an element
// and returns whether to walk what it holds, `leave` sees it once that is
// done.
template <typename Enter, typename Leave>
void walkElements(const xercesc::DOMNode* root, Enter enter, Leave leave) {
  const xercesc::DOMNode* node = root == nullptr ? nullptr : root->getFirstChild();
  while (node != nullptr) {
    const bool isElement = node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE;
    if ((!isElement || enter(node)) && node->getFirstChild() != nullptr) {
      node = node->getFirstChild();
      continue;
    }
    while (true) {
      if (node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE) {
        leave(node);
      }
      if (node->getNextSibling() != nullptr) {
        node = node->getNextSibling();
        break;
      }
      node = node->getParentNode();
      if (node == root) {
        node = nullptr;
        break;
      }
    }
  }
}

}  // namespace

void PartPositions::record(const std::string& path, const xercesc::DOMNode* part,
                           const PositionTable& positions) {
  auto [entry, isNew] = parts.emplace(path, std::vector<Element>());
  if (!isNew) {
    return;
  }
  std::vector<Element>& elements = entry->second;
  walkElements(
      part,
      [&](const xercesc::DOMNode* element) {
        const bool include = isInclude(element);
        elements.push_back(Element{positions.find(element), include});
        return !include;  // a fallback in it is not part of the expansion
      },
      [](const xercesc::DOMNode*) {});
}

// The state of one place(): a stack of the parts being walked, innermost
// last.
class PartPositions::Placement {
 public:
  Placement(const PartPositions& recorded, const std::string& documentName, PositionTable& table)
      : recorded(recorded), table(table) {
    const std::string local = localFileOf(documentName);
    const fs::path absolute = resolveLocalFile(local, std::string());
    folder = absolute.parent_path();
    namedFolder = fs::path(local).parent_path();
    // The document itself: its own elements have records already.
    stack.emplace_back(nullptr, nullptr, absolute.string());
  }

  bool enter(const xercesc::DOMNode* element) {
    Part& current = stack.back();
    if (current.root == nullptr) {
      // In the document's own file, an element without a record came from a
      // part, or from the fallback of an include, which has no xml:base.
      if (table.find(element).line == 0 && !xmlBaseOf(element).empty()) {
        startPart(element);
      }
      return true;
    }
    if (current.elements == nullptr) {
      return true;  // a part without a record: nothing to give
    }
    if (current.next >= current.elements->size()) {
      current.linedUp = false;
      return true;
    }
    const Element& own = (*current.elements)[current.next++];
    if (own.isInclude) {
      if (xmlBaseOf(element).empty()) {
        current.linedUp = false;  // a fallback took the include's place
      } else {
        startPart(element);
      }
      return true;
    }
    current.found.emplace_back(element, own.position);
    return true;
  }

  // Adds what the walk found to the table; the walk reads the table, which
  // must stay sealed until then.
  void addToTable() {
    for (const auto& [node, position] : placed) {
      table.add(node, position);
    }
    table.seal();
  }

  void leave(const xercesc::DOMNode* element) {
    if (stack.back().root != element) {
      return;
    }
    Part& done = stack.back();
    if (done.elements != nullptr && done.linedUp && done.next == done.elements->size()) {
      const std::uint32_t file = numberOf(done.path);
      for (auto& [node, position] : done.found) {
        position.file = file;
        placed.emplace_back(node, position);
      }
    }
    stack.pop_back();
  }

 private:
  struct Part {
    Part(const xercesc::DOMNode* root, const std::vector<Element>* elements, std::string path)
        : root(root), elements(elements), path(std::move(path)) {}

    const xercesc::DOMNode* root;          // the part's root element; null for the document
    const std::vector<Element>* elements;  // of its own parse; null if not recorded
    std::string path;                      // absolute
    std::size_t next = 0;                  // the next of `elements` to meet
    bool linedUp = true;
    std::vector<std::pair<const xercesc::DOMNode*, SourcePosition>> found;
  };

  // Enters the part whose root `element` is; the root is its first element.
  void startPart(const xercesc::DOMNode* element) {
    const std::string path =
        resolveLocalFile(localFileOf(xmlBaseOf(element)), stack.back().path).string();
    const auto part = recorded.parts.find(path);
    stack.emplace_back(element, part == recorded.parts.end() ? nullptr : &part->second, path);
    Part& started = stack.back();
    if (started.elements == nullptr || started.elements->empty() ||
        started.elements->front().isInclude) {
      started.elements = nullptr;
      return;
    }
    started.found.emplace_back(element, started.elements->front().position);
    started.next = 1;
  }

  // The table's number for the part at `path`, named as the document is.
  std::uint32_t numberOf(const std::string& path) {
    auto [entry, isNew] = numbers.emplace(path, 0);
    if (isNew) {
      const fs::path fromFolder = fs::path(path).lexically_relative(folder);
      entry->second = table.addFile(
          fromFolder.empty() ? path : (namedFolder / fromFolder).lexically_normal().string());
    }
    return entry->second;
  }

  const PartPositions& recorded;
  PositionTable& table;
  fs::path folder;       // of the document, absolute
  fs::path namedFolder;  // of the document, as the caller named it
  std::vector<Part> stack;
  std::map<std::string, std::uint32_t> numbers;
  std::vector<std::pair<const xercesc::DOMNode*, SourcePosition>> placed;
};

void PartPositions::place(const xercesc::DOMNode* document, const std::string& documentName,
                          PositionTable& table) const {
  if (parts.empty()) {
    return;
  }
  Placement placement(*this, documentName, table);
  walkElements(
      document, [&](const xercesc::DOMNode* element) { return placement.enter(element); },
      [&](const xercesc::DOMNode* element) { placement.leave(element); });
  placement.addToTable();
}

}  // namespace XercesXML
