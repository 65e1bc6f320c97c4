// Typed message keys: consumer_keys.h is generated from consumer.xml by
// msg_generate_header() (see CMakeLists.txt) and holds one msg::Key per
// message. A misspelt key does not compile, and neither does a call with
// the wrong number of arguments:
//
//   msg::format(handler, consumer::greeting, "world");  // error: needs 2
//
// It exits with 0 only if the texts came out as expected.

#include <msg/msg.h>

#include "typed_app_keys.h"

#include <iostream>
#include <string>

int main() {
  msg::MessageHandlerX* handler = msg::MessageHandlerX::object();
  try {
    handler->loadMessageDocument(CONSUMER_DOCUMENT);
  } catch (const msg::ErrorInMessageDocument& error) {
    std::cerr << error.getText() << '\n';
    return 1;
  }
  static_assert(decltype(consumer::greeting)::placeholders == 2);
  const std::string greeting = msg::format(handler, consumer::greeting, "world", 3);
  const std::string farewell = msg::format(handler, consumer::farewell);
  std::cerr << greeting << '\n' << farewell << '\n';
  return greeting == "Hello, world! You have 3 new messages." && farewell == "Goodbye." ? 0 : 1;
}
