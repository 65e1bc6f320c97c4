// A program linked to the core library alone (msg::core, libmsg-core.so),
// as an application that needs no message documents is. Its process never
// holds Xerces-C, and the catalogue text of an exception comes from the
// plain handler: the one way it differs from a program linked to msg::msg.
//
// Such a program loads ICU only when its formatting channel first lays out
// a text beyond ASCII, from the module beside the library, and keeps to the
// byte model, saying so once, where that module is missing.
//
// Built with -fnon-call-exceptions (tests/CMakeLists.txt) for
// tests/null_read.h.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "msg/FormattingMessageChannel.h"
#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageHandler.h"
#include "msg/structured_exception.h"
#include "tests/null_read.h"
#include "tests/scratch_folder.h"

namespace {

using TextModel = msg::FormattingMessageChannel::TextModel;

// One column and two bytes a letter.
const char kRussian[] = "Файл не найден: проверьте путь";

// The lines of `text` laid out 16 columns wide by `model`.
std::vector<std::string> layOut(const char* text, TextModel model) {
  struct Recording : msg::FormattingMessageChannel {
    void onMessageLine(bool, bool, const char* line) override { lines.emplace_back(line); }
    std::vector<std::string> lines;
  } channel;
  channel.setTextHeaderFormat("&t");
  channel.setRightMargin(15);
  channel.setTextModel(model);
  channel.onMessage(msg::Message("ns", "id", msg::error, "en", text));
  return channel.lines;
}

bool isMapped(const char* library) {
  return test_support::readFile("/proc/self/maps").find(library) != std::string::npos;
}

// The folder of libmsg-core.so as this process loaded it.
std::filesystem::path coreLibrary() {
  Dl_info info;
  const void* inside = reinterpret_cast<const void*>(&msg::MessageHandler::object);
  if (dladdr(inside, &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  return std::filesystem::canonical(info.dli_fname);
}

TEST(CoreLibraryTest, LoadsIcuOnlyForTheFirstTextBeyondAscii) {
  ASSERT_FALSE(isMapped("libicuuc")) << "ICU is mapped before any layout";
  EXPECT_EQ(layOut("plain text, laid out by bytes", TextModel::kChosenByText),
            (std::vector<std::string>{"plain text,", "laid out by", "bytes"}));
  EXPECT_FALSE(isMapped("libicuuc")) << "an ASCII text loaded ICU";
  EXPECT_FALSE(isMapped("msg-unicode.so"));

  // How the Unicode model lays the text out is FormattingChannelUnicodeTest's;
  // here it shows that the module was loaded and used.
  EXPECT_NE(layOut(kRussian, TextModel::kChosenByText), layOut(kRussian, TextModel::kBytes));
  EXPECT_TRUE(isMapped("/msg/msg-unicode.so"));
  EXPECT_TRUE(isMapped("libicuuc"));
}

// Run only as the child of the test below (MSG_TEST_MISSING_MODULE set):
// a process whose libmsg-core.so has no module beside it.
TEST(CoreLibraryTest, WithoutTheModuleTextsBeyondAsciiAreLaidOutByBytes) {
  const char* folder = std::getenv("MSG_TEST_MISSING_MODULE");
  if (folder == nullptr) {
    GTEST_SKIP() << "runs as the child of BrokenInstallationKeepsToTheByteModel";
  }
  ASSERT_EQ(coreLibrary().parent_path(), std::filesystem::canonical(folder));
  const std::vector<std::string> bytes = layOut(kRussian, TextModel::kBytes);
  ASSERT_GT(bytes.size(), 2u);
  EXPECT_EQ(layOut(kRussian, TextModel::kChosenByText), bytes);
  EXPECT_EQ(layOut(kRussian, TextModel::kUnicode), bytes);
  EXPECT_FALSE(isMapped("libicuuc"));
}

TEST(CoreLibraryTest, BrokenInstallationKeepsToTheByteModel) {
  if (std::getenv("MSG_TEST_MISSING_MODULE") != nullptr) {
    GTEST_SKIP() << "the child itself";
  }
  // A copy of the library in a folder without msg/msg-unicode.so, found
  // first through LD_LIBRARY_PATH (which goes before the test's RUNPATH).
  test_support::ScratchFolder scratch;
  const std::filesystem::path library = coreLibrary();
  ASSERT_FALSE(library.empty());
  const std::string name = library.filename().string();  // libmsg-core.so.N.N.N
  const std::string soname = name.substr(0, name.find('.', name.find(".so.") + 4));
  std::filesystem::copy_file(library, scratch / soname);
  char self[4096];
  const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
  ASSERT_GT(length, 0);
  self[length] = '\0';

  const std::string command =
      "MSG_TEST_MISSING_MODULE='" + scratch.path().string() + "' LD_LIBRARY_PATH='" +
      scratch.path().string() + "' '" + self +
      "' --gtest_filter=CoreLibraryTest.WithoutTheModuleTextsBeyondAsciiAreLaidOutByBytes >'" +
      (scratch / "out").string() + "' 2>'" + (scratch / "err").string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0) << test_support::readFile(scratch / "out");
  const std::string out = test_support::readFile(scratch / "out");
  EXPECT_NE(out.find("[  PASSED  ] 1 test"), std::string::npos) << out;

  // Three layouts beyond ASCII, one diagnostic that names the module.
  const std::string err = test_support::readFile(scratch / "err");
  const std::string diagnostic =
      "msg: cannot load the Unicode line layout (" + (scratch / "msg/msg-unicode.so").string();
  EXPECT_EQ(err.rfind(diagnostic, 0), 0u) << err;
  EXPECT_EQ(err.find("msg: ", 1), std::string::npos) << err;
  EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
}

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
