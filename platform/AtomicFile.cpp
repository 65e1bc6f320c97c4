#include "platform/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace msg {
namespace platform {

AtomicFileError::AtomicFileError(Step step, std::string path, int error)
    : std::runtime_error(path + ": " + std::strerror(error)),
      step(step),
      path(std::move(path)),
      error(error) {}

std::string AtomicFileError::reason() const {
  return std::strerror(error);
}

namespace {

// The folder part of `path` with its final "/", or "" for a bare name.
std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
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

// Writes all `size` bytes; 0 or the errno value of the failed write.
int writeAll(int fd, const void* bytes, std::size_t size) {
  const char* next = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t written = write(fd, next, size);
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

// Writes the content and makes it durable, with the permissions of the file
// it will replace; 0 or the errno value of the failed call. Closes `fd`.
int fillAndClose(int fd, const std::string& path, const void* bytes, std::size_t size) {
  int error = writeAll(fd, bytes, size);
  struct stat old {};
  if (error == 0 && stat(path.c_str(), &old) == 0 && S_ISREG(old.st_mode) &&
      fchmod(fd, old.st_mode & 07777) != 0) {
    error = errno;
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

void replaceFileAtomically(const std::string& path, const void* bytes, std::size_t size,
                           const VerifyReplacement& verify) {
  std::string temporary;
  const int fd = createBeside(path, temporary);
  if (fd < 0) {
    throw AtomicFileError(AtomicFileError::Step::create, path, errno);
  }
  const int error = fillAndClose(fd, path, bytes, size);
  if (error != 0) {
    unlink(temporary.c_str());
    throw AtomicFileError(AtomicFileError::Step::write, path, error);
  }
  if (verify) {
    try {
      verify(temporary);
    } catch (...) {
      unlink(temporary.c_str());
      throw;
    }
  }
  if (rename(temporary.c_str(), path.c_str()) != 0) {
    const int renameError = errno;
    unlink(temporary.c_str());
    throw AtomicFileError(AtomicFileError::Step::replace, path, renameError);
  }
  syncFolder(folderOf(path));
}

}  // namespace platform
}  // namespace msg
