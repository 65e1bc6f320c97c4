// Test support for the parser tests: paths of the XML files under
// tests/data/xml, a scratch folder for output files, and a fixture that keeps
// the XML system started for the length of each test.

#ifndef MSG_TESTS_XML_FILES_H_
#define MSG_TESTS_XML_FILES_H_

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "msg/XercesXMLException.h"
#include "xml_access/XercesXML.h"

namespace xml_files {

// Absolute path of a file under tests/data/xml.
inline std::string dataFile(const std::string& name) {
  return std::string(MSG_TEST_DATA_DIR) + "/xml/" + name;
}

// The bytes of a file, or an empty string if it cannot be read.
inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// One error block as the parser reports it: a line naming the kind, file,
// line and column, and a line with the message behind 35 blanks.
inline std::string errorBlock(const std::string& kind, const std::string& file, std::uint64_t line,
                              std::uint64_t column, const std::string& message) {
  return kind + " in file \"" + file + "\", line " + std::to_string(line) + ", column " +
         std::to_string(column) + "\n" + std::string(35, ' ') + "Message: " + message + "\n";
}

constexpr char kFinished[] = "XercesXML - Parsing finished with errors.\n";

// Parses `file` and gives the text of the ParsingError it must raise.
inline std::string parsingErrorOf(XercesXML::Parser& parser, const std::string& file) {
  try {
    XercesXML::DOMNode document = parser.parseFile(file);
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

// Starts the XML system before each test and stops it after; gives each test
// a fresh scratch folder for output files, removed afterwards.
class XmlFilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    XercesXML::initializeSystem(XercesXML::LocalCodePage);
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    scratch = std::filesystem::temp_directory_path() /
              (std::string("msg_xml_") + test->test_suite_name() + "_" + test->name());
    std::filesystem::remove_all(scratch);
    std::filesystem::create_directories(scratch);
  }

  void TearDown() override {
    XercesXML::terminateSystem();
    std::filesystem::remove_all(scratch);
  }

  // A path in the scratch folder.
  std::string scratchFile(const std::string& name) const { return (scratch / name).string(); }

  std::filesystem::path scratch;
};

}  // namespace xml_files

#endif  // MSG_TESTS_XML_FILES_H_
