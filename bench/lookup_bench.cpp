// W1 lookup: one key of the fixed sequence to its text in the preferred
// language (de-AT, de, en), per contender. W4 scale: the msg lookup at
// catalogue sizes from 1,000 to 1,000,000 keys, with the shape of the table.
// W1c and W4c: the same lookups from a compiled catalogue of the same texts
// read in place, beside gettext's at 10,000 and 1,000,000 keys, with the
// heap the load leaves per text.

#include <benchmark/benchmark.h>
#include <libintl.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include "AllocationCounter.h"
#include "BenchSupport.h"
#include "Peers.h"
#include "compiled_catalogues/CompiledCatalogueReader.h"
#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "msg/Message.h"
#include "platform/AtomicFile.h"
#include "platform/MappedFile.h"

namespace msg_bench {
namespace {

constexpr std::size_t kMask = kSequenceLength - 1;

void reportChains(benchmark::State& state, const ChainStatistics& stats) {
  state.counters["buckets"] = stats.buckets;
  state.counters["entries"] = stats.entries;
  state.counters["mean_chain"] = stats.meanChain;
  state.counters["longest_chain"] = stats.longestChain;
  state.counters["chain_per_lookup"] = stats.chainPerLookup;
  state.counters["ranked_per_lookup"] = stats.rankedPerLookup;
}

// getMessage makes a record that borrows the entry's strings; the caller
// deletes it. Both belong to the cost of a lookup.
void lookupMsg(benchmark::State& state, msg::MessageHandler& handler,
               const std::vector<const char*>& keys) {
  std::size_t next = 0;
  const std::uint64_t allocationsBefore = allocationCount();
  for (auto _ : state) {
    msg::Message* message = handler.getMessage(kNamespace, keys[next++ & kMask]);
    benchmark::DoNotOptimize(message->getMessage());
    delete message;
  }
  state.counters["allocs_per_op"] =
      benchmark::Counter(static_cast<double>(allocationCount() - allocationsBefore),
                         benchmark::Counter::kAvgIterations);
}

void W1Msg(benchmark::State& state) {
  msg::MessageHandler& handler = standardHandler();
  static const ChainStatistics chains = chainStatistics(handler, standardSequence());
  lookupMsg(state, handler, standardSequenceKeys());
  reportChains(state, chains);
}
BENCHMARK(W1Msg)->Name("W1_lookup/msg");

void W1Floor(benchmark::State& state) {
  const auto& map = floorMap();
  const std::vector<const char*>& keys = standardSequenceKeys();
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(map.find(keys[next++ & kMask])->second);
  }
}
BENCHMARK(W1Floor)->Name("W1_lookup/unordered_map");

#ifdef MSG_BENCH_WITH_GETTEXT
void W1Gettext(benchmark::State& state) {
  static const std::string problem = checkGettext();
  if (!problem.empty()) {
    state.SkipWithError(problem.c_str());
    return;
  }
  const char* domain = gettextDomain();
  const std::vector<const char*>& keys = standardSequenceKeys();
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(dcgettext(domain, keys[next++ & kMask], LC_MESSAGES));
  }
}
BENCHMARK(W1Gettext)->Name("W1_lookup/gettext");
#endif

#ifdef MSG_BENCH_WITH_ICU
void W1Icu(benchmark::State& state) {
  static const std::string problem = checkIcu();
  if (!problem.empty()) {
    state.SkipWithError(problem.c_str());
    return;
  }
  UResourceBundle* bundle = icuBundle();
  const std::vector<const char*>& keys = standardSequenceKeys();
  std::size_t next = 0;
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    benchmark::DoNotOptimize(ures_getStringByKey(bundle, keys[next++ & kMask], &length, &status));
  }
}
BENCHMARK(W1Icu)->Name("W1_lookup/icu");
#endif

// A handler of `keyCount` keys, its key sequence, and what filling it cost.
struct ScaledCatalogue {
  msg::MessageHandler handler;
  IdentifierPool identifiers;
  std::vector<std::uint32_t> sequence;
  std::vector<const char*> keys;
  double heapBytesPerEntry = 0;
  ChainStatistics chains;
};

// Made on first use for each size and kept, so that repetitions measure the
// same table and the million-key catalogue is built once.
ScaledCatalogue& scaledCatalogue(std::size_t keyCount) {
  static std::map<std::size_t, std::unique_ptr<ScaledCatalogue>> made;
  std::unique_ptr<ScaledCatalogue>& slot = made[keyCount];
  if (slot == nullptr) {
    slot = std::make_unique<ScaledCatalogue>();
    slot->handler.setLanguageList(preferredLanguages());
    const std::uint64_t heapBefore = heapBytesInUse();
    fillHandler(slot->handler, keyCount);
    const std::uint64_t heapAfter = heapBytesInUse();
    slot->identifiers = identifierPool(keyCount);
    slot->sequence = keySequence(keyCount, kSequenceLength);
    slot->keys = sequenceKeys(slot->identifiers, slot->sequence);
    slot->chains = chainStatistics(slot->handler, slot->sequence);
    slot->heapBytesPerEntry =
        static_cast<double>(heapAfter - heapBefore) / static_cast<double>(slot->chains.entries);
  }
  return *slot;
}

void W4Scale(benchmark::State& state) {
  ScaledCatalogue& catalogue = scaledCatalogue(static_cast<std::size_t>(state.range(0)));
  lookupMsg(state, catalogue.handler, catalogue.keys);
  reportChains(state, catalogue.chains);
  state.counters["heap_bytes_per_entry"] = catalogue.heapBytesPerEntry;
}
BENCHMARK(W4Scale)->Name("W4_scale/msg")->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000);

// The texts that fillHandler(keyCount) registers, as a compiled catalogue
// read in place by a handler with the preferred languages; made once per
// size and kept.
struct InPlaceCatalogue {
  std::string path;
  msg::MessageHandler handler;
  IdentifierPool identifiers;
  std::vector<const char*> keys;
  double heapBytesPerEntry = 0;
  double texts = 0;
};

InPlaceCatalogue& inPlaceCatalogue(std::size_t keyCount) {
  static std::map<std::size_t, std::unique_ptr<InPlaceCatalogue>> made;
  std::unique_ptr<InPlaceCatalogue>& slot = made[keyCount];
  if (slot == nullptr) {
    const std::string path = catalogueDir() + "/scale-" + std::to_string(keyCount) + ".msgc";
    {
      msg::CompiledCatalogueWriter writer;
      for (std::size_t i = 0; i < keyCount; ++i) {
        const Entry entry = makeEntry(i);
        const auto severity = static_cast<msg::SeverityLevel>(i % 4);
        writer.add(severity, "en", kNamespace, entry.identifier,
                   entry.english.render(PlaceholderSyntax::kMsg));
        writer.add(severity, "de", kNamespace, entry.identifier,
                   entry.german.render(PlaceholderSyntax::kMsg));
        if (hasAustrianText(i)) {
          writer.add(severity, "de-AT", kNamespace, entry.identifier,
                     entry.austrian.render(PlaceholderSyntax::kMsg));
        }
      }
      writer.writeFile(path);
    }
    slot = std::make_unique<InPlaceCatalogue>();
    slot->path = path;
    slot->handler.setLanguageList(preferredLanguages());
    const std::uint64_t heapBefore = heapBytesInUse();
    slot->handler.loadCompiledCatalogue(path.c_str());
    const std::uint64_t heapAfter = heapBytesInUse();
    for (std::size_t i = 0; i < keyCount; ++i) {
      slot->texts += hasAustrianText(i) ? 3 : 2;
    }
    slot->heapBytesPerEntry = static_cast<double>(heapAfter - heapBefore) / slot->texts;
    slot->identifiers = identifierPool(keyCount);
    slot->keys = sequenceKeys(slot->identifiers, keySequence(keyCount, kSequenceLength));
  }
  return *slot;
}

void W1Compiled(benchmark::State& state) {
  InPlaceCatalogue& catalogue = inPlaceCatalogue(kStandardKeyCount);
  lookupMsg(state, catalogue.handler, standardSequenceKeys());
}
BENCHMARK(W1Compiled)->Name("W1c_lookup/msg");

void W4Compiled(benchmark::State& state) {
  InPlaceCatalogue& catalogue = inPlaceCatalogue(static_cast<std::size_t>(state.range(0)));
  lookupMsg(state, catalogue.handler, catalogue.keys);
  state.counters["heap_bytes_per_entry"] = catalogue.heapBytesPerEntry;
  state.counters["texts"] = catalogue.texts;
}
BENCHMARK(W4Compiled)->Name("W4c_scale/msg")->Arg(10000)->Arg(1000000);

// What the lookup in place cannot go below. At a million keys a lookup
// waits for memory three times, one read after the other: the caller's key
// (to hash it), the key's slot, and the key's first entry with its
// identifier string. W4c_reads/find does only that, through the reader the
// handler uses, on the same file and keys as W4c_scale/msg: no ranking, no
// record. W4c_reads/one_slot_per_key is a layout the format does not have,
// kept here to show what it would gain: a 64-byte slot that holds the key's
// hash, its identifier and its text's offset, so that the slot is the last
// read (two in all). Neither checks what a damaged file could hold.

// The file mapped as the loader maps it, read at random.
std::unique_ptr<msg::platform::MappedFile> mapped(const std::string& path) {
  auto file = std::make_unique<msg::platform::MappedFile>(path.c_str());
  if (!file->problem().empty()) {
    throw std::runtime_error(path + ": " + file->problem());
  }
  file->readAtRandom();
  return file;
}

void W4ReadsFind(benchmark::State& state) {
  InPlaceCatalogue& catalogue = inPlaceCatalogue(static_cast<std::size_t>(state.range(0)));
  const auto file = mapped(catalogue.path);
  const msg::CompiledCatalogueReader reader(file->bytes(), file->length());
  const std::size_t namespaceLength = std::strlen(kNamespace);
  std::size_t next = 0;
  for (auto _ : state) {
    const char* identifier = catalogue.keys[next++ & kMask];
    const std::size_t length = std::strlen(identifier);
    const auto found = reader.find(
        msg::CompiledCatalogueReader::hashOf(kNamespace, namespaceLength, identifier, length),
        kNamespace, namespaceLength, identifier, length);
    msg::CompiledCatalogueReader::Entry entry{};
    if (found.texts == 0 ||
        !reader.checkedEntry(found.first, found.nameSpace, found.identifier, entry)) {
      state.SkipWithError("a key of the sequence is not in the catalogue");
      return;
    }
    benchmark::DoNotOptimize(entry.text);
  }
}
BENCHMARK(W4ReadsFind)->Name("W4c_reads/find")->Arg(10000)->Arg(1000000);

constexpr std::size_t kWideSlot = 64;
constexpr std::size_t kWideIdentifier = kWideSlot - 8;  // behind the hash and the text offset

// The layout of W4c_reads/one_slot_per_key for the keys of W4, written as
// the library writes its files. Identifiers are shorter than kWideIdentifier.
std::string writeWideSlots(const IdentifierPool& identifiers, std::size_t keyCount,
                           std::size_t slotCount) {
  std::vector<unsigned char> slots(slotCount * kWideSlot, 0);
  const std::size_t namespaceLength = std::strlen(kNamespace);
  for (std::size_t key = 0; key < keyCount; ++key) {
    const char* identifier = identifiers[key];
    const std::size_t length = std::strlen(identifier);
    const std::uint32_t hash =
        msg::CompiledCatalogueReader::hashOf(kNamespace, namespaceLength, identifier, length);
    std::size_t slot = hash & (slotCount - 1);
    while (slots[slot * kWideSlot + 8] != 0) {
      slot = (slot + 1) & (slotCount - 1);
    }
    unsigned char* at = slots.data() + slot * kWideSlot;
    const auto textOffset = static_cast<std::uint32_t>(key);
    std::memcpy(at, &hash, 4);
    std::memcpy(at + 4, &textOffset, 4);
    std::memcpy(at + 8, identifier, std::min(length, kWideIdentifier - 1));
  }
  std::string path = catalogueDir() + "/wide-slots-" + std::to_string(keyCount) + ".bin";
  msg::platform::replaceFileAtomically(path, slots.data(), slots.size());
  return path;
}

void W4ReadsWideSlot(benchmark::State& state) {
  const auto keyCount = static_cast<std::size_t>(state.range(0));
  InPlaceCatalogue& catalogue = inPlaceCatalogue(keyCount);
  std::size_t slotCount = 1;
  while (slotCount < 2 * keyCount) {
    slotCount *= 2;
  }
  static std::map<std::size_t, std::string> written;
  std::string& path = written[keyCount];
  if (path.empty()) {
    path = writeWideSlots(catalogue.identifiers, keyCount, slotCount);
  }
  const auto file = mapped(path);
  const std::size_t namespaceLength = std::strlen(kNamespace);
  std::size_t next = 0;
  for (auto _ : state) {
    const char* identifier = catalogue.keys[next++ & kMask];
    const std::size_t length = std::strlen(identifier);
    const std::uint32_t hash =
        msg::CompiledCatalogueReader::hashOf(kNamespace, namespaceLength, identifier, length);
    const unsigned char* text = nullptr;
    for (std::size_t slot = hash & (slotCount - 1);; slot = (slot + 1) & (slotCount - 1)) {
      const unsigned char* at = file->bytes() + slot * kWideSlot;
      if (at[8] == 0) {
        break;
      }
      if (std::memcmp(at, &hash, 4) == 0 &&
          std::strncmp(reinterpret_cast<const char*>(at + 8), identifier, kWideIdentifier) == 0) {
        std::uint32_t offset = 0;
        std::memcpy(&offset, at + 4, 4);
        text = file->bytes() + offset;
        break;
      }
    }
    if (text == nullptr) {
      state.SkipWithError("a key of the sequence is not in the wide slots");
      return;
    }
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(W4ReadsWideSlot)->Name("W4c_reads/one_slot_per_key")->Arg(1000000);

#ifdef MSG_BENCH_WITH_GETTEXT
// gettext's lookup in the catalogue of `keyCount` keys: the standard one,
// or the million-key one that the build makes beside it.
void W4Gettext(benchmark::State& state) {
  const auto keyCount = static_cast<std::size_t>(state.range(0));
  static const char* million = [] {
    const std::string dir = catalogueDir() + "-1m/locale";
    bindtextdomain("msgbench1m", dir.c_str());
    bind_textdomain_codeset("msgbench1m", "UTF-8");
    return "msgbench1m";
  }();
  const char* domain = keyCount == kStandardKeyCount ? gettextDomain() : million;
  static std::map<std::size_t, std::pair<IdentifierPool, std::vector<const char*>>> made;
  auto& [identifiers, keys] = made[keyCount];
  if (keys.empty()) {
    identifiers = identifierPool(keyCount);
    keys = sequenceKeys(identifiers, keySequence(keyCount, kSequenceLength));
  }
  if (dcgettext(domain, keys[0], LC_MESSAGES) == keys[0]) {
    state.SkipWithError("gettext: the catalogue of this size gives no translation");
    return;
  }
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(dcgettext(domain, keys[next++ & kMask], LC_MESSAGES));
  }
}
BENCHMARK(W4Gettext)->Name("W4c_scale/gettext")->Arg(10000)->Arg(1000000);
#endif

}  // namespace
}  // namespace msg_bench
