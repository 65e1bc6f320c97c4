// CompiledCatalogueReader: checks the bytes of a compiled catalogue and
// reads its entries in place.
//
// Private to the library: not installed.

#ifndef MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEREADER_H_
#define MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEREADER_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "compiled_catalogues/CompiledCatalogueFormat.h"
#include "msg/Plural.h"

namespace msg {

// A view of a compiled catalogue (the format of CompiledCatalogueFormat.h)
// that lies in memory somebody else owns, usually a mapped file. The bytes
// may come from anywhere, and nothing outside [bytes, bytes + size) is ever
// read.
//
// A file without a key index (1.0, 2.0) is checked whole by the constructor,
// in time proportional to `size`, before anything is read through the view.
// A file with one (1.1, 2.1) is read in place: the constructor checks the
// header and where the sections lie, in constant time, and find() and
// checkedEntry() check each slot, entry and variant record when they read
// it, passing over what is damaged.
//
// The strings of an entry point into the bytes: they are valid for as long
// as the bytes are, and are never copied.
class CompiledCatalogueReader {
 public:
  // One text of the catalogue, read in place.
  struct Entry {
    const char* nameSpace;
    const char* identifier;
    const char* text;
    const char* language;    // 1 to 5 characters
    std::uint16_t severity;  // a SeverityLevel
  };

  // One variant of a plural or ordinal entry, read in place.
  struct Form {
    bool exact;
    std::uint64_t value;      // when exact
    PluralCategory category;  // when not exact; never other
    const char* text;
  };

  // The variants of one entry, a view of its record in the file.
  class Variants {
   public:
    PluralKind kind() const {
      return static_cast<PluralKind>(compiled::readU16(record + compiled::kRecordKind));
    }
    unsigned count() const { return compiled::readU32(record + compiled::kRecordCount); }
    std::uint16_t size() const { return compiled::readU16(record + compiled::kRecordFormCount); }
    // REQUIRES: index < size().
    Form form(std::uint16_t index) const {
      using namespace compiled;
      const unsigned char* form = record + kRecordSize + std::size_t{index} * kFormSize;
      const std::uint16_t selector = readU16(form + kFormSelector);
      return Form{selector == kExactForm, readU64(form + kFormValue),
                  static_cast<PluralCategory>(selector & 0xff),
                  strings + readU32(form + kFormText)};
    }

   private:
    friend class CompiledCatalogueReader;
    const unsigned char* record = nullptr;
    const char* strings = nullptr;
  };

  // Checks the `size` bytes at `bytes`. problem() then says whether they
  // make a catalogue this library reads.
  CompiledCatalogueReader(const unsigned char* bytes, std::size_t size);

  // Empty if the bytes are a catalogue; otherwise the first fault found, as
  // one line of words for people.
  const std::string& problem() const { return fault; }

  // Whether entries may have variants (format 2). A file of format 1 has
  // none, and its loader need not ask variantsOf() for each entry.
  bool hasVariants() const { return variantBlock != nullptr; }

  // The variants of entry `index` in `out`; false for a plain text.
  // REQUIRES: problem() is empty; index < entryCount().
  bool variantsOf(std::uint32_t index, Variants& out) const {
    using namespace compiled;
    if (variantBlock == nullptr) {
      return false;
    }
    const std::uint32_t offset = readU32(table + std::uint64_t{index} * entrySize + kEntryVariants);
    if (offset == kNoVariants) {
      return false;
    }
    out.record = variantBlock + offset;
    out.strings = strings;
    return true;
  }

  // Whether the file has a key index, and so is read in place: then only
  // the header and the sections' bounds have been checked, and entries are
  // read through find() and checkedEntry().
  bool hasIndex() const { return indexed; }

  // The hash by which find() looks a key up (compiled::keyHash).
  static std::uint32_t hashOf(const char* nameSpace, std::size_t namespaceLength,
                              const char* identifier, std::size_t identifierLength) {
    return compiled::keyHash(nameSpace, namespaceLength, identifier, identifierLength);
  }

  // Starts fetching the home slot of a key of hash `hash` from memory, so
  // that a find() of that key soon after waits less. Reads nothing.
  // REQUIRES: problem() is empty; hasIndex().
  void prefetchSlot(std::uint32_t hash) const {
    __builtin_prefetch(slots + std::size_t{hash & (slotCount - 1)} * compiled::kSlotSize);
  }

  // What find() found: `texts` entries from `first` on hold the key, whose
  // strings in the file are `nameSpace` and `identifier`. texts is 0 if the
  // file has no such key.
  struct Found {
    std::uint32_t first = 0;
    std::uint32_t texts = 0;
    const char* nameSpace = nullptr;
    const char* identifier = nullptr;
  };

  // The entries of the key of the given strings (lengths without NUL),
  // whose hashOf() is `hash`. Reads at most every slot once; a slot that
  // points outside the entry table is passed over.
  // REQUIRES: problem() is empty; hasIndex().
  Found find(std::uint32_t hash, const char* nameSpace, std::size_t namespaceLength,
             const char* identifier, std::size_t identifierLength) const;

  // Entry `index` in `out` if all of it checks (strings inside the string
  // block, severity, language tag, the variant record if any) and it holds
  // the key `nameSpace`, `identifier` (any key if they are null); false,
  // leaving `out` undefined, otherwise.
  // REQUIRES: problem() is empty; index < entryCount().
  bool checkedEntry(std::uint32_t index, const char* nameSpace, const char* identifier,
                    Entry& out) const;

  // Entries in file order. REQUIRES: problem() is empty; index < entryCount();
  // for a file with a key index, checkedEntry(index, ...) was true.
  std::uint32_t entryCount() const { return count; }
  Entry entry(std::uint32_t index) const {
    using namespace compiled;
    const unsigned char* entry = table + std::uint64_t{index} * entrySize;
    return Entry{strings + readU32(entry + kEntryNamespace),
                 strings + readU32(entry + kEntryIdentifier), strings + readU32(entry + kEntryText),
                 reinterpret_cast<const char*>(entry + kEntryLanguage),
                 readU16(entry + kEntrySeverity)};
  }

 private:
  // checkHeader() checks the header and that every section lies inside the
  // file, in steps: what the file is (magic, version, byte order, size;
  // checkIdentity), the checksum of a file without index, where the entry
  // table, string block and variant block lie (checkSections, which gives
  // the offset where they end), and the key index behind them (checkIndex).
  bool checkHeader();
  bool checkIdentity(std::uint16_t& major);
  bool checkSections(bool withVariants, std::uint64_t headerSize, std::uint64_t& sectionsEnd);
  bool checkIndex(std::size_t indexFields, std::uint64_t sectionsEnd);
  bool checkEntries();
  bool checkVariants(std::uint32_t index, std::uint32_t offset, std::uint64_t& nextRecord);

  // What is wrong with an entry or a variant record, without words, so that
  // a lookup can check one cheaply; checkEntries() puts the words to it.
  enum class EntryFault { none, string, severity, noTag, longTag, behindTag };
  EntryFault entryFault(std::uint32_t index, std::uint32_t& badOffset) const;
  enum class RecordFault { none, outside, kind, formCount, text, form, notZero };
  RecordFault recordFault(std::uint32_t offset, std::uint64_t nextRecord,
                          std::uint16_t& badSelector) const;
  bool refuse(std::string why);

  const unsigned char* bytes;
  std::size_t size;
  std::string fault;
  std::uint32_t count = 0;
  std::uint32_t entrySize = 0;
  const unsigned char* table = nullptr;
  const char* strings = nullptr;
  std::uint32_t stringsSize = 0;
  const unsigned char* variantBlock = nullptr;  // null in format 1
  std::uint32_t variantBlockSize = 0;
  bool indexed = false;
  const unsigned char* slots = nullptr;  // the key index's slots, when indexed
  std::uint32_t slotCount = 0;
};

}  // namespace msg

#endif  // MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEREADER_H_
