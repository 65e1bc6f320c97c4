// Parser: reads an XML file into a DOMNode that owns the document.

#ifndef MSG_XML_ACCESS_PARSER_H_
#define MSG_XML_ACCESS_PARSER_H_

#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <xercesc/dom/DOMNode.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>

#include "xml_access/BoundedDOMParser.h"
#include "xml_access/DOMNode.h"
#include "xml_access/ParseProblem.h"
#include "xml_access/PartPositions.h"
#include "xml_access/PositionTable.h"
#include "xml_access/ReferenceGuard.h"
#include "xml_access/RoundTripPlaces.h"
#include "xml_access/XercesXMLErrorHandlerInterface.h"

namespace XercesXML {

class TreeErrorReporter;

// Wraps one Xerces-C DOM parser with a fixed set of settings and reads files
// with it. Every parse failure, whether the parser reports it or throws,
// leaves parseFile as one ParsingError whose text holds the error blocks of
// the parse (see TreeErrorReporter) and a closing line.
//
// The parser is always namespace-aware, stops at the first fatal error, and
// creates no comment and no entity reference nodes. Validation comes in two
// fixed groups of settings:
//   relaxed: validation errors are not fatal, a grammar is used only if the
//            document names one (DTD only, no XML Schema processing);
//   strict:  XML Schema processing on, every document is validated (also one
//            that names no grammar), and validation errors are fatal.
//
// XInclude mode: after setXInclude(true, ...) a file is parsed with relaxed
// validation and the includes expanded; the expanded document is then
// serialised to memory, written to the output file if one is named, and
// parsed again from memory under the strict settings, with the original file
// name as its system id (so messages name that file and relative references
// resolve against it). parseFile returns the document of that second parse,
// and leaves the parser object with the relaxed settings again, on success
// and on failure alike, so one Parser reads file after file the same way.
//
// Every parse is bounded (see BoundedDOMParser): elements nest at most
// kMaxElementDepth levels, and entity references expand at most
// kMaxEntityReferences times and kMaxEntityExpansion characters. A document
// that breaks a bound is refused while it is parsed, with a ParsingError
// whose last line begins "XercesXML - Refused: " and names the limit.
//
// No parse reads anything but local files: a schema location, an
// xi:include or a file name that names anything else is refused, and so is
// every external entity and external DTD (see ReferenceGuard). With the
// rules for message documents on (setMessageDocumentRules), a document
// type declaration is refused in the document and in every included part,
// and includes must lie in the folder of the document or below it.
//
// Ownership: the Parser owns its Xerces-C parser object. A document that
// parseFile returns belongs to the returned handle alone and outlives the
// Parser. A client error receiver is borrowed.
//
// The XML system must be started before a Parser is made and must stay up
// until the Parser and every handle it returned are gone. A Parser belongs to
// one thread at a time.
class Parser {
 public:
  // Creates the parser object and applies the settings, the relaxed group if
  // `relaxedValidation`, else the strict group. `createSchemaInfo` asks the
  // parser to attach schema type information to the tree.
  // Raises NotInitialized if the XML system is not started.
  Parser(bool relaxedValidation, bool createSchemaInfo);

  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  // Deletes the parser object with any document it still holds.
  ~Parser();

  // With `enable` true: switches XInclude processing on, applies the relaxed
  // settings and remembers `outputFile` (empty: write no file).
  // With `enable` false: switches XInclude processing off and nothing else;
  // the settings stay as they are and the remembered file name stays too. A
  // parser left with a file name but XInclude off still serialises every
  // document into that file after its parse, but parses nothing again.
  void setXInclude(bool enable, const std::string& outputFile);

  // Switches the rules for documents from outside on or off: no DOCTYPE in
  // the document or its parts, includes confined to the document's folder,
  // and no checking of the schema's identity constraints (the message
  // schema has them only to stop older loaders).
  void setMessageDocumentRules(bool enable);

  // Whether XInclude processing is on (the parser object's own flag).
  bool getXInclude() const;

  // The remembered output file name; empty if none.
  std::string getXIncludeOutputFile() const;

  // Installs `handler` as the receiver of the error blocks of every later
  // parse, in place of the parse's own error text; null goes back to the
  // default. A ParsingError then carries only its closing or abort line.
  // The handler is borrowed and must outlive every parse that uses it.
  void setErrorHandler(XercesXMLErrorHandlerInterface* handler) { errorHandler = handler; }

  // Parses `fileName` and gives a handle on the document node, which owns
  // the document. In XInclude mode (or with an output file named) the
  // document also takes the round trip described above.
  // Raises ParsingError if the parser reports an error or a fatal error, if
  // parsing throws, or if the round trip fails. The parser object is left
  // with no error handler, and the Parser stays usable, on every path.
  DOMNode parseFile(const std::string& fileName);

  // parseFile, with the start of every element recorded for
  // DOMNode::getSourceLine and getSourceColumn. The parse is the same, and
  // so is its verdict. The positions come from the first parse, which reads
  // the file as written, and follow the elements through the round trip;
  // elements that XInclude brings in from a part have the positions of the
  // part's own parse (see PartPositions) and name the part
  // (DOMNode::getSourceFile) by the folder of `fileName` as given and the
  // part's path from there. Unlike
  // parseFile, the round trip releases the first document before the second
  // parse, so the two trees are never held together.
  // Raises ParsingError as parseFile does.
  DOMNode parseFileWithPositions(const std::string& fileName);

  // What made the last parseFile or parseFileWithPositions fail, in the
  // order found: the parser's errors, a refusal, the abort line. Empty after
  // a parse that succeeded.
  const std::vector<ParseProblem>& getProblems() const { return problems; }

 private:
  // parseFile, with positions if `keepPositions`.
  DOMNode parseDocument(const std::string& fileName, bool keepPositions);

  // The first parse of `fileName`: raises ParsingError with the call's error
  // text, or returns with the document in the parser object.
  void parseFirst(const std::string& fileName, bool keepPositions);

  // Called in a catch block of a parse of `systemId`: describes the
  // exception being handled in the error text and the problems, then the
  // guard's refusal if one stands, and throws the ParsingError that carries
  // them. An Exception of this layer counts as unknown unless
  // `describeOwnExceptions` (then its text is the problem).
  [[noreturn]] void failParse(std::ostringstream& errorText, const std::string& systemId,
                              bool describeOwnExceptions);

  // Adds the parser's note on a lowered entity reference limit, if any, to
  // the problems (not to the error text).
  void noteLoweredReferenceLimit(const std::string& fileName);

  // Appends the refusal of the guard, if one stands, to the error text and
  // the problems, moved by `places` if given; true if it did.
  bool appendGuardRefusal(std::ostream& errorText, const RoundTripPlaces* places = nullptr);

  void applyRelaxedSettings();
  void applyStrictSettings();

  // The receiver for the error blocks of one parse: the client's, if set.
  XercesXMLErrorHandlerInterface* receiverFor(XercesXMLErrorHandlerInterface* defaultHandler) const;

  // The round trip after a clean first parse: takes the document from the
  // parser object, serialises it to memory, writes the output file if one is
  // named, and with `reparse` parses the bytes again under the strict
  // settings with `systemId` as their id, restoring the relaxed settings on
  // every path. Returns the document that parseFile is to own: with
  // `reparse` the document of the second parse (the first one is released
  // on the way out); without it the first document itself, given up by the
  // local handle that held it during serialisation.
  // With `positions` (those of the first document, for
  // parseFileWithPositions) the first document is released before the
  // second parse starts instead, so that only one tree is held at a time,
  // and the positions are replaced by those of the second document.
  // Raises ParsingError; the first document is then released and whatever
  // exists of a second one stays with the parser object.
  xercesc::DOMNode* validateAfterXInclude(const std::string& systemId, bool reparse,
                                          PositionTable* positions);

  // Writes `copy`, the serialised first document, to the remembered output
  // file, if any. Raises ParsingError if it cannot be opened.
  void writeXIncludeOutput(const xercesc::MemBufFormatTarget& copy) const;

  // The second parse of the round trip, of `copy`, under the strict
  // settings that validateAfterXInclude has set; restores the relaxed ones.
  // With `positions`, releases `firstDocument` before it parses and
  // carries the positions over to the second document. Hands the problems
  // `reporter` holds on, placed in the files where a failure needs it, and
  // returns those places. Raises what the parse raises.
  RoundTripPlaces parseCopy(const std::string& systemId, const xercesc::MemBufFormatTarget& copy,
                            DOMNode& firstDocument, PositionTable* positions,
                            TreeErrorReporter& reporter);

  // After a failed second parse: parses `systemId` again as the first parse
  // did, with positions, and the serialised `copy` with the marks of its
  // elements, so that problems of the copy can be placed in the files. The
  // parser object is left as the round trip leaves it; every error of these
  // parses is swallowed, and one that fails places nothing.
  RoundTripPlaces locateRoundTrip(const std::string& systemId,
                                  const xercesc::MemBufFormatTarget& copy);

  // Takes the document out of `handle` without releasing it: the handle's
  // block forgets the node, so the end of the handle frees only the block.
  // The caller owns the result.
  // REQUIRES: `handle` is the only handle on its block.
  static xercesc::DOMNode* giveUpDocument(DOMNode& handle);

  std::unique_ptr<BoundedDOMParser> parser;      // owned, never null
  XercesXMLErrorHandlerInterface* errorHandler;  // borrowed, may be null
  std::string xIncludeOutputFile;
  std::unique_ptr<ReferenceGuard> guard;  // owned, the parser object's resolver
  bool messageDocumentRules = false;
  PartPositions partPositions;         // of the last parse with positions
  std::vector<ParseProblem> problems;  // of the last parse
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_PARSER_H_
