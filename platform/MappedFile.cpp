#include "platform/MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace msg {
namespace platform {

MappedFile::MappedFile(const char* path) {
  // O_NONBLOCK: opening a FIFO must not wait for a writer.
  descriptor = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  if (descriptor < 0) {
    fault = std::string("the file cannot be opened: ") + std::strerror(errno);
    return;
  }
  if (fstat(descriptor, &opened) != 0) {
    fault = std::string("the file cannot be examined: ") + std::strerror(errno);
    return;
  }
  if (!S_ISREG(opened.st_mode)) {
    fault = S_ISDIR(opened.st_mode) ? "the path names a folder, not a file"
                                    : "the path names no regular file (a FIFO, socket or device)";
    return;
  }
  size = static_cast<std::size_t>(opened.st_size);
  if (size == 0) {
    return;  // the reader names the fault; there is nothing to map
  }
  // Not populated: a file read in place is paged in where lookups read it.
  void* address = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
  if (address == MAP_FAILED) {
    fault = std::string("the file cannot be mapped: ") + std::strerror(errno);
    return;
  }
  mapping = address;
}

MappedFile::~MappedFile() {
  if (mapping != nullptr) {
    munmap(mapping, size);
  }
  if (descriptor >= 0) {
    close(descriptor);
  }
}

bool MappedFile::unchanged() const {
  struct stat now {};
  return fstat(descriptor, &now) == 0 && now.st_size == opened.st_size &&
         now.st_ino == opened.st_ino && now.st_mtim.tv_sec == opened.st_mtim.tv_sec &&
         now.st_mtim.tv_nsec == opened.st_mtim.tv_nsec;
}

void MappedFile::readAtRandom() const {
  (void)madvise(mapping, size, MADV_RANDOM);
}

void* MappedFile::release() {
  close(descriptor);
  descriptor = -1;
  return std::exchange(mapping, nullptr);
}

}  // namespace platform
}  // namespace msg
