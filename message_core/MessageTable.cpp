#include "message_core/MessageTable.h"

#include <cstring>
#include <memory>

#include "msg/MessageExceptions.h"

namespace msg {

namespace {

// The number of buckets a table starts with is the largest prime up to this.
constexpr std::uint32_t kDefaultSizeLimit = 1000;

// Sum of the 4-byte little-endian groups of `s`, a short last group padded
// with zero bytes, in 32-bit arithmetic that wraps.
std::uint32_t groupSum(const char* s) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(s);
  std::uint32_t sum = 0;
  while (*p != 0) {
    std::uint32_t group = 0;
    for (unsigned shift = 0; shift < 32 && *p != 0; shift += 8) {
      group |= static_cast<std::uint32_t>(*p++) << shift;
    }
    sum += group;
  }
  return sum;
}

bool sameKey(const MTE* entry, const char* nameSpace, const char* identifier) {
  return std::strcmp(entry->getNamespace(), nameSpace) == 0 &&
         std::strcmp(entry->getIdentifier(), identifier) == 0;
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
  // Two separate sums: the grouping starts anew with the identifier.
  std::uint32_t sum = groupSum(nameSpace) + groupSum(identifier);
  return sum % size;
}

std::uint32_t MessageTable::bucketOf(MTE* entry) {
  if (entry->cachedHash == 0) {
    entry->cachedHash = tableHash(entry->nameSpace, entry->identifier);
  }
  return entry->cachedHash;
}

MTE* MessageTable::findEntry(const MTE* key, MTE** predecessor) const {
  std::uint32_t bucket = tableHash(key->nameSpace, key->identifier);
  *predecessor = nullptr;
  for (MTE* entry = buckets[bucket]; entry != nullptr; entry = entry->next) {
    if (entry->language == key->language && sameKey(entry, key->nameSpace, key->identifier)) {
      return entry;
    }
    *predecessor = entry;
  }
  return nullptr;
}

MTE* MessageTable::findBestEntry(const char* nameSpace, const char* identifier,
                                 const LanguageList& list) const {
  MTE* best = nullptr;
  int bestRank = -1;
  // No early exit, not even at rank 0: the walk always covers the chain.
  for (MTE* entry = buckets[tableHash(nameSpace, identifier)]; entry != nullptr;
       entry = entry->next) {
    if (!sameKey(entry, nameSpace, identifier)) {
      continue;
    }
    int rank = list.distance(entry->language);
    if (rank < 0) {
      continue;
    }
    // Strictly lower only, so the earlier entry in the chain keeps a tie.
    if (best == nullptr || rank < bestRank) {
      best = entry;
      bestRank = rank;
    }
  }
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
