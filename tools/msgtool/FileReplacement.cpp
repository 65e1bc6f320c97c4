#include "FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include "ToolError.h"

namespace msgtool {

void replaceFileAtomically(const std::string& path, const std::string& bytes,
                           const std::function<void(const std::string&)>& verify) {
  std::filesystem::path target(path);
  std::filesystem::path folder = target.parent_path().empty() ? "." : target.parent_path();
  std::string pattern = (folder / ("." + target.filename().string() + ".XXXXXX")).string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  int descriptor = mkstemp(name.data());
  if (descriptor < 0) {
    throw ToolError(path, 0, std::string("cannot be written: ") + std::strerror(errno));
  }
  std::string temporary(name.data());
  auto fail = [&](const std::string& why) {
    close(descriptor);
    std::remove(temporary.c_str());
    throw ToolError(path, 0, "cannot be written: " + why);
  };
  const char* rest = bytes.data();
  std::size_t left = bytes.size();
  while (left > 0) {
    ssize_t written = write(descriptor, rest, left);
    if (written < 0) {
      if (errno == EINTR) {
        continue;
      }
      fail(std::strerror(errno));
    }
    rest += written;
    left -= static_cast<std::size_t>(written);
  }
  struct stat old {};
  mode_t mode = 0644;
  if (stat(path.c_str(), &old) == 0) {
    mode = old.st_mode & 07777;
  } else {
    mode_t mask = umask(0);
    umask(mask);
    mode = 0666 & ~mask;
  }
  if (fchmod(descriptor, mode) != 0 || fsync(descriptor) != 0) {
    fail(std::strerror(errno));
  }
  close(descriptor);
  try {
    verify(temporary);
  } catch (...) {
    std::remove(temporary.c_str());
    throw;
  }
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    int saved = errno;
    std::remove(temporary.c_str());
    throw ToolError(path, 0, std::string("cannot be replaced: ") + std::strerror(saved));
  }
}

}  // namespace msgtool
