// BenchSupport: what the workloads share: where the generated catalogue
// lies, the catalogue content in memory, msg handlers filled with it, and
// the chain statistics of a handler's table.

#ifndef MSG_BENCH_BENCHSUPPORT_H_
#define MSG_BENCH_BENCHSUPPORT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "CatalogueData.h"
#include "msg/MessageHandler.h"

namespace msg_bench {

// The directory that generate_catalogue, msgfmt and genrb wrote to. Set
// once by main() before any benchmark runs.
void setCatalogueDir(std::string dir);
const std::string& catalogueDir();

// Length of every key sequence (a power of two, so a cursor wraps with a
// mask): long enough that no workload replays a few keys whose data stay in
// the cache.
inline constexpr std::size_t kSequenceLength = 1 << 16;

// The entries of the standard catalogue and its key sequence, made once.
const std::vector<Entry>& standardEntries();
const std::vector<std::uint32_t>& standardSequence();

// The preference of every contender: de-AT, then de, then en.
msg::LanguageList preferredLanguages();

// Registers the catalogue of `keyCount` keys in `handler` the way the
// document loader does: for each key in document order its en, de and
// (every tenth key) de-AT texts, as entries that copy their strings.
void fillHandler(msg::MessageHandler& handler, std::size_t keyCount);

// A root handler with the preferred languages and the standard catalogue,
// made on first use and kept for the whole run.
msg::MessageHandler& standardHandler();

// Shape of a handler's table, and what a lookup of `sequence` reads.
struct ChainStatistics {
  std::uint32_t buckets = 0;
  std::uint32_t entries = 0;
  double meanChain = 0;  // entries / buckets
  std::uint32_t longestChain = 0;
  double chainPerLookup = 0;   // mean length of the chain of a looked-up key
  double rankedPerLookup = 0;  // mean number of entries a lookup ranks (its key's)
};
ChainStatistics chainStatistics(const msg::MessageHandler& handler,
                                const std::vector<std::uint32_t>& sequence);

// The identifiers of keys 0 .. keyCount-1, NUL-terminated one after the
// other in one block, as string literals lie in a program.
struct IdentifierPool {
  std::vector<char> bytes;
  std::vector<std::size_t> offsets;  // of each identifier in `bytes`

  const char* operator[](std::size_t index) const { return bytes.data() + offsets[index]; }
};
IdentifierPool identifierPool(std::size_t keyCount);

// The identifiers of `sequence`, in its order, as pointers into `pool`.
std::vector<const char*> sequenceKeys(const IdentifierPool& pool,
                                      const std::vector<std::uint32_t>& sequence);

}  // namespace msg_bench

#endif  // MSG_BENCH_BENCHSUPPORT_H_
