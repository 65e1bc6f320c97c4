// TreeErrorReporter: turns the error callbacks of a parse into text blocks.

#ifndef MSG_XML_ACCESS_TREEERRORREPORTER_H_
#define MSG_XML_ACCESS_TREEERRORREPORTER_H_

#include <functional>
#include <vector>

#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>

#include "xml_access/ParseProblem.h"
#include "xml_access/XercesXMLErrorHandlerInterface.h"

namespace XercesXML {

// The error handler of one parse operation. It installs itself on a Xerces-C
// parser object for its lifetime, turns every error and fatal error into a
// two-line block of text for a receiver, and remembers that the parse saw
// errors. Warnings are dropped without a trace.
//
// A block reads, with <kind> either "Error" or "Fatal error":
//
//   <kind> in file "<system id>", line <line>, column <column>
//                                      Message: <message>
//
// The second line starts with exactly 35 blanks, and each line ends in one
// line feed. Blocks follow one another in the order the parser reports them.
// Texts are converted by transcodeFromXMLCh, so they come in the output
// encoding of the XML system; a failed conversion leaves the callback as the
// exception of that conversion, after the flag has been set.
//
// With a problem list, every error and fatal error is also appended to it
// as a ParseProblem (system id, line, column, message), before the block is
// built.
//
// A holding reporter (see the constructor) keeps what it is told, in
// order, and passes nothing on until release(), which lets its owner move
// each problem to another place first; the blocks then carry the new place.
//
// Neither the parser object, the receiver nor the list is owned; both must outlive the
// reporter. The flag is never cleared, so a reporter serves one parse
// operation only. All callbacks come on the thread that calls parse.
class TreeErrorReporter : public xercesc::ErrorHandler {
 public:
  // Stores both pointers and installs this reporter as the error handler of
  // `parser`, replacing whatever handler was installed.
  // REQUIRES: parser and handler are not null; `problems` may be.
  // With `hold`, problems wait for release().
  TreeErrorReporter(xercesc::XercesDOMParser* parser, XercesXMLErrorHandlerInterface* handler,
                    std::vector<ParseProblem>* problems = nullptr, bool hold = false);

  TreeErrorReporter(const TreeErrorReporter&) = delete;
  TreeErrorReporter& operator=(const TreeErrorReporter&) = delete;

  // Leaves the parser object with no error handler at all, whatever was
  // installed before this reporter.
  ~TreeErrorReporter() override;

  // True once an error or a fatal error was reported.
  bool getSawErrors() const { return sawErrors; }

  // Does nothing: warnings are not reported.
  void warning(const xercesc::SAXParseException& exception) override;

  // Set the flag, then pass one block to the receiver's error or fatalError.
  void error(const xercesc::SAXParseException& exception) override;
  void fatalError(const xercesc::SAXParseException& exception) override;

  // Does nothing: a parser's reset does not undo the errors already seen.
  void resetErrors() override;

  // Whether any problem waits for release().
  bool hasHeld() const { return !held.empty(); }

  // Passes every held problem on, in the order reported, after `place` (if
  // set) has had its say on it: to the list, then as a block to the
  // receiver. Nothing is held afterwards, even if the receiver raises.
  void release(const std::function<void(ParseProblem&)>& place);

 private:
  struct Held {
    bool fatal;
    ParseProblem problem;
  };

  // Holds the problem, or passes it on at once.
  void report(bool fatal, const xercesc::SAXParseException& exception);

  // Lists the problem and passes its block to the receiver.
  void pass(bool fatal, const ParseProblem& problem);

  xercesc::XercesDOMParser* parser;         // not owned
  XercesXMLErrorHandlerInterface* handler;  // not owned, never null
  std::vector<ParseProblem>* problems;      // not owned, may be null
  bool hold;
  bool sawErrors;
  std::vector<Held> held;
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_TREEERRORREPORTER_H_
