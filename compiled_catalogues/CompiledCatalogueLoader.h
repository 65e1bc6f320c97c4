// CompiledCatalogueLoader: fills a handler's table from a compiled catalogue
// whose strings stay in the mapped file, and keeps what those entries
// borrow for as long as the handler lives.
//
// Private to the library: not installed.

#ifndef MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUELOADER_H_
#define MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUELOADER_H_

#include <cstddef>
#include <memory>
#include <vector>

#include "message_core/CompiledCatalogueStorage.h"

namespace msg {

class MTE;
class CompiledCatalogueReader;
class MessageHandler;
class PluralForms;

// What the entries of a handler's compiled catalogues borrow: for each load,
// the read-only mapping of the file (their strings) and one block that holds
// the entries themselves. The entries are linked into the handler's table
// with ownsStrings false, so the table never deletes them; this storage
// does, after the table is gone (~MessageHandler, which knows it only as
// CompiledCatalogueStorage). An entry that a later
// load replaces is unlinked but stays here, so a record made from it before
// keeps valid strings until the handler dies.
class MappedCatalogueStorage final : public CompiledCatalogueStorage {
 public:
  MappedCatalogueStorage() = default;

  // Releases every entry block and mapping. The entries own nothing, so
  // their destructors are not run.
  // REQUIRES: no table links any of the entries any more.
  ~MappedCatalogueStorage() override;

 private:
  friend class CompiledCatalogueLoader;

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
  // Maps the compiled catalogue `path`, checks every byte of it, and then
  // registers one entry per text whose language the handler's list accepts,
  // replacing entries of the same key without complaint. Nothing is
  // registered unless the whole file is accepted. On refusal: the report
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
