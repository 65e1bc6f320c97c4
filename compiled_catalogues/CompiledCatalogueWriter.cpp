#include "compiled_catalogues/CompiledCatalogueWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "compiled_catalogues/CompiledCatalogueFormat.h"
#include "msg/Language.h"

namespace msg {

using namespace compiled;

namespace {

void requireNoNul(const std::string& value, const char* what) {
  if (value.find('\0') != std::string::npos) {
    throw std::invalid_argument(std::string("a compiled catalogue cannot hold a ") + what +
                                " with a NUL byte");
  }
}

// The string block: each distinct string once, in the order first asked for.
class StringBlock {
 public:
  std::uint32_t offsetOf(const std::string& value) {
    auto found = offsets.find(value);
    if (found != offsets.end()) {
      return found->second;
    }
    if (block.size() + value.size() + 1 > std::numeric_limits<std::uint32_t>::max()) {
      throw std::length_error(
          "the catalogue's strings exceed the 4 GiB a compiled catalogue holds");
    }
    const auto offset = static_cast<std::uint32_t>(block.size());
    block.insert(block.end(), value.begin(), value.end());
    block.push_back('\0');
    offsets.emplace(value, offset);
    return offset;
  }
  const std::vector<unsigned char>& bytes() const { return block; }

 private:
  std::vector<unsigned char> block;
  std::unordered_map<std::string, std::uint32_t> offsets;
};

[[noreturn]] void failWrite(const std::string& what, const std::string& path, int error) {
  throw std::runtime_error("cannot " + what + " \"" + path + "\": " + std::strerror(error));
}

}  // namespace

void CompiledCatalogueWriter::add(SeverityLevel severity, const std::string& language,
                                  const std::string& nameSpace, const std::string& identifier,
                                  const std::string& text) {
  requireNoNul(nameSpace, "namespace");
  requireNoNul(identifier, "identifier");
  requireNoNul(text, "text");
  if (severity < info || severity > abort) {
    throw std::invalid_argument("the severity is not one of the four levels");
  }
  const std::string tag = Language(language.c_str()).toString();
  if (tag.empty()) {
    throw std::invalid_argument("the language tag \"" + language + "\" names no language");
  }
  texts[Key(nameSpace, identifier, tag)] = Value{severity, text};
}

void CompiledCatalogueWriter::addAll(CompiledCatalogueWriter&& later) {
  for (auto& [key, value] : later.texts) {
    texts[key] = std::move(value);
  }
  later.texts.clear();
}

std::vector<unsigned char> CompiledCatalogueWriter::bytes() const {
  if (texts.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("a compiled catalogue holds at most 2^32 - 1 texts");
  }
  std::vector<unsigned char> table(texts.size() * kEntrySize, 0);
  StringBlock strings;
  unsigned char* entry = table.data();
  for (const auto& [key, value] : texts) {
    const auto& [nameSpace, identifier, language] = key;
    writeU32(entry + kEntryNamespace, strings.offsetOf(nameSpace));
    writeU32(entry + kEntryIdentifier, strings.offsetOf(identifier));
    writeU32(entry + kEntryText, strings.offsetOf(value.text));
    writeU16(entry + kEntrySeverity, static_cast<std::uint16_t>(value.severity));
    std::memcpy(entry + kEntryLanguage, language.data(), language.size());  // <= 5, zero behind
    entry += kEntrySize;
  }

  const std::uint64_t tableOffset = kHeaderSize;
  const std::uint64_t stringsOffset = tableOffset + table.size();
  const std::uint64_t fileSize = stringsOffset + strings.bytes().size();
  if (stringsOffset > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("the entry table exceeds the 4 GiB a compiled catalogue holds");
  }
  std::vector<unsigned char> file(kHeaderSize, 0);
  file.reserve(fileSize);
  std::memcpy(file.data() + kMagicOffset, kMagic, sizeof kMagic);
  writeU16(file.data() + kMajorOffset, kMajorVersion);
  writeU16(file.data() + kMinorOffset, kMinorVersion);
  writeU32(file.data() + kByteOrderOffset, kByteOrderMark);
  writeU64(file.data() + kFileSizeOffset, fileSize);
  writeU32(file.data() + kHeaderSizeOffset, kHeaderSize);
  writeU32(file.data() + kEntryCountOffset, static_cast<std::uint32_t>(texts.size()));
  writeU32(file.data() + kEntrySizeOffset, kEntrySize);
  writeU32(file.data() + kEntryTableOffset, static_cast<std::uint32_t>(tableOffset));
  writeU32(file.data() + kStringBlockOffset, static_cast<std::uint32_t>(stringsOffset));
  writeU32(file.data() + kStringBlockSizeOffset,
           static_cast<std::uint32_t>(strings.bytes().size()));
  file.insert(file.end(), table.begin(), table.end());
  file.insert(file.end(), strings.bytes().begin(), strings.bytes().end());
  writeU64(file.data() + kChecksumOffset, checksumOf(file.data(), file.size()));
  return file;
}

void CompiledCatalogueWriter::writeFile(const std::string& path) const {
  const std::vector<unsigned char> content = bytes();
  // A name of our own beside the target, so the rename stays on one file
  // system; O_EXCL never takes over a file somebody else made.
  static std::atomic<unsigned> serial{0};
  std::string temporary;
  int fd = -1;
  for (int attempt = 0; fd < 0; ++attempt) {
    temporary =
        path + ".tmp-" + decimal(static_cast<std::uint64_t>(getpid())) + "-" + decimal(serial++);
    fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0 && (errno != EEXIST || attempt == 100)) {
      failWrite("create a file beside", path, errno);
    }
  }
  const unsigned char* next = content.data();
  std::size_t left = content.size();
  int error = 0;
  while (left > 0 && error == 0) {
    const ssize_t written = write(fd, next, left);
    if (written < 0 && errno != EINTR) {
      error = errno;
    } else if (written > 0) {
      next += written;
      left -= static_cast<std::size_t>(written);
    }
  }
  if (error == 0 && fsync(fd) != 0) {
    error = errno;
  }
  if (close(fd) != 0 && error == 0) {
    error = errno;
  }
  if (error == 0 && rename(temporary.c_str(), path.c_str()) != 0) {
    error = errno;
  }
  if (error != 0) {
    unlink(temporary.c_str());
    failWrite("write", path, error);
  }
}

}  // namespace msg
