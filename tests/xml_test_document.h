// Test support: small DOM documents parsed from a string with Xerces-C, whose
// memory is counted so that a test can see when a document is released.

#ifndef MSG_TESTS_XML_TEST_DOCUMENT_H_
#define MSG_TESTS_XML_TEST_DOCUMENT_H_

#include <cstdint>
#include <new>
#include <string>

#include <gtest/gtest.h>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "xml_access/XercesXML.h"

namespace xml_test {

// A memory manager that counts the blocks it has handed out and not yet got
// back. A document parsed with it allocates all its nodes through it, so the
// count drops to zero when, and only when, the document is released.
class CountingMemoryManager : public xercesc::MemoryManager {
 public:
  xercesc::MemoryManager* getExceptionMemoryManager() override {
    return xercesc::XMLPlatformUtils::fgMemoryManager;
  }
  void* allocate(XMLSize_t size) override {
    void* block = ::operator new(size);
    ++liveBlocks;
    return block;
  }
  void deallocate(void* block) override {
    if (block != nullptr) {
      --liveBlocks;
      ::operator delete(block);
    }
  }
  std::int64_t getLiveBlocks() const { return liveBlocks; }

 private:
  std::int64_t liveBlocks = 0;
};

// Parses `xml` namespace-aware and without validation, and gives the
// document, which the caller owns. The parser is gone on return, so every
// block still counted by `memory` belongs to the document.
// REQUIRES: the XML system is started.
inline xercesc::DOMDocument* parseDocument(const std::string& xml, CountingMemoryManager& memory) {
  xercesc::XercesDOMParser parser(nullptr, &memory);
  parser.setDoNamespaces(true);
  xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(),
                                    "test-document.xml");
  parser.parse(source);
  EXPECT_EQ(parser.getErrorCount(), 0u) << "test document is not well-formed: " << xml;
  return parser.adoptDocument();
}

// The first handle of a parsed document: it owns the document, as the handle
// that the library's parser hands out does.
inline XercesXML::DOMNode adoptIntoHandle(xercesc::DOMDocument* document) {
  return XercesXML::DOMNode(document, nullptr);
}

// Starts the XML system for each test and stops it afterwards. Every handle
// of a test is gone before the stop.
class XmlSystemFixture : public ::testing::Test {
 protected:
  explicit XmlSystemFixture(XercesXML::OutputEncoding encoding = XercesXML::LocalCodePage)
      : encoding(encoding) {}
  void SetUp() override { XercesXML::initializeSystem(encoding); }
  void TearDown() override { XercesXML::terminateSystem(); }

  // A handle on the document parsed from `xml`, counted in `memory`.
  XercesXML::DOMNode parse(const std::string& xml) {
    return adoptIntoHandle(parseDocument(xml, memory));
  }

  CountingMemoryManager memory;

 private:
  XercesXML::OutputEncoding encoding;
};

}  // namespace xml_test

#endif  // MSG_TESTS_XML_TEST_DOCUMENT_H_
