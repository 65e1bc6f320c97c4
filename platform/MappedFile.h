// A file opened and mapped read-only, for code that reads a file in place.
//
// A platform that hosts the library provides:
//
//   MappedFile   the bytes of a regular file in memory, with the reason in
//                words when the file cannot be opened or mapped, a check
//                that the file has not changed since, advice that it will
//                be read at random, and a way to keep the mapping after the
//                file is closed.
//
// On Linux this is open(2) without blocking on FIFOs, fstat(2) and a private
// read-only mmap(2), not populated.

#ifndef MSG_PLATFORM_MAPPEDFILE_H_
#define MSG_PLATFORM_MAPPEDFILE_H_

#include <sys/stat.h>

#include <cstddef>
#include <string>

namespace msg {
namespace platform {

// Owns the descriptor and the mapping until it is destroyed or release()
// hands the mapping over.
class MappedFile {
 public:
  // Opens and maps `path`. On failure problem() says why and bytes() is
  // null; an empty file is opened but not mapped.
  explicit MappedFile(const char* path);
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;
  ~MappedFile();

  // True if the file still has the size, time and identity it had when it
  // was mapped: then the bytes checked are the bytes of the file.
  bool unchanged() const;

  // Tells the kernel that the mapping will be read here and there, as
  // lookups read it: a page fault then reads one page of a file not yet
  // cached, not a window of readahead, and so maps only that page.
  void readAtRandom() const;

  // Hands the mapping over (the caller unmaps length() bytes of it); the
  // descriptor is closed.
  void* release();

  const std::string& problem() const { return fault; }
  const unsigned char* bytes() const { return static_cast<const unsigned char*>(mapping); }
  std::size_t length() const { return size; }

 private:
  int descriptor = -1;
  struct stat opened {};
  void* mapping = nullptr;
  std::size_t size = 0;
  std::string fault;
};

}  // namespace platform
}  // namespace msg

#endif  // MSG_PLATFORM_MAPPEDFILE_H_
