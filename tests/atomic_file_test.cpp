#include "platform/AtomicFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/scratch_folder.h"

namespace msg {
namespace platform {
namespace {

namespace fs = std::filesystem;
using test_support::readFile;
using test_support::writeFile;
using Names = std::vector<std::string>;

class AtomicFileTest : public ::testing::Test {
 protected:
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
  // The failure that replacing `path` raised, with `verify` run never.
  static AtomicFileError refusal(const fs::path& path, const std::string& content = "new") {
    try {
      replace(path, content, [](const std::string&) { ADD_FAILURE() << "wrote a new file"; });
    } catch (const AtomicFileError& failure) {
      EXPECT_EQ(failure.getPath(), path.string());
      return failure;
    }
    ADD_FAILURE() << path << " was replaced";
    return AtomicFileError(AtomicFileError::Step::replace, path.string(), 0);
  }
  // The names in a folder: a temporary file left behind shows here.
  static Names names(const fs::path& in) {
    Names found;
    for (const fs::directory_entry& entry : fs::directory_iterator(in)) {
      found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }
  Names names() const { return names(folder.path()); }

  test_support::ScratchFolder folder;
};

TEST_F(AtomicFileTest, ReplacesOrCreatesKeepsPermissionsAndVerifiesFirst) {
  const fs::path target = folder / "catalogue.bin";
  const std::string binary("new\0content\n", 12);
  replace(target, binary);
  EXPECT_EQ(readFile(target), binary);
  const mode_t mask = umask(0);
  umask(mask);
  EXPECT_EQ(modeOf(target), 0666 & ~mask);

  ASSERT_EQ(chmod(target.c_str(), 0640), 0);
  std::string seen;
  replace(target, "checked", [&](const std::string& temporary) {
    EXPECT_EQ(fs::path(temporary).parent_path(), folder.path());
    seen = readFile(temporary);
    EXPECT_EQ(readFile(target), binary);  // not yet in place
  });
  EXPECT_EQ(seen, "checked");
  EXPECT_EQ(readFile(target), "checked");
  EXPECT_EQ(modeOf(target), 0640u);

  EXPECT_THROW(replace(target, "refused",
                       [](const std::string&) { throw std::logic_error("would not load"); }),
               std::logic_error);
  EXPECT_EQ(readFile(target), "checked");
  EXPECT_EQ(names(), Names{"catalogue.bin"});

  // Content larger than one write, of a length no piece divides, arrives
  // whole and in order.
  std::string large(200 * 1024 + 7, '\0');
  for (std::size_t i = 0; i < large.size(); ++i) {
    large[i] = static_cast<char>(i * 131 / 7);
  }
  replace(target, large);
  EXPECT_EQ(readFile(target), large);

  // A bare name lands in the working folder.
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  replace("bare.txt", "");
  fs::current_path(before);
  EXPECT_TRUE(fs::exists(folder / "bare.txt"));
  EXPECT_EQ(readFile(folder / "bare.txt"), "");
}

TEST_F(AtomicFileTest, EachFailingStepSaysWhereAndWhyAndLeavesNothingBehind) {
  const fs::path nowhere = folder / "missing" / "file.txt";
  const AtomicFileError noFolder = refusal(nowhere);
  EXPECT_EQ(noFolder.getStep(), AtomicFileError::Step::create);
  EXPECT_EQ(noFolder.getErrorNumber(), ENOENT);
  EXPECT_EQ(std::string(noFolder.what()), nowhere.string() + ": " + noFolder.reason());

  // A directory in the target's place stays a directory, with its content.
  fs::create_directory(folder / "taken");
  writeFile(folder / "taken" / "inside", "kept");
  try {
    replace(folder / "taken", "x");
    ADD_FAILURE() << "replaced a directory";
  } catch (const AtomicFileError& failure) {
    EXPECT_EQ(failure.getStep(), AtomicFileError::Step::replace);
  }
  EXPECT_EQ(readFile(folder / "taken" / "inside"), "kept");

  // A write that fails half way (here: the file size limit, which holds for
  // root too) leaves the old content byte for byte.
  writeFile(folder / "header.h", "old\n");
  struct rlimit saved {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
  struct rlimit small = saved;
  small.rlim_cur = 16;
  const auto previous = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const AtomicFileError tooBig = refusal(folder / "header.h", std::string(4096, 'n'));
  setrlimit(RLIMIT_FSIZE, &saved);
  std::signal(SIGXFSZ, previous);
  EXPECT_EQ(tooBig.getStep(), AtomicFileError::Step::write);
  EXPECT_EQ(tooBig.getErrorNumber(), EFBIG);
  EXPECT_EQ(readFile(folder / "header.h"), "old\n");
  EXPECT_EQ(names(), (Names{"header.h", "taken"}));
}

// Acts as the user `uid` until it ends; only root may come back.
class ActingAs {
 public:
  explicit ActingAs(uid_t uid) { EXPECT_EQ(seteuid(uid), 0); }
  ~ActingAs() { EXPECT_EQ(seteuid(0), 0); }
  ActingAs(const ActingAs&) = delete;
  ActingAs& operator=(const ActingAs&) = delete;
};

// The real file gets the new content in its own folder, and every link of
// the chain (relative, then absolute) stays a link to it.
TEST_F(AtomicFileTest, FollowsLinksToTheRealFileAndKeepsThem) {
  fs::create_directory(folder / "real");
  fs::create_directory(folder / "links");
  const fs::path real = folder / "real" / "doc.xml";
  writeFile(real, "old");
  ASSERT_EQ(chmod(real.c_str(), 0640), 0);
  fs::create_symlink("second.xml", folder / "links" / "doc.xml");
  fs::create_symlink(real, folder / "links" / "second.xml");
  replace(folder / "links" / "doc.xml", "new");
  EXPECT_EQ(readFile(real), "new");
  EXPECT_EQ(modeOf(real), 0640u);
  EXPECT_EQ(fs::read_symlink(folder / "links" / "doc.xml").string(), "second.xml");
  EXPECT_EQ(fs::read_symlink(folder / "links" / "second.xml").string(), real.string());
  EXPECT_EQ(names(folder / "links"), (Names{"doc.xml", "second.xml"}));
  EXPECT_EQ(names(folder / "real"), Names{"doc.xml"});

  // A link to a file not there yet makes the file where the link points.
  fs::create_symlink("../real/new.xml", folder / "links" / "new.xml");
  replace(folder / "links" / "new.xml", "made");
  EXPECT_EQ(readFile(folder / "real" / "new.xml"), "made");
  EXPECT_TRUE(fs::is_symlink(folder / "links" / "new.xml"));

  // A loop is refused before anything is written.
  fs::create_symlink("loop-b", folder / "loop-a");
  fs::create_symlink("loop-a", folder / "loop-b");
  EXPECT_EQ(refusal(folder / "loop-a").getStep(), AtomicFileError::Step::follow);
  EXPECT_TRUE(fs::is_symlink(folder / "loop-a"));
}

// A file the user may not write is refused before anything is made, whether
// nobody has a write bit (root included) or only others have one; through a
// link too, and where the folder would let a rename through.
TEST_F(AtomicFileTest, RefusesAReadOnlyFileAndLeavesItAsItWas) {
  struct Case {
    mode_t mode;
    uid_t owner;  // 0: the user's own, else acting as user 1234
  };
  ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
  const fs::path target = folder / "messages.xml";
  fs::create_symlink("messages.xml", folder / "link.xml");
  for (const Case& one : {Case{0444, 0}, Case{0644, 4321}}) {
    SCOPED_TRACE(one.owner);
    if (one.owner != 0 && geteuid() != 0) {
      continue;  // only root can act as another user here
    }
    writeFile(target, "old");
    ASSERT_EQ(chmod(target.c_str(), one.mode), 0);
    if (one.owner != 0) {
      ASSERT_EQ(chown(target.c_str(), one.owner, static_cast<gid_t>(-1)), 0);
    }
    for (const fs::path& named : {target, folder / "link.xml"}) {
      std::optional<ActingAs> other;
      if (one.owner != 0) {
        other.emplace(1234);
      }
      EXPECT_EQ(refusal(named).getStep(), AtomicFileError::Step::readOnly) << named;
      EXPECT_THROW(checkReplaceable(named.string()), AtomicFileError);
      other.reset();
      EXPECT_EQ(readFile(target), "old");
      EXPECT_EQ(modeOf(target), one.mode);
      EXPECT_EQ(names(), (Names{"link.xml", "messages.xml"}));
    }
    ASSERT_EQ(chmod(target.c_str(), 0644), 0);  // root may write it again
  }
  EXPECT_NO_THROW(checkReplaceable(target.string()));
  EXPECT_NO_THROW(checkReplaceable((folder / "not-yet.xml").string()));
}

// Root gives the new file the old one's owner and group, and the set-ID bits
// that a change of owner would clear. A user who cannot keep the owner is
// refused, and the file stays as it was.
TEST_F(AtomicFileTest, KeepsOwnerGroupAndModeOrRefuses) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "giving a file to another user needs root";
  }
  struct Case {
    uid_t owner;
    gid_t group;
    mode_t mode;
    uid_t writer;  // the effective user that replaces the file
    bool kept;     // else: refused
  };
  ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
  const fs::path target = folder / "catalogue.msgc";
  for (const Case& one : {Case{1234, 5678, 06755, 0, true}, Case{1234, 0, 0664, 1234, true},
                          Case{4321, 0, 0666, 1234, false}}) {
    SCOPED_TRACE(std::to_string(one.owner) + " replaced by " + std::to_string(one.writer));
    fs::remove(target);
    writeFile(target, "old");
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
    EXPECT_EQ(readFile(target), one.kept ? "new" : "old");
    EXPECT_EQ(step, one.kept ? AtomicFileError::Step::replace : AtomicFileError::Step::keepOwner);
    EXPECT_EQ(status.st_uid, one.owner);
    EXPECT_EQ(status.st_gid, one.group);
    EXPECT_EQ(status.st_mode & 07777, one.mode);
    EXPECT_EQ(names(), Names{"catalogue.msgc"});
  }
}

}  // namespace
}  // namespace platform
}  // namespace msg
