// Test support for the XML access layer: a fixture that keeps the XML system
// started, small documents parsed from a string into counted memory (so that
// a test sees when a document is released), the files under tests/data/xml,
// and the error texts of a failed parse.

#ifndef MSG_TESTS_XML_TEST_DOCUMENT_H_
#define MSG_TESTS_XML_TEST_DOCUMENT_H_

#include <cstdint>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "msg/XercesXMLException.h"
#include "xml_access/XercesXML.h"

namespace xml_test {

// Counts the blocks handed out and not yet given back. A document parsed with
// it allocates all its nodes through it, so the count drops to zero when, and
// only when, the document is released.
class CountingMemoryManager : public xercesc::MemoryManager {
 public:
  xercesc::MemoryManager* getExceptionMemoryManager() override {
    return xercesc::XMLPlatformUtils::fgMemoryManager;
  }
  void* allocate(XMLSize_t size) override {
    ++liveBlocks;
    return ::operator new(size);
  }
  void deallocate(void* block) override {
    if (block != nullptr) {
      --liveBlocks;
      ::operator delete(block);
    }
  }
  std::int64_t liveBlocks = 0;
};

// Parses `xml` namespace-aware and without validation into a handle that owns
// the document, as the library's parser hands it out. The Xerces-C parser is
// gone on return, so every block counted by `memory` is the document's.
// REQUIRES: the XML system is started.
inline XercesXML::DOMNode parseDocument(const std::string& xml, CountingMemoryManager& memory) {
  xercesc::XercesDOMParser parser(nullptr, &memory);
  parser.setDoNamespaces(true);
  xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(),
                                    "test-document.xml");
  parser.parse(source);
  EXPECT_EQ(parser.getErrorCount(), 0u) << "test document is not well-formed: " << xml;
  return XercesXML::DOMNode(parser.adoptDocument(), nullptr);
}

class XmlSystemFixture : public ::testing::Test {
 protected:
  explicit XmlSystemFixture(XercesXML::OutputEncoding encoding = XercesXML::LocalCodePage)
      : encoding(encoding) {}
  void SetUp() override { XercesXML::initializeSystem(encoding); }
  void TearDown() override { XercesXML::terminateSystem(); }
  XercesXML::DOMNode parse(const std::string& xml) { return parseDocument(xml, memory); }

  CountingMemoryManager memory;

 private:
  XercesXML::OutputEncoding encoding;
};

// ASCII `text` in UTF-16, little or big endian, each character one unit.
inline std::string utf16(const std::string& text, bool bigEndian = false) {
  std::string bytes;
  for (char c : text) {
    bytes += bigEndian ? '\0' : c;
    bytes += bigEndian ? c : '\0';
  }
  return bytes;
}

inline std::string dataFile(const std::string& name) {
  return std::string(MSG_TEST_DATA_DIR) + "/xml/" + name;
}

// One error block: a line naming the kind, file, line and column, and a line
// with the message behind 35 blanks.
inline std::string errorBlock(const std::string& kind, const std::string& file, std::uint64_t line,
                              std::uint64_t column, const std::string& message) {
  return kind + " in file \"" + file + "\", line " + std::to_string(line) + ", column " +
         std::to_string(column) + "\n" + std::string(35, ' ') + "Message: " + message + "\n";
}

constexpr char kFinished[] = "XercesXML - Parsing finished with errors.\n";

// Runs `operation`, which must raise `Exception` with the text `text`.
template <typename Exception, typename Operation>
void expectText(Operation operation, const std::string& text) {
  try {
    operation();
    ADD_FAILURE() << "no exception";
  } catch (const Exception& failure) {
    EXPECT_EQ(failure.getText(), text);
  }
}

// Parses `file` and gives the text of the ParsingError it must raise.
inline std::string parsingErrorOf(XercesXML::Parser& parser, const std::string& file) {
  try {
    parser.parseFile(file);
    ADD_FAILURE() << "no ParsingError for " << file;
  } catch (const XercesXML::ParsingError& failure) {
    EXPECT_STREQ(failure.what(), failure.getText().c_str());
    return failure.getText();
  }
  return std::string();
}

// The local names of the element children of `node`, in document order.
inline std::vector<std::string> elementNames(const XercesXML::DOMNode& node) {
  std::vector<std::string> names;
  for (XercesXML::DOMNode child = node.getFirstElementChild(); child.isValid();
       child = child.getNextElementSibling()) {
    names.push_back(child.getNodeName());
  }
  return names;
}

}  // namespace xml_test

#endif  // MSG_TESTS_XML_TEST_DOCUMENT_H_
