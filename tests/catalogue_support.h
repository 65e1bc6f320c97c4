// Test support for tests that load catalogues into a handler of their own:
// message documents (and hostile ones) written at run time; the text and
// the record a handler picks for a key, and the number of entries in its
// table; the report text of a refused document; and a channel that keeps
// what a handler writes.

#ifndef MSG_TESTS_CATALOGUE_SUPPORT_H_
#define MSG_TESTS_CATALOGUE_SUPPORT_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "message_core/MessageTable.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"
#include "msg/MessageHandler.h"

namespace test_support {

// A message document with `body` in its MessageCollection, whose start tag
// is line 2. It names "messages.xsd" beside it as its schema (see
// copySchemaInto) and declares the XInclude namespace as "xi".
inline std::string messageDocument(const std::string& body) {
  return "<?xml version=\"1.0\"?>\n<MessageCollection "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xsi:noNamespaceSchemaLocation=\"messages.xsd\" "
         "xmlns:xi=\"http://www.w3.org/2001/XInclude\">\n" +
         body + "</MessageCollection>\n";
}

// The number of entries registered in `handler`'s own table.
inline std::uint32_t entryCount(const msg::MessageHandler& handler) {
  struct TableAccess : msg::MessageHandler {
    using MessageHandler::messageTableOf;
  };
  return TableAccess::messageTableOf(handler)->getCount();
}

// The DOCTYPE of the billion laughs for the root element `root`, on one
// line: ten levels of ten references each, so that "&l9;" expands to 10^9
// times "ha".
inline std::string entityBomb(const std::string& root) {
  std::string dtd = "<!DOCTYPE " + root + " [<!ENTITY l0 \"ha\">";
  for (int level = 1; level <= 9; ++level) {
    dtd += "<!ENTITY l" + std::to_string(level) + " \"";
    for (int i = 0; i < 10; ++i) {
      dtd += "&l" + std::to_string(level - 1) + ";";
    }
    dtd += "\">";
  }
  return dtd + "]>\n";
}

// The text `handler` picks for a key; "<none>" if no entry is acceptable.
inline std::string textOf(const msg::MessageHandler& handler, const char* nameSpace,
                          const char* identifier) {
  std::unique_ptr<msg::Message> record(handler.getMessage(nameSpace, identifier));
  if (record == nullptr) {
    return "<none>";
  }
  return record->getText() != nullptr ? record->getText() : "";
}

// "text|severity|language" of the record `handler` picks for a key, the
// severity as its number; "<none>" if no entry is acceptable.
inline std::string recordOf(const msg::MessageHandler& handler, const char* nameSpace,
                            const char* identifier) {
  std::unique_ptr<msg::Message> record(handler.getMessage(nameSpace, identifier));
  if (record == nullptr) {
    return "<none>";
  }
  return std::string(record->getText() != nullptr ? record->getText() : "") + "|" +
         std::to_string(record->getSeverityLevel()) + "|" + record->getLanguage().toString();
}

// Gives `handler` the text it reports a refused document with; a handler
// without it (and without a parent) throws MessageNotFound instead.
inline void addRefusalReport(msg::MessageHandler& handler) {
  new msg::MTE(msg::error, "en", "msgx", "MessageDocumentError", "Cannot load &0.", &handler, false,
               true);
}

// Keeps each message written through it as "namespace:identifier: text".
class RecordingChannel : public msg::MessageChannel {
 public:
  std::vector<std::string> lines;

 protected:
  void onMessage(const msg::Message& message) override {
    lines.push_back(std::string(message.getNamespace()) + ":" + message.getIdentifier() + ": " +
                    message.getMessage());
  }
};

}  // namespace test_support

#endif  // MSG_TESTS_CATALOGUE_SUPPORT_H_
