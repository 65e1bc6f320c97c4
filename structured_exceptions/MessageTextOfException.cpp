// The catalogue text of a structured_exception. It lives apart from the rest
// of the class because it rests on the document handler, while the XML layer
// that handler uses already derives its exceptions from structured_exception.
// So the handler is reached through a source that the document layer sets
// (ExceptionCatalogue.h), not by name.

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "msg/Message.h"
#include "msg/MessageHandler.h"
#include "msg/structured_exception.h"
#include "structured_exceptions/ExceptionCatalogue.h"

namespace {

// The records whose texts getMessageText() has handed out. A returned text
// may lie inside its record, and it must stay valid for the rest of the
// process, so every record is kept here, reachable, and never released.
std::vector<std::unique_ptr<msg::Message>>& renderedRecords() {
  static auto* records = new std::vector<std::unique_ptr<msg::Message>>();
  return *records;
}

// What getMessageText() gives when not even the not-found text is in an
// acceptable language: there is no record to show, and the operation must
// not fail in a catch block.
const char kNoText[] = "";

// Constant-initialised, so it holds before any code of the library runs and
// a source set while the library loads is never overwritten.
msg::ExceptionCatalogueSource catalogueSource = &msg::MessageHandler::object;

}  // namespace

void msg::setExceptionCatalogueSource(ExceptionCatalogueSource source) {
  catalogueSource = source;
}

// The key is looked up now, through the process-wide document handler (made
// and stacked on first use; see ExceptionCatalogue.h), in its table and then its parent's, each by
// its own language list. A found text gets the arguments as &0, &1, ... in order (a null argument
// fills nothing); an unknown key gives the not-found text with its placeholders unfilled; if that
// text too is in no acceptable language, the result is "".
const char* structured_exception::getMessageText() const {
  msg::MessageHandler* handler = catalogueSource();
  std::unique_ptr<msg::Message> record;
  bool found = false;
  if (messageNamespace != nullptr && messageIdentifier != nullptr) {
    record.reset(handler->getMessage(messageNamespace, messageIdentifier));
    found = record != nullptr;
  }
  if (!found) {
    record.reset(handler->getMessageNotFound());
    if (record == nullptr) {
      return kNoText;
    }
  }
  std::vector<std::unique_ptr<msg::Message>>& records = renderedRecords();
  records.push_back(std::move(record));
  msg::Message& kept = *records.back();
  if (found) {
    for (std::uint32_t i = 0; i < argumentCount; ++i) {
      kept.substitute(i, ownedArguments[i]);
    }
  }
  const char* text = kept.getMessage();
  return text != nullptr ? text : kNoText;
}
