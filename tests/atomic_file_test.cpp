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
#include <optional>
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
  static struct stat statusOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status;
  }
  static mode_t modeOf(const fs::path& path) { return statusOf(path).st_mode & 07777; }
  // The step at which replacing `path` stopped, with `verify` run never.
  static AtomicFileError::Step refusal(const fs::path& path) {
    try {
      replace(path, "new", [](const std::string&) { ADD_FAILURE() << "wrote a new file"; });
    } catch (const AtomicFileError& failure) {
      EXPECT_EQ(failure.getPath(), path.string());
      return failure.getStep();
    }
    ADD_FAILURE() << path << " was replaced";
    return AtomicFileError::Step::replace;
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

// Acts as the user `uid` until it ends; only root may come back.
class ActingAs {
 public:
  explicit ActingAs(uid_t uid) { EXPECT_EQ(seteuid(uid), 0); }
  ~ActingAs() { EXPECT_EQ(seteuid(0), 0); }
  ActingAs(const ActingAs&) = delete;
  ActingAs& operator=(const ActingAs&) = delete;
};

// Each way of naming the file through links: the real file gets the new
// content in its own folder, and every link stays a link to it.
TEST_F(AtomicFileTest, FollowsLinksToTheRealFileAndKeepsThem) {
  fs::create_directory(folder / "real");
  fs::create_directory(folder / "links");
  struct Case {
    const char* name;
    std::vector<std::pair<std::string, std::string>> links;  // link, what it says
  };
  const std::string absolute = (folder / "real" / "doc.xml").string();
  const std::vector<Case> cases = {
      {"absolute", {{"links/doc.xml", absolute}}},
      {"relative", {{"links/doc.xml", "../real/doc.xml"}}},
      {"chain", {{"links/doc.xml", "second.xml"}, {"links/second.xml", absolute}}},
      {"missing file", {{"links/doc.xml", "../real/new.xml"}}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name);
    const bool created = std::string(one.name) == "missing file";
    fs::remove_all(folder / "links");
    fs::create_directory(folder / "links");
    write(absolute, "old");
    ASSERT_EQ(chmod(absolute.c_str(), 0640), 0);
    for (const auto& [link, target] : one.links) {
      fs::create_symlink(target, folder / link);
    }
    replace(folder / "links" / "doc.xml", "new");
    const fs::path real = created ? folder / "real" / "new.xml" : fs::path(absolute);
    EXPECT_EQ(read(real), "new");
    EXPECT_EQ(read(absolute), created ? "old" : "new");
    if (!created) {
      EXPECT_EQ(modeOf(real), 0640u);
    }
    for (const auto& [link, target] : one.links) {
      EXPECT_TRUE(fs::is_symlink(folder / link)) << link;
      EXPECT_EQ(fs::read_symlink(folder / link).string(), target);
    }
    // Nothing left beside the links or the real file.
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "links"), fs::directory_iterator()),
              static_cast<long>(one.links.size()));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "real"), fs::directory_iterator()),
              created ? 2 : 1);
    fs::remove(folder / "real" / "new.xml");
  }

  // A loop is refused before anything is written.
  fs::create_symlink("loop-b", folder / "loop-a");
  fs::create_symlink("loop-a", folder / "loop-b");
  EXPECT_EQ(refusal(folder / "loop-a"), AtomicFileError::Step::follow);
  EXPECT_TRUE(fs::is_symlink(folder / "loop-a"));
}

// A file the user may not write is refused before anything is made, whether
// nobody has a write bit (root included) or only others have one; through a
// link too, and where the folder would let a rename through.
TEST_F(AtomicFileTest, RefusesAReadOnlyFileAndLeavesItAsItWas) {
  struct Case {
    const char* name;
    mode_t mode;
    uid_t owner;  // 0: the user's own
    bool asOtherUser;
  };
  const std::vector<Case> cases = {
      {"no write bit", 0444, 0, false},
      {"no write bit, executable", 0555, 0, false},
      {"only its owner may write", 0644, 4321, true},
  };
  ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name);
    if (one.asOtherUser && geteuid() != 0) {
      continue;  // only root can act as another user here
    }
    const fs::path target = folder / "messages.xml";
    fs::remove(target);
    write(target, "old");
    ASSERT_EQ(chmod(target.c_str(), one.mode), 0);
    if (one.owner != 0) {
      ASSERT_EQ(chown(target.c_str(), one.owner, static_cast<gid_t>(-1)), 0);
    }
    fs::remove(folder / "link.xml");
    fs::create_symlink("messages.xml", folder / "link.xml");
    for (const fs::path& named : {target, folder / "link.xml"}) {
      AtomicFileError::Step step = AtomicFileError::Step::replace;
      {
        std::optional<ActingAs> other;
        if (one.asOtherUser) {
          other.emplace(1234);
        }
        step = refusal(named);
        EXPECT_THROW(checkReplaceable(named.string()), AtomicFileError);
      }
      EXPECT_EQ(step, AtomicFileError::Step::readOnly) << named;
      EXPECT_EQ(read(target), "old");
      EXPECT_EQ(modeOf(target), one.mode);
      EXPECT_EQ(names(), (std::vector<std::string>{"link.xml", "messages.xml"}));
    }
  }
  write(folder / "writable.xml", "x");
  EXPECT_NO_THROW(checkReplaceable((folder / "writable.xml").string()));
  EXPECT_NO_THROW(checkReplaceable((folder / "not-yet.xml").string()));
}

// Root gives the new file the old one's owner and group, and the mode bits
// that a change of owner would clear. A user who cannot keep them is
// refused, and the file stays as it was.
TEST_F(AtomicFileTest, KeepsOwnerGroupAndModeOrRefuses) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "giving a file to another user needs root";
  }
  struct Case {
    const char* name;
    uid_t owner;
    gid_t group;
    mode_t mode;
    uid_t writer;  // the effective user that replaces the file
    bool kept;     // else: refused
  };
  const std::vector<Case> cases = {
      {"another owner and group", 1234, 5678, 0640, 0, true},
      {"set-user-ID kept", 1234, 0, 04755, 0, true},
      {"set-group-ID kept", 0, 5678, 02775, 0, true},
      {"user's own file", 1234, 0, 0664, 1234, true},
      {"someone else's file", 4321, 0, 0666, 1234, false},
      {"a group the user is not in", 1234, 5678, 0666, 1234, false},
  };
  ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
  const fs::path target = folder / "catalogue.msgc";
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name);
    fs::remove(target);
    write(target, "old");
    ASSERT_EQ(chown(target.c_str(), one.owner, one.group), 0);
    ASSERT_EQ(chmod(target.c_str(), one.mode), 0);
    AtomicFileError::Step step = AtomicFileError::Step::replace;
    try {
      const ActingAs writer(one.writer);
      replace(target, "new");
    } catch (const AtomicFileError& failure) {
      step = failure.getStep();
    }
    const struct stat status = statusOf(target);
    EXPECT_EQ(read(target), one.kept ? "new" : "old");
    EXPECT_EQ(step, one.kept ? AtomicFileError::Step::replace : AtomicFileError::Step::keepOwner);
    EXPECT_EQ(status.st_uid, one.owner);
    EXPECT_EQ(status.st_gid, one.group);
    EXPECT_EQ(status.st_mode & 07777, one.mode);
    EXPECT_EQ(names(), std::vector<std::string>{"catalogue.msgc"});
  }
}

}  // namespace
}  // namespace platform
}  // namespace msg
