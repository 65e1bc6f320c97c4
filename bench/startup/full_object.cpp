// The whole library's start: a program linked to libmsg.so (and so to
// libmsg-core.so and Xerces-C) that asks for the document handler and
// nothing else.

#include <msg/MessageHandlerX.h>

int main() {
  return msg::MessageHandlerX::object() != nullptr ? 0 : 1;
}
