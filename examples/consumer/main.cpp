// A minimal msg application: it registers a catalogue entry of its own and
// writes a message with two arguments through the default channel, which
// prints "consumer:greeting: Hello, world! You have 3 new messages." on
// standard error. It exits with 0 only if everything came out as expected.

#include <msg/msg.h>

#include <cstring>
#include <iostream>
#include <memory>

// Linked into the process-wide handler while the program starts. The strings
// are constants, so the entry copies nothing.
static msg::MTE greeting(msg::info, "en", "consumer", "greeting",
                         "Hello, &0! You have &1 new messages.", nullptr, false, false);

int main() {
  msg::MessageHandler* handler = msg::MessageHandler::object();

  msg::Message message(handler, "consumer", "greeting");
  message.substitute(0, "world");
  message.substitute(1, 3);
  handler->writeMessage(message);
  if (std::strcmp(message.getMessage(), "Hello, world! You have 3 new messages.") != 0) {
    return 1;
  }

  // The library's exceptions are caught by their own type across the
  // library boundary.
  try {
    new msg::MTE(msg::info, "en", "consumer", "greeting", "again", handler, true, false);
    std::cerr << "a duplicate entry was accepted\n";
    return 1;
  } catch (const msg::MessageExists& e) {
    if (std::strcmp(e.getIdentifier(), "greeting") != 0) {
      return 1;
    }
  }

#ifdef CONSUMER_CATALOGUE
  // The catalogue that msg_compile_catalogue made of messages.xml.
  msg::MessageHandlerX compiled;
  compiled.loadCompiledCatalogue(CONSUMER_CATALOGUE);
  std::unique_ptr<msg::Message> farewell(compiled.getMessage("consumer", "farewell"));
  if (farewell == nullptr || std::strcmp(farewell->getText(), "Goodbye, &0.") != 0) {
    std::cerr << "the compiled catalogue does not give consumer:farewell\n";
    return 1;
  }
#endif
  return 0;
}
