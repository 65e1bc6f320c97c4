// A program linked to the shared libraries as an application is (msg::msg:
// libmsg.so on top of libmsg-core.so), not to the objects the other tests
// link. The document layer lives in one library and the exceptions in the
// other, so what joins them across the boundary is checked here: the
// catalogue text of an exception goes through MessageHandlerX::object(),
// and the built-in catalogue and the fault translator stand when main runs.
//
// Built with -fnon-call-exceptions (tests/CMakeLists.txt) for
// tests/null_read.h.

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "msg/MTE.h"
#include "msg/MessageHandler.h"
#include "msg/MessageHandlerX.h"
#include "msg/structured_exception.h"
#include "msg/version.h"
#include "tests/null_read.h"
#include "tests/scratch_folder.h"

namespace {

// Both libraries come from the build tree, and the process holds Xerces-C
// through libmsg.so: this is the shared library build, not the objects.
TEST(SharedLibraryTest, BothLibrariesAndXercesCAreMapped) {
  const std::string maps = test_support::readFile("/proc/self/maps");
  EXPECT_NE(maps.find("/libmsg-core.so"), std::string::npos) << maps;
  EXPECT_NE(maps.find("/libmsg.so"), std::string::npos) << maps;
  EXPECT_NE(maps.find("libxerces-c"), std::string::npos) << maps;
}

// The version string spells the three version numbers, in order.
TEST(SharedLibraryTest, TheVersionStringSpellsTheVersionNumbers) {
  EXPECT_EQ(std::string(MSG_VERSION_STRING), std::to_string(MSG_VERSION_MAJOR) + "." +
                                                 std::to_string(MSG_VERSION_MINOR) + "." +
                                                 std::to_string(MSG_VERSION_PATCH));
}

// The first exception text stacks the document handler in front of the
// plain one, as MessageHandlerX::object() does, and the text comes from it;
// a fault raised by the translator in libmsg-core.so gets the built-in
// text of its key.
TEST(SharedLibraryTest, ExceptionTextsComeThroughTheDocumentHandler) {
  msg::MessageHandler* plain = msg::MessageHandler::object();
  ASSERT_EQ(dynamic_cast<msg::MessageHandlerX*>(plain), nullptr)
      << "something stacked the document handler before the first exception text";

  const char* arguments[] = {"xx"};
  EXPECT_STREQ(
      structured_exception("t", false, "msg", "langunknown", 1, arguments, true).getMessageText(),
      "System error: Language with id xx is unknown.");
  msg::MessageHandler* after = msg::MessageHandler::object();
  ASSERT_NE(dynamic_cast<msg::MessageHandlerX*>(after), nullptr);
  EXPECT_EQ(after, msg::MessageHandlerX::object());
  EXPECT_EQ(after->getParent(), plain);

  // A text the stacked handler holds and the plain one does not.
  static const msg::MTE only(msg::info, "en", "shared", "only", "from the document handler", after,
                             false, false);
  EXPECT_STREQ(
      structured_exception("t", false, "shared", "only", 0, nullptr, false).getMessageText(),
      "from the document handler");

  const std::optional<structured_exception> fault = test_support::faultOfNullRead();
  ASSERT_TRUE(fault.has_value());
  EXPECT_STREQ(fault->getMessageNamespace(), "exception");
  EXPECT_EQ(std::string(fault->getMessageText()).rfind("Meldung: Das Subsystem", 0), 0u)
      << fault->getMessageText();
}

}  // namespace
