// ErrorInMessageDocument: a message document could not be loaded.

#ifndef MSG_ERRORINMESSAGEDOCUMENT_H_
#define MSG_ERRORINMESSAGEDOCUMENT_H_

#include "msg/export.h"

namespace msg {

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

  ErrorInMessageDocument(const ErrorInMessageDocument& other);
  ErrorInMessageDocument& operator=(const ErrorInMessageDocument&) = delete;

  ~ErrorInMessageDocument();

  // The failure, e.g. Message document "app.xml" contains syntactical error.
  // Valid while this object lives.
  const char* getText() const { return text; }

 private:
  char* text;  // new[], owned, never null
};

}  // namespace msg

#endif  // MSG_ERRORINMESSAGEDOCUMENT_H_
