// A program that never includes <iostream> and writes one message through
// each of the library's default channels, linked to libmsg-core.so as an
// application links it. Loading the library must not set up the standard
// streams (that costs every program about 0.5 MiB of libstdc++), and both
// lines must still arrive on standard error, std::cerr being set up on
// first use (tests/cmake/standard_error.cmake).

#include <msg/msg.h>

#include <cstdio>

#ifdef _GLIBCXX_IOSTREAM
#error "this probe must not include <iostream>"
#endif

// The first bytes of std::cerr, by the name libstdc++ gives the object:
// zero until the standard streams are set up.
extern const unsigned char cerrStorage[sizeof(void*)] __asm__("_ZSt4cerr");

// Whether something set the standard streams up before main. libstdc++ 13
// and later set them up themselves when they load, so there is nothing to
// see there.
bool streamsSetUpAtLoad() {
#if defined(__GLIBCXX__) && _GLIBCXX_RELEASE < 13
  for (unsigned char byte : cerrStorage) {
    if (byte != 0) {
      return true;
    }
  }
#endif
  return false;
}

int main() {
  if (streamsSetUpAtLoad()) {
    std::fputs("the standard streams were set up when the program was loaded\n", stderr);
    return 1;
  }
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
