#include "compiled_catalogues/CompiledCatalogueReader.h"

#include <cstring>
#include <utility>

#include "compiled_catalogues/CompiledCatalogueFormat.h"

namespace msg {

using namespace compiled;

namespace {

// Whether the NUL-terminated `stored` is the `length` bytes at `wanted`.
bool sameString(const char* stored, const char* wanted, std::size_t length) {
  return std::strncmp(stored, wanted, length) == 0 && stored[length] == 0;
}

}  // namespace

CompiledCatalogueReader::CompiledCatalogueReader(const unsigned char* bytes, std::size_t size)
    : bytes(bytes), size(size) {
  if (checkHeader() && !indexed) {
    checkEntries();
  }
}

bool CompiledCatalogueReader::refuse(std::string why) {
  fault = std::move(why);
  return false;
}

bool CompiledCatalogueReader::checkIdentity(std::uint16_t& major) {
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
  major = readU16(bytes + kMajorOffset);
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
  return true;
}

bool CompiledCatalogueReader::checkHeader() {
  std::uint16_t major = 0;
  if (!checkIdentity(major)) {
    return false;
  }
  const std::uint16_t minor = readU16(bytes + kMinorOffset);
  // A file with a key index is read in place: only what it reads is checked,
  // when it reads it, so the load does not grow with the file. The checksum
  // of the whole file is left to files without an index, whose loader reads
  // every byte anyway.
  const std::uint64_t headerSize = readU32(bytes + kHeaderSizeOffset);
  const std::size_t indexFields = indexFieldsOffset(major);
  indexed = minor >= kIndexedMinorVersion && headerSize >= indexFields + kIndexFieldsSize &&
            headerSize <= size;
  if (!indexed && readU64(bytes + kChecksumOffset) != checksumOf(bytes, size)) {
    return refuse("the checksum does not match the contents (the file is damaged)");
  }
  std::uint64_t sectionsEnd = 0;
  if (!checkSections(major == kMajorVersion, headerSize, sectionsEnd)) {
    return false;
  }
  return !indexed || checkIndex(indexFields, sectionsEnd);
}

bool CompiledCatalogueReader::checkSections(bool withVariants, std::uint64_t headerSize,
                                            std::uint64_t& sectionsEnd) {
  // The sections, in this order, each inside the file: header, entry table,
  // string block. Every sum is made in 64 bits from 32-bit fields, and the
  // table's length is compared by division, so nothing can overflow.
  count = readU32(bytes + kEntryCountOffset);
  entrySize = readU32(bytes + kEntrySizeOffset);
  const std::uint64_t tableOffset = readU32(bytes + kEntryTableOffset);
  const std::uint64_t stringsOffset = readU32(bytes + kStringBlockOffset);
  stringsSize = readU32(bytes + kStringBlockSizeOffset);
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
  sectionsEnd = stringsOffset + stringsSize;
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
    sectionsEnd = variantsOffset + variantBlockSize;
  }
  return true;
}

bool CompiledCatalogueReader::checkIndex(std::size_t indexFields, std::uint64_t sectionsEnd) {
  const std::uint64_t indexOffset = readU32(bytes + indexFields);
  const std::uint64_t indexSize = readU32(bytes + indexFields + 4);
  if (indexOffset < sectionsEnd || indexOffset > size || indexSize > size - indexOffset ||
      indexSize < kIndexSlots) {
    return refuse("the key index (offset " + decimal(indexOffset) + ", " + decimal(indexSize) +
                  " bytes) lies outside the file or over the sections before it");
  }
  const unsigned char* index = bytes + indexOffset;
  slotCount = readU32(index + kIndexSlotCount);
  if (slotCount == 0 || (slotCount & (slotCount - 1)) != 0 ||
      slotCount > (indexSize - kIndexSlots) / kSlotSize) {
    return refuse("the key index has " + decimal(slotCount) +
                  " slots: none, not a power of two, or more than its size holds");
  }
  if (readU32(index + kIndexSlotCount + 4) != 0) {
    return refuse("the key index has bytes that should be zero");
  }
  slots = index + kIndexSlots;
  return true;
}

CompiledCatalogueReader::RecordFault CompiledCatalogueReader::recordFault(
    std::uint32_t offset, std::uint64_t nextRecord, std::uint16_t& badSelector) const {
  if (offset < nextRecord || offset > variantBlockSize || variantBlockSize - offset < kRecordSize) {
    return RecordFault::outside;
  }
  const unsigned char* record = variantBlock + offset;
  const std::uint16_t forms = readU16(record + kRecordFormCount);
  if (readU16(record + kRecordKind) > static_cast<std::uint16_t>(PluralKind::ordinal)) {
    return RecordFault::kind;
  }
  if (forms == 0 || forms > (variantBlockSize - offset - kRecordSize) / kFormSize) {
    return RecordFault::formCount;
  }
  unsigned categories = 0;
  for (std::uint16_t k = 0; k < forms; ++k) {
    const unsigned char* form = record + kRecordSize + std::size_t{k} * kFormSize;
    const std::uint16_t selector = readU16(form + kFormSelector);
    const bool exact = selector == kExactForm;
    if (readU32(form + kFormText) >= stringsSize) {
      return RecordFault::text;
    }
    if (!exact && (selector >= static_cast<std::uint16_t>(PluralCategory::other) ||
                   (categories & (1u << selector)) != 0)) {
      badSelector = selector;
      return RecordFault::form;
    }
    if (readU16(form + kFormZero) != 0 || (!exact && readU64(form + kFormValue) != 0)) {
      return RecordFault::notZero;
    }
    categories |= exact ? 0u : 1u << selector;
  }
  return RecordFault::none;
}

// Records follow one another in entry order without overlapping, so the
// checks of all of them read each byte of the block at most once.
bool CompiledCatalogueReader::checkVariants(std::uint32_t index, std::uint32_t offset,
                                            std::uint64_t& nextRecord) {
  // Made only for a refusal: a valid record costs no string.
  const auto which = [index] { return "entry " + decimal(index) + "'s plural variants"; };
  std::uint16_t selector = 0;
  switch (recordFault(offset, nextRecord, selector)) {
    case RecordFault::none:
      break;
    case RecordFault::outside:
      return refuse(which() + " (offset " + decimal(offset) +
                    ") lie outside the variant block or over another entry's");
    case RecordFault::kind:
      return refuse(which() + " have kind " + decimal(readU16(variantBlock + offset)) +
                    " (0 and 1 exist)");
    case RecordFault::formCount:
      return refuse(which() + " number " +
                    decimal(readU16(variantBlock + offset + kRecordFormCount)) +
                    " forms: none, or more than the variant block holds");
    case RecordFault::text:
      return refuse(which() + " point at a string outside the string block");
    case RecordFault::form:
      return refuse(which() + " have form " + decimal(selector) +
                    ", which is other, no form at all, or a category given twice");
    case RecordFault::notZero:
      return refuse(which() + " have bytes that should be zero");
  }
  const std::uint16_t forms = readU16(variantBlock + offset + kRecordFormCount);
  nextRecord = std::uint64_t{offset} + kRecordSize + std::uint64_t{forms} * kFormSize;
  return true;
}

CompiledCatalogueReader::EntryFault CompiledCatalogueReader::entryFault(
    std::uint32_t index, std::uint32_t& badOffset) const {
  const unsigned char* entry = table + std::uint64_t{index} * entrySize;
  for (std::size_t field : {kEntryNamespace, kEntryIdentifier, kEntryText}) {
    const std::uint32_t offset = readU32(entry + field);
    if (offset >= stringsSize) {
      badOffset = offset;
      return EntryFault::string;
    }
  }
  if (readU16(entry + kEntrySeverity) > kHighestSeverity) {
    return EntryFault::severity;
  }
  const unsigned char* tag = entry + kEntryLanguage;
  std::size_t length = 0;
  while (length < kLanguageField && tag[length] != 0) {
    ++length;
  }
  if (length == 0) {
    return EntryFault::noTag;
  }
  if (length == kLanguageField) {
    return EntryFault::longTag;
  }
  for (std::size_t k = length; k < kLanguageField; ++k) {
    if (tag[k] != 0) {
      return EntryFault::behindTag;
    }
  }
  return EntryFault::none;
}

bool CompiledCatalogueReader::checkEntries() {
  std::uint64_t nextRecord = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const unsigned char* entry = table + std::uint64_t{i} * entrySize;
    std::uint32_t offset = 0;
    switch (entryFault(i, offset)) {
      case EntryFault::none:
        break;
      case EntryFault::string:
        return refuse("entry " + decimal(i) + " points at string offset " + decimal(offset) +
                      ", outside the " + decimal(stringsSize) + "-byte string block");
      case EntryFault::severity:
        return refuse("entry " + decimal(i) + " has severity " +
                      decimal(readU16(entry + kEntrySeverity)) + " (0 to 3 exist)");
      case EntryFault::noTag:
      case EntryFault::longTag:
        return refuse(
            "entry " + decimal(i) + " has a language tag of " +
            (entry[kEntryLanguage] == 0 ? std::string("no characters") : "more than 5 characters") +
            " (1 to 5 are allowed)");
      case EntryFault::behindTag:
        return refuse("entry " + decimal(i) + " has bytes behind the end of its language tag");
    }
    if (variantBlock != nullptr) {
      const std::uint32_t record = readU32(entry + kEntryVariants);
      if (record != kNoVariants && !checkVariants(i, record, nextRecord)) {
        return false;
      }
    }
  }
  return true;
}

CompiledCatalogueReader::Found CompiledCatalogueReader::find(std::uint32_t hash,
                                                             const char* nameSpace,
                                                             std::size_t namespaceLength,
                                                             const char* identifier,
                                                             std::size_t identifierLength) const {
  const std::uint32_t mask = slotCount - 1;
  std::uint32_t slot = hash & mask;
  // At most every slot once: a damaged index without an empty slot ends too.
  for (std::uint32_t probes = 0; probes < slotCount; ++probes, slot = (slot + 1) & mask) {
    const unsigned char* at = slots + std::size_t{slot} * kSlotSize;
    const std::uint32_t texts = readU32(at + kSlotTexts);
    if (texts == 0) {
      return Found();
    }
    const std::uint32_t start = readU32(at + kSlotFirst);
    if (readU32(at + kSlotHash) != hash || start >= count || texts > count - start) {
      continue;  // a slot that points outside the table names no key
    }
    // The identifier is read through the slot while the entry is fetched;
    // the entry must name the same string, and its namespace must match.
    const unsigned char* entry = table + std::uint64_t{start} * entrySize;
    __builtin_prefetch(entry);
    const std::uint32_t identifierAt = readU32(at + kSlotIdentifier);
    if (identifierAt >= stringsSize ||
        !sameString(strings + identifierAt, identifier, identifierLength)) {
      continue;
    }
    const std::uint32_t namespaceAt = readU32(entry + kEntryNamespace);
    if (readU32(entry + kEntryIdentifier) == identifierAt && namespaceAt < stringsSize &&
        sameString(strings + namespaceAt, nameSpace, namespaceLength)) {
      return Found{start, texts, strings + namespaceAt, strings + identifierAt};
    }
  }
  return Found();
}

bool CompiledCatalogueReader::checkedEntry(std::uint32_t index, const char* nameSpace,
                                           const char* identifier, Entry& out) const {
  std::uint32_t offset = 0;
  if (entryFault(index, offset) != EntryFault::none) {
    return false;
  }
  out = entry(index);
  // The writer stores each string once, so the texts of one key point at
  // the same two strings: then comparing the pointers suffices.
  if (nameSpace != nullptr && (out.identifier != identifier || out.nameSpace != nameSpace) &&
      (std::strcmp(out.identifier, identifier) != 0 ||
       std::strcmp(out.nameSpace, nameSpace) != 0)) {
    return false;
  }
  if (variantBlock == nullptr) {
    return true;
  }
  const std::uint32_t record = readU32(table + std::uint64_t{index} * entrySize + kEntryVariants);
  std::uint16_t selector = 0;
  return record == kNoVariants || recordFault(record, 0, selector) == RecordFault::none;
}

}  // namespace msg
