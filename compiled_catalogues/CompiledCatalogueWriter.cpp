#include "compiled_catalogues/CompiledCatalogueWriter.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "compiled_catalogues/CompiledCatalogueFormat.h"
#include "msg/Language.h"
#include "platform/AtomicFile.h"

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
  try {
    platform::replaceFileAtomically(path, content.data(), content.size());
  } catch (const platform::AtomicFileError& failure) {
    const bool noFile = failure.getStep() == platform::AtomicFileError::Step::create;
    throw std::runtime_error(std::string(noFile ? "cannot create a file beside" : "cannot write") +
                             " \"" + path + "\": " + failure.reason());
  }
}

}  // namespace msg
