// Replacing a whole file so that a reader sees the old file or the new one,
// never a part of either.
//
// A platform that hosts the library must provide:
//
//   replaceFileAtomically   Writes the new content to a file of its own
//                           beside the target, makes it durable, lets the
//                           caller look at it, and puts it in the target's
//                           place in one step. On any failure the target is
//                           as it was and the file beside it is gone.
//
// On Linux: a new file in the target's folder (so that the rename stays on
// one file system) made with O_EXCL, so it never takes over a file somebody
// else made; write, fsync, rename, then fsync of the folder so that the
// rename itself survives a crash. A handler that has the old file mapped
// keeps the old content.
//
// Private to the library: not installed, nothing here is exported.

#ifndef MSG_PLATFORM_ATOMICFILE_H_
#define MSG_PLATFORM_ATOMICFILE_H_

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>

namespace msg {
namespace platform {

// A file could not be replaced. Callers translate it into their own words;
// the step tells how far the replacement came, and in every case the target
// is untouched.
class AtomicFileError : public std::runtime_error {
 public:
  enum class Step {
    create,   // no file could be made beside the target
    write,    // the new content could not be written or made durable
    replace,  // the new file could not take the target's place
  };

  // `error` is the errno value of the failed call.
  AtomicFileError(Step step, std::string path, int error);

  Step getStep() const { return step; }
  // The target, as the caller named it.
  const std::string& getPath() const { return path; }
  int getErrorNumber() const { return error; }
  // The system's words for the error number, e.g. "Permission denied".
  std::string reason() const;

 private:
  Step step;
  std::string path;
  int error;
};

// Called with the path of the written and synced new file before it takes
// the target's place; raises to stop the replacement.
using VerifyReplacement = std::function<void(const std::string& temporaryPath)>;

// Replaces the file `path` by the `size` bytes at `bytes` as described
// above. A regular file that existed keeps its permission bits; a new file
// gets those that the process's umask leaves of 0666. `verify`, if set, runs
// on the new file before the rename.
// Raises AtomicFileError, or what `verify` raises; `path` is then as it was
// and no temporary file is left behind.
void replaceFileAtomically(const std::string& path, const void* bytes, std::size_t size,
                           const VerifyReplacement& verify = nullptr);

}  // namespace platform
}  // namespace msg

#endif  // MSG_PLATFORM_ATOMICFILE_H_
