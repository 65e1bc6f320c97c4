#include "FileReplacement.h"

#include "ToolError.h"
#include "platform/AtomicFile.h"

namespace msgtool {

void replaceFileAtomically(const std::string& path, const std::string& bytes,
                           const std::function<void(const std::string&)>& verify) {
  try {
    msg::platform::replaceFileAtomically(path, bytes.data(), bytes.size(), verify);
  } catch (const msg::platform::AtomicFileError& failure) {
    const bool replacing = failure.getStep() == msg::platform::AtomicFileError::Step::replace;
    throw ToolError(
        path, 0, (replacing ? "cannot be replaced: " : "cannot be written: ") + failure.reason());
  }
}

}  // namespace msgtool
