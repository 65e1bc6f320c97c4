#include "FileReplacement.h"

#include "ToolError.h"
#include "platform/AtomicFile.h"

namespace msgtool {

namespace {

ToolError toolErrorFor(const std::string& path, const msg::platform::AtomicFileError& failure) {
  const bool replacing = failure.getStep() == msg::platform::AtomicFileError::Step::replace;
  return ToolError(path, 0,
                   (replacing ? "cannot be replaced: " : "cannot be written: ") + failure.reason());
}

}  // namespace

void requireReplaceable(const std::string& path) {
  try {
    msg::platform::checkReplaceable(path);
  } catch (const msg::platform::AtomicFileError& failure) {
    throw toolErrorFor(path, failure);
  }
}

void replaceFileAtomically(const std::string& path, const std::string& bytes,
                           const std::function<void(const std::string&)>& verify) {
  try {
    msg::platform::replaceFileAtomically(path, bytes.data(), bytes.size(), verify);
  } catch (const msg::platform::AtomicFileError& failure) {
    throw toolErrorFor(path, failure);
  }
}

}  // namespace msgtool
