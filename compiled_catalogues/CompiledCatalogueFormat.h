// CompiledCatalogueFormat: the byte layout of a compiled catalogue, shared by
// the writer and the loader. docs/compiled-catalogues.md describes it for
// people; this header is its one definition in code.
//
// Private to the library: not installed.

#ifndef MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEFORMAT_H_
#define MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEFORMAT_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "message_core/DecimalText.h"

namespace msg {
namespace compiled {

// Every integer is little-endian, whatever the host, and is read and
// written through the helpers below, so no field needs to be aligned.
//
// Header (version 1.0: 56 bytes)
//   0  8  magic            kMagic
//   8  2  major version    a reader refuses a major version it does not know
//  10  2  minor version    additions a reader of the same major may ignore
//  12  4  byte order       kByteOrderMark; the bytes 04 03 02 01
//  16  8  checksum         XXH3-64 of the whole file, these 8 bytes read as 0
//  24  8  file size        bytes of the whole file
//  32  4  header size      at least kHeaderSize
//  36  4  entry count
//  40  4  entry size       at least kEntrySize
//  44  4  entry table      offset of the first entry
//  48  4  string block     offset of the block
//  52  4  string block size
//
// Entry (version 1.0: 20 bytes), one per text
//   0  4  namespace        offset in the string block
//   4  4  identifier       offset in the string block
//   8  4  text             offset in the string block
//  12  2  severity         0 info, 1 warning, 2 error, 3 abort
//  14  6  language tag     1 to 5 bytes, then zero bytes to the end
//
// The string block holds NUL-terminated strings; its last byte is NUL, so
// every offset inside the block reaches a terminator inside it.
//
// Version 2.0 is written only for a catalogue with plural or ordinal texts,
// so that a reader of 1.x refuses it instead of showing every count with
// `other`; a catalogue without them is still written as 1.0, byte for byte.
// Version 2.0 adds:
//
// Header (64 bytes)
//  56  4  variant block    offset, at or after the end of the string block
//  60  4  variant block size
//
// Entry (24 bytes)
//  20  4  variants         offset of the entry's record in the variant
//                          block, kNoVariants for a plain text
//
// Variant record, one per plural entry, in entry order, none shared or
// overlapping, so that checking them all reads each byte once. The entry's
// own text is its `other`.
//   0  2  kind             0 cardinal, 1 ordinal (PluralKind)
//   2  2  form count       1 or more
//   4  4  count            the number of the placeholder that holds the count
//   8     forms            form count times:
//           0  4  text     offset in the string block
//           4  2  form     0 to 4 a category (PluralCategory, never other),
//                          kExactForm an exact value
//           6  2  zero
//           8  8  value    the exact value; 0 for a category
//
// Every field is read where it lies: nothing of a record needs the heap.
//
// Minor version 1 (1.1 and 2.1) adds a key index, which a reader of 1.0 or
// 2.0 ignores. The header grows by 8 bytes behind the fields above (so at
// 56 in 1.1 and at 64 in 2.1):
//   +0  4  key index       offset, at or after the end of the sections above
//   +4  4  key index size
//
// Key index: an open-addressing hash table of the keys, probed linearly.
//   0  4  slot count       a power of two, at least 1
//   4  4  zero
//   8     slots            slot count times:
//           0  4  first    the key's first entry
//           4  4  texts    how many entries from `first` on hold the key;
//                          0 marks an empty slot
//           8  4  hash     keyHash of the key, so that a probe compares
//                          strings only where the hash matches
//          12  4  identifier  the first entry's identifier offset, so that
//                          a lookup reads the string and the entry at once
// A key's home slot is keyHash(namespace, identifier) & (slot count - 1).
// The entries of one key stand together (the writer sorts them), so a slot
// names them all. A reader that looks up in place checks every slot and
// entry it reads before it follows it; nothing of the index is trusted.

inline constexpr unsigned char kMagic[8] = {0x89, 'M', 'S', 'G', 'C', '\r', '\n', 0x1a};
inline constexpr std::uint16_t kMajorVersion = 2;         // the newest; 1 is still read
inline constexpr std::uint16_t kMinorVersion = 1;         // written: with the key index
inline constexpr std::uint16_t kIndexedMinorVersion = 1;  // from this minor on, a key index
inline constexpr std::uint16_t kPlainMajorVersion = 1;    // written without variants
inline constexpr std::uint32_t kByteOrderMark = 0x01020304;

inline constexpr std::size_t kMagicOffset = 0;
inline constexpr std::size_t kMajorOffset = 8;
inline constexpr std::size_t kMinorOffset = 10;
inline constexpr std::size_t kByteOrderOffset = 12;
inline constexpr std::size_t kChecksumOffset = 16;
inline constexpr std::size_t kChecksumSize = 8;
inline constexpr std::size_t kFileSizeOffset = 24;
inline constexpr std::size_t kHeaderSizeOffset = 32;
inline constexpr std::size_t kEntryCountOffset = 36;
inline constexpr std::size_t kEntrySizeOffset = 40;
inline constexpr std::size_t kEntryTableOffset = 44;
inline constexpr std::size_t kStringBlockOffset = 48;
inline constexpr std::size_t kStringBlockSizeOffset = 52;
inline constexpr std::size_t kHeaderSize = 56;
inline constexpr std::size_t kVariantBlockOffset = 56;
inline constexpr std::size_t kVariantBlockSizeOffset = 60;
inline constexpr std::size_t kVariantHeaderSize = 64;
inline constexpr std::size_t kIndexFieldsSize = 8;  // offset and size of the key index
inline constexpr std::size_t kIndexSlotCount = 0;
inline constexpr std::size_t kIndexSlots = 8;
inline constexpr std::size_t kSlotFirst = 0;
inline constexpr std::size_t kSlotTexts = 4;
inline constexpr std::size_t kSlotHash = 8;
inline constexpr std::size_t kSlotIdentifier = 12;
inline constexpr std::size_t kSlotSize = 16;

// Where the key index fields lie in a header of major version `major`:
// behind the fields that the major version itself defines.
inline constexpr std::size_t indexFieldsOffset(std::uint16_t major) {
  return major == kPlainMajorVersion ? kHeaderSize : kVariantHeaderSize;
}

inline constexpr std::size_t kEntryNamespace = 0;
inline constexpr std::size_t kEntryIdentifier = 4;
inline constexpr std::size_t kEntryText = 8;
inline constexpr std::size_t kEntrySeverity = 12;
inline constexpr std::size_t kEntryLanguage = 14;
inline constexpr std::size_t kLanguageField = 6;  // a tag of at most 5 bytes and its NUL
inline constexpr std::size_t kEntrySize = 20;
inline constexpr std::size_t kEntryVariants = 20;
inline constexpr std::size_t kVariantEntrySize = 24;
inline constexpr std::uint32_t kNoVariants = 0xffffffff;

inline constexpr std::size_t kRecordKind = 0;
inline constexpr std::size_t kRecordFormCount = 2;
inline constexpr std::size_t kRecordCount = 4;
inline constexpr std::size_t kRecordSize = 8;  // before the forms
inline constexpr std::size_t kFormText = 0;
inline constexpr std::size_t kFormSelector = 4;
inline constexpr std::size_t kFormZero = 6;
inline constexpr std::size_t kFormValue = 8;
inline constexpr std::size_t kFormSize = 16;
inline constexpr std::uint16_t kExactForm = 0x100;

inline constexpr std::uint16_t kHighestSeverity = 3;

inline std::uint16_t readU16(const unsigned char* p) {
  return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

inline std::uint32_t readU32(const unsigned char* p) {
  return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
         (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

inline std::uint64_t readU64(const unsigned char* p) {
  return static_cast<std::uint64_t>(readU32(p)) |
         (static_cast<std::uint64_t>(readU32(p + 4)) << 32);
}

inline void writeU16(unsigned char* p, std::uint16_t value) {
  p[0] = static_cast<unsigned char>(value);
  p[1] = static_cast<unsigned char>(value >> 8);
}

inline void writeU32(unsigned char* p, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) {
    p[i] = static_cast<unsigned char>(value >> (8 * i));
  }
}

inline void writeU64(unsigned char* p, std::uint64_t value) {
  writeU32(p, static_cast<std::uint32_t>(value));
  writeU32(p + 4, static_cast<std::uint32_t>(value >> 32));
}

// The hash of a key in the key index. The namespace and then the identifier
// are cut into 4-byte groups from their first byte on (a short last group
// padded with zero bytes, the grouping restarting with the identifier), each
// read as a little-endian number and mixed in as FNV-1a mixes a byte:
// hash = (hash ^ group) * 16777619, from 2166136261. The identifier begins
// with one more such step for the zero group between the two. The result is
// then spread, so that its low bits depend on every byte:
// hash ^= hash >> 15; hash *= 0x2c1b3c6d; hash ^= hash >> 12.
inline std::uint32_t keyHash(const char* nameSpace, std::size_t namespaceLength,
                             const char* identifier, std::size_t identifierLength) {
  std::uint32_t hash = 2166136261u;
  const auto mix = [&hash](const char* bytes, std::size_t length) {
    const auto* p = reinterpret_cast<const unsigned char*>(bytes);
    std::size_t i = 0;
    for (; i + 4 <= length; i += 4) {
      hash = (hash ^ readU32(p + i)) * 16777619u;
    }
    if (i < length) {
      std::uint32_t last = 0;
      for (unsigned shift = 0; i < length; ++i, shift += 8) {
        last |= static_cast<std::uint32_t>(p[i]) << shift;
      }
      hash = (hash ^ last) * 16777619u;
    }
  };
  mix(nameSpace, namespaceLength);
  hash *= 16777619u;  // the zero group between the two
  mix(identifier, identifierLength);
  hash ^= hash >> 15;
  hash *= 0x2c1b3c6du;
  hash ^= hash >> 12;
  return hash;
}

// The checksum of `size` bytes that begin with a whole header: XXH3-64 with
// the checksum field taken as zero.
// REQUIRES: size >= kHeaderSize.
std::uint64_t checksumOf(const unsigned char* bytes, std::size_t size);

// `value` in decimal.
inline std::string decimal(std::uint64_t value) {
  return decimalText(static_cast<unsigned long long>(value));
}

}  // namespace compiled
}  // namespace msg

#endif  // MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEFORMAT_H_
