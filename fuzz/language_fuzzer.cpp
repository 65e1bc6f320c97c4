// Fuzzes language tags, language lists and the lookup that ranks entries.
//
// One input packs tags (checked against the documented packing and a round
// trip through toString()), builds language lists (checked after copy and
// assignment), ranks languages against them (checked against a model of
// distance()), and fills a handler and a child handler with entries of a few
// keys in many languages, each lookup checked against a model of the chains
// that picks the best-ranked entry, the one added last among equals, and
// against the rule applied to the table's actual chains. An input may fill
// a table to the point where the next addition grows it: growth reverses
// the order of each key's entries, which decides ties from then on, and the
// lookups that follow must see exactly that.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "message_core/MessageTable.h"
#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandler.h"

namespace {

void fail(const char* what, const std::string& detail) {
  std::fprintf(stderr, "model mismatch: %s: %s\n", what, detail.c_str());
  std::abort();
}

std::string bytesOf(msg::Language language) {
  char text[32];
  std::snprintf(text, sizeof text, "%02x %02x %02x %02x",
                static_cast<unsigned char>(language.tagChars[0]),
                static_cast<unsigned char>(language.tagChars[1]),
                static_cast<unsigned char>(language.tagChars[2]),
                static_cast<unsigned char>(language.tagChars[3]));
  return text;
}

// The documented packing: two language bytes, and the two bytes behind a
// "-" in third place as the region; nothing is read past the tag's end.
msg::Language packModel(const std::string& tag) {
  msg::Language language;
  const std::size_t length = tag.size();
  language.tagChars[0] = length >= 1 ? tag[0] : 0;
  language.tagChars[1] = length >= 2 ? tag[1] : 0;
  if (length >= 4 && tag[2] == '-') {
    language.tagChars[2] = tag[3];
    language.tagChars[3] = length >= 5 ? tag[4] : 0;
  }
  return language;
}

// The documented ranking: exact match 3i at once, else the first bare
// position 3i+1, else the last other-region position 3i+2, else -1.
int distanceModel(const std::vector<msg::Language>& list, msg::Language language) {
  int bare = -1;
  int otherRegion = -1;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const msg::Language& entry = list[i];
    if (entry.tagChars[0] != language.tagChars[0] || entry.tagChars[1] != language.tagChars[1]) {
      continue;
    }
    if (entry == language) {
      return 3 * static_cast<int>(i);
    }
    if (entry.tagChars[2] == 0 && entry.tagChars[3] == 0) {
      bare = bare < 0 ? static_cast<int>(i) : bare;
    } else {
      otherRegion = static_cast<int>(i);
    }
  }
  return bare >= 0 ? 3 * bare + 1 : (otherRegion >= 0 ? 3 * otherRegion + 2 : -1);
}

std::string pickTag(FuzzedDataProvider& data) {
  static const char* const kTags[] = {"de", "de-AT", "de-CH", "en",   "en-GB", "en-US",
                                      "fr", "d",     "de-",   "de-A", "",      "de-AT-1996"};
  if (data.ConsumeIntegralInRange(0, 3) == 0) {
    return data.ConsumeRandomLengthString(8).c_str();
  }
  return kTags[data.ConsumeIntegralInRange<std::size_t>(0, sizeof kTags / sizeof kTags[0] - 1)];
}

msg::Language pickLanguage(FuzzedDataProvider& data) {
  const std::string tag = pickTag(data);
  const msg::Language packed(tag.c_str());
  if (packed != packModel(tag)) {
    fail("packing", "\"" + tag + "\" gives " + bytesOf(packed));
  }
  if (msg::Language(packed.toString().c_str()) != packed) {
    fail("toString round trip", bytesOf(packed));
  }
  return packed;
}

std::vector<msg::Language> pickList(FuzzedDataProvider& data) {
  std::vector<msg::Language> list(data.ConsumeIntegralInRange<std::size_t>(0, 6));
  for (msg::Language& language : list) {
    language = pickLanguage(data);
  }
  return list;
}

msg::LanguageList makeList(const std::vector<msg::Language>& languages) {
  msg::LanguageList list(static_cast<int>(languages.size()), languages.data());
  msg::LanguageList copy(list);
  msg::LanguageList assigned(msg::Language("xx"));
  assigned = copy;
  assigned = *&assigned;
  if (assigned.getCount() != static_cast<int>(languages.size())) {
    fail("list count", std::to_string(assigned.getCount()));
  }
  for (std::size_t i = 0; i < languages.size(); ++i) {
    if (assigned.getLanguage(static_cast<int>(i)) != languages[i]) {
      fail("list copy", std::to_string(i));
    }
  }
  return assigned;
}

struct TableAccess : msg::MessageHandler {
  static const msg::MessageTable& of(const msg::MessageHandler& handler) {
    return *messageTableOf(handler);
  }
};

// One entry as the model keeps it; `texts` are unique, so a found record
// tells which entry it came from.
struct Entry {
  std::string key;
  msg::Language language;
  std::string text;
  msg::SeverityLevel severity;
};

// The chains of one handler's table, reduced to what a lookup sees: all
// entries in chain order, the newest first, replaced ones in their place.
struct TableModel {
  std::vector<Entry> entries;
  std::vector<msg::Language> list;

  // Index of the entry a lookup of `key` should find, or -1.
  int best(const std::string& key) const {
    int found = -1;
    int bestRank = -1;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (entries[i].key != key) {
        continue;
      }
      const int rank = distanceModel(list, entries[i].language);
      if (rank >= 0 && (found < 0 || rank < bestRank)) {
        found = static_cast<int>(i);
        bestRank = rank;
      }
    }
    return found;
  }

  // What growth does to the chains: the entries of each key come out in the
  // reverse order (entries of other keys in between do not count).
  void reverseEachKey() {
    std::vector<bool> done(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (done[i]) {
        continue;
      }
      std::vector<std::size_t> positions;
      for (std::size_t j = i; j < entries.size(); ++j) {
        if (entries[j].key == entries[i].key) {
          positions.push_back(j);
          done[j] = true;
        }
      }
      for (std::size_t a = 0, b = positions.size() - 1; a < b; ++a, --b) {
        std::swap(entries[positions[a]], entries[positions[b]]);
      }
    }
  }
};

// The documented lookup applied to the table's chains themselves: walk the
// key's whole chain and keep the first entry of the lowest acceptable rank.
const msg::MTE* bestInChains(const msg::MessageHandler& handler,
                             const std::vector<msg::Language>& list, const char* nameSpace,
                             const char* identifier) {
  const msg::MessageTable& table = TableAccess::of(handler);
  const std::uint32_t bucket = table.tableHash(nameSpace, identifier);
  const msg::MTE* best = nullptr;
  int bestRank = -1;
  for (std::uint32_t i = 0; i < table.chainLength(bucket); ++i) {
    const msg::MTE* entry = table.chainEntry(bucket, i);
    if (std::string(entry->getNamespace()) != nameSpace ||
        std::string(entry->getIdentifier()) != identifier) {
      continue;
    }
    const int rank = distanceModel(list, entry->getLanguage());
    if (rank >= 0 && (best == nullptr || rank < bestRank)) {
      best = entry;
      bestRank = rank;
    }
  }
  return best;
}

// Identifiers of keys that no lookup asks for, made once.
const std::vector<std::string>& fillerIdentifiers() {
  static const std::vector<std::string> identifiers = [] {
    std::vector<std::string> made;
    for (int i = 0; i < 51 * 997; ++i) {
      made.push_back("filler" + std::to_string(i));
    }
    return made;
  }();
  return identifiers;
}

// Links unowned filler entries into a table of the first size until the
// next addition grows it. `filler` keeps them and outlives the handler.
void fillToGrowth(msg::MessageHandler& handler, std::vector<std::unique_ptr<msg::MTE>>& filler) {
  const msg::MessageTable& table = TableAccess::of(handler);
  const std::vector<std::string>& identifiers = fillerIdentifiers();
  for (std::size_t i = 0; table.getCount() / table.getSize() <= 50 && i < identifiers.size(); ++i) {
    filler.emplace_back(new msg::MTE(msg::info, "en", "filler", identifiers[i].c_str(), "filler",
                                     &handler, false, false));
  }
}

const char* const kNamespaces[] = {"app", "msg", "ab", "cd"};
const char* const kIdentifiers[] = {"start", "cd", "ab", "notfound"};

void addEntry(FuzzedDataProvider& data, msg::MessageHandler& handler, TableModel& model,
              int serial) {
  const char* nameSpace = kNamespaces[data.ConsumeIntegralInRange(0, 3)];
  const char* identifier = kIdentifiers[data.ConsumeIntegralInRange(0, 3)];
  const std::string tag = pickTag(data);
  const bool throwOnDuplicate = data.ConsumeBool();
  const auto severity = static_cast<msg::SeverityLevel>(serial % 4);
  const Entry entry{std::string(nameSpace) + ":" + identifier, msg::Language(tag.c_str()),
                    "text " + std::to_string(serial), severity};

  std::size_t existing = 0;
  while (existing < model.entries.size() && (model.entries[existing].key != entry.key ||
                                             model.entries[existing].language != entry.language)) {
    ++existing;
  }
  const bool duplicate = existing < model.entries.size();
  // The growth test comes first in every addition, also one that is then
  // refused as a duplicate.
  const msg::MessageTable& table = TableAccess::of(handler);
  if (table.getCount() / table.getSize() > 50) {
    model.reverseEachKey();
  }
  try {
    // With copied strings the table owns the entry.
    new msg::MTE(static_cast<short>(severity), tag.c_str(), nameSpace, identifier,
                 entry.text.c_str(), &handler, throwOnDuplicate, true);
  } catch (const msg::MessageExists&) {
    if (!(duplicate && throwOnDuplicate)) {
      fail("MessageExists without a duplicate", entry.key);
    }
    return;
  }
  if (duplicate && throwOnDuplicate) {
    fail("duplicate accepted", entry.key);
  }
  if (duplicate) {
    model.entries[existing] = entry;
  } else {
    model.entries.insert(model.entries.begin(), entry);
  }
}

void checkLookup(const msg::MessageHandler& child, const msg::MessageHandler& parent,
                 const TableModel& childModel, const TableModel& parentModel, const char* nameSpace,
                 const char* identifier) {
  const std::string key = std::string(nameSpace) + ":" + identifier;
  const Entry* expected = nullptr;
  if (childModel.best(key) >= 0) {
    expected = &childModel.entries[static_cast<std::size_t>(childModel.best(key))];
  } else if (parentModel.best(key) >= 0) {
    expected = &parentModel.entries[static_cast<std::size_t>(parentModel.best(key))];
  }
  std::unique_ptr<msg::Message> found(child.getMessage(nameSpace, identifier));
  const msg::MTE* inChains = bestInChains(child, childModel.list, nameSpace, identifier);
  if (inChains == nullptr) {
    inChains = bestInChains(parent, parentModel.list, nameSpace, identifier);
  }
  // The record must hold the chosen entry's own pointers, whatever the
  // index keeps beside the chains.
  if ((found == nullptr) != (inChains == nullptr) ||
      (found != nullptr && (found->getText() != inChains->getText() ||
                            found->getNamespace() != inChains->getNamespace() ||
                            found->getIdentifier() != inChains->getIdentifier() ||
                            found->getSeverityLevel() != inChains->getSeverity()))) {
    fail("lookup disagrees with the chains", key);
  }
  if ((found == nullptr) != (expected == nullptr)) {
    fail("lookup found or missed wrongly", key);
  }
  if (found != nullptr &&
      (expected->text != found->getText() || expected->language != found->getLanguage() ||
       found->getSeverityLevel() != expected->severity)) {
    fail("lookup chose another entry",
         key + ": expected " + expected->text + ", got " + found->getText());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);

  // Declared first: the filler entries must outlive the handlers' tables.
  std::vector<std::unique_ptr<msg::MTE>> filler;
  TableModel parentModel;
  TableModel childModel;
  parentModel.list = pickList(data);
  childModel.list = pickList(data);
  msg::MessageHandler parent;
  parent.setLanguageList(makeList(parentModel.list));
  msg::MessageHandler child(&parent);
  child.setLanguageList(makeList(childModel.list));

  bool filled = false;  // filling is slow (50,847 entries): once per input
  for (int serial = 0; serial < 200 && data.remaining_bytes() > 0; ++serial) {
    // One byte: 255 fills (rare, so that most inputs stay fast), the rest
    // spread over the other four operations.
    const std::uint8_t choice = data.ConsumeIntegral<std::uint8_t>();
    const int operation = choice == 255 && !filled ? 4 : choice % 4;
    switch (operation) {
      case 0: {
        const msg::Language language = pickLanguage(data);
        const int rank = child.getLanguageList().distance(language);
        if (rank != distanceModel(childModel.list, language)) {
          fail("distance", bytesOf(language) + " ranks " + std::to_string(rank));
        }
        break;
      }
      case 1:
        addEntry(data, parent, parentModel, serial);
        break;
      case 2:
        addEntry(data, child, childModel, serial);
        break;
      case 3:
        checkLookup(child, parent, childModel, parentModel,
                    kNamespaces[data.ConsumeIntegralInRange(0, 3)],
                    kIdentifiers[data.ConsumeIntegralInRange(0, 3)]);
        break;
      default:
        fillToGrowth(data.ConsumeBool() ? parent : child, filler);
        filled = true;
        break;
    }
  }
  return 0;
}
