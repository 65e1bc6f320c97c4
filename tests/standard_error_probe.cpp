// A program that never includes <iostream> and writes one message through
// each of the library's default channels, linked to libmsg-core.so as an
// application links it. The library sets std::cerr up on first use rather
// than when it is loaded, so nothing else here does; both lines must still
// arrive on standard error (tests/cmake/standard_error.cmake).

#include <msg/msg.h>

#ifdef _GLIBCXX_IOSTREAM
#error "this probe must not include <iostream>"
#endif

int main() {
  msg::MessageHandler handler;
  // With copied strings the handler owns its entries.
  new msg::MTE(msg::error, "en", "probe", "plain", "through MessageChannel", &handler, false, true);
  new msg::MTE(msg::error, "en", "probe", "formatted", "through FormattingMessageChannel", &handler,
               false, true);
  msg::Message plain(&handler, "probe", "plain");
  handler.writeMessage(plain);
  handler.setMessageChannel(new msg::FormattingMessageChannel, true);
  msg::Message formatted(&handler, "probe", "formatted");
  handler.writeMessage(formatted);
  return 0;
}
