#include "xml_access/TreeErrorReporter.h"

#include <cstdint>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace {

// One block: "<kind> in file "<id>", line <l>, column <c>", a line feed,
// then 35 blanks and "Message: <message>" closed by one line feed.
std::string formatBlock(bool fatal, const ParseProblem& problem) {
  std::ostringstream block;
  block << (fatal ? "Fatal error " : "Error ") << "in file \"" << problem.file << "\", line "
        << problem.line << ", column " << problem.column << '\n';
  // A one-blank string in a field of 35 gives 35 blanks in all, not 36.
  block << std::setw(35) << " "
        << "Message: " << problem.message << std::endl;
  return block.str();
}

}  // namespace

TreeErrorReporter::TreeErrorReporter(xercesc::XercesDOMParser* parser,
                                     XercesXMLErrorHandlerInterface* handler,
                                     std::vector<ParseProblem>* problems, bool hold)
    : parser(parser), handler(handler), problems(problems), hold(hold), sawErrors(false) {
  parser->setErrorHandler(this);
}

TreeErrorReporter::~TreeErrorReporter() {
  parser->setErrorHandler(nullptr);
}

void TreeErrorReporter::warning(const xercesc::SAXParseException&) {}

void TreeErrorReporter::error(const xercesc::SAXParseException& exception) {
  report(false, exception);
}

void TreeErrorReporter::fatalError(const xercesc::SAXParseException& exception) {
  report(true, exception);
}

void TreeErrorReporter::resetErrors() {}

void TreeErrorReporter::report(bool fatal, const xercesc::SAXParseException& exception) {
  // The flag comes first, so that it stands even if building the text fails.
  sawErrors = true;
  ParseProblem problem{transcodeFromXMLCh(exception.getSystemId()),
                       static_cast<std::uint64_t>(exception.getLineNumber()),
                       static_cast<std::uint64_t>(exception.getColumnNumber()),
                       transcodeFromXMLCh(exception.getMessage())};
  if (hold) {
    held.push_back(Held{fatal, std::move(problem)});
    return;
  }
  pass(fatal, problem);
}

void TreeErrorReporter::pass(bool fatal, const ParseProblem& problem) {
  if (problems != nullptr) {
    problems->push_back(problem);
  }
  const std::string block = formatBlock(fatal, problem);
  if (fatal) {
    handler->fatalError(block);
  } else {
    handler->error(block);
  }
}

void TreeErrorReporter::release(const std::function<void(ParseProblem&)>& place) {
  std::vector<Held> waiting;
  waiting.swap(held);
  for (Held& entry : waiting) {
    if (place) {
      place(entry.problem);
    }
    pass(entry.fatal, entry.problem);
  }
}

}  // namespace XercesXML
