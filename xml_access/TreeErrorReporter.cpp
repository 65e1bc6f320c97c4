#include "xml_access/TreeErrorReporter.h"

#include <cstdint>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace {

// One block: "<firstWords>in file "<id>", line <l>, column <c>", a line feed,
// then 35 blanks and "Message: <message>" closed by one line feed.
std::string formatBlock(const char* firstWords, const xercesc::SAXParseException& exception) {
  std::ostringstream block;
  block << firstWords << "in file \"" << transcodeFromXMLCh(exception.getSystemId()) << "\", line "
        << static_cast<std::uint64_t>(exception.getLineNumber()) << ", column "
        << static_cast<std::uint64_t>(exception.getColumnNumber()) << '\n';
  // A one-blank string in a field of 35 gives 35 blanks in all, not 36.
  block << std::setw(35) << " "
        << "Message: " << transcodeFromXMLCh(exception.getMessage()) << std::endl;
  return block.str();
}

}  // namespace

TreeErrorReporter::TreeErrorReporter(xercesc::XercesDOMParser* parser,
                                     XercesXMLErrorHandlerInterface* handler,
                                     std::vector<ParseProblem>* problems)
    : parser(parser), handler(handler), problems(problems), sawErrors(false) {
  parser->setErrorHandler(this);
}

TreeErrorReporter::~TreeErrorReporter() {
  parser->setErrorHandler(nullptr);
}

void TreeErrorReporter::warning(const xercesc::SAXParseException&) {}

void TreeErrorReporter::error(const xercesc::SAXParseException& exception) {
  // The flag comes first, so that it stands even if building the text fails.
  sawErrors = true;
  record(exception);
  handler->error(formatBlock("Error ", exception));
}

void TreeErrorReporter::fatalError(const xercesc::SAXParseException& exception) {
  sawErrors = true;
  record(exception);
  handler->fatalError(formatBlock("Fatal error ", exception));
}

void TreeErrorReporter::resetErrors() {}

void TreeErrorReporter::record(const xercesc::SAXParseException& exception) {
  if (problems != nullptr) {
    problems->push_back(ParseProblem{transcodeFromXMLCh(exception.getSystemId()),
                                     static_cast<std::uint64_t>(exception.getLineNumber()),
                                     static_cast<std::uint64_t>(exception.getColumnNumber()),
                                     transcodeFromXMLCh(exception.getMessage())});
  }
}

}  // namespace XercesXML
