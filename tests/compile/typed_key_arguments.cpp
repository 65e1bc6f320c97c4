// Compiled by CTest, not linked: with MSG_EXPECT_COUNT_ERROR,
// MSG_EXPECT_TYPE_ERROR or MSG_EXPECT_STRING_COUNT_ERROR defined the build
// must fail with the library's own message; without, it must build.
#include <msg/msg.h>

inline constexpr ::msg::Key<2> diskfull{"app", "diskfull"};
inline constexpr ::msg::PluralKey<2, 1> deleted{"app", "deleted"};

void report(msg::MessageHandler& handler) {
#if defined(MSG_EXPECT_COUNT_ERROR)
  msg::write(handler, diskfull, 512);
#elif defined(MSG_EXPECT_TYPE_ERROR)
  msg::write(handler, diskfull, 512, 'x');
#elif defined(MSG_EXPECT_STRING_COUNT_ERROR)
  msg::write(handler, deleted, "/var", "3");
#else
  msg::write(handler, diskfull, 512, "/var");
  msg::write(&handler, diskfull, 512, std::string("/var"));
  (void)msg::format(handler, diskfull, msg::fixed(0.5, 1), msg::yesNo(true));
  msg::write(handler, deleted, "/var", 3);
  (void)msg::format(&handler, deleted, std::string("/var"), msg::fixed(1.0, 1));
#endif
}
