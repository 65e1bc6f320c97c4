#include "BenchSupport.h"

#include <algorithm>
#include <utility>

#include "message_core/MessageTable.h"
#include "msg/MTE.h"

namespace msg_bench {
namespace {

std::string& catalogueDirSlot() {
  static std::string dir;
  return dir;
}

// Reaches the table of a handler through the accessor that MessageHandler
// offers to derived classes.
class TableAccess : public msg::MessageHandler {
 public:
  static const msg::MessageTable* of(const msg::MessageHandler& handler) {
    return messageTableOf(handler);
  }
};

}  // namespace

void setCatalogueDir(std::string dir) {
  catalogueDirSlot() = std::move(dir);
}

const std::string& catalogueDir() {
  return catalogueDirSlot();
}

const std::vector<Entry>& standardEntries() {
  static const std::vector<Entry> entries = [] {
    std::vector<Entry> made;
    made.reserve(kStandardKeyCount);
    for (std::size_t i = 0; i < kStandardKeyCount; ++i) {
      made.push_back(makeEntry(i));
    }
    return made;
  }();
  return entries;
}

const std::vector<std::uint32_t>& standardSequence() {
  static const std::vector<std::uint32_t> sequence =
      keySequence(kStandardKeyCount, kSequenceLength);
  return sequence;
}

msg::LanguageList preferredLanguages() {
  const msg::Language languages[] = {msg::Language("de-AT"), msg::Language("de"),
                                     msg::Language("en")};
  return msg::LanguageList(3, languages);
}

void fillHandler(msg::MessageHandler& handler, std::size_t keyCount) {
  for (std::size_t i = 0; i < keyCount; ++i) {
    const Entry entry = makeEntry(i);
    const short severity = static_cast<short>(i % 4);
    // The table owns entries that copy their strings.
    new msg::MTE(severity, "en", kNamespace, entry.identifier.c_str(),
                 entry.english.render(PlaceholderSyntax::kMsg).c_str(), &handler, false, true);
    new msg::MTE(severity, "de", kNamespace, entry.identifier.c_str(),
                 entry.german.render(PlaceholderSyntax::kMsg).c_str(), &handler, false, true);
    if (hasAustrianText(i)) {
      new msg::MTE(severity, "de-AT", kNamespace, entry.identifier.c_str(),
                   entry.austrian.render(PlaceholderSyntax::kMsg).c_str(), &handler, false, true);
    }
  }
}

msg::MessageHandler& standardHandler() {
  static msg::MessageHandler* handler = [] {
    auto* made = new msg::MessageHandler();
    made->setLanguageList(preferredLanguages());
    fillHandler(*made, kStandardKeyCount);
    return made;
  }();
  return *handler;
}

ChainStatistics chainStatistics(const msg::MessageHandler& handler,
                                const std::vector<std::uint32_t>& sequence) {
  const msg::MessageTable* table = TableAccess::of(handler);
  ChainStatistics stats;
  stats.buckets = table->getSize();
  stats.entries = table->getCount();
  stats.meanChain = static_cast<double>(stats.entries) / stats.buckets;
  for (std::uint32_t bucket = 0; bucket < stats.buckets; ++bucket) {
    stats.longestChain = std::max(stats.longestChain, table->chainLength(bucket));
  }
  if (!sequence.empty()) {
    double chained = 0;
    double ranked = 0;
    for (std::uint32_t index : sequence) {
      const std::string identifier = makeIdentifier(index);
      chained += table->chainLength(table->tableHash(kNamespace, identifier.c_str()));
      ranked += table->keyEntryCount(kNamespace, identifier.c_str());
    }
    stats.chainPerLookup = chained / static_cast<double>(sequence.size());
    stats.rankedPerLookup = ranked / static_cast<double>(sequence.size());
  }
  return stats;
}

IdentifierPool identifierPool(std::size_t keyCount) {
  IdentifierPool pool;
  for (std::size_t i = 0; i < keyCount; ++i) {
    const std::string identifier = makeIdentifier(i);
    pool.offsets.push_back(pool.bytes.size());
    pool.bytes.insert(pool.bytes.end(), identifier.begin(), identifier.end());
    pool.bytes.push_back('\0');
  }
  return pool;
}

std::vector<const char*> sequenceKeys(const IdentifierPool& pool,
                                      const std::vector<std::uint32_t>& sequence) {
  std::vector<const char*> keys;
  keys.reserve(sequence.size());
  for (std::uint32_t index : sequence) {
    keys.push_back(pool[index]);
  }
  return keys;
}

}  // namespace msg_bench
