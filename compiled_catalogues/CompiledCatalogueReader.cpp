#include "compiled_catalogues/CompiledCatalogueReader.h"

#include <cstring>
#include <utility>

#include "compiled_catalogues/CompiledCatalogueFormat.h"

namespace msg {

using namespace compiled;

CompiledCatalogueReader::CompiledCatalogueReader(const unsigned char* bytes, std::size_t size)
    : bytes(bytes), size(size) {
  if (checkHeader()) {
    checkEntries();
  }
}

bool CompiledCatalogueReader::refuse(std::string why) {
  fault = std::move(why);
  return false;
}

bool CompiledCatalogueReader::checkHeader() {
  if (size == 0) {
    return refuse("the file is empty");
  }
  const std::size_t magicBytes = size < sizeof kMagic ? size : sizeof kMagic;
  if (std::memcmp(bytes + kMagicOffset, kMagic, magicBytes) != 0) {
    return refuse(
        "the file is not a compiled catalogue (its first bytes are not the magic number)");
  }
  if (size < kHeaderSize) {
    return refuse("the file ends after " + decimal(size) + " bytes, inside the " +
                  decimal(kHeaderSize) + "-byte header");
  }
  const std::uint16_t major = readU16(bytes + kMajorOffset);
  const std::uint16_t minor = readU16(bytes + kMinorOffset);
  if (major != kMajorVersion && major != kPlainMajorVersion) {
    const std::string version = decimal(major) + "." + decimal(minor);
    return refuse(major > kMajorVersion
                      ? "format version " + version + " is newer than this library reads (" +
                            decimal(kMajorVersion) +
                            ".x); compile the catalogue again with this "
                            "library's msgtool"
                      : "format version " + version + " is not one this library knows");
  }
  const std::uint32_t order = readU32(bytes + kByteOrderOffset);
  if (order != kByteOrderMark) {
    return refuse("the byte-order mark is not 04 03 02 01 (only little-endian files exist)");
  }
  const std::uint64_t declaredSize = readU64(bytes + kFileSizeOffset);
  if (declaredSize != size) {
    return refuse("the file holds " + decimal(size) + " bytes but its header says " +
                  decimal(declaredSize) + " (truncated or extended)");
  }
  if (readU64(bytes + kChecksumOffset) != checksumOf(bytes, size)) {
    return refuse("the checksum does not match the contents (the file is damaged)");
  }

  // The sections, in this order, each inside the file: header, entry table,
  // string block. Every sum is made in 64 bits from 32-bit fields, and the
  // table's length is compared by division, so nothing can overflow.
  const std::uint64_t headerSize = readU32(bytes + kHeaderSizeOffset);
  count = readU32(bytes + kEntryCountOffset);
  entrySize = readU32(bytes + kEntrySizeOffset);
  const std::uint64_t tableOffset = readU32(bytes + kEntryTableOffset);
  const std::uint64_t stringsOffset = readU32(bytes + kStringBlockOffset);
  stringsSize = readU32(bytes + kStringBlockSizeOffset);
  const bool withVariants = major == kMajorVersion;
  const std::size_t leastHeader = withVariants ? kVariantHeaderSize : kHeaderSize;
  const std::size_t leastEntry = withVariants ? kVariantEntrySize : kEntrySize;
  if (headerSize < leastHeader || headerSize > size) {
    return refuse("the header size " + decimal(headerSize) + " is out of range");
  }
  if (entrySize < leastEntry) {
    return refuse("the entry size " + decimal(entrySize) + " is below " + decimal(leastEntry));
  }
  if (tableOffset < headerSize || tableOffset > size) {
    return refuse("the entry table offset " + decimal(tableOffset) + " is out of range");
  }
  if (count > (size - tableOffset) / entrySize) {
    return refuse(decimal(count) + " entries of " + decimal(entrySize) +
                  " bytes do not fit in the file");
  }
  const std::uint64_t tableEnd = tableOffset + std::uint64_t{count} * entrySize;
  if (stringsOffset < tableEnd || stringsOffset > size || stringsSize > size - stringsOffset) {
    return refuse("the string block (offset " + decimal(stringsOffset) + ", " +
                  decimal(stringsSize) + " bytes) lies outside the file or over the entries");
  }
  if (stringsSize > 0 && bytes[stringsOffset + stringsSize - 1] != 0) {
    return refuse("the last string of the string block has no terminator");
  }
  if (count > 0 && stringsSize == 0) {
    return refuse("the file has entries but no strings");
  }
  table = bytes + tableOffset;
  strings = reinterpret_cast<const char*>(bytes + stringsOffset);
  if (withVariants) {
    const std::uint64_t variantsOffset = readU32(bytes + kVariantBlockOffset);
    variantBlockSize = readU32(bytes + kVariantBlockSizeOffset);
    if (variantsOffset < stringsOffset + stringsSize || variantsOffset > size ||
        variantBlockSize > size - variantsOffset) {
      return refuse("the variant block (offset " + decimal(variantsOffset) + ", " +
                    decimal(variantBlockSize) +
                    " bytes) lies outside the file or over the strings");
    }
    variantBlock = bytes + variantsOffset;
  }
  return true;
}

// Records follow one another in entry order without overlapping, so the
// checks of all of them read each byte of the block at most once.
bool CompiledCatalogueReader::checkVariants(std::uint32_t index, std::uint32_t offset,
                                            std::uint64_t& nextRecord) {
  // Made only for a refusal: a valid record costs no string.
  const auto which = [index] { return "entry " + decimal(index) + "'s plural variants"; };
  if (offset < nextRecord || offset > variantBlockSize || variantBlockSize - offset < kRecordSize) {
    return refuse(which() + " (offset " + decimal(offset) +
                  ") lie outside the variant block or over another entry's");
  }
  const unsigned char* record = variantBlock + offset;
  const std::uint16_t kind = readU16(record + kRecordKind);
  const std::uint16_t forms = readU16(record + kRecordFormCount);
  if (kind > static_cast<std::uint16_t>(PluralKind::ordinal)) {
    return refuse(which() + " have kind " + decimal(kind) + " (0 and 1 exist)");
  }
  if (forms == 0 || forms > (variantBlockSize - offset - kRecordSize) / kFormSize) {
    return refuse(which() + " number " + decimal(forms) +
                  " forms: none, or more than the variant block holds");
  }
  unsigned categories = 0;
  for (std::uint16_t k = 0; k < forms; ++k) {
    const unsigned char* form = record + kRecordSize + std::size_t{k} * kFormSize;
    const std::uint16_t selector = readU16(form + kFormSelector);
    const bool exact = selector == kExactForm;
    if (readU32(form + kFormText) >= stringsSize) {
      return refuse(which() + " point at a string outside the string block");
    }
    if (!exact && (selector >= static_cast<std::uint16_t>(PluralCategory::other) ||
                   (categories & (1u << selector)) != 0)) {
      return refuse(which() + " have form " + decimal(selector) +
                    ", which is other, no form at all, or a category given twice");
    }
    if (readU16(form + kFormZero) != 0 || (!exact && readU64(form + kFormValue) != 0)) {
      return refuse(which() + " have bytes that should be zero");
    }
    categories |= exact ? 0u : 1u << selector;
  }
  nextRecord = std::uint64_t{offset} + kRecordSize + std::uint64_t{forms} * kFormSize;
  return true;
}

bool CompiledCatalogueReader::checkEntries() {
  std::uint64_t nextRecord = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const unsigned char* entry = table + std::uint64_t{i} * entrySize;
    for (std::size_t field : {kEntryNamespace, kEntryIdentifier, kEntryText}) {
      const std::uint32_t offset = readU32(entry + field);
      if (offset >= stringsSize) {
        return refuse("entry " + decimal(i) + " points at string offset " + decimal(offset) +
                      ", outside the " + decimal(stringsSize) + "-byte string block");
      }
    }
    const std::uint16_t severity = readU16(entry + kEntrySeverity);
    if (severity > kHighestSeverity) {
      return refuse("entry " + decimal(i) + " has severity " + decimal(severity) +
                    " (0 to 3 exist)");
    }
    const unsigned char* tag = entry + kEntryLanguage;
    std::size_t length = 0;
    while (length < kLanguageField && tag[length] != 0) {
      ++length;
    }
    if (length == 0 || length == kLanguageField) {
      return refuse("entry " + decimal(i) + " has a language tag of " +
                    (length == 0 ? std::string("no characters") : "more than 5 characters") +
                    " (1 to 5 are allowed)");
    }
    for (std::size_t k = length; k < kLanguageField; ++k) {
      if (tag[k] != 0) {
        return refuse("entry " + decimal(i) + " has bytes behind the end of its language tag");
      }
    }
    if (variantBlock != nullptr) {
      const std::uint32_t offset = readU32(entry + kEntryVariants);
      if (offset != kNoVariants && !checkVariants(i, offset, nextRecord)) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace msg
