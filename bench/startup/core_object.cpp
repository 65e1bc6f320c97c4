// The core's start: a program linked to libmsg-core.so that asks for the
// process-wide handler and nothing else.

#include <msg/MessageHandler.h>

int main() {
  return msg::MessageHandler::object() != nullptr ? 0 : 1;
}
