// CompiledCatalogueStorage: what a handler keeps of its compiled catalogues,
// and the lookup that ranks its table together with the catalogues that are
// read in place.
//
// Private to the library: not installed.

#ifndef MSG_MESSAGE_CORE_COMPILEDCATALOGUESTORAGE_H_
#define MSG_MESSAGE_CORE_COMPILEDCATALOGUESTORAGE_H_

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "message_core/MessageTable.h"
#include "msg/LanguageList.h"

namespace msg {

class KeyGroup;
class LookupCandidates;
class MTE;
class PluralForms;

// A handler owns one of these once a compiled catalogue has been loaded into
// it, and deletes it in ~MessageHandler after its table. What it holds and
// how it is released (mappings, entry blocks) belongs to the compiled
// catalogue layer, which makes the one derived class; the core knows only
// the lookup below, so it needs nothing of that layer.
//
// A catalogue read in place registers nothing in the table. A lookup asks
// the table and every such catalogue, and decides as if each catalogue's
// texts had been added to the table one by one, in file order, at the
// moment of its load:
//   - for each language, the text registered last wins (a later load or a
//     later entry replaces an earlier one of the same key and language);
//   - the best rank by LanguageList::distance wins;
//   - among languages of equal rank, the one that reached the handler last
//     wins, a replacement keeping the place of the text it replaced (the
//     head of the table's chain, where single additions put a new
//     language). Within the table, its own chain order decides.
// To know "last", the storage stamps every entry added to the table after
// the first catalogue read in place with the number of such loads before
// it. Entries added before any have no stamp and cost nothing.
//
// Not thread-safe for changes; lookups may run side by side.
class CompiledCatalogueStorage {
 public:
  CompiledCatalogueStorage(const CompiledCatalogueStorage&) = delete;
  CompiledCatalogueStorage& operator=(const CompiledCatalogueStorage&) = delete;
  virtual ~CompiledCatalogueStorage();

  // Number of catalogues read in place. While it is 0, the table alone
  // answers and no entry is stamped.
  std::uint32_t inPlaceCount() const { return catalogues; }

  // Stamps `entry`, about to be linked into the table in place of
  // `replaced` (null for a new language of its key). Throws std::bad_alloc,
  // changing nothing. Call forgetReplaced() once the link has succeeded,
  // or unstamp() if it failed.
  // REQUIRES: inPlaceCount() > 0.
  void stamp(const MTE* entry, const MTE* replaced);
  void forgetReplaced(const MTE* replaced) { stamps.erase(replaced); }
  void unstamp(const MTE* entry) { stamps.erase(entry); }

  // The best text of the key for `list` from `table` and every catalogue
  // read in place, by the rules above. Choice::entry is null for a text of
  // a catalogue; then nameSpace and identifier point into its file.
  MessageTable::Choice findBest(const MessageTable& table, const char* nameSpace,
                                const char* identifier, const LanguageList& list) const;

  // One text of a key in a catalogue read in place.
  struct Text {
    const char* nameSpace;
    const char* identifier;
    const char* text;
    Language language;
    short severity;
    std::uint32_t entry;  // its number in the file
  };

 protected:
  CompiledCatalogueStorage() = default;

  // Counts one more catalogue read in place; it is number inPlaceCount() - 1
  // for textsOf and formsOf.
  void countInPlace() { ++catalogues; }

  // A key as a lookup asks for it: its lengths are those of its strings
  // without NUL, and `hash` is what prepare() returned for it.
  struct Key {
    const char* nameSpace;
    std::size_t namespaceLength;
    const char* identifier;
    std::size_t identifierLength;
    std::uint32_t hash;
  };

  // Called once per lookup, before the table is asked: returns the hash of
  // `key` that textsOf() reads in Key::hash (its `hash` is not yet set),
  // and may start fetching what textsOf() will read, so that waiting for
  // memory overlaps with the table's work.
  virtual std::uint32_t prepare(const Key& key) const = 0;

  // Writes the texts of the key in catalogue `catalogue` to `out` (room for
  // `room` texts, which need not hold any yet), in file order, at most `room` of them, and returns
  // how many it has (which may be more than `room`). Passes over texts whose bytes are damaged.
  virtual std::uint32_t textsOf(std::uint32_t catalogue, const Key& key, Text* out,
                                std::uint32_t room) const = 0;

  // The variants of `text` of catalogue `catalogue`, null for a plain text.
  // They stay valid as long as this storage.
  virtual const PluralForms* formsOf(std::uint32_t catalogue, const Text& text) const = 0;

 private:
  struct Stamp {
    std::uint32_t arrival = 0;  // loads before the first text of its key and language
    std::uint32_t content = 0;  // loads before this entry
  };
  Stamp stampOf(const MTE* entry) const;

  // The steps of findBest: the texts of the key's group in the table, then
  // those of every catalogue read in place, each with its rank for `list`
  // and its time (see the .cpp), into `candidates`.
  void addTableTexts(const KeyGroup& group, const LanguageList& list,
                     LookupCandidates& candidates) const;
  void addCatalogueTexts(const Key& key, const LanguageList& list,
                         LookupCandidates& candidates) const;

  std::uint32_t catalogues = 0;
  std::unordered_map<const MTE*, Stamp> stamps;
};

// What a handler's lookup finds: the table's answer while no catalogue is
// read in place, which costs a handler without one nothing more.
inline MessageTable::Choice findBestOf(const MessageTable& table,
                                       const CompiledCatalogueStorage* catalogues,
                                       const char* nameSpace, const char* identifier,
                                       const LanguageList& list) {
  if (catalogues == nullptr || catalogues->inPlaceCount() == 0) {
    return table.findBest(nameSpace, identifier, list);
  }
  return catalogues->findBest(table, nameSpace, identifier, list);
}

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_COMPILEDCATALOGUESTORAGE_H_
