// FileReplacement: writes a file so that a reader sees the old one or the
// new one, never a part.

#ifndef MSGTOOL_FILEREPLACEMENT_H_
#define MSGTOOL_FILEREPLACEMENT_H_

#include <functional>
#include <string>

namespace msgtool {

// Replaces `path` by `bytes` so that a reader sees the old file or the new
// one, never a part: writes a temporary file in the same folder, calls
// `verify` on it (which raises to stop), and renames it over `path`. A file
// that existed keeps its permissions. On failure the temporary file is
// removed and `path` is untouched.
// Raises ToolError naming `path` (or what `verify` raises).
void replaceFileAtomically(const std::string& path, const std::string& bytes,
                           const std::function<void(const std::string& temporaryPath)>& verify);

}  // namespace msgtool

#endif  // MSGTOOL_FILEREPLACEMENT_H_
