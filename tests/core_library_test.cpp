// A program linked to the core library alone (msg::core, libmsg-core.so),
// as an application that needs no message documents is. Its process never
// holds Xerces-C, and the catalogue text of an exception comes from the
// plain handler: the one way it differs from a program linked to msg::msg.
//
// Built with -fnon-call-exceptions (tests/CMakeLists.txt) for
// tests/null_read.h.

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/MessageHandler.h"
#include "msg/structured_exception.h"
#include "tests/null_read.h"
#include "tests/scratch_folder.h"

namespace {

TEST(CoreLibraryTest, ExceptionTextsComeFromThePlainHandlerWithoutXml) {
  msg::MessageHandler* plain = msg::MessageHandler::object();
  new msg::MTE(msg::info, "en", "core", "only", "from the plain handler", plain, false, false);

  const char* arguments[] = {"xx"};
  plain->setLanguageList(msg::LanguageList(msg::Language("de")));
  EXPECT_STREQ(
      structured_exception("t", false, "msg", "langunknown", 1, arguments, true).getMessageText(),
      "Systemfehler: Die angegebene Sprache mit der Kennung xx ist nicht bekannt.");
  plain->setLanguageList(msg::LanguageList(msg::Language("en")));
  EXPECT_STREQ(structured_exception("t", false, "core", "only", 0, nullptr, false).getMessageText(),
               "from the plain handler");
  // Nothing was stacked in front of the plain handler.
  EXPECT_EQ(msg::MessageHandler::object(), plain);
  EXPECT_EQ(plain->getParent(), nullptr);

  // The translator and the built-in catalogue stand in the core alone.
  const std::optional<structured_exception> fault = test_support::faultOfNullRead();
  ASSERT_TRUE(fault.has_value());
  EXPECT_EQ(std::string(fault->getMessageText()).rfind("Meldung: Das Subsystem", 0), 0u)
      << fault->getMessageText();

  const std::string maps = test_support::readFile("/proc/self/maps");
  ASSERT_NE(maps.find("/libmsg-core.so"), std::string::npos) << maps;
  for (const char* library : {"/libmsg.so", "libxerces-c", "libcurl", "libgnutls", "libnettle"}) {
    EXPECT_EQ(maps.find(library), std::string::npos) << library << " is mapped:\n" << maps;
  }
}

}  // namespace
