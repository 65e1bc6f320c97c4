#include "message_core/MessageTable.h"

#include <cstring>
#include <memory>
#include <vector>

#include "message_core/PluralForms.h"
#include "msg/MessageExceptions.h"

namespace msg {

namespace {

// The number of buckets a table starts with is the largest prime up to this.
constexpr std::uint32_t kDefaultSizeLimit = 1000;

// The four bytes at `p` as a little-endian number: the first byte is the
// lowest. One load on a little-endian host.
std::uint32_t littleEndian32(const unsigned char* p) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  std::uint32_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
#else
  return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8 |
         static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[3]) << 24;
#endif
}

// Sum of the 4-byte little-endian groups of the `length` bytes at `s`, a
// short last group padded with zero bytes, in 32-bit arithmetic that wraps.
std::uint32_t groupSum(const char* s, std::size_t length) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(s);
  std::uint32_t sum = 0;
  std::size_t i = 0;
  for (; i + 4 <= length; i += 4) {
    sum += littleEndian32(p + i);
  }
  std::uint32_t last = 0;
  for (unsigned shift = 0; i < length; ++i, shift += 8) {
    last |= static_cast<std::uint32_t>(p[i]) << shift;
  }
  return sum + last;
}

// The grouping starts anew with the identifier: two separate sums.
std::uint32_t keySum(const char* nameSpace, const char* identifier) {
  return groupSum(nameSpace, std::strlen(nameSpace)) +
         groupSum(identifier, std::strlen(identifier));
}

// The same from a key whose lengths are known.
std::uint32_t keySum(const IndexKey& key) {
  return groupSum(key.nameSpace, key.namespaceLength) +
         groupSum(key.identifier, key.identifierLength);
}

// The 16 bits of a key sum that an entry keeps in keyCheck. Entries of one
// chain agree in sum % size but as a rule not in the sum itself.
std::uint16_t foldedKeyCheck(std::uint32_t sum) {
  return static_cast<std::uint16_t>(sum ^ (sum >> 16));
}

// Compares the identifier first: within a namespace it is what differs.
bool sameKey(const MTE* entry, const char* nameSpace, const char* identifier) {
  return std::strcmp(entry->getIdentifier(), identifier) == 0 &&
         std::strcmp(entry->getNamespace(), nameSpace) == 0;
}

// list.distance(language). An exact match ranks by its position alone, so
// it is looked for inline first: with the catalogue's own tags in the list,
// that is nearly every lookup.
int rankOf(const LanguageList& list, Language language) {
  for (int i = 0; i < list.getCount(); ++i) {
    if (list.getLanguage(i) == language) {
      return 3 * i;
    }
  }
  return list.distance(language);
}

}  // namespace

MessageTable::MessageTable() : MessageTable(largestPrimeUpTo(kDefaultSizeLimit)) {}

MessageTable::MessageTable(std::uint32_t bucketCount)
    : size(bucketCount), count(0), owned(0), buckets(new MTE*[bucketCount]()) {}

MessageTable::~MessageTable() {
  // Without an entry of its own the table only forgets its chains, and
  // walking them would read every entry for nothing.
  for (std::uint32_t bucket = 0; owned > 0 && bucket < size; ++bucket) {
    MTE* entry = buckets[bucket];
    while (entry != nullptr) {
      MTE* following = entry->next;  // read before the entry may go
      if (entry->ownsStrings) {
        delete entry;
      }
      entry = following;
    }
    buckets[bucket] = nullptr;
  }
  delete[] buckets;
}

MessageTable* MessageTable::grownCopy() {
  // The new table and its index are made first: if an allocation fails,
  // nothing has moved yet. Its index receives the entries in the order in
  // which they move below, each in front of its group, exactly as inserting
  // them one by one would put them.
  std::unique_ptr<MessageTable> grown(new MessageTable(largestPrimeUpTo(2 * size)));
  grown->index.reserve(index.keyCount());
  for (std::uint32_t bucket = 0; bucket < size; ++bucket) {
    for (MTE* entry = buckets[bucket]; entry != nullptr; entry = entry->next) {
      grown->index.prepend(IndexKey(entry->nameSpace, entry->identifier), entry);
    }
  }
  for (std::uint32_t bucket = 0; bucket < size; ++bucket) {
    while (buckets[bucket] != nullptr) {
      MTE* entry = buckets[bucket];
      buckets[bucket] = entry->next;
      entry->cachedHash = 0;  // the old index means nothing in the new table
      grown->linkHead(entry, grown->bucketOf(entry));
    }
  }
  grown->owned = owned;
  grown->plurals = std::move(plurals);
  count = 0;
  owned = 0;
  index.clear();
  return grown.release();
}

std::uint32_t MessageTable::tableHash(const char* nameSpace, const char* identifier) const {
  return keySum(nameSpace, identifier) % size;
}

std::uint32_t MessageTable::bucketOf(MTE* entry) {
  if (entry->cachedHash == 0) {
    // keyCheck depends on the key alone; it is set with every hashing, so a
    // linked entry always has it.
    const std::uint32_t sum = keySum(entry->nameSpace, entry->identifier);
    entry->cachedHash = sum % size;
    entry->keyCheck = foldedKeyCheck(sum);
  }
  return entry->cachedHash;
}

MTE* MessageTable::findEntry(const MTE* key, MTE** predecessor) const {
  const std::uint32_t sum = keySum(key->nameSpace, key->identifier);
  const std::uint16_t check = foldedKeyCheck(sum);
  *predecessor = nullptr;
  for (MTE* entry = buckets[sum % size]; entry != nullptr; entry = entry->next) {
    if (entry->keyCheck == check && entry->language == key->language &&
        sameKey(entry, key->nameSpace, key->identifier)) {
      return entry;
    }
    *predecessor = entry;
  }
  return nullptr;
}

bool MessageTable::holdsEntryLike(const MTE* key, const IndexKey& indexKey) const {
  const KeyGroup* group = index.find(indexKey);
  if (group == nullptr) {
    return false;
  }
  for (std::uint32_t i = 0; i < group->size(); ++i) {
    if (group->language(i) == key->language) {
      return true;
    }
  }
  return false;
}

MessageTable::Choice MessageTable::findBest(const char* nameSpace, const char* identifier,
                                            const LanguageList& list) const {
  // The group holds the key's entries in chain order, so this is the walk of
  // the whole chain with the other keys left out: no early exit, not even at
  // rank 0, and only a strictly lower rank replaces the best, so that the
  // entry nearer the head keeps a tie.
  const KeyGroup* group = index.find(IndexKey(nameSpace, identifier));
  if (group == nullptr) {
    return Choice();
  }
  std::uint32_t best = 0;
  int bestRank = -1;
  for (std::uint32_t i = 0; i < group->size(); ++i) {
    const int rank = rankOf(list, group->language(i));
    if (rank >= 0 && (bestRank < 0 || rank < bestRank)) {
      best = i;
      bestRank = rank;
    }
  }
  if (bestRank < 0) {
    return Choice();
  }
  MTE* entry = group->entry(best);
  return Choice{entry, group->text(best), group->language(best), group->severity(best),
                plurals != nullptr ? pluralFormsOf(entry) : nullptr};
}

MessageTable::PluralStore::PluralStore() = default;
MessageTable::PluralStore::~PluralStore() = default;

void MessageTable::attachPluralForms(const MTE* entry, std::unique_ptr<PluralForms> forms) {
  if (plurals == nullptr) {
    plurals = std::make_unique<PluralStore>();
  }
  plurals->all.reserve(plurals->all.size() + 1);
  plurals->byEntry[entry] = forms.get();
  plurals->all.push_back(std::move(forms));
}

const PluralForms* MessageTable::pluralFormsOf(const MTE* entry) const {
  if (plurals == nullptr) {
    return nullptr;
  }
  const auto found = plurals->byEntry.find(entry);
  return found != plurals->byEntry.end() ? found->second : nullptr;
}

void MessageTable::linkHead(MTE* entry, std::uint32_t bucket) {
  entry->next = buckets[bucket];
  buckets[bucket] = entry;
  ++count;
}

void MessageTable::insertEntry(MTE* entry, MTE* existing, MTE* predecessor, const IndexKey& key) {
  if (existing == nullptr) {
    const std::uint32_t sum = keySum(key);
    const std::uint32_t home = sum % size;  // one division: they are slow
    if (entry->cachedHash == 0) {
      // What bucketOf would store, from the lengths already known.
      entry->cachedHash = home;
      entry->keyCheck = foldedKeyCheck(sum);
    }
    const std::uint32_t bucket = entry->cachedHash;
    // An entry that kept the bucket of another table size lands in a chain
    // that no lookup of its key walks, so no lookup may find it.
    if (bucket == home) {
      index.prepend(key, entry);
    }
    linkHead(entry, bucket);
    return;
  }

  // Checked before anything is touched, so a mismatch changes nothing.
  std::uint32_t bucket = 0;
  if (predecessor == nullptr) {
    bucket = bucketOf(entry);
    if (buckets[bucket] != existing) {
      throw MessageHandlerError("MessageHandler corrupted.");
    }
  }

  // The index first: it may allocate, and the chains must then stay as they
  // are. As a rule the new entry has the old one's key and takes its place
  // in the group as in the chain.
  const IndexKey existingKey(existing->nameSpace, existing->identifier);
  const bool sameKey = key == existingKey;
  if (!sameKey || !index.replace(key, existing, entry)) {
    reindexReplacement(key, existing, entry);
    if (!sameKey) {
      index.remove(existingKey, existing);
    }
  }

  entry->next = existing->next;
  entry->keyCheck = foldedKeyCheck(keySum(entry->nameSpace, entry->identifier));
  if (predecessor != nullptr) {
    predecessor->next = entry;
  } else {
    buckets[bucket] = entry;
  }
  existing->next = nullptr;  // an unowned entry that is dropped keeps no link into the table
  if (plurals != nullptr) {
    // The replacement brings its own variants, if any; the old ones stay
    // alive for the records that still read them.
    plurals->byEntry.erase(existing);
  }
  if (existing->ownsStrings) {
    --owned;
    delete existing;
  }
}

bool MessageTable::insertNewKey(MTE* first, std::uint32_t count, const IndexKey& key) {
  if (count == 0 || count > kLongestRun || index.find(key) != nullptr) {
    return false;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    for (std::uint32_t j = i + 1; j < count; ++j) {
      if (first[i].language == first[j].language) {
        return false;  // a replacement within the run: the general path
      }
    }
  }
  // One by one, each entry would become the head of its group and chain:
  // the group holds them last first.
  MTE* grouped[kLongestRun];
  for (std::uint32_t i = 0; i < count; ++i) {
    grouped[count - 1 - i] = &first[i];
  }
  index.assign(key, grouped, count);
  const std::uint32_t sum = keySum(key);
  const std::uint32_t home = sum % size;
  for (std::uint32_t i = 0; i < count; ++i) {
    first[i].cachedHash = home;
    first[i].keyCheck = foldedKeyCheck(sum);
    linkHead(&first[i], home);
  }
  return true;
}

void MessageTable::reindexReplacement(const IndexKey& key, const MTE* existing, MTE* entry) {
  std::vector<MTE*> entries;
  for (MTE* chained = buckets[tableHash(key.nameSpace, key.identifier)]; chained != nullptr;
       chained = chained->next) {
    MTE* member = chained == existing ? entry : chained;
    if (sameKey(member, key.nameSpace, key.identifier)) {
      entries.push_back(member);
    }
  }
  index.assign(key, entries.data(), static_cast<std::uint32_t>(entries.size()));
}

std::uint32_t MessageTable::largestPrimeUpTo(std::uint32_t n) {
  for (std::uint32_t x = n; x >= 1; --x) {
    bool hasDivisor = false;
    // d <= x / d is d * d <= x without overflow.
    for (std::uint32_t d = 2; d <= x / d; ++d) {
      if (x % d == 0) {
        hasDivisor = true;
        break;
      }
    }
    if (!hasDivisor) {
      return x;
    }
  }
  return 0;
}

std::uint32_t MessageTable::chainLength(std::uint32_t bucket) const {
  std::uint32_t length = 0;
  for (const MTE* entry = buckets[bucket]; entry != nullptr; entry = entry->next) {
    ++length;
  }
  return length;
}

std::uint32_t MessageTable::keyEntryCount(const char* nameSpace, const char* identifier) const {
  const KeyGroup* group = index.find(IndexKey(nameSpace, identifier));
  return group == nullptr ? 0 : group->size();
}

MTE* MessageTable::chainEntry(std::uint32_t bucket, std::uint32_t position) const {
  MTE* entry = buckets[bucket];
  while (entry != nullptr && position > 0) {
    entry = entry->next;
    --position;
  }
  return entry;
}

}  // namespace msg
