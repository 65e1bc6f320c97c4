// CompiledCatalogueStorage: what the entries of a handler's compiled
// catalogues borrow, as the handler sees it.
//
// Private to the library: not installed.

#ifndef MSG_MESSAGE_CORE_COMPILEDCATALOGUESTORAGE_H_
#define MSG_MESSAGE_CORE_COMPILEDCATALOGUESTORAGE_H_

namespace msg {

// A handler owns one of these once a compiled catalogue has been loaded into
// it, and deletes it in ~MessageHandler after its table, when no table links
// the borrowed entries any more. The handler only ever deletes it: what it
// holds and how it is released (mappings, entry blocks) belongs to the
// compiled catalogue layer, which makes the one derived class. So the core
// needs nothing of that layer.
class CompiledCatalogueStorage {
 public:
  CompiledCatalogueStorage(const CompiledCatalogueStorage&) = delete;
  CompiledCatalogueStorage& operator=(const CompiledCatalogueStorage&) = delete;
  virtual ~CompiledCatalogueStorage() = default;

 protected:
  CompiledCatalogueStorage() = default;
};

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_COMPILEDCATALOGUESTORAGE_H_
