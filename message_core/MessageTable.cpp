#include "message_core/MessageTable.h"

#include <cstring>
#include <memory>

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

// Sum of the 4-byte little-endian groups of `s`, a short last group padded
// with zero bytes, in 32-bit arithmetic that wraps. Reads no byte behind
// the terminator.
std::uint32_t groupSum(const char* s) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(s);
  const std::size_t length = std::strlen(s);
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
  return groupSum(nameSpace) + groupSum(identifier);
}

// The 16 bits of a key sum that an entry keeps in keyCheck. Entries of one
// chain agree in sum % size but as a rule not in the sum itself.
std::uint16_t foldedKeyCheck(std::uint32_t sum) {
  return static_cast<std::uint16_t>(sum ^ (sum >> 16));
}

// Candidates of one lookup held back for their string compare.
constexpr std::size_t kCandidateLimit = 8;

// Asks the processor to start fetching `p` (a hint only; no effect on the
// result).
inline void prefetch(const void* p) {
#if defined(__GNUC__)
  __builtin_prefetch(p);
#else
  (void)p;
#endif
}

// Compares the identifier first: within a namespace it is what differs.
bool sameKey(const MTE* entry, const char* nameSpace, const char* identifier) {
  return std::strcmp(entry->getIdentifier(), identifier) == 0 &&
         std::strcmp(entry->getNamespace(), nameSpace) == 0;
}

}  // namespace

MessageTable::MessageTable() : MessageTable(largestPrimeUpTo(kDefaultSizeLimit)) {}

MessageTable::MessageTable(std::uint32_t bucketCount)
    : size(bucketCount), count(0), buckets(new MTE*[bucketCount]()) {}

MessageTable::~MessageTable() {
  for (std::uint32_t bucket = 0; bucket < size; ++bucket) {
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
  // Made first: if this allocation fails, nothing has moved yet.
  std::unique_ptr<MessageTable> grown(new MessageTable(largestPrimeUpTo(2 * size)));
  for (std::uint32_t bucket = 0; bucket < size; ++bucket) {
    while (buckets[bucket] != nullptr) {
      MTE* entry = buckets[bucket];
      buckets[bucket] = entry->next;
      entry->cachedHash = 0;  // the old index means nothing in the new table
      grown->insertEntry(entry, nullptr, nullptr);
    }
  }
  count = 0;
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

MTE* MessageTable::findBestEntry(const char* nameSpace, const char* identifier,
                                 const LanguageList& list) const {
  const std::uint32_t sum = keySum(nameSpace, identifier);
  const std::uint16_t check = foldedKeyCheck(sum);

  // The result is that of the plain rule: walk the whole chain (no early
  // exit, not even at rank 0), rank every entry of the key, and keep the
  // first entry of the lowest rank. The walk reads only the chain nodes:
  // an entry whose keyCheck differs is of another key, and the strings of
  // the others (candidates) are only fetched here and compared afterwards,
  // in chain order, so that their cache misses overlap with the walk.
  // Candidates are the rare keyCheck twins of other keys and the entries of
  // the key in acceptable languages; if there are ever more than the buffer
  // holds, the buffered ones are settled early, which changes nothing.
  struct Candidate {
    MTE* entry;
    int rank;
  };
  Candidate candidates[kCandidateLimit];
  std::size_t candidateCount = 0;
  MTE* best = nullptr;
  int bestRank = -1;
  auto settle = [&] {
    for (std::size_t i = 0; i < candidateCount; ++i) {
      const Candidate& candidate = candidates[i];
      // Strictly lower only, so the earlier entry in the chain keeps a tie.
      // An entry that cannot beat the best so far needs no string compare.
      if (best != nullptr && candidate.rank >= bestRank) {
        continue;
      }
      if (sameKey(candidate.entry, nameSpace, identifier)) {
        best = candidate.entry;
        bestRank = candidate.rank;
      }
    }
    candidateCount = 0;
  };

  for (MTE* entry = buckets[sum % size]; entry != nullptr; entry = entry->next) {
    if (entry->keyCheck != check) {
      continue;
    }
    const int rank = list.distance(entry->language);
    if (rank < 0) {
      continue;
    }
    if (candidateCount == kCandidateLimit) {
      settle();
    }
    prefetch(entry->identifier);
    prefetch(entry->nameSpace);
    candidates[candidateCount++] = {entry, rank};
  }
  settle();
  return best;
}

void MessageTable::insertEntry(MTE* entry, MTE* existing, MTE* predecessor) {
  if (existing == nullptr) {
    std::uint32_t bucket = bucketOf(entry);
    entry->next = buckets[bucket];
    buckets[bucket] = entry;
    ++count;
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

  entry->next = existing->next;
  entry->keyCheck = existing->keyCheck;  // the same key; bucketOf may not have run
  if (predecessor != nullptr) {
    predecessor->next = entry;
  } else {
    buckets[bucket] = entry;
  }
  existing->next = nullptr;  // an unowned entry that is dropped keeps no link into the table
  if (existing->ownsStrings) {
    delete existing;
  }
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

MTE* MessageTable::chainEntry(std::uint32_t bucket, std::uint32_t position) const {
  MTE* entry = buckets[bucket];
  while (entry != nullptr && position > 0) {
    entry = entry->next;
    --position;
  }
  return entry;
}

}  // namespace msg
