#include "platform/AtomicFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/scratch_folder.h"

namespace msg {
namespace platform {
namespace {

namespace fs = std::filesystem;

class AtomicFileTest : public ::testing::Test {
 protected:
  static std::string read(const fs::path& path) { return test_support::readFile(path); }
  static void write(const fs::path& path, const std::string& content) {
    test_support::writeFile(path, content);
  }
  static void replace(const fs::path& path, const std::string& content,
                      const VerifyReplacement& verify = nullptr) {
    replaceFileAtomically(path.string(), content.data(), content.size(), verify);
  }
  static mode_t modeOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
  }
  // The names in the folder: a temporary file left behind shows here.
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder.path())) {
      found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }

  test_support::ScratchFolder folder;
};

TEST_F(AtomicFileTest, ReplacesOrCreatesTheFileAndKeepsItsPermissions) {
  const fs::path target = folder / "catalogue.bin";
  const std::string binary("new\0content\n", 12);
  replace(target, binary);
  EXPECT_EQ(read(target), binary);
  const mode_t mask = umask(0);
  umask(mask);
  EXPECT_EQ(modeOf(target), 0666 & ~mask);

  ASSERT_EQ(chmod(target.c_str(), 0640), 0);
  replace(target, "second");
  EXPECT_EQ(read(target), "second");
  EXPECT_EQ(modeOf(target), 0640u);
  replace(target, "");
  EXPECT_EQ(read(target), "");
  EXPECT_EQ(names(), std::vector<std::string>{"catalogue.bin"});

  // A bare name lands in the working folder.
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  replace("bare.txt", "bare");
  fs::current_path(before);
  EXPECT_EQ(read(folder / "bare.txt"), "bare");
}

TEST_F(AtomicFileTest, VerifySeesTheWholeNewFileAndARefusalKeepsTheOld) {
  const fs::path target = folder / "document.xml";
  write(target, "old");
  std::string seen;
  std::string seenPath;
  replace(target, "checked", [&](const std::string& temporary) {
    seenPath = temporary;
    seen = read(temporary);
    EXPECT_EQ(read(target), "old");  // not yet in place
  });
  EXPECT_EQ(seen, "checked");
  EXPECT_EQ(fs::path(seenPath).parent_path(), folder.path());
  EXPECT_EQ(read(target), "checked");

  EXPECT_THROW(replace(target, "refused",
                       [](const std::string&) { throw std::logic_error("would not load"); }),
               std::logic_error);
  EXPECT_EQ(read(target), "checked");
  EXPECT_EQ(names(), std::vector<std::string>{"document.xml"});
}

TEST_F(AtomicFileTest, EachFailingStepSaysWhereAndWhyAndLeavesNothingBehind) {
  // No folder to make the file in.
  const fs::path nowhere = folder / "missing" / "file.txt";
  try {
    replace(nowhere, "x");
    FAIL() << "replaced a file in a folder that does not exist";
  } catch (const AtomicFileError& failure) {
    EXPECT_EQ(failure.getStep(), AtomicFileError::Step::create);
    EXPECT_EQ(failure.getPath(), nowhere.string());
    EXPECT_EQ(failure.getErrorNumber(), ENOENT);
    EXPECT_EQ(std::string(failure.what()), nowhere.string() + ": " + failure.reason());
  }

  // A directory in the target's place stays a directory, with its content.
  const fs::path directory = folder / "taken";
  fs::create_directory(directory);
  write(directory / "inside", "kept");
  try {
    replace(directory, "x");
    FAIL() << "replaced a directory";
  } catch (const AtomicFileError& failure) {
    EXPECT_EQ(failure.getStep(), AtomicFileError::Step::replace);
  }
  EXPECT_TRUE(fs::is_directory(directory));
  EXPECT_EQ(read(directory / "inside"), "kept");
  EXPECT_EQ(names(), std::vector<std::string>{"taken"});
}

// A write that fails half way (here: the file size limit, which holds for
// root too) leaves the old content byte for byte.
TEST_F(AtomicFileTest, AWriteThatFailsHalfWayKeepsTheOldContent) {
  const fs::path target = folder / "header.h";
  const std::string old = "old\n";
  write(target, old);
  struct rlimit saved {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
  struct rlimit small = saved;
  small.rlim_cur = 16;
  const auto previous = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  AtomicFileError::Step step = AtomicFileError::Step::create;
  int error = 0;
  try {
    replace(target, std::string(4096, 'n'));
  } catch (const AtomicFileError& failure) {
    step = failure.getStep();
    error = failure.getErrorNumber();
  }
  setrlimit(RLIMIT_FSIZE, &saved);
  std::signal(SIGXFSZ, previous);
  EXPECT_EQ(step, AtomicFileError::Step::write);
  EXPECT_EQ(error, EFBIG);
  EXPECT_EQ(read(target), old);
  EXPECT_EQ(names(), std::vector<std::string>{"header.h"});
}

}  // namespace
}  // namespace platform
}  // namespace msg
