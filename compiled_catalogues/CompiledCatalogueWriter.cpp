#include "compiled_catalogues/CompiledCatalogueWriter.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <tuple>
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

// Appends the variant record of a text to `block` and returns its offset.
std::uint32_t appendRecord(PluralKind kind, unsigned count,
                           const std::vector<CompiledCatalogueWriter::Form>& forms,
                           std::vector<unsigned char>& block, StringBlock& strings) {
  const std::size_t offset = block.size();
  if (offset + kRecordSize + forms.size() * kFormSize > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("the plural variants exceed the 4 GiB a compiled catalogue holds");
  }
  block.resize(offset + kRecordSize + forms.size() * kFormSize, 0);
  unsigned char* record = block.data() + offset;
  writeU16(record + kRecordKind, static_cast<std::uint16_t>(kind));
  writeU16(record + kRecordFormCount, static_cast<std::uint16_t>(forms.size()));
  writeU32(record + kRecordCount, count);
  unsigned char* form = record + kRecordSize;
  for (const CompiledCatalogueWriter::Form& each : forms) {
    writeU32(form + kFormText, strings.offsetOf(each.text));
    writeU16(form + kFormSelector,
             each.exact ? kExactForm : static_cast<std::uint16_t>(each.category));
    writeU64(form + kFormValue, each.exact ? each.value : 0);
    form += kFormSize;
  }
  return static_cast<std::uint32_t>(offset);
}

// The key index of the `count` entries of `table` (each `entrySize` bytes,
// sorted by key, so each key's entries stand together), whose strings lie
// in `strings`.
std::vector<unsigned char> keyIndex(const std::vector<unsigned char>& table, std::size_t entrySize,
                                    std::size_t count, const std::vector<unsigned char>& strings) {
  const auto stringAt = [&strings](const unsigned char* entry, std::size_t field) {
    return reinterpret_cast<const char*>(strings.data()) + readU32(entry + field);
  };
  // Runs of one key: an entry starts a run unless it shares both strings
  // with the one before (each distinct string is stored once).
  std::vector<std::pair<std::uint32_t, std::uint32_t>> runs;  // first, texts
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned char* entry = table.data() + i * entrySize;
    if (i > 0 && readU32(entry + kEntryNamespace) == readU32(entry - entrySize + kEntryNamespace) &&
        readU32(entry + kEntryIdentifier) == readU32(entry - entrySize + kEntryIdentifier)) {
      ++runs.back().second;
    } else {
      runs.emplace_back(static_cast<std::uint32_t>(i), 1);
    }
  }
  // At most half full, so that a probe of a missing key ends soon.
  std::uint64_t slotCount = 1;
  while (slotCount < 2 * runs.size()) {
    slotCount *= 2;
  }
  if (kIndexSlots + slotCount * kSlotSize > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("the key index exceeds the 4 GiB a compiled catalogue holds");
  }
  std::vector<unsigned char> index(kIndexSlots + slotCount * kSlotSize, 0);
  writeU32(index.data() + kIndexSlotCount, static_cast<std::uint32_t>(slotCount));
  const std::uint32_t mask = static_cast<std::uint32_t>(slotCount - 1);
  for (const auto& [first, texts] : runs) {
    const unsigned char* entry = table.data() + std::size_t{first} * entrySize;
    const char* nameSpace = stringAt(entry, kEntryNamespace);
    const char* identifier = stringAt(entry, kEntryIdentifier);
    const std::uint32_t hash =
        keyHash(nameSpace, std::strlen(nameSpace), identifier, std::strlen(identifier));
    std::uint32_t slot = hash & mask;
    while (readU32(index.data() + kIndexSlots + std::size_t{slot} * kSlotSize + kSlotTexts) != 0) {
      slot = (slot + 1) & mask;
    }
    unsigned char* at = index.data() + kIndexSlots + std::size_t{slot} * kSlotSize;
    writeU32(at + kSlotFirst, first);
    writeU32(at + kSlotTexts, texts);
    writeU32(at + kSlotHash, hash);
    writeU32(at + kSlotIdentifier, readU32(entry + kEntryIdentifier));
  }
  return index;
}

}  // namespace

CompiledCatalogueWriter::Key CompiledCatalogueWriter::keyOf(SeverityLevel severity,
                                                            const std::string& language,
                                                            const std::string& nameSpace,
                                                            const std::string& identifier,
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
  return Key(nameSpace, identifier, tag);
}

void CompiledCatalogueWriter::add(SeverityLevel severity, const std::string& language,
                                  const std::string& nameSpace, const std::string& identifier,
                                  const std::string& text) {
  texts[keyOf(severity, language, nameSpace, identifier, text)] =
      Value{severity, text, PluralKind::cardinal, 0, {}};
}

void CompiledCatalogueWriter::add(SeverityLevel severity, const std::string& language,
                                  const std::string& nameSpace, const std::string& identifier,
                                  const std::string& other, PluralKind kind, unsigned count,
                                  std::vector<Form> forms) {
  const Key key = keyOf(severity, language, nameSpace, identifier, other);
  if (forms.size() > std::numeric_limits<std::uint16_t>::max()) {
    throw std::invalid_argument("a plural text holds at most 65,535 forms");
  }
  // Sorted, so that the bytes do not depend on the order of the forms: the
  // choice does not either, as an exact value always wins over a category.
  const auto order = [](const Form& a, const Form& b) {
    return std::make_tuple(a.exact, a.category, a.value) <
           std::make_tuple(b.exact, b.category, b.value);
  };
  std::sort(forms.begin(), forms.end(), order);
  for (std::size_t i = 0; i < forms.size(); ++i) {
    requireNoNul(forms[i].text, "text");
    if (!forms[i].exact && forms[i].category == PluralCategory::other) {
      throw std::invalid_argument("the text of a plural's other form is the entry's own text");
    }
    if (i > 0 && !order(forms[i - 1], forms[i])) {
      throw std::invalid_argument("a plural text has the same form twice");
    }
  }
  texts[key] = Value{severity, other, kind, count, std::move(forms)};
}

void CompiledCatalogueWriter::addAll(CompiledCatalogueWriter&& later) {
  for (auto& [key, value] : later.texts) {
    texts[key] = std::move(value);
  }
  later.texts.clear();
}

// The parts of a file behind its header, in the order they are written.
struct CompiledCatalogueWriter::Sections {
  bool withVariants = false;
  std::size_t entrySize = 0;
  std::vector<unsigned char> table;
  StringBlock strings;
  std::vector<unsigned char> variants;
  std::vector<unsigned char> index;  // empty without a key index
};

CompiledCatalogueWriter::Sections CompiledCatalogueWriter::sections(bool withIndex) const {
  Sections made;
  for (const auto& text : texts) {
    made.withVariants = made.withVariants || !text.second.forms.empty();
  }
  made.entrySize = made.withVariants ? kVariantEntrySize : kEntrySize;
  made.table.assign(texts.size() * made.entrySize, 0);
  if (withIndex) {
    // The keys first, close together: a lookup in place reads a key's
    // strings, and rarely its text, so they share fewer pages.
    for (const auto& text : texts) {
      made.strings.offsetOf(std::get<0>(text.first));
      made.strings.offsetOf(std::get<1>(text.first));
    }
  }
  unsigned char* entry = made.table.data();
  for (const auto& [key, value] : texts) {
    const auto& [nameSpace, identifier, language] = key;
    writeU32(entry + kEntryNamespace, made.strings.offsetOf(nameSpace));
    writeU32(entry + kEntryIdentifier, made.strings.offsetOf(identifier));
    writeU32(entry + kEntryText, made.strings.offsetOf(value.text));
    writeU16(entry + kEntrySeverity, static_cast<std::uint16_t>(value.severity));
    std::memcpy(entry + kEntryLanguage, language.data(), language.size());  // <= 5, zero behind
    if (made.withVariants) {
      writeU32(entry + kEntryVariants, value.forms.empty()
                                           ? kNoVariants
                                           : appendRecord(value.kind, value.count, value.forms,
                                                          made.variants, made.strings));
    }
    entry += made.entrySize;
  }
  if (withIndex) {
    made.index = keyIndex(made.table, made.entrySize, texts.size(), made.strings.bytes());
  }
  return made;
}

std::vector<unsigned char> CompiledCatalogueWriter::bytes(bool withIndex) const {
  if (texts.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("a compiled catalogue holds at most 2^32 - 1 texts");
  }
  const Sections parts = sections(withIndex);
  const std::vector<unsigned char>& strings = parts.strings.bytes();
  const std::uint16_t major = parts.withVariants ? kMajorVersion : kPlainMajorVersion;
  const std::size_t indexFields = indexFieldsOffset(major);
  const std::size_t headerSize = withIndex ? indexFields + kIndexFieldsSize : indexFields;
  const std::uint64_t tableOffset = headerSize;
  const std::uint64_t stringsOffset = tableOffset + parts.table.size();
  const std::uint64_t variantsOffset = stringsOffset + strings.size();
  const std::uint64_t indexOffset = variantsOffset + parts.variants.size();
  const std::uint64_t fileSize = indexOffset + parts.index.size();
  if (indexOffset > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("the entry table exceeds the 4 GiB a compiled catalogue holds");
  }
  std::vector<unsigned char> file(headerSize, 0);
  file.reserve(fileSize);
  unsigned char* const header = file.data();
  std::memcpy(header + kMagicOffset, kMagic, sizeof kMagic);
  writeU16(header + kMajorOffset, major);
  writeU16(header + kMinorOffset, withIndex ? kMinorVersion : 0);
  writeU32(header + kByteOrderOffset, kByteOrderMark);
  writeU64(header + kFileSizeOffset, fileSize);
  writeU32(header + kHeaderSizeOffset, static_cast<std::uint32_t>(headerSize));
  writeU32(header + kEntryCountOffset, static_cast<std::uint32_t>(texts.size()));
  writeU32(header + kEntrySizeOffset, static_cast<std::uint32_t>(parts.entrySize));
  writeU32(header + kEntryTableOffset, static_cast<std::uint32_t>(tableOffset));
  writeU32(header + kStringBlockOffset, static_cast<std::uint32_t>(stringsOffset));
  writeU32(header + kStringBlockSizeOffset, static_cast<std::uint32_t>(strings.size()));
  if (parts.withVariants) {
    writeU32(header + kVariantBlockOffset, static_cast<std::uint32_t>(variantsOffset));
    writeU32(header + kVariantBlockSizeOffset, static_cast<std::uint32_t>(parts.variants.size()));
  }
  if (withIndex) {
    writeU32(header + indexFields, static_cast<std::uint32_t>(indexOffset));
    writeU32(header + indexFields + 4, static_cast<std::uint32_t>(parts.index.size()));
  }
  file.insert(file.end(), parts.table.begin(), parts.table.end());
  file.insert(file.end(), strings.begin(), strings.end());
  file.insert(file.end(), parts.variants.begin(), parts.variants.end());
  file.insert(file.end(), parts.index.begin(), parts.index.end());
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
