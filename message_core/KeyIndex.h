// KeyIndex: the entries of each key of a message table, found in one probe.
//
// Private to the library: it is not exported and its header is not installed.

#ifndef MSG_MESSAGE_CORE_KEYINDEX_H_
#define MSG_MESSAGE_CORE_KEYINDEX_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "message_core/IndexArena.h"
#include "msg/Language.h"
#include "msg/MTE.h"

namespace msg {

// A key (namespace, identifier) with its lengths and its 64-bit hash, worked
// out once per operation.
struct IndexKey {
  IndexKey(const char* nameSpace, const char* identifier);

  const char* nameSpace;
  const char* identifier;
  std::uint32_t namespaceLength;
  std::uint32_t identifierLength;
  std::uint64_t hash;
};

// True when both keys have the same bytes.
bool operator==(const IndexKey& a, const IndexKey& b);

// Unaligned reads of 8 and 4 bytes, for the key hash and compare.
inline std::uint64_t loadWord64(const char* p) {
  std::uint64_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}
inline std::uint64_t loadWord32(const char* p) {
  std::uint32_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

// memcmp(a, b, n) == 0, inline: key strings are short, and a lookup that
// calls out twice to compare them spends more on the calls than on the bytes.
inline bool sameBytes(const char* a, const char* b, std::size_t n) {
  if (n >= 8) {
    // Eight bytes at a time; the last eight overlap the group before.
    for (std::size_t i = 0; i + 8 < n; i += 8) {
      if (loadWord64(a + i) != loadWord64(b + i)) {
        return false;
      }
    }
    return loadWord64(a + n - 8) == loadWord64(b + n - 8);
  }
  if (n >= 4) {
    return loadWord32(a) == loadWord32(b) && loadWord32(a + n - 4) == loadWord32(b + n - 4);
  }
  for (std::size_t i = 0; i < n; ++i) {
    if (a[i] != b[i]) {
      return false;
    }
  }
  return true;
}

// The entries of one key in the order of their chain, each with what a
// lookup hands on (text, language, severity), and a copy of the key, in one
// block of the index's arena. A lookup reads this block and nothing else of
// the catalogue: at a million keys the entries lie scattered over the heap,
// and reading one costs as much as the rest of the lookup.
class KeyGroup {
 public:
  std::uint32_t size() const { return count; }
  MTE* entry(std::uint32_t position) const { return entries()[position]; }
  const char* text(std::uint32_t position) const { return texts()[position]; }
  Language language(std::uint32_t position) const { return languages()[position]; }
  short severity(std::uint32_t position) const { return severities()[position]; }

 private:
  friend class KeyIndex;

  // Layout: this header, MTE* entries[capacity], const char* texts[capacity],
  // Language languages[capacity], short severities[capacity], then the
  // namespace and identifier bytes (no NULs).
  // An empty group with room for `capacity` entries and a key of the given
  // lengths (its bytes still to be copied in), taken from `arena`; it goes
  // back there with arena.release(group, group->blockSize()) and has no
  // destructor to run.
  static KeyGroup* make(IndexArena& arena, std::uint32_t capacity, std::uint32_t namespaceLength,
                        std::uint32_t identifierLength);
  static constexpr std::size_t kBytesPerEntry =
      sizeof(MTE*) + sizeof(const char*) + sizeof(Language) + sizeof(short);
  static std::size_t blockSize(std::uint32_t capacity, std::uint32_t keyLength) {
    return sizeof(KeyGroup) + capacity * kBytesPerEntry + keyLength;
  }
  std::size_t blockSize() const { return blockSize(capacity, namespaceLength + identifierLength); }
  MTE** entries() const {
    // The header is a multiple of the pointer size, so both pointer arrays
    // are aligned, and the short array follows 4-byte languages.
    return reinterpret_cast<MTE**>(const_cast<KeyGroup*>(this) + 1);
  }
  const char** texts() const {
    return reinterpret_cast<const char**>(reinterpret_cast<char*>(entries() + capacity));
  }
  Language* languages() const { return reinterpret_cast<Language*>(texts() + capacity); }
  short* severities() const { return reinterpret_cast<short*>(languages() + capacity); }
  char* keyBytes() const { return reinterpret_cast<char*>(severities() + capacity); }
  bool holds(const IndexKey& key) const {
    return namespaceLength == key.namespaceLength && identifierLength == key.identifierLength &&
           sameBytes(keyBytes() + namespaceLength, key.identifier, identifierLength) &&
           sameBytes(keyBytes(), key.nameSpace, namespaceLength);
  }
  // Stores `entry` with its text, language and severity at `position`.
  void put(std::uint32_t position, MTE* entry);
  // Moves the `n` members from position `from` on to position `to`.
  void move(std::uint32_t to, std::uint32_t from, std::uint32_t n);
  // Copies the members and the key of `other`, which has no more members
  // than this group has room for, and the same key lengths.
  void copyFrom(const KeyGroup& other);

  std::uint32_t count = 0;
  std::uint32_t capacity = 0;
  std::uint32_t namespaceLength = 0;
  std::uint32_t identifierLength = 0;
};
static_assert(sizeof(KeyGroup) % alignof(MTE*) == 0, "the entries follow the header");

// An open-addressing hash table (linear probing, power-of-two size, at most
// three quarters full) from a key to its KeyGroup. The message table keeps
// it beside its chains so that a lookup costs a probe and a group instead of
// a walk down a chain of other keys; the chains stay what decides the order.
//
// Owns its groups (in an arena of its own) and its slot array, never the
// entries. A group that loses its last entry stays, empty. Not thread-safe;
// reading from several threads is fine.
class KeyIndex {
 public:
  KeyIndex() = default;
  KeyIndex(const KeyIndex&) = delete;
  KeyIndex& operator=(const KeyIndex&) = delete;
  ~KeyIndex();

  // The group of `key`, or null if the key was never indexed.
  const KeyGroup* find(const IndexKey& key) const {
    return slots == nullptr ? nullptr : slotOf(key).group;
  }

  // Starts reading the slot where `key` is or would go.
  void prefetch(const IndexKey& key) const {
#if defined(__GNUC__)
    if (slots != nullptr) {
      __builtin_prefetch(&slots[key.hash & mask]);
    }
#else
    (void)key;
#endif
  }

  // The members below read the entries they are given (text, language,
  // severity) and keep those fields beside them; an entry whose text pointer
  // changes later must be passed to refresh.

  // Puts `entry` in front of the group of `key`, as a new chain head.
  void prepend(const IndexKey& key, MTE* entry);

  // Puts `entry` in the place of `existing` in the group of `key`. Returns
  // false, changing nothing, if `existing` is not in that group.
  bool replace(const IndexKey& key, const MTE* existing, MTE* entry);

  // Reads the text of `entry` again, if it is in the group of `key`.
  void refresh(const IndexKey& key, const MTE* entry);

  // Takes `entry` out of the group of `key`, if it is there.
  void remove(const IndexKey& key, const MTE* entry);

  // Makes the group of `key` hold exactly `count` entries, in this order.
  void assign(const IndexKey& key, MTE* const* entries, std::uint32_t count);

  // Room for `keys` keys without growing the slot array.
  void reserve(std::size_t keys);

  // Forgets every key.
  void clear();

  // Number of keys indexed.
  std::size_t keyCount() const {
    return used;
  }

 private:
  struct Slot {
    std::uint64_t hash;
    KeyGroup* group;  // null: the slot is free
  };

  // The slot of `key`, or the free slot where it would go.
  Slot& slotOf(const IndexKey& key) const {
    // Never full, so the probe ends at a free slot at the latest.
    for (std::size_t i = key.hash & mask;; i = (i + 1) & mask) {
      Slot& slot = slots[i];
      if (slot.group == nullptr || (slot.hash == key.hash && slot.group->holds(key))) {
        return slot;
      }
    }
  }
  // The slot of `key`, with a group made empty with room for `capacity` if
  // the key is new.
  Slot& slotFor(const IndexKey& key, std::uint32_t capacity);

  // A copy of `group` with room for `capacity` entries; frees `group`.
  KeyGroup* regrown(KeyGroup* group, std::uint32_t capacity);
  // Counts the groups that the arena does not track, which clear must free.
  void noteBlock(std::size_t bytes, bool added) {
    if (bytes > IndexArena::kLargestPooled) {
      largeGroups = added ? largeGroups + 1 : largeGroups - 1;
    }
  }
  // Doubles the slot array (or makes the first), and at least to `atLeast`.
  void growSlots(std::size_t atLeast = 0);

  IndexArena arena;       // the groups
  Slot* slots = nullptr;  // allocateTable, mask + 1 of them
  std::size_t mask = 0;   // slot count - 1, or 0 before the first key
  std::size_t used = 0;
  std::size_t largeGroups = 0;  // groups above IndexArena::kLargestPooled
};

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_KEYINDEX_H_
