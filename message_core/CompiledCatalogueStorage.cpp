#include "message_core/CompiledCatalogueStorage.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "message_core/KeyIndex.h"
#include "msg/MTE.h"

namespace msg {

namespace {

// One text that a lookup weighs. Times order events: a table entry added
// after n loads in place has time 2n, the texts of load n (counted from 1)
// time 2n - 1; `order` breaks ties within one time (chain position or file
// order, the later the higher).
struct Candidate {
  Language language;
  int rank;
  std::uint64_t content;  // when its text was registered
  std::uint64_t arrival;  // when its key and language first arrived
  MTE* entry;             // null for a text of a catalogue
  CompiledCatalogueStorage::Text text;
  std::uint32_t catalogue;
};

std::uint64_t when(std::uint32_t time, std::uint32_t order) {
  return std::uint64_t{time} << 32 | order;
}

}  // namespace

// Room for the texts of a key, on the stack unless a key has very many.
// The room is not initialised: a lookup uses two or three places of it.
class LookupCandidates {
 public:
  LookupCandidates() {}  // NOLINT(modernize-use-equals-default): leaves the room as it is

  void add(const Candidate& candidate) {
    if (count < kRoom) {
      new (&inline_[count]) Candidate(candidate);
    } else {
      if (count == kRoom) {
        spilled.assign(inline_, inline_ + kRoom);
      }
      spilled.push_back(candidate);
    }
    ++count;
  }
  std::uint32_t size() const { return count; }
  const Candidate& operator[](std::uint32_t i) const {
    return count <= kRoom ? inline_[i] : spilled[i];
  }

 private:
  static constexpr std::uint32_t kRoom = 16;
  union {
    Candidate inline_[kRoom];
  };
  std::vector<Candidate> spilled;
  std::uint32_t count = 0;
};

namespace {

// For each language the latest text; of those the best rank, and at equal
// rank the language that arrived last. Null if no candidate.
const Candidate* bestOf(const LookupCandidates& candidates) {
  std::uint32_t best = 0;
  int bestRank = -1;
  std::uint64_t bestArrival = 0;
  for (std::uint32_t i = 0; i < candidates.size(); ++i) {
    const Candidate& candidate = candidates[i];
    bool latest = true;
    std::uint64_t arrival = candidate.arrival;
    for (std::uint32_t j = 0; j < candidates.size() && latest; ++j) {
      if (j != i && candidates[j].language == candidate.language) {
        latest = candidates[j].content < candidate.content;
        arrival = std::min(arrival, candidates[j].arrival);
      }
    }
    if (latest && (bestRank < 0 || candidate.rank < bestRank ||
                   (candidate.rank == bestRank && arrival > bestArrival))) {
      best = i;
      bestRank = candidate.rank;
      bestArrival = arrival;
    }
  }
  return bestRank < 0 ? nullptr : &candidates[best];
}

// Room for the texts a catalogue has of one key, not initialised: textsOf()
// constructs what it writes.
union TextRoom {
  TextRoom() {}  // NOLINT(modernize-use-equals-default): leaves the room as it is
  CompiledCatalogueStorage::Text texts[16];
};

}  // namespace

CompiledCatalogueStorage::~CompiledCatalogueStorage() = default;

CompiledCatalogueStorage::Stamp CompiledCatalogueStorage::stampOf(const MTE* entry) const {
  const auto found = stamps.find(entry);
  return found != stamps.end() ? found->second : Stamp();
}

void CompiledCatalogueStorage::stamp(const MTE* entry, const MTE* replaced) {
  Stamp stamp;
  stamp.content = catalogues;
  stamp.arrival = replaced != nullptr ? stampOf(replaced).arrival : catalogues;
  stamps[entry] = stamp;
}

void CompiledCatalogueStorage::addTableTexts(const KeyGroup& group, const LanguageList& list,
                                             LookupCandidates& candidates) const {
  for (std::uint32_t i = 0; i < group.size(); ++i) {
    const int rank = list.distance(group.language(i));
    if (rank < 0) {
      continue;
    }
    const Stamp stamp = stamps.empty() ? Stamp() : stampOf(group.entry(i));
    const std::uint32_t order = group.size() - i;  // the chain's head is the latest
    candidates.add(Candidate{
        group.language(i), rank, when(2 * stamp.content, order), when(2 * stamp.arrival, order),
        group.entry(i),
        Text{nullptr, nullptr, group.text(i), group.language(i), group.severity(i), 0}, 0});
  }
}

void CompiledCatalogueStorage::addCatalogueTexts(const Key& key, const LanguageList& list,
                                                 LookupCandidates& candidates) const {
  constexpr std::uint32_t kRoom = sizeof(TextRoom::texts) / sizeof(Text);
  TextRoom room;
  Text* const texts = room.texts;
  std::vector<Text> many;
  for (std::uint32_t c = 0; c < catalogues; ++c) {
    std::uint32_t found = textsOf(c, key, texts, kRoom);
    const Text* read = texts;
    if (found > kRoom) {
      many.resize(found);
      found = std::min(found, textsOf(c, key, many.data(), found));
      read = many.data();
    }
    for (std::uint32_t j = 0; j < found; ++j) {
      const int rank = list.distance(read[j].language);
      if (rank >= 0) {
        const std::uint64_t time = when(2 * c + 1, j);
        candidates.add(Candidate{read[j].language, rank, time, time, nullptr, read[j], c});
      }
    }
  }
}

MessageTable::Choice CompiledCatalogueStorage::findBest(const MessageTable& table,
                                                        const char* nameSpace,
                                                        const char* identifier,
                                                        const LanguageList& list) const {
  Key key{nameSpace, std::strlen(nameSpace), identifier, std::strlen(identifier), 0};
  // First, so that the catalogues' memory is on its way while the table
  // is asked.
  key.hash = prepare(key);
  LookupCandidates candidates;
  // The table's index key hashes the key its own way; an empty table
  // needs none.
  if (table.getCount() > 0) {
    const KeyGroup* group = table.groupOf(IndexKey(nameSpace, identifier));
    if (group != nullptr) {
      addTableTexts(*group, list, candidates);
    }
  }
  addCatalogueTexts(key, list, candidates);

  const Candidate* const best = bestOf(candidates);
  if (best == nullptr) {
    return MessageTable::Choice();
  }
  MessageTable::Choice choice;
  choice.entry = best->entry;
  choice.text = best->text.text;
  choice.language = best->language;
  choice.severity = best->text.severity;
  if (best->entry != nullptr) {
    choice.forms = table.pluralFormsOf(best->entry);
  } else {
    choice.nameSpace = best->text.nameSpace;
    choice.identifier = best->text.identifier;
    choice.forms = formsOf(best->catalogue, best->text);
  }
  return choice;
}

}  // namespace msg
