#include "xml_access/BoundedDOMParser.h"

#include <limits>
#include <sstream>
#include <string>

#include <xercesc/dom/DOMText.hpp>
#include <xercesc/framework/XMLElementDecl.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include "xml_access/SourcePosition.h"
#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace {

// u"msg-source-position" and the XInclude names, as Xerces-C strings.
const XMLCh kPositionKey[] = {u'm', u's', u'g', u'-', u's', u'o', u'u', u'r', u'c', u'e',
                              u'-', u'p', u'o', u's', u'i', u't', u'i', u'o', u'n', 0};
const XMLCh kXIncludeNamespace[] = {
    u'h', u't', u't', u'p', u':', u'/', u'/', u'w', u'w', u'w', u'.', u'w', u'3', u'.', u'o', u'r',
    u'g', u'/', u'2', u'0', u'0', u'1', u'/', u'X', u'I', u'n', u'c', u'l', u'u', u'd', u'e', 0};
const XMLCh kIncludeName[] = {u'i', u'n', u'c', u'l', u'u', u'd', u'e', 0};

constexpr unsigned kHalfBits = sizeof(std::uintptr_t) * 4;
constexpr std::uintptr_t kHalfMask = (std::uintptr_t{1} << kHalfBits) - 1;

std::uintptr_t saturate(std::uint64_t value) {
  return value > kHalfMask ? kHalfMask : static_cast<std::uintptr_t>(value);
}

}  // namespace

void storeSourcePosition(xercesc::DOMNode* element, std::uint64_t line, std::uint64_t column) {
  const std::uintptr_t packed = (saturate(line) << kHalfBits) | saturate(column);
  element->setUserData(kPositionKey, reinterpret_cast<void*>(packed), nullptr);
}

SourcePosition readSourcePosition(const xercesc::DOMNode* node) {
  const auto packed = reinterpret_cast<std::uintptr_t>(node->getUserData(kPositionKey));
  return SourcePosition{packed >> kHalfBits, packed & kHalfMask};
}

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

void BoundedDOMParser::markPosition() {
  const xercesc::Locator* locator = getScanner()->getLocator();
  lastLine = locator->getLineNumber();
  lastColumn = locator->getColumnNumber();
}

ParseRefused BoundedDOMParser::refusal(const std::string& reason) const {
  const xercesc::Locator* locator = getScanner()->getLocator();
  return ParseRefused{ParseProblem{transcodeFromXMLCh(locator->getSystemId()),
                                   locator->getLineNumber(), locator->getColumnNumber(), reason}};
}

void BoundedDOMParser::startDocument() {
  depth = 0;
  includeDepth = 0;
  longestEntityValue = 0;
  lastLine = 1;
  lastColumn = 1;
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
  xercesc::XercesDOMParser::startElement(elemDecl, urlId, elemPrefix, attrList, attrCount, isEmpty,
                                         isRoot);
  if (keepPositions) {
    storeSourcePosition(getCurrentNode(), line, column);
  }
  markPosition();
}

void BoundedDOMParser::endElement(const xercesc::XMLElementDecl& elemDecl, unsigned int urlId,
                                  bool isRoot, const XMLCh* elemPrefix) {
  --depth;
  // XInclude expands an include when its element ends; the resolver is
  // asked about the part (and its nested parts) during this call.
  const bool isInclude =
      getDoXInclude() && xercesc::XMLString::equals(elemDecl.getBaseName(), kIncludeName) &&
      xercesc::XMLString::equals(getScanner()->getURIText(urlId), kXIncludeNamespace);
  if (isInclude) {
    ++includeDepth;
    try {
      xercesc::XercesDOMParser::endElement(elemDecl, urlId, isRoot, elemPrefix);
    } catch (...) {
      --includeDepth;
      throw;
    }
    --includeDepth;
  } else {
    xercesc::XercesDOMParser::endElement(elemDecl, urlId, isRoot, elemPrefix);
  }
  markPosition();
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
