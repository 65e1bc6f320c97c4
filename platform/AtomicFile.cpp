#include "platform/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace msg {
namespace platform {

namespace {

std::string reasonFor(AtomicFileError::Step step, int error) {
  if (step == AtomicFileError::Step::readOnly && error == EACCES) {
    return "the file is read-only; make it writable (chmod u+w) if it is meant to change";
  }
  if (step == AtomicFileError::Step::keepOwner && error == EPERM) {
    return "its owner and group cannot be kept by this user; replace it as its owner, in its "
           "group, or as root";
  }
  return std::strerror(error);
}

}  // namespace

AtomicFileError::AtomicFileError(Step step, std::string path, int error)
    : std::runtime_error(path + ": " + reasonFor(step, error)),
      step(step),
      path(std::move(path)),
      error(error) {}

std::string AtomicFileError::reason() const {
  return reasonFor(step, error);
}

namespace {

// More links than this in a row is taken for a loop, as the kernel does.
constexpr int kMaxLinks = 40;

// The folder part of `path` with its final "/", or "" for a bare name.
std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// The file that `path` leads to through symbolic links: `path` itself if it
// is no link or does not exist, else where the last link of the chain
// points (which need not exist). A relative link is read from its own
// folder. Raises Step::follow for a loop or a link that cannot be read.
std::string realFileOf(const std::string& path) {
  std::string current = path;
  for (int hops = 0;; ++hops) {
    struct stat link {};
    if (lstat(current.c_str(), &link) != 0 || !S_ISLNK(link.st_mode)) {
      return current;
    }
    if (hops == kMaxLinks) {
      throw AtomicFileError(AtomicFileError::Step::follow, path, ELOOP);
    }
    // st_size is the link's length, but some file systems report 0.
    std::string target(link.st_size > 0 ? static_cast<std::size_t>(link.st_size) + 1 : 4096, '\0');
    const ssize_t length = readlink(current.c_str(), &target[0], target.size());
    if (length < 0 || static_cast<std::size_t>(length) >= target.size()) {
      throw AtomicFileError(AtomicFileError::Step::follow, path, length < 0 ? errno : ENAMETOOLONG);
    }
    target.resize(static_cast<std::size_t>(length));
    current = !target.empty() && target.front() == '/' ? target : folderOf(current) + target;
  }
}

// Raises Step::readOnly if `real` is a regular file that nobody may write
// (root included, who passes every access check), or that this user may not.
void refuseReadOnly(const std::string& path, const std::string& real) {
  struct stat status {};
  if (stat(real.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return;
  }
  if ((status.st_mode & 0222) == 0) {
    throw AtomicFileError(AtomicFileError::Step::readOnly, path, EACCES);
  }
  if (faccessat(AT_FDCWD, real.c_str(), W_OK, AT_EACCESS) != 0) {
    throw AtomicFileError(AtomicFileError::Step::readOnly, path, errno);
  }
}

// A name beside `path` that no one else uses, in `name`, and the file made
// under it, open for writing. Hidden (a leading dot), so that a listing or a
// glob of the folder does not pick it up while it lives.
int createBeside(const std::string& path, std::string& name) {
  static std::atomic<unsigned> serial{0};
  const std::string folder = folderOf(path);
  const std::string base = path.substr(folder.size());
  for (int attempt = 0;; ++attempt) {
    char suffix[48];
    std::snprintf(suffix, sizeof suffix, ".tmp-%ld-%u", static_cast<long>(getpid()),
                  serial.fetch_add(1, std::memory_order_relaxed));
    name = folder + "." + base + suffix;
    // 0666 less the umask: what a new file would get anyway.
    const int fd = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST || attempt == 100) {
      return fd;
    }
  }
}

// The most one write() hands the kernel. The page cache keeps a file in
// pieces as large as the writes that made it (up to 2 MiB where the file
// system has large folios), and a process that maps the file later maps the
// whole piece around each byte it reads. A compiled catalogue is read in
// place at a few places, so pieces of 64 KiB keep that cost as low as the
// kernel's own fault-around, as stdio's small writes do for gettext's files.
constexpr std::size_t kLargestWrite = 64 * 1024;

// Writes all `size` bytes; 0 or the errno value of the failed write.
int writeAll(int fd, const void* bytes, std::size_t size) {
  const char* next = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t written = write(fd, next, std::min(size, kLargestWrite));
    if (written < 0) {
      if (errno == EINTR) {
        continue;
      }
      return errno;
    }
    next += written;
    size -= static_cast<std::size_t>(written);
  }
  return 0;
}

// Gives the new file the owner, group and permission bits of the regular
// file `real` it will replace; 0 or the errno value of the failed call, and
// `step` the step that failed. The owner comes first: changing it clears
// set-user-ID and set-group-ID bits that fchmod then puts back.
int keepWhatTheFileWas(int fd, const std::string& real, AtomicFileError::Step& step) {
  struct stat old {};
  struct stat fresh {};
  if (stat(real.c_str(), &old) != 0 || !S_ISREG(old.st_mode)) {
    return 0;
  }
  step = AtomicFileError::Step::keepOwner;
  if (fstat(fd, &fresh) != 0) {
    return errno;
  }
  if ((fresh.st_uid != old.st_uid || fresh.st_gid != old.st_gid) &&
      fchown(fd, old.st_uid, old.st_gid) != 0) {
    return errno;
  }
  step = AtomicFileError::Step::write;
  return fchmod(fd, old.st_mode & 07777) != 0 ? errno : 0;
}

// Writes the content, keeps what `real` was and makes it durable; 0 or the
// errno value of the failed call, and `step` the step that failed. Closes
// `fd`.
int fillAndClose(int fd, const std::string& real, const void* bytes, std::size_t size,
                 AtomicFileError::Step& step) {
  step = AtomicFileError::Step::write;
  int error = writeAll(fd, bytes, size);
  if (error == 0) {
    error = keepWhatTheFileWas(fd, real, step);
  }
  if (error == 0 && fsync(fd) != 0) {
    error = errno;
  }
  if (close(fd) != 0 && error == 0) {
    error = errno;
  }
  return error;
}

// Makes the rename in `folder` durable. The new file is in place whatever
// happens here, so a folder that cannot be synced (some file systems refuse)
// is no failure of the replacement.
void syncFolder(const std::string& folder) {
  const int fd = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd >= 0) {
    (void)fsync(fd);
    close(fd);
  }
}

}  // namespace

void checkReplaceable(const std::string& path) {
  refuseReadOnly(path, realFileOf(path));
}

void replaceFileAtomically(const std::string& path, const void* bytes, std::size_t size,
                           const VerifyReplacement& verify) {
  const std::string real = realFileOf(path);
  refuseReadOnly(path, real);
  std::string temporary;
  const int fd = createBeside(real, temporary);
  if (fd < 0) {
    throw AtomicFileError(AtomicFileError::Step::create, path, errno);
  }
  AtomicFileError::Step step = AtomicFileError::Step::write;
  const int error = fillAndClose(fd, real, bytes, size, step);
  if (error != 0) {
    unlink(temporary.c_str());
    throw AtomicFileError(step, path, error);
  }
  if (verify) {
    try {
      verify(temporary);
    } catch (...) {
      unlink(temporary.c_str());
      throw;
    }
  }
  if (rename(temporary.c_str(), real.c_str()) != 0) {
    const int renameError = errno;
    unlink(temporary.c_str());
    throw AtomicFileError(AtomicFileError::Step::replace, path, renameError);
  }
  syncFolder(folderOf(real));
}

}  // namespace platform
}  // namespace msg
