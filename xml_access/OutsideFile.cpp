#include "xml_access/OutsideFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <sstream>
#include <system_error>
#include <utility>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/XMLException.hpp>

#include "xml_access/BoundedDOMParser.h"
#include "xml_access/PositionTable.h"
#include "xml_access/ReferenceGuard.h"
#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace {

// The bounded parser with every door closed: no DOCTYPE, no validation, no
// schema, no include, and every external reference left to the guard.
void closeEveryDoor(BoundedDOMParser& parser, ReferenceGuard& guard) {
  parser.setRefuseDoctype(true);
  parser.setKeepPositions(true);
  parser.setDoNamespaces(true);
  parser.setValidationScheme(xercesc::XercesDOMParser::Val_Never);
  parser.setDoSchema(false);
  parser.setLoadSchema(false);
  parser.setLoadExternalDTD(false);
  parser.setDoXInclude(false);
  parser.setXMLEntityResolver(&guard);
  parser.setDisableDefaultEntityResolution(true);
  parser.setCreateEntityReferenceNodes(false);
  parser.setExitOnFirstFatalError(true);
}

// Keeps the first error of a parse with its line.
class FirstErrorKeeper : public xercesc::ErrorHandler {
 public:
  void warning(const xercesc::SAXParseException&) override {}
  void error(const xercesc::SAXParseException& problem) override { keep(problem); }
  void fatalError(const xercesc::SAXParseException& problem) override { keep(problem); }
  void resetErrors() override {}

  bool failed = false;
  std::uint64_t line = 0;
  std::string message;

 private:
  void keep(const xercesc::SAXParseException& problem) {
    if (!failed) {
      failed = true;
      line = problem.getLineNumber();
      message = transcodeFromXMLCh(problem.getMessage());
    }
  }
};

[[noreturn]] void refuse(const std::string& path, std::uint64_t line, const std::string& message) {
  throw FileRefused(ParseProblem{path, line, 0, message});
}

// Refuses what cannot be handed to the parser as a file of this profile.
void checkFile(const std::string& path, std::uintmax_t maxBytes) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    refuse(path, 0, "is a folder, not a file");
  }
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) {
    refuse(path, 0, "cannot be read: " + error.message());
  }
  if (size > maxBytes) {
    // A stream rather than std::to_string, whose digit table the shared
    // library would export.
    std::ostringstream message;
    message << "is larger than " << (maxBytes >> 20) << " MiB";
    refuse(path, 0, message.str());
  }
  if (access(path.c_str(), R_OK) != 0) {
    refuse(path, 0, std::string("cannot be read: ") + std::strerror(errno));
  }
}

}  // namespace

FileRefused::FileRefused(ParseProblem problem)
    : std::runtime_error(problem.message), problem(std::move(problem)) {}

DOMNode parseOutsideFile(const std::string& path, const OutsideFileRules& rules) {
  checkFile(path, rules.maxBytes);
  BoundedDOMParser parser;
  ReferenceGuard guard(parser);
  closeEveryDoor(parser, guard);
  parser.setCreateCommentNodes(rules.keepComments);
  FirstErrorKeeper errors;
  parser.setErrorHandler(&errors);
  try {
    guard.start(path, true, true);
    parser.parseBounded(path.c_str());
  } catch (const ParseRefused& refused) {
    refuse(path, refused.problem.line, refused.problem.message);
  } catch (const xercesc::XMLException& failure) {
    refuse(path, failure.getSrcLine(), transcodeFromXMLCh(failure.getMessage()));
  } catch (const xercesc::DOMException& failure) {
    refuse(path, 0, transcodeFromXMLCh(failure.getMessage()));
  }
  if (const ParseRefused* refused = guard.getRefusal()) {
    refuse(path, refused->problem.line, refused->problem.message);
  }
  if (errors.failed) {
    refuse(path, errors.line, "is not well-formed XML: " + errors.message);
  }
  if (parser.getDocument() == nullptr || parser.getDocument()->getDocumentElement() == nullptr) {
    refuse(path, 0, "holds no XML document");
  }
  auto positions = std::make_unique<PositionTable>(parser.takePositions());
  return DOMNode::adopt(parser.adoptDocument(), positions.release());
}

}  // namespace XercesXML
