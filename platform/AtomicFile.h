// Replacing a whole file so that a reader sees the old file or the new one,
// never a part of either, and so that the file stays what it was: the same
// real file, mode, owner and group.
//
// A platform that hosts the library must provide:
//
//   replaceFileAtomically   Follows symbolic links to the real file, refuses
//                           a file the user may not write, writes the new
//                           content to a file of its own beside the real
//                           file, gives it the old file's owner, group and
//                           mode, makes it durable, lets the caller look at
//                           it, and puts it in the real file's place in one
//                           step. On any failure the target is as it was and
//                           the file beside it is gone.
//   checkReplaceable        The refusals that come before anything is
//                           written, for a caller that wants them before it
//                           spends work on the new content.
//
// On Linux: a new file in the real file's folder (so that the rename stays
// on one file system and the links keep pointing at it) made with O_EXCL, so
// it never takes over a file somebody else made; write, fchown, fchmod,
// fsync, rename, then fsync of the folder so that the rename itself survives
// a crash. A handler that has the old file mapped keeps the old content.
// Hard links to the old file keep the old content too: the rename gives the
// name a new file. Extended attributes and ACLs are not carried over.
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
    follow,     // a symbolic link on the way could not be followed (a loop)
    readOnly,   // the target exists and may not be written; nothing was made
    create,     // no file could be made beside the target
    write,      // the new content could not be written or made durable
    keepOwner,  // the new file could not get the target's owner and group
    replace,    // the new file could not take the target's place
  };

  // `error` is the errno value of the failed call.
  AtomicFileError(Step step, std::string path, int error);

  Step getStep() const { return step; }
  // The target, as the caller named it.
  const std::string& getPath() const { return path; }
  int getErrorNumber() const { return error; }
  // Why, in words for the user: the system's words for the error number
  // (e.g. "No space left on device"), and for a read-only target or an
  // owner that cannot be kept also what to do about it.
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
// above. A symbolic link (also a chain of them, absolute or relative) is
// followed, and the file it leads to is replaced in its own folder; the
// links stay as they were. A file that does not exist yet is made where the
// last link points, or at `path`.
// A regular file that existed keeps its permission bits, owner and group. If
// the owner or the group cannot be given to the new file (only root may give
// a file away, and a user may only pick a group of their own), the file is
// not replaced: it would change who may read or write it. A new file gets
// the user's owner and group and the permission bits that the process's
// umask leaves of 0666.
// `verify`, if set, runs on the new file before the rename.
// Raises AtomicFileError, or what `verify` raises; `path` is then as it was
// and no temporary file is left behind. Step::follow and Step::readOnly are
// raised before anything is written. A regular file is read-only if nobody
// has a write permission bit on it (root is refused too), or if the user may
// not write it, also where the folder would let the rename through.
void replaceFileAtomically(const std::string& path, const void* bytes, std::size_t size,
                           const VerifyReplacement& verify = nullptr);

// Raises what replaceFileAtomically(path, ...) would raise before it writes
// anything, for `path` as it is now (Step::follow, Step::readOnly); does
// nothing else. A file missing or unreadable is no failure here: the
// replacement itself reports it.
void checkReplaceable(const std::string& path);

}  // namespace platform
}  // namespace msg

#endif  // MSG_PLATFORM_ATOMICFILE_H_
