// A program that loads a compiled catalogue into the process-wide handler
// and looks up one message, preferring de-AT, de and en. Built twice: linked
// to libmsg-core.so with the plain handler, and with MSG_STARTUP_DOCUMENTS
// linked to libmsg.so with the document handler, MessageHandlerX::object().
//
// Usage: PROGRAM CATALOGUE KEY
// Exits with 0 only if the key was found.

#include <msg/msg.h>

#include <memory>

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
#ifdef MSG_STARTUP_DOCUMENTS
  msg::MessageHandler* handler = msg::MessageHandlerX::object();
#else
  msg::MessageHandler* handler = msg::MessageHandler::object();
#endif
  handler->setLanguageList(
      msg::LanguageList({msg::Language("de-AT"), msg::Language("de"), msg::Language("en")}));
  handler->loadCompiledCatalogue(argv[1]);
  std::unique_ptr<msg::Message> message(handler->getMessage("app", argv[2]));
  return message != nullptr ? 0 : 1;
}
