#include "message_core/KeyIndex.h"

#include <cstring>
#include <new>

namespace msg {

namespace {

// Slots of the first slot array.
constexpr std::size_t kInitialSlots = 16;

constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15u;

std::uint64_t mixIn(std::uint64_t hash, std::uint64_t word) {
  hash = (hash ^ word) * kMultiplier;
  return hash ^ (hash >> 32);
}

// Folds `length` bytes at `s` into `hash`, eight at a time. The last group
// is read so that no byte behind the string is touched: as the last eight
// bytes (overlapping the group before), as two overlapping halves, or byte
// by byte.
std::uint64_t hashBytes(std::uint64_t hash, const char* s, std::size_t length) {
  std::size_t i = 0;
  for (; i + 8 < length; i += 8) {
    hash = mixIn(hash, loadWord64(s + i));
  }
  std::uint64_t last = 0;
  if (length >= 8) {
    last = loadWord64(s + length - 8);
  } else if (length >= 4) {
    last = loadWord32(s) | loadWord32(s + length - 4) << 32;
  } else if (length > 0) {
    last = static_cast<unsigned char>(s[0]) | static_cast<unsigned char>(s[length / 2]) << 8 |
           static_cast<std::uint64_t>(static_cast<unsigned char>(s[length - 1])) << 16;
  }
  // The length keeps "ab" + "c" apart from "a" + "bc".
  return mixIn(mixIn(hash, last), length);
}

// Spreads every input bit over the low bits that pick a slot.
std::uint64_t finish(std::uint64_t hash) {
  hash ^= hash >> 33;
  hash *= 0xFF51AFD7ED558CCDu;
  return hash ^ (hash >> 33);
}

std::uint32_t grownCapacity(std::uint32_t capacity) {
  // Most keys have a handful of languages: grow one at a time at first, so
  // that groups stay as small as they can.
  return capacity < 4 ? capacity + 1 : capacity + capacity / 2;
}

}  // namespace

IndexKey::IndexKey(const char* nameSpace, const char* identifier)
    : nameSpace(nameSpace),
      identifier(identifier),
      namespaceLength(static_cast<std::uint32_t>(std::strlen(nameSpace))),
      identifierLength(static_cast<std::uint32_t>(std::strlen(identifier))),
      hash(finish(
          hashBytes(hashBytes(0, nameSpace, namespaceLength), identifier, identifierLength))) {}

bool operator==(const IndexKey& a, const IndexKey& b) {
  return a.hash == b.hash && a.namespaceLength == b.namespaceLength &&
         a.identifierLength == b.identifierLength &&
         std::memcmp(a.identifier, b.identifier, a.identifierLength) == 0 &&
         std::memcmp(a.nameSpace, b.nameSpace, a.namespaceLength) == 0;
}

KeyGroup* KeyGroup::make(IndexArena& arena, std::uint32_t capacity, std::uint32_t namespaceLength,
                         std::uint32_t identifierLength) {
  void* memory = arena.allocate(blockSize(capacity, namespaceLength + identifierLength));
  KeyGroup* group = new (memory) KeyGroup();
  group->capacity = capacity;
  group->namespaceLength = namespaceLength;
  group->identifierLength = identifierLength;
  return group;
}

void KeyGroup::put(std::uint32_t position, MTE* entry) {
  entries()[position] = entry;
  texts()[position] = entry->getText();
  languages()[position] = entry->getLanguage();
  severities()[position] = entry->getSeverity();
}

void KeyGroup::move(std::uint32_t to, std::uint32_t from, std::uint32_t n) {
  std::memmove(entries() + to, entries() + from, n * sizeof(MTE*));
  std::memmove(texts() + to, texts() + from, n * sizeof(const char*));
  std::memmove(languages() + to, languages() + from, n * sizeof(Language));
  std::memmove(severities() + to, severities() + from, n * sizeof(short));
}

void KeyGroup::copyFrom(const KeyGroup& other) {
  count = other.count;
  std::memcpy(entries(), other.entries(), count * sizeof(MTE*));
  std::memcpy(texts(), other.texts(), count * sizeof(const char*));
  std::memcpy(languages(), other.languages(), count * sizeof(Language));
  std::memcpy(severities(), other.severities(), count * sizeof(short));
  std::memcpy(keyBytes(), other.keyBytes(), namespaceLength + identifierLength);
}

KeyIndex::~KeyIndex() {
  clear();
}

void KeyIndex::clear() {
  if (slots == nullptr) {
    return;
  }
  // The arena forgets its groups at once; only large ones need a walk.
  for (std::size_t i = 0; largeGroups > 0 && i <= mask; ++i) {
    KeyGroup* group = slots[i].group;
    if (group != nullptr && group->blockSize() > IndexArena::kLargestPooled) {
      arena.release(group, group->blockSize());
      --largeGroups;
    }
  }
  arena.clear();
  releaseTable(slots, (mask + 1) * sizeof(Slot));
  slots = nullptr;
  mask = 0;
  used = 0;
}

void KeyIndex::reserve(std::size_t keys) {
  // The same fill limit as slotFor keeps.
  const std::size_t needed = keys + keys / 3 + 1;
  if (slots == nullptr || needed > mask + 1) {
    growSlots(needed);
  }
}

void KeyIndex::growSlots(std::size_t atLeast) {
  std::size_t count = slots == nullptr ? kInitialSlots : 2 * (mask + 1);
  while (count < atLeast) {
    count *= 2;
  }
  Slot* grown = static_cast<Slot*>(allocateTable(count * sizeof(Slot)));
  const std::size_t grownMask = count - 1;
  if (slots != nullptr) {
    for (std::size_t i = 0; i <= mask; ++i) {
      if (slots[i].group == nullptr) {
        continue;
      }
      std::size_t j = slots[i].hash & grownMask;
      while (grown[j].group != nullptr) {
        j = (j + 1) & grownMask;
      }
      grown[j] = slots[i];
    }
    releaseTable(slots, (mask + 1) * sizeof(Slot));
  }
  slots = grown;
  mask = grownMask;
}

KeyIndex::Slot& KeyIndex::slotFor(const IndexKey& key, std::uint32_t capacity) {
  if (slots != nullptr) {
    Slot& slot = slotOf(key);
    if (slot.group != nullptr) {
      return slot;
    }
  }
  // At most three quarters full, so that probes stay short.
  if (slots == nullptr || 4 * (used + 1) > 3 * (mask + 1)) {
    growSlots();
  }
  KeyGroup* group = KeyGroup::make(arena, capacity, key.namespaceLength, key.identifierLength);
  noteBlock(group->blockSize(), true);
  std::memcpy(group->keyBytes(), key.nameSpace, key.namespaceLength);
  std::memcpy(group->keyBytes() + key.namespaceLength, key.identifier, key.identifierLength);
  Slot& slot = slotOf(key);
  slot.hash = key.hash;
  slot.group = group;
  ++used;
  return slot;
}

KeyGroup* KeyIndex::regrown(KeyGroup* group, std::uint32_t capacity) {
  KeyGroup* grown =
      KeyGroup::make(arena, capacity, group->namespaceLength, group->identifierLength);
  grown->copyFrom(*group);
  noteBlock(grown->blockSize(), true);
  noteBlock(group->blockSize(), false);
  arena.release(group, group->blockSize());
  return grown;
}

void KeyIndex::prepend(const IndexKey& key, MTE* entry) {
  // Room for two at once: most keys come in more than one language.
  Slot& slot = slotFor(key, 2);
  KeyGroup*& group = slot.group;
  if (group->count == group->capacity) {
    group = regrown(group, grownCapacity(group->capacity));
  }
  group->move(1, 0, group->count);
  group->put(0, entry);
  ++group->count;
}

bool KeyIndex::replace(const IndexKey& key, const MTE* existing, MTE* entry) {
  if (slots == nullptr) {
    return false;
  }
  Slot& slot = slotOf(key);
  KeyGroup* group = slot.group;
  if (group == nullptr) {
    return false;
  }
  for (std::uint32_t i = 0; i < group->count; ++i) {
    if (group->entries()[i] == existing) {
      group->put(i, entry);
      return true;
    }
  }
  return false;
}

void KeyIndex::refresh(const IndexKey& key, const MTE* entry) {
  KeyGroup* group = slots == nullptr ? nullptr : slotOf(key).group;
  for (std::uint32_t i = 0; group != nullptr && i < group->count; ++i) {
    if (group->entries()[i] == entry) {
      group->texts()[i] = entry->getText();
      return;
    }
  }
}

void KeyIndex::remove(const IndexKey& key, const MTE* entry) {
  if (slots == nullptr) {
    return;
  }
  Slot& slot = slotOf(key);
  KeyGroup* group = slot.group;
  if (group == nullptr) {
    return;
  }
  for (std::uint32_t i = 0; i < group->count; ++i) {
    if (group->entries()[i] == entry) {
      group->move(i, i + 1, group->count - i - 1);
      --group->count;
      return;
    }
  }
}

void KeyIndex::assign(const IndexKey& key, MTE* const* entries, std::uint32_t count) {
  const std::uint32_t capacity = count > 0 ? count : 1;
  Slot& slot = slotFor(key, capacity);
  KeyGroup*& group = slot.group;
  if (group->capacity < count) {
    group = regrown(group, capacity);
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    group->put(i, entries[i]);
  }
  group->count = count;
}

}  // namespace msg
