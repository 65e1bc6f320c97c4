// CompiledCatalogueLoader: fills a handler's table from a compiled catalogue
// whose strings stay in the mapped file, and keeps what those entries
// borrow for as long as the handler lives.
//
// Private to the library: not installed.

#ifndef MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUELOADER_H_
#define MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUELOADER_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "compiled_catalogues/CompiledCatalogueReader.h"
#include "message_core/CompiledCatalogueStorage.h"
#include "msg/LanguageList.h"

namespace msg {

class MTE;
class CompiledCatalogueReader;
class MessageHandler;
class PluralForms;

// A handler's compiled catalogues.
//
// A file with a key index is read in place: its mapping is kept with a
// reader of it and the language list of the handler at its load, and
// lookups read the file's own index (textsOf). The variants of a plural
// text are made when a lookup first chooses it, and kept.
//
// A file without one (format 1.0 or 2.0) is loaded as before key indexes
// existed: for each load, the read-only mapping of the file (their strings)
// and one block that holds entries linked into the handler's table with
// ownsStrings false, so the table never deletes them; this storage does,
// after the table is gone (~MessageHandler, which knows it only as
// CompiledCatalogueStorage). An entry that a later load replaces is
// unlinked but stays here, so a record made from it before keeps valid
// strings until the handler dies.
class MappedCatalogueStorage final : public CompiledCatalogueStorage {
 public:
  MappedCatalogueStorage() = default;

  // Releases every entry block and mapping. The entries own nothing, so
  // their destructors are not run.
  // REQUIRES: no table links any of the entries any more.
  ~MappedCatalogueStorage() override;

 protected:
  std::uint32_t prepare(const Key& key) const override;
  std::uint32_t textsOf(std::uint32_t catalogue, const Key& key, Text* out,
                        std::uint32_t room) const override;
  const PluralForms* formsOf(std::uint32_t catalogue, const Text& text) const override;

 private:
  friend class CompiledCatalogueLoader;

  struct InPlace {
    InPlace(void* mapping, std::size_t mappingSize, const CompiledCatalogueReader& reader,
            const LanguageList& languages)
        : mapping(mapping), mappingSize(mappingSize), reader(reader), languages(languages) {}
    void* mapping;  // munmap on release
    std::size_t mappingSize;
    CompiledCatalogueReader reader;  // of the mapping
    LanguageList languages;          // the handler's at the load: texts it refuses are absent
    // Made at the first lookup that chooses a plural text, kept until the
    // end, as records may read them; lookups may run side by side.
    mutable std::mutex formsLock;
    mutable std::unordered_map<std::uint32_t, std::unique_ptr<PluralForms>> forms;
  };
  // Takes over `catalogue` as the next one read in place.
  void addInPlace(std::unique_ptr<InPlace> catalogue);
  std::vector<std::unique_ptr<InPlace>> inPlace;

  struct Load {
    void* mapping;  // munmap on release
    std::size_t mappingSize;
    MTE* entries;             // ::operator new, room for `capacity` entries
    std::size_t constructed;  // entries [0, constructed) are alive
  };
  std::vector<Load> loads;
};

class CompiledCatalogueLoader {
 public:
  // Maps the compiled catalogue `path` and checks it. A file with a key
  // index is then read in place: its header and the bounds of its sections
  // are checked now, each entry when a lookup reads it. A file without one
  // is checked whole, and one entry is registered per text whose language
  // the handler's list accepts, replacing entries of the same key without
  // complaint; nothing is registered unless the whole file is accepted. On refusal: the report
  // "msgx", "MessageDocumentError" with `path` through `handler`, then
  // ErrorInMessageDocument whose problems say what is wrong. This is
  // MessageHandler::loadCompiledCatalogue.
  static void load(MessageHandler& handler, const char* path);

 private:
  struct Census;

  // Per entry of `reader`, the variants of an accepted plural one, whose
  // texts borrow the file's strings; empty if the file has none.
  using FormsByEntry = std::vector<std::unique_ptr<PluralForms>>;
  static FormsByEntry makeForms(const CompiledCatalogueReader& reader, const Census& census);

  // Makes one entry per accepted text of `reader` in `entries`, counting
  // them in `constructed`, and links them into `handler`, key by key,
  // attaching the variants that `forms` holds for them.
  static void linkByKey(MessageHandler& handler, const CompiledCatalogueReader& reader,
                        const Census& census, FormsByEntry& forms, MTE* entries,
                        std::size_t& constructed);
};

}  // namespace msg

#endif  // MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUELOADER_H_
