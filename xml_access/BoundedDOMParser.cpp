#include "xml_access/BoundedDOMParser.h"

#include <limits>
#include <sstream>
#include <string>
#include <utility>

#include <xercesc/dom/DOMText.hpp>
#include <xercesc/framework/XMLElementDecl.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace {

// The XInclude names, as Xerces-C strings.
const XMLCh kXIncludeNamespace[] = {
    u'h', u't', u't', u'p', u':', u'/', u'/', u'w', u'w', u'w', u'.', u'w', u'3', u'.', u'o', u'r',
    u'g', u'/', u'2', u'0', u'0', u'1', u'/', u'X', u'I', u'n', u'c', u'l', u'u', u'd', u'e', 0};
const XMLCh kIncludeName[] = {u'i', u'n', u'c', u'l', u'u', u'd', u'e', 0};

SourcePosition positionAt(std::uint64_t line, std::uint64_t column) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();
  return SourcePosition{static_cast<std::uint32_t>(line > kLargest ? kLargest : line),
                        static_cast<std::uint32_t>(column > kLargest ? kLargest : column)};
}

}  // namespace

BoundedDOMParser::BoundedDOMParser()
    : xercesc::XercesDOMParser(nullptr, xercesc::XMLPlatformUtils::fgMemoryManager, nullptr) {
  securityManager.setEntityExpansionLimit(kMaxEntityReferences);
  setSecurityManager(&securityManager);
}

BoundedDOMParser::~BoundedDOMParser() = default;

void BoundedDOMParser::parseBounded(const xercesc::InputSource& source) {
  parseWithRestarts(source);
}

void BoundedDOMParser::parseBounded(const char* systemId) {
  parseWithRestarts(systemId);
}

template <typename Source>
void BoundedDOMParser::parseWithRestarts(const Source& source) {
  referenceLimit = kMaxEntityReferences;
  while (true) {
    securityManager.setEntityExpansionLimit(referenceLimit);
    try {
      parse(source);
      return;
    } catch (const RestartWithLimit& restart) {
      referenceLimit = restart.referenceLimit;
    }
  }
}

std::string BoundedDOMParser::referenceLimitNote() const {
  if (referenceLimit >= kMaxEntityReferences) {
    return std::string();
  }
  std::ostringstream note;
  note << "the limit of " << kMaxEntityReferences << " entity references was lowered to "
       << referenceLimit << ": with entity values of up to " << longestEntityValue
       << " characters, more would exceed the entity expansion limit of " << kMaxEntityExpansion
       << " characters";
  return note.str();
}

PositionTable BoundedDOMParser::takePositions() {
  PositionTable taken = std::move(positions);
  positions = PositionTable();
  taken.seal();
  return taken;
}

bool BoundedDOMParser::isInclude(const xercesc::XMLElementDecl& elemDecl,
                                 unsigned int urlId) const {
  return getDoXInclude() && xercesc::XMLString::equals(elemDecl.getBaseName(), kIncludeName) &&
         xercesc::XMLString::equals(getScanner()->getURIText(urlId), kXIncludeNamespace);
}

void BoundedDOMParser::markPosition() {
  const xercesc::Locator* locator = getScanner()->getLocator();
  lastLine = locator->getLineNumber();
  lastColumn = locator->getColumnNumber();
}

ParseRefused BoundedDOMParser::refusal(const std::string& reason) const {
  const xercesc::Locator* locator = getScanner()->getLocator();
  return refusalAt(locator->getLineNumber(), locator->getColumnNumber(), reason);
}

ParseRefused BoundedDOMParser::refusalAt(std::uint64_t line, std::uint64_t column,
                                         const std::string& reason) const {
  const xercesc::Locator* locator = getScanner()->getLocator();
  return ParseRefused{
      ParseProblem{transcodeFromXMLCh(locator->getSystemId()), line, column, reason}};
}

void BoundedDOMParser::startDocument() {
  depth = 0;
  includeDepth = 0;
  longestEntityValue = 0;
  lastLine = 1;
  lastColumn = 1;
  positions = PositionTable();
  openIncludes.clear();
  openMarks.clear();
  xercesc::XercesDOMParser::startDocument();
}

void BoundedDOMParser::startElement(const xercesc::XMLElementDecl& elemDecl, unsigned int urlId,
                                    const XMLCh* elemPrefix,
                                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attrList,
                                    XMLSize_t attrCount, bool isEmpty, bool isRoot) {
  if (++depth > kMaxElementDepth) {
    std::ostringstream reason;
    reason << "elements are nested deeper than the limit of " << kMaxElementDepth << " levels";
    throw refusal(reason.str());
  }
  const std::uint64_t line = lastLine;
  const std::uint64_t column = lastColumn;
  if (attrCount > kMaxAttributesPerElement) {
    std::ostringstream reason;
    reason << "an element has " << attrCount << " attributes, more than the limit of "
           << kMaxAttributesPerElement;
    throw refusalAt(line, column, reason.str());
  }
  xercesc::XercesDOMParser::startElement(elemDecl, urlId, elemPrefix, attrList, attrCount, isEmpty,
                                         isRoot);
  if (keepPositions) {
    if (isInclude(elemDecl, urlId)) {
      openIncludes.push_back(positions.size());
    }
    positions.add(getCurrentNode(), line, column);
  }
  markPosition();
  if (marks != nullptr) {
    // The scanner stands just after the start tag now.
    if (isEmpty) {
      marks->push_back(ElementMarks{positionAt(line, column), positionAt(lastLine, lastColumn),
                                    positionAt(lastLine, lastColumn)});
    } else {
      openMarks.push_back(marks->size());
      marks->push_back(
          ElementMarks{positionAt(line, column), positionAt(lastLine, lastColumn), {}});
    }
  }
}

void BoundedDOMParser::endElement(const xercesc::XMLElementDecl& elemDecl, unsigned int urlId,
                                  bool isRoot, const XMLCh* elemPrefix) {
  --depth;
  // XInclude expands an include when its element ends; the resolver is
  // asked about the part (and its nested parts) during this call.
  if (isInclude(elemDecl, urlId)) {
    ++includeDepth;
    try {
      xercesc::XercesDOMParser::endElement(elemDecl, urlId, isRoot, elemPrefix);
    } catch (...) {
      --includeDepth;
      throw;
    }
    --includeDepth;
    if (keepPositions && !openIncludes.empty()) {
      // The include element and what it held (a fallback) are replaced by
      // the expansion, and Xerces-C may reuse their nodes for later ones.
      positions.truncate(openIncludes.back());
      openIncludes.pop_back();
    }
  } else {
    xercesc::XercesDOMParser::endElement(elemDecl, urlId, isRoot, elemPrefix);
  }
  markPosition();
  // An element written empty ("<a/>") ends inside startElement, before its
  // marks are noted complete; only an element noted open ends here, and it
  // is the innermost open one when the depths agree.
  if (marks != nullptr && !openMarks.empty() && depth + 1 == openMarks.size()) {
    (*marks)[openMarks.back()].close = positionAt(lastLine, lastColumn);
    openMarks.pop_back();
  }
}

void BoundedDOMParser::docCharacters(const XMLCh* chars, XMLSize_t length, bool cdataSection) {
  xercesc::DOMNode* current = getCurrentNode();
  if (!cdataSection && fWithinElement && current != nullptr &&
      current->getNodeType() == xercesc::DOMNode::TEXT_NODE) {
    // More text for the node after an entity reference. appendData wants a
    // terminated string; `chars` is not terminated.
    appendBuffer.assign(chars, length);
    static_cast<xercesc::DOMText*>(current)->appendData(appendBuffer.c_str());
  } else {
    xercesc::XercesDOMParser::docCharacters(chars, length, cdataSection);
  }
  markPosition();
}

void BoundedDOMParser::ignorableWhitespace(const XMLCh* chars, XMLSize_t length,
                                           bool cdataSection) {
  xercesc::XercesDOMParser::ignorableWhitespace(chars, length, cdataSection);
  markPosition();
}

void BoundedDOMParser::docComment(const XMLCh* comment) {
  xercesc::XercesDOMParser::docComment(comment);
  markPosition();
}

void BoundedDOMParser::docPI(const XMLCh* target, const XMLCh* data) {
  xercesc::XercesDOMParser::docPI(target, data);
  markPosition();
}

void BoundedDOMParser::doctypeDecl(const xercesc::DTDElementDecl& elemDecl, const XMLCh* publicId,
                                   const XMLCh* systemId, bool hasIntSubset, bool hasExtSubset) {
  if (refuseDoctype) {
    throw refusal(
        "a document type declaration (DOCTYPE) is not allowed here: it could declare entities "
        "or load a DTD");
  }
  if (systemId != nullptr && *systemId != 0) {
    // Refused here rather than by the entity resolver: Xerces-C loses a
    // few blocks on every document with an external DTD.
    throw refusal("the external DTD \"" + transcodeFromXMLCh(systemId) +
                  "\" is not read: external entities and DTDs are refused");
  }
  xercesc::XercesDOMParser::doctypeDecl(elemDecl, publicId, systemId, hasIntSubset, hasExtSubset);
}

void BoundedDOMParser::entityDecl(const xercesc::DTDEntityDecl& entityDecl, bool isPEDecl,
                                  bool isIgnored) {
  xercesc::XercesDOMParser::entityDecl(entityDecl, isPEDecl, isIgnored);
  if (entityDecl.getValueLen() <= longestEntityValue) {
    return;
  }
  // Each reference adds at most the value of one entity (nested references
  // count on their own), so the reference limit times the longest value
  // bounds the expansion. When that exceeds the bound, start again with a
  // lower limit, halved beyond the need so that a subset of ever longer
  // values restarts only a few times.
  longestEntityValue = entityDecl.getValueLen();
  if (referenceLimit * longestEntityValue <= kMaxEntityExpansion) {
    return;
  }
  const std::size_t lowerLimit = kMaxEntityExpansion / (2 * longestEntityValue);
  if (lowerLimit == 0) {
    std::ostringstream reason;
    reason << "an entity value of " << longestEntityValue
           << " characters exceeds the entity expansion limit of " << kMaxEntityExpansion
           << " characters";
    throw refusal(reason.str());
  }
  throw RestartWithLimit{lowerLimit};
}

void BoundedDOMParser::endIntSubset() {
  xercesc::XercesDOMParser::endIntSubset();
  markPosition();
}

}  // namespace XercesXML
