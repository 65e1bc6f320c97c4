#include "xml_access/PositionTable.h"

#include <algorithm>
#include <limits>

namespace XercesXML {

namespace {

std::uint32_t saturate(std::uint64_t value) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::uint32_t>(value > kLargest ? kLargest : value);
}

// Calls `visit` for every element below `root`, in document order, without
// recursion (documents nest up to the parser's depth limit).
template <typename Visit>
void forEachElement(const xercesc::DOMNode* root, Visit visit) {
  if (root == nullptr) {
    return;
  }
  const xercesc::DOMNode* node = root->getFirstChild();
  while (node != nullptr) {
    if (node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE) {
      visit(node);
    }
    if (node->getFirstChild() != nullptr) {
      node = node->getFirstChild();
      continue;
    }
    while (node != root && node->getNextSibling() == nullptr) {
      node = node->getParentNode();
    }
    node = node == root ? nullptr : node->getNextSibling();
  }
}

}  // namespace

void PositionTable::add(const xercesc::DOMNode* element, std::uint64_t line, std::uint64_t column) {
  records.push_back(Record{element, SourcePosition{saturate(line), saturate(column)}});
}

void PositionTable::add(const xercesc::DOMNode* element, SourcePosition position) {
  records.push_back(Record{element, position});
}

std::uint32_t PositionTable::addFile(const std::string& name) {
  files.push_back(name);
  return saturate(files.size());
}

const std::string& PositionTable::fileName(std::uint32_t file) const {
  static const std::string kOwnFile;
  return file == 0 || file > files.size() ? kOwnFile : files[file - 1];
}

void PositionTable::truncate(std::size_t count) {
  if (count < records.size()) {
    records.resize(count);
  }
}

void PositionTable::seal() {
  std::stable_sort(records.begin(), records.end(),
                   [](const Record& a, const Record& b) { return a.node < b.node; });
}

SourcePosition PositionTable::find(const xercesc::DOMNode* node) const {
  const auto after =
      std::upper_bound(records.begin(), records.end(), node,
                       [](const xercesc::DOMNode* key, const Record& r) { return key < r.node; });
  if (after == records.begin() || (after - 1)->node != node) {
    return SourcePosition{};
  }
  return (after - 1)->position;
}

std::vector<SourcePosition> PositionTable::inDocumentOrder(const xercesc::DOMNode* document) const {
  std::vector<SourcePosition> positions;
  forEachElement(document,
                 [&](const xercesc::DOMNode* element) { positions.push_back(find(element)); });
  return positions;
}

PositionTable PositionTable::fromDocumentOrder(const xercesc::DOMNode* document,
                                               const std::vector<SourcePosition>& positions,
                                               const PositionTable& namesFrom) {
  PositionTable table;
  table.files = namesFrom.files;
  table.records.reserve(positions.size());
  std::size_t elements = 0;
  forEachElement(document, [&](const xercesc::DOMNode* element) {
    if (elements < positions.size()) {
      table.records.push_back(Record{element, positions[elements]});
    }
    ++elements;
  });
  if (elements != positions.size()) {
    table.records.clear();
  }
  table.seal();
  return table;
}

}  // namespace XercesXML
