// ExceptionCatalogue: which handler structured_exception::getMessageText()
// reads its texts from.
//
// Private to the library: not installed.

#ifndef MSG_STRUCTURED_EXCEPTIONS_EXCEPTIONCATALOGUE_H_
#define MSG_STRUCTURED_EXCEPTIONS_EXCEPTIONCATALOGUE_H_

#include "platform/PrivateApi.h"

namespace msg {

class MessageHandler;

// Gives the handler whose catalogue renders exception texts, creating it if
// need be; never null. Raises what making the handler raises.
using ExceptionCatalogueSource = MessageHandler* (*)();

// Makes `source` the function that getMessageText() asks, on every call, for
// its handler. Until a source is set that is MessageHandler::object(). The
// document layer sets MessageHandlerX::object() while the library loads, so
// that in the library rendering an exception text stacks the document
// handler (and starts the XML system) as it always has; a program built on
// the lower layers alone keeps the plain handler.
// REQUIRES: source is not null; called while the library loads, before any
// thread may render an exception text.
MSG_PRIVATE_API void setExceptionCatalogueSource(ExceptionCatalogueSource source);

}  // namespace msg

#endif  // MSG_STRUCTURED_EXCEPTIONS_EXCEPTIONCATALOGUE_H_
