// MessageTable: the chained hash table in which a handler keeps its entries.
//
// Private to the library: it is not exported and its header is not installed.

#ifndef MSG_MESSAGE_CORE_MESSAGETABLE_H_
#define MSG_MESSAGE_CORE_MESSAGETABLE_H_

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "message_core/KeyIndex.h"
#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "platform/PrivateApi.h"

namespace msg {

class PluralForms;

// A hash table of MTE chains with a prime number of buckets. The key of an
// entry is its namespace and identifier; the language takes no part in the
// hash, so all languages of one key lie in one chain and a single walk can
// rank them against a LanguageList. Each entry is its own chain node.
//
// The chains decide everything a caller sees: which entry a lookup finds,
// the order that breaks ties, what findEntry and insertEntry do. Beside
// them the table keeps a KeyIndex, the entries of each key in chain order,
// so that a lookup reads one probe and one group instead of walking a chain
// through the entries of other keys (about 25 of them at 10,000 keys, since
// chains grow to 51 entries on average before the table grows). Every
// change of a chain goes through insertEntry and grownCopy, which keep the
// index in step; linking an entry may therefore allocate, and does so before
// any chain changes.
//
// Ownership: the table owns exactly the entries whose ownsStrings is true.
// It deletes such an entry when it replaces it and when the table dies; every
// other entry (a static one, as a rule) is only linked and forgotten, and
// must outlive the table. The handler owns the table.
//
// The table only grows; there is no removal. Not thread-safe: no lookup may
// run beside an insertion.
class MessageTable {
 public:
  // Empty table of the default size, largestPrimeUpTo(1000) = 997 buckets.
  MessageTable();

  MessageTable(const MessageTable&) = delete;
  MessageTable& operator=(const MessageTable&) = delete;

  // Deletes the entries it owns (see above) and releases the bucket array.
  ~MessageTable();

  // A new table with largestPrimeUpTo(2 * getSize()) buckets that has taken
  // over every entry of this one, bucket by bucket in rising order, each
  // chain from its head. Entries that stay together in a chain therefore end
  // up in reverse order. This table is left empty (no bucket, count 0), so
  // deleting it afterwards touches no entry. The caller owns the result.
  // If the new table or its index cannot be allocated, the allocator's
  // exception passes on and this table is unchanged.
  MessageTable* grownCopy();

  // Bucket index of a key: the namespace and then the identifier, each cut
  // into 4-byte groups from its first byte on (the grouping restarts with the
  // identifier), each group read as a little-endian 32-bit number with a
  // short last group padded by zero bytes, all summed with 32-bit
  // wrap-around, modulo getSize(). The terminating NULs take no part.
  // REQUIRES: nameSpace and identifier are not null.
  std::uint32_t tableHash(const char* nameSpace, const char* identifier) const;

  // Bucket index of `entry`: its cachedHash if that is not 0, otherwise
  // tableHash of its key, which is then stored in cachedHash. (An entry of
  // bucket 0 is simply hashed again each time.)
  std::uint32_t bucketOf(MTE* entry);

  // The entry with the namespace, identifier and language (all four bytes)
  // of `key`, or null. *predecessor is set to the entry in front of the
  // result in its chain, null if the result is the chain's head; when
  // nothing is found it is the chain's last entry. Hashes the key afresh
  // rather than trusting key->cachedHash.
  // REQUIRES: key and predecessor are not null.
  MTE* findEntry(const MTE* key, MTE** predecessor) const;

  // Whether findEntry(key, ...) would find an entry, answered from the key's
  // group in the index (which holds exactly the entries of the key in the
  // chain findEntry walks) instead of a walk through the chain.
  // `indexKey` is IndexKey(key->nameSpace, key->identifier), worked out once
  // by the caller for this and insertEntry.
  // REQUIRES: key is not null.
  bool holdsEntryLike(const MTE* key, const IndexKey& indexKey) const;

  // What a lookup hands on of the entry it chose, read from the index
  // without touching the entry itself. `entry` is null if nothing was
  // chosen, or if a text of a compiled catalogue read in place was: then
  // nameSpace and identifier are that text's key, and null otherwise.
  struct Choice {
    MTE* entry = nullptr;
    const char* text = nullptr;
    Language language;
    short severity = 0;
    const PluralForms* forms = nullptr;  // the entry's variants, if it has any
    const char* nameSpace = nullptr;
    const char* identifier = nullptr;
    bool found() const { return entry != nullptr || nameSpace != nullptr; }
  };

  // The entry of the key whose language ranks best by list.distance(), or
  // none if no entry of the key is acceptable. The whole chain is walked;
  // among entries of equal rank the one nearest the head wins, which is the
  // one added last unless a growth came between.
  // REQUIRES: nameSpace and identifier are not null.
  Choice findBest(const char* nameSpace, const char* identifier, const LanguageList& list) const;
  MTE* findBestEntry(const char* nameSpace, const char* identifier,
                     const LanguageList& list) const {
    return findBest(nameSpace, identifier, list).entry;
  }

  // With `existing` null: makes `entry` the head of its bucket and counts it.
  // Otherwise puts `entry` in the place of `existing` (the result of
  // findEntry, with its `predecessor`), leaving the count as it is, and
  // deletes `existing` if it owns its strings; an unowned `existing` is only
  // unlinked. Throws MessageHandlerError("MessageHandler corrupted.") and
  // changes nothing if `predecessor` is null but `existing` is not the head
  // of entry's bucket. If the index cannot grow, the allocator's exception
  // passes on and nothing has changed.
  // `key` is IndexKey(entry->nameSpace, entry->identifier).
  // REQUIRES: entry is not linked anywhere.
  void insertEntry(MTE* entry, MTE* existing, MTE* predecessor, const IndexKey& key);

  // Links the `count` entries at `first` (one array, unlinked, fresh, all of
  // the key `key`) exactly as insertEntry would link them one after the
  // other, but with the key hashed and the index probed once. Does so only
  // when that is plainly equivalent: the table holds no entry of the key,
  // the languages of the entries differ, and there are at most kLongestRun
  // of them. Returns false, changing nothing, otherwise. The caller checks
  // that the table need not grow in between. If the index cannot grow, the
  // allocator's exception passes on and nothing has changed.
  static constexpr std::uint32_t kLongestRun = 16;
  bool insertNewKey(MTE* first, std::uint32_t count, const IndexKey& key);

  // Makes room in the index for `keys` more keys, so that a load whose size
  // is known beforehand does not grow it step by step. Changes nothing a
  // caller sees. Throws std::bad_alloc, leaving the table as it was.
  void reserveKeys(std::size_t keys) { index.reserve(index.keyCount() + keys); }

  // Starts reading the index slot of `key`, which an addition of the key
  // will need soon. Changes nothing.
  void prefetchKey(const IndexKey& key) const { index.prefetch(key); }

  // Counts `entry`, linked into this table, whose ownsStrings has just
  // become true and whose strings have just been replaced by its copies. The
  // table keeps the count so that, when it holds no entry of its own, it can
  // die without a walk through its chains; the index takes the new text.
  void noteOwnedEntry(const MTE* entry) {
    ++owned;
    index.refresh(IndexKey(entry->nameSpace, entry->identifier), entry);
  }

  // Attaches `forms` to `entry`, which this table links, in place of any it
  // had. The table owns the forms from now on and keeps them, also when the
  // entry is replaced, until it dies: records made from the entry may still
  // read them. A table without forms pays nothing for them in a lookup.
  // If the allocator fails, its exception passes on and nothing changed.
  MSG_PRIVATE_API void attachPluralForms(const MTE* entry, std::unique_ptr<PluralForms> forms);

  // The variants of `entry`, null if it has none.
  const PluralForms* pluralFormsOf(const MTE* entry) const;

  // The largest x <= n that has no divisor d with 2 <= d <= sqrt(x); so 1, 2
  // and 3 count, and 0 gives 0.
  static std::uint32_t largestPrimeUpTo(std::uint32_t n);

  // Number of buckets.
  std::uint32_t getSize() const { return size; }

  // Number of linked entries.
  std::uint32_t getCount() const { return count; }

  // For tests and benchmarks: the number of entries in bucket `bucket`, and
  // the entry at `position` (0 = head) of that chain, or null past its end.
  // REQUIRES: bucket < getSize().
  std::uint32_t chainLength(std::uint32_t bucket) const;
  MTE* chainEntry(std::uint32_t bucket, std::uint32_t position) const;

  // The entries of `key` in chain order (the head first), or null.
  const KeyGroup* groupOf(const IndexKey& key) const { return index.find(key); }

  // For benchmarks: the number of entries of a key that a lookup ranks.
  std::uint32_t keyEntryCount(const char* nameSpace, const char* identifier) const;

 private:
  // Empty table of exactly `bucketCount` buckets.
  explicit MessageTable(std::uint32_t bucketCount);

  // Links `entry` as the head of `bucket`; the index is left alone.
  void linkHead(MTE* entry, std::uint32_t bucket);

  // Rebuilds the group of `key` from its chain as it will be once `entry`
  // has taken the place of `existing`.
  void reindexReplacement(const IndexKey& key, const MTE* existing, MTE* entry);

  std::uint32_t size;   // number of buckets, a prime
  std::uint32_t count;  // entries in all chains
  std::uint32_t owned;  // of them, those with ownsStrings
  MTE** buckets;        // new[], `size` chain heads
  KeyIndex index;       // the entries of each key, in chain order

  // The variants of plural entries, beside the entries so that MTE keeps its
  // layout. Null until the first is attached; a grown table takes it over.
  struct PluralStore {
    PluralStore();
    ~PluralStore();
    std::unordered_map<const MTE*, const PluralForms*> byEntry;
    std::vector<std::unique_ptr<PluralForms>> all;  // every forms ever attached
  };
  std::unique_ptr<PluralStore> plurals;
};

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_MESSAGETABLE_H_
