// Fuzzes the XML parser of the library on its own: arbitrary bytes as a
// file, read by XercesXML::Parser under each of its settings (relaxed or
// strict validation, XInclude on or off, the rules for message documents on
// or off, the full parse or the first one with positions), and a walk over
// every element of a document that parses, reading names, attributes and
// texts as the loader does. A parse may fail only with ParsingError that
// names at least one problem; any other exception, a crash, a leak, a hang
// or a sanitizer report is a finding.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/DocumentScratch.h"
#include "xml_access/XercesXML.h"

namespace {

msgfuzz::DocumentScratch* scratch = nullptr;

// Reads what the loader reads of every element, depth first, up to a fixed
// number of elements so a huge document costs no more than a small one.
void walk(const XercesXML::DOMNode& element, int& budget) {
  for (XercesXML::DOMNode child = element.getFirstElementChild(); child.isValid() && budget > 0;
       child = child.getNextElementSibling()) {
    --budget;
    child.getNodeName();
    child.getAttributeByName("xml:lang", std::string());
    child.getAttributeByName("id", std::string());
    child.getChildText();
    walk(child, budget);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  msgfuzz::leaveTheNetwork();
  XercesXML::initializeSystem(XercesXML::LocalCodePage);
  static msgfuzz::DocumentScratch files;
  scratch = &files;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  // The length picks the settings, so every input is a whole file and the
  // seed documents keep their first byte.
  const bool relaxed = size % 2 == 0;
  const bool xInclude = size % 4 < 2;
  const bool messageRules = size % 8 >= 4;
  const bool positions = size % 16 >= 8;
  const std::string& path = scratch->write(bytes, size);

  XercesXML::Parser parser(relaxed, false);
  if (xInclude) {
    parser.setXInclude(true, std::string());
  }
  parser.setMessageDocumentRules(messageRules);
  XercesXML::DOMNode document;
  try {
    document = positions ? parser.parseFileWithPositions(path) : parser.parseFile(path);
  } catch (const XercesXML::ParsingError&) {
    if (parser.getProblems().empty()) {
      std::fprintf(stderr, "parser check failed: a failed parse names no problem\n");
      std::abort();
    }
    return 0;
  }
  int budget = 2000;
  walk(document, budget);
  document.findFirstNodeByName("MessageCollection");
  return 0;
}
