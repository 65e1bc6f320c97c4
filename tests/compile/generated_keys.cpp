// Compiled by CTest against the header msgtool generates from
// tests/data/msgtool/keys.xml: the right number of arguments builds, and with
// MSG_EXPECT_COUNT_ERROR one argument too few, or with
// MSG_EXPECT_STRING_COUNT_ERROR a plural key's count given as a string, must
// fail with the library's own message.
#include "generated_keys.h"

void report(msg::MessageHandler& handler) {
#if defined(MSG_EXPECT_COUNT_ERROR)
  msg::write(handler, app::disk_full, 512);
#elif defined(MSG_EXPECT_STRING_COUNT_ERROR)
  msg::write(handler, app::files_deleted, "/tmp", "3");
#else
  msg::write(handler, app::files_deleted, "/tmp", 3);
  msg::write(handler, app::files_deleted, "/tmp", msg::fixed(2.5, 1));
  msg::write(handler, app::disk_full, 512, "/var");
  msg::write(handler, app::class_);
#endif
}
