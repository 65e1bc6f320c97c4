// Compiled by CTest against the header msgtool generates from
// tests/data/msgtool/keys.xml: the right number of arguments builds, and with
// MSG_EXPECT_COUNT_ERROR one argument too few must fail with the library's
// own message.
#include "generated_keys.h"

void report(msg::MessageHandler& handler) {
#if defined(MSG_EXPECT_COUNT_ERROR)
  msg::write(handler, app::disk_full, 512);
#else
  msg::write(handler, app::disk_full, 512, "/var");
  msg::write(handler, app::class_);
#endif
}
