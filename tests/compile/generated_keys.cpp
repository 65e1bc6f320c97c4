// Compiled by CTest against the header msgtool generates from
// tests/data/msgtool/keys.xml: calls with each key's number of arguments,
// its count a number, build.
#include "generated_keys.h"

void report(msg::MessageHandler& handler) {
  msg::write(handler, app::files_deleted, "/tmp", 3);
  msg::write(handler, app::files_deleted, "/tmp", msg::fixed(2.5, 1));
  msg::write(handler, app::disk_full, 512, "/var");
  msg::write(handler, app::class_);
}
