// W1 lookup: one key of the fixed sequence to its text in the preferred
// language (de-AT, de, en), per contender. W4 scale: the msg lookup at
// catalogue sizes from 1,000 to 1,000,000 keys, with the shape of the table.

#include <benchmark/benchmark.h>
#include <libintl.h>

#include <map>
#include <memory>

#include "AllocationCounter.h"
#include "BenchSupport.h"
#include "Peers.h"
#include "msg/Message.h"

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

}  // namespace
}  // namespace msg_bench
