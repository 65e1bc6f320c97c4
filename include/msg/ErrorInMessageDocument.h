// ErrorInMessageDocument: a message document could not be loaded.

#ifndef MSG_ERRORINMESSAGEDOCUMENT_H_
#define MSG_ERRORINMESSAGEDOCUMENT_H_

#include <string>
#include <vector>

#include "msg/export.h"

namespace msg {

// One reason a document was refused: an error the parser reported, or a
// rule for documents from outside that the document broke (a DOCTYPE, a
// reference that is not a local file, an include outside the document's
// folder, a limit of depth or entity expansion; the message names it).
struct DocumentProblem {
  std::string file;     // the document or included part; may be empty
  int line = 0;         // 1-based; 0 when not known
  int column = 0;       // 1-based; 0 when not known
  std::string message;  // one line, no trailing newline
};

// Thrown by MessageHandlerX::loadMessageDocument when a document cannot be
// parsed or validated, or holds no MessageCollection. Before it is thrown the
// loader has written a report of its own through the handler's channels.
//
// Like the other exception classes of namespace msg it has no base class:
// catch it by its own type (it is not a std::exception).
//
// The object owns a copy of its text, so the text stays readable for as long
// as the exception lives, whatever happened to the storage it was made from.
// Copies share nothing.
class MSG_EXPORT ErrorInMessageDocument {
 public:
  // Copies `text`; a null text is kept as "".
  explicit ErrorInMessageDocument(const char* text);

  // As above, with the problems that caused the failure.
  ErrorInMessageDocument(const char* text, std::vector<DocumentProblem> problems);

  // Copies the text and the problems; the copy shares nothing with `other`.
  ErrorInMessageDocument(const ErrorInMessageDocument& other);
  ErrorInMessageDocument& operator=(const ErrorInMessageDocument&) = delete;

  ~ErrorInMessageDocument();

  // The failure, e.g. Message document "app.xml" contains syntactical error.
  // Valid while this object lives.
  const char* getText() const { return text; }

  // Where and why the document failed, in the order found: the parser's
  // error lines, or the reason for a refusal. Empty when there are none
  // (for instance when no MessageCollection was found).
  const std::vector<DocumentProblem>& getProblems() const { return problems; }

 private:
  char* text;  // new[], owned, never null
  std::vector<DocumentProblem> problems;
};

}  // namespace msg

#endif  // MSG_ERRORINMESSAGEDOCUMENT_H_
