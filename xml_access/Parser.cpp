#include "xml_access/Parser.h"

#include <cstdint>
#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>

#include "msg/XercesXMLException.h"
#include "xml_access/DefaultErrorHandler.h"
#include "xml_access/DocumentSerializer.h"
#include "xml_access/RoundTripPlaces.h"
#include "xml_access/TreeErrorReporter.h"
#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace {

const char kFinishedWithErrors[] = "XercesXML - Parsing finished with errors.";
const char kAbortWhileParsing[] = "XercesXML - Abort: error while parsing: ";
const char kAbortInDom[] = "XercesXML - Abort: error in DOM while parsing: ";
const char kUnknownError[] = "XercesXML - Unknown system error while parsing.";
const char kRefused[] = "XercesXML - Refused: ";

// Appends the abort line for a DOM failure; the code is a signed 16-bit number.
void appendDomAbort(std::ostream& errorText, const xercesc::DOMException& exception) {
  errorText << kAbortInDom << "Error code = " << static_cast<std::int16_t>(exception.code)
            << std::endl;
}

// The first line of `text`, without its line end.
std::string firstLine(const std::string& text) {
  return text.substr(0, text.find('\n'));
}

// Appends `line` to the error text, with a line end, and to `problems` as a
// problem of `file` without a place.
void appendAbort(std::ostream& errorText, std::vector<ParseProblem>& problems,
                 const std::string& file, const std::string& line) {
  errorText << line << std::endl;
  problems.push_back(ParseProblem{file, 0, 0, line});
}

// Appends the refusal line: where, and the reason.
void appendRefusal(std::ostream& errorText, std::vector<ParseProblem>& problems,
                   const ParseRefused& refused) {
  const ParseProblem& problem = refused.problem;
  errorText << kRefused << "in file \"" << problem.file << "\", line " << problem.line
            << ", column " << problem.column << ": " << problem.message << std::endl;
  problems.push_back(problem);
}

// Owns the memory target of the round trip, which starts out null; the
// serialiser nulls the pointer itself when it has deleted the target.
struct MemoryTargetGuard {
  MemoryTargetGuard() = default;
  MemoryTargetGuard(const MemoryTargetGuard&) = delete;
  MemoryTargetGuard& operator=(const MemoryTargetGuard&) = delete;
  ~MemoryTargetGuard() { delete target; }

  xercesc::MemBufFormatTarget* target = nullptr;
};

}  // namespace

Parser::Parser(bool relaxedValidation, bool createSchemaInfo)
    : parser(nullptr), errorHandler(nullptr), xIncludeOutputFile() {
  if (!isSystemInitialized()) {
    throw NotInitialized("XercesXML - Parser object created without initializing system.");
  }
  parser.reset(new BoundedDOMParser());
  guard.reset(new ReferenceGuard(*parser));
  parser->setCreateEntityReferenceNodes(false);
  parser->setDoNamespaces(true);
  parser->setCreateCommentNodes(false);
  parser->setIncludeIgnorableWhitespace(false);
  parser->setIgnoreAnnotations(true);
  parser->setExitOnFirstFatalError(true);
  if (relaxedValidation) {
    applyRelaxedSettings();
  } else {
    applyStrictSettings();
  }
  parser->setCreateSchemaInfo(createSchemaInfo);
  // The guard answers every external reference; nothing is left for
  // Xerces-C to fetch by itself.
  parser->setXMLEntityResolver(guard.get());
  parser->setDisableDefaultEntityResolution(true);
}

void Parser::setMessageDocumentRules(bool enable) {
  messageDocumentRules = enable;
  parser->setRefuseDoctype(enable);
  // The message schema's identity constraints are only a trip wire for
  // loaders that predate plural messages (see schema/messages.xsd); this
  // loader checks those attributes itself.
  parser->setIdentityConstraintChecking(!enable);
}

Parser::~Parser() = default;

void Parser::setXInclude(bool enable, const std::string& outputFile) {
  parser->setDoXInclude(enable);
  if (enable) {
    applyRelaxedSettings();
    xIncludeOutputFile = outputFile;
  }
}

bool Parser::getXInclude() const {
  return parser->getDoXInclude();
}

std::string Parser::getXIncludeOutputFile() const {
  return xIncludeOutputFile;
}

DOMNode Parser::parseFile(const std::string& fileName) {
  return parseDocument(fileName, false);
}

DOMNode Parser::parseFileWithPositions(const std::string& fileName) {
  return parseDocument(fileName, true);
}

DOMNode Parser::parseDocument(const std::string& fileName, bool keepPositions) {
  parseFirst(fileName, keepPositions);
  std::unique_ptr<PositionTable> positions;
  if (keepPositions) {
    positions = std::make_unique<PositionTable>(parser->takePositions());
    partPositions.place(parser->getDocument(), fileName, *positions);
    partPositions.clear();
  }
  xercesc::DOMNode* document = nullptr;
  if (getXInclude() || !xIncludeOutputFile.empty()) {
    document = validateAfterXInclude(fileName, getXInclude(), positions.get());
  } else {
    document = parser->adoptDocument();
  }
  // A null owner makes a new block: the handle becomes the document's owner.
  DOMNode handle(document, nullptr);
  if (positions != nullptr && handle.isValid()) {
    handle.owner->positions = positions.release();
  }
  return handle;
}

void Parser::parseFirst(const std::string& fileName, bool keepPositions) {
  problems.clear();
  std::ostringstream errorText;
  const auto defaultHandler = std::make_unique<DefaultErrorHandler>(errorText);
  const TreeErrorReporter reporter(parser.get(), receiverFor(defaultHandler.get()), &problems);

  // Whatever the parse throws ends the call, behind the blocks reported so
  // far. An exception of this layer out of a receiver counts as unknown here.
  parser->setKeepPositions(keepPositions);
  partPositions.clear();
  guard->setPartPositions(keepPositions && getXInclude() ? &partPositions : nullptr);
  try {
    if (localFileOf(fileName).empty()) {
      throw ParseRefused{ParseProblem{
          fileName, 0, 0, "the document is not a local file: nothing is read over a network"}};
    }
    guard->start(fileName, messageDocumentRules, messageDocumentRules);
    parser->parseBounded(fileName.c_str());
  } catch (...) {
    failParse(errorText, fileName, false);
  }
  if (appendGuardRefusal(errorText)) {
    throw ParsingError(errorText.str());
  }
  if (reporter.getSawErrors()) {
    errorText << kFinishedWithErrors << std::endl;
    noteLoweredReferenceLimit(fileName);
    throw ParsingError(errorText.str());
  }
}

void Parser::failParse(std::ostringstream& errorText, const std::string& systemId,
                       bool describeOwnExceptions) {
  try {
    throw;
  } catch (const Exception& exception) {
    if (describeOwnExceptions) {
      errorText << kAbortWhileParsing << exception.getText() << std::endl;
      problems.push_back(ParseProblem{systemId, 0, 0, firstLine(exception.getText())});
    } else {
      appendAbort(errorText, problems, systemId, kUnknownError);
    }
  } catch (const xercesc::XMLException& exception) {
    appendAbort(errorText, problems, systemId,
                kAbortWhileParsing + transcodeFromXMLCh(exception.getMessage()));
  } catch (const xercesc::DOMException& exception) {
    appendDomAbort(errorText, exception);
    problems.push_back(ParseProblem{systemId, 0, 0, "error in DOM while parsing"});
  } catch (const ParseRefused& refused) {
    appendRefusal(errorText, problems, refused);
  } catch (...) {
    appendAbort(errorText, problems, systemId, kUnknownError);
  }
  appendGuardRefusal(errorText);
  throw ParsingError(errorText.str());
}

void Parser::noteLoweredReferenceLimit(const std::string& fileName) {
  const std::string note = parser->referenceLimitNote();
  if (!note.empty()) {
    problems.push_back(ParseProblem{fileName, 0, 0, note});
  }
}

xercesc::DOMNode* Parser::validateAfterXInclude(const std::string& systemId, bool reparse,
                                                PositionTable* positions) {
  // This reporter takes the parser's callbacks over from the one of
  // parseFile, so the second parse has its own blocks and flag. It holds
  // the problems of the second parse: they count in the copy and are moved
  // to the files the user wrote before anyone sees them.
  std::ostringstream errorText;
  const auto defaultHandler = std::make_unique<DefaultErrorHandler>(errorText);
  TreeErrorReporter reporter(parser.get(), receiverFor(defaultHandler.get()), &problems, reparse);

  DOMNode firstDocument(parser->adoptDocument(), nullptr);
  MemoryTargetGuard memory;
  if (reparse) {
    applyStrictSettings();
    parser->reset();
  }
  // On a failure that ends the round trip: the relaxed settings again, and
  // what the second parse reported so far, where the copy has it.
  const auto recover = [&]() {
    if (reparse) {
      applyRelaxedSettings();
    }
    reporter.release(nullptr);
  };

  RoundTripPlaces places;
  try {
    serializeToMemory(firstDocument, memory.target, std::string());
    writeXIncludeOutput(*memory.target);
    if (reparse) {
      places = parseCopy(systemId, *memory.target, firstDocument, positions, reporter);
    }
  } catch (...) {
    recover();
    failParse(errorText, systemId, true);
  }

  if (appendGuardRefusal(errorText, &places)) {
    throw ParsingError(errorText.str());
  }
  if (reporter.getSawErrors()) {
    errorText << kFinishedWithErrors << std::endl;
    throw ParsingError(errorText.str());
  }
  if (reparse) {
    // The first document is released with its handle on the way out.
    return parser->adoptDocument();
  }
  return giveUpDocument(firstDocument);
}

void Parser::writeXIncludeOutput(const xercesc::MemBufFormatTarget& copy) const {
  if (xIncludeOutputFile.empty()) {
    return;
  }
  // Default mode: text mode, and an existing file is truncated.
  std::ofstream output(xIncludeOutputFile);
  if (output.fail()) {
    std::ostringstream text;
    text << "File " << xIncludeOutputFile << " could not be opened" << std::endl;
    throw ParsingError(text.str());
  }
  output.write(reinterpret_cast<const char*>(copy.getRawBuffer()),
               static_cast<std::streamsize>(copy.getLen()));
  output.close();
}

RoundTripPlaces Parser::parseCopy(const std::string& systemId,
                                  const xercesc::MemBufFormatTarget& copy, DOMNode& firstDocument,
                                  PositionTable* positions, TreeErrorReporter& reporter) {
  RoundTripPlaces places;
  // The second document has the same elements in the same order as the
  // first, so their positions carry over. A parse with positions lets
  // the first tree go now, so only one is held; parseFile keeps it to
  // the end of the round trip.
  std::vector<SourcePosition> ordered;
  if (positions != nullptr) {
    ordered = positions->inDocumentOrder(firstDocument.node);
    firstDocument = DOMNode();
  }
  // The source and its stream only refer to the bytes of `copy`.
  xercesc::MemBufInputSource source(copy.getRawBuffer(), copy.getLen(), systemId.c_str(), false,
                                    xercesc::XMLPlatformUtils::fgMemoryManager);
  source.setCopyBufToStream(false);
  parser->setKeepPositions(false);
  parser->parseBounded(source);
  applyRelaxedSettings();
  if (positions != nullptr) {
    *positions = PositionTable::fromDocumentOrder(parser->getDocument(), ordered, *positions);
  }
  const ParseRefused* refused = guard->getRefusal();
  if (reporter.hasHeld() || (refused != nullptr && refused->problem.file == systemId)) {
    // Failures are rare: only they pay for a second look at the files.
    places = locateRoundTrip(systemId, copy);
  }
  reporter.release([&places](ParseProblem& problem) { places.place(problem); });
  return places;
}

RoundTripPlaces Parser::locateRoundTrip(const std::string& systemId,
                                        const xercesc::MemBufFormatTarget& copy) {
  // Both parses report to a sink, and the guard of the failed parse keeps
  // its refusal: this look changes nothing of the verdict.
  std::ostringstream ignored;
  DefaultErrorHandler sink(ignored);
  const TreeErrorReporter reporter(parser.get(), &sink);
  ReferenceGuard lookGuard(*parser);
  parser->setXMLEntityResolver(&lookGuard);
  std::vector<ElementMarks> marks;
  PositionTable original;
  std::vector<SourcePosition> ordered;
  try {
    // The files as the user wrote them, parts placed as for positions.
    PartPositions parts;
    lookGuard.setPartPositions(&parts);
    lookGuard.start(systemId, messageDocumentRules, messageDocumentRules);
    parser->setKeepPositions(true);
    parser->parseBounded(systemId.c_str());
    parser->setKeepPositions(false);
    if (!reporter.getSawErrors() && lookGuard.getRefusal() == nullptr) {
      original = parser->takePositions();
      parts.place(parser->getDocument(), systemId, original);
      ordered = original.inDocumentOrder(parser->getDocument());
      // The copy, with the marks of its elements; nothing to expand or check.
      parser->setDoXInclude(false);
      parser->setMarks(&marks);
      xercesc::MemBufInputSource source(copy.getRawBuffer(), copy.getLen(), systemId.c_str(), false,
                                        xercesc::XMLPlatformUtils::fgMemoryManager);
      source.setCopyBufToStream(false);
      parser->parseBounded(source);
    }
  } catch (...) {
    ordered.clear();  // no place is better than a wrong one
  }
  parser->setKeepPositions(false);
  parser->setMarks(nullptr);
  parser->setDoXInclude(true);
  parser->setXMLEntityResolver(guard.get());
  if (reporter.getSawErrors()) {
    ordered.clear();
  }
  return RoundTripPlaces(systemId, std::move(marks), std::move(ordered), original.partFiles());
}

bool Parser::appendGuardRefusal(std::ostream& errorText, const RoundTripPlaces* places) {
  const ParseRefused* refused = guard->getRefusal();
  if (refused == nullptr) {
    return false;
  }
  if (places == nullptr) {
    appendRefusal(errorText, problems, *refused);
    return true;
  }
  ParseRefused placed = *refused;
  places->place(placed.problem);
  appendRefusal(errorText, problems, placed);
  return true;
}

xercesc::DOMNode* Parser::giveUpDocument(DOMNode& handle) {
  xercesc::DOMNode* document = handle.node;
  if (document != nullptr) {
    handle.owner->node = nullptr;
  }
  return document;
}

XercesXMLErrorHandlerInterface* Parser::receiverFor(
    XercesXMLErrorHandlerInterface* defaultHandler) const {
  return errorHandler != nullptr ? errorHandler : defaultHandler;
}

void Parser::applyRelaxedSettings() {
  parser->setValidationConstraintFatal(false);
  parser->setValidationScheme(xercesc::XercesDOMParser::Val_Auto);
  parser->setDoSchema(false);
}

void Parser::applyStrictSettings() {
  parser->setValidationConstraintFatal(true);
  parser->setValidationScheme(xercesc::XercesDOMParser::Val_Always);
  parser->setDoSchema(true);
}

}  // namespace XercesXML
