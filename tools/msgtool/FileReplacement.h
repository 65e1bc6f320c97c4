// FileReplacement: writes a file so that a reader sees the old one or the
// new one, never a part.

#ifndef MSGTOOL_FILEREPLACEMENT_H_
#define MSGTOOL_FILEREPLACEMENT_H_

#include <functional>
#include <string>

namespace msgtool {

// Replaces `path` by `bytes` so that a reader sees the old file or the new
// one, never a part: writes a temporary file beside the real file (a
// symbolic link is followed and kept), calls `verify` on it (which raises to
// stop), and renames it over the real file. A file that existed keeps its
// permissions, owner and group; a read-only file, or one whose owner or
// group this user cannot keep, is refused. On failure the temporary file is
// removed and `path` is untouched.
// Raises ToolError naming `path` (or what `verify` raises).
void replaceFileAtomically(const std::string& path, const std::string& bytes,
                           const std::function<void(const std::string& temporaryPath)>& verify);

// Refuses `path` now if replaceFileAtomically would refuse it before writing
// anything: a read-only file, or a loop of symbolic links.
// Raises ToolError naming `path`, in the words of replaceFileAtomically.
void requireReplaceable(const std::string& path);

}  // namespace msgtool

#endif  // MSGTOOL_FILEREPLACEMENT_H_
