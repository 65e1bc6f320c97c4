#include "compiled_catalogues/CompiledCatalogueLoader.h"

#include <sys/mman.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "compiled_catalogues/CompiledCatalogueReader.h"
#include "message_core/KeyIndex.h"
#include "message_core/MessageTable.h"
#include "message_core/PluralForms.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageHandler.h"
#include "platform/MappedFile.h"

namespace msg {

namespace {

[[noreturn]] void refuse(MessageHandler& handler, const char* path, const std::string& why) {
  {
    Message report(&handler, "msgx", "MessageDocumentError");
    handler.writeMessage1(report, path);
  }
  throw ErrorInMessageDocument(
      (std::string("Message document \"") + path + "\" contains syntactical error.").c_str(),
      {DocumentProblem{path, 0, 0, "compiled catalogue refused: " + why}});
}

// The variants of a record, whose texts stay in the file.
std::unique_ptr<PluralForms> makePluralForms(const CompiledCatalogueReader::Variants& variants,
                                             Language language, const char* other) {
  auto made = std::make_unique<PluralForms>(variants.kind(), variants.count(), language, other);
  for (std::uint16_t k = 0; k < variants.size(); ++k) {
    const CompiledCatalogueReader::Form form = variants.form(k);
    if (form.exact) {
      made->addExact(form.value, form.text);
    } else {
      made->setText(form.category, form.text);
    }
  }
  return made;
}

}  // namespace

// The first pass over a checked file: which texts the handler's language
// list accepts, their packed languages, and how many texts and keys that
// makes. The texts of one message stand together and share their key's
// strings, so counting changes of key counts the keys (or a few more).
struct CompiledCatalogueLoader::Census {
  Census(const CompiledCatalogueReader& reader, const LanguageList& languages)
      : acceptable(reader.entryCount()), tags(reader.entryCount()) {
    const char* lastNamespace = nullptr;
    const char* lastIdentifier = nullptr;
    for (std::uint32_t i = 0; i < reader.entryCount(); ++i) {
      const CompiledCatalogueReader::Entry entry = reader.entry(i);
      tags[i] = Language(entry.language);
      if (languages.distance(tags[i]) < 0) {
        continue;
      }
      acceptable[i] = true;
      ++accepted;
      if (entry.nameSpace != lastNamespace || entry.identifier != lastIdentifier) {
        ++keys;
        lastNamespace = entry.nameSpace;
        lastIdentifier = entry.identifier;
      }
    }
  }

  std::vector<bool> acceptable;
  std::vector<Language> tags;
  std::size_t accepted = 0;
  std::size_t keys = 0;
};

MappedCatalogueStorage::~MappedCatalogueStorage() {
  for (const std::unique_ptr<InPlace>& catalogue : inPlace) {
    munmap(catalogue->mapping, catalogue->mappingSize);
  }
  for (Load& load : loads) {
    // The entries borrow every string, so their destructors would free
    // nothing; the block is given back without running them.
    ::operator delete(load.entries);
    munmap(load.mapping, load.mappingSize);
  }
}

void MappedCatalogueStorage::addInPlace(std::unique_ptr<InPlace> catalogue) {
  inPlace.push_back(std::move(catalogue));
  countInPlace();
}

std::uint32_t MappedCatalogueStorage::prepare(const Key& key) const {
  const std::uint32_t hash = CompiledCatalogueReader::hashOf(key.nameSpace, key.namespaceLength,
                                                             key.identifier, key.identifierLength);
  for (const std::unique_ptr<InPlace>& catalogue : inPlace) {
    catalogue->reader.prefetchSlot(hash);
  }
  return hash;
}

std::uint32_t MappedCatalogueStorage::textsOf(std::uint32_t catalogue, const Key& key, Text* out,
                                              std::uint32_t room) const {
  const InPlace& file = *inPlace[catalogue];
  const CompiledCatalogueReader::Found found = file.reader.find(
      key.hash, key.nameSpace, key.namespaceLength, key.identifier, key.identifierLength);
  std::uint32_t written = 0;
  // find() has compared the key with the strings of its first entry, so
  // the entries compare by pointer with those strings (see checkedEntry).
  for (std::uint32_t i = found.first; i < found.first + found.texts; ++i) {
    CompiledCatalogueReader::Entry entry;
    if (!file.reader.checkedEntry(i, found.nameSpace, found.identifier, entry)) {
      continue;  // damaged: as if the file did not hold it
    }
    const Language language(entry.language);
    if (file.languages.distance(language) < 0) {
      continue;  // a load registers only what the list then accepts
    }
    if (written < room) {
      new (&out[written]) Text{entry.nameSpace,
                               entry.identifier,
                               entry.text,
                               language,
                               static_cast<short>(entry.severity),
                               i};
    }
    ++written;
  }
  return written;
}

const PluralForms* MappedCatalogueStorage::formsOf(std::uint32_t catalogue,
                                                   const Text& text) const {
  const InPlace& file = *inPlace[catalogue];
  CompiledCatalogueReader::Variants variants;
  if (!file.reader.variantsOf(text.entry, variants)) {
    return nullptr;  // a plain text, the rule: no lock
  }
  const std::lock_guard<std::mutex> hold(file.formsLock);
  std::unique_ptr<PluralForms>& made = file.forms[text.entry];
  if (made == nullptr) {
    made = makePluralForms(variants, text.language, text.text);
  }
  return made.get();
}

void CompiledCatalogueLoader::load(MessageHandler& handler, const char* path) {
  platform::MappedFile file(path);
  if (!file.problem().empty()) {
    refuse(handler, path, file.problem());
  }
  const CompiledCatalogueReader reader(file.bytes(), file.length());
  if (!reader.problem().empty()) {
    refuse(handler, path, reader.problem());
  }
  if (!file.unchanged()) {
    refuse(handler, path, "the file changed while it was read");
  }
  if (handler.compiledCatalogues == nullptr) {
    handler.compiledCatalogues = new MappedCatalogueStorage();
  }
  // This loader makes the handler's only storage of compiled catalogues.
  MappedCatalogueStorage& storage =
      *static_cast<MappedCatalogueStorage*>(handler.compiledCatalogues);
  if (reader.hasIndex()) {
    file.readAtRandom();
    auto catalogue = std::make_unique<MappedCatalogueStorage::InPlace>(
        const_cast<unsigned char*>(file.bytes()), file.length(), reader, handler.getLanguageList());
    storage.addInPlace(std::move(catalogue));  // may throw: the file is then unmapped
    file.release();
    return;
  }

  // Count first, so the entries take one block of exactly their size.
  const Census census(reader, handler.getLanguageList());
  if (census.accepted == 0) {
    return;  // nothing borrows from the file: it is unmapped at once
  }

  // Everything that can fail to allocate comes before the first entry is
  // linked; from then on, the storage owns the block and the mapping.
  FormsByEntry forms = makeForms(reader, census);
  handler.messageTable->reserveKeys(census.keys);
  std::vector<MappedCatalogueStorage::Load>& loads = storage.loads;
  loads.reserve(loads.size() + 1);
  MTE* entries = static_cast<MTE*>(::operator new(census.accepted * sizeof(MTE)));
  loads.push_back({file.release(), file.length(), entries, 0});
  linkByKey(handler, reader, census, forms, entries, loads.back().constructed);
}

CompiledCatalogueLoader::FormsByEntry CompiledCatalogueLoader::makeForms(
    const CompiledCatalogueReader& reader, const Census& census) {
  FormsByEntry forms;
  if (!reader.hasVariants()) {
    return forms;  // format 1: a catalogue without plurals pays nothing here
  }
  CompiledCatalogueReader::Variants variants;
  for (std::uint32_t i = 0; i < reader.entryCount(); ++i) {
    if (!census.acceptable[i] || !reader.variantsOf(i, variants)) {
      continue;
    }
    if (forms.empty()) {
      forms.resize(reader.entryCount());
    }
    forms[i] = makePluralForms(variants, census.tags[i], reader.entry(i).text);
  }
  return forms;
}

void CompiledCatalogueLoader::linkByKey(MessageHandler& handler,
                                        const CompiledCatalogueReader& reader, const Census& census,
                                        FormsByEntry& forms, MTE* entries,
                                        std::size_t& constructed) {
  // Each run of entries that share their key strings is one key: it is
  // hashed once, and the index slot of the next run is fetched while this
  // run is linked. Linking replaces an entry of the same key and language;
  // a failure to grow the table leaves the entries linked so far.
  const std::uint32_t count = reader.entryCount();
  const auto acceptedFrom = [&](std::uint32_t i) {
    while (i < count && !census.acceptable[i]) {
      ++i;
    }
    return i;
  };
  std::uint32_t start = acceptedFrom(0);
  IndexKey key(reader.entry(start).nameSpace, reader.entry(start).identifier);
  while (start < count) {
    const CompiledCatalogueReader::Entry first = reader.entry(start);
    std::uint32_t end = start + 1;
    while (end < count && reader.entry(end).nameSpace == first.nameSpace &&
           reader.entry(end).identifier == first.identifier) {
      ++end;
    }
    const std::uint32_t following = acceptedFrom(end);
    const IndexKey followingKey = following < count ? IndexKey(reader.entry(following).nameSpace,
                                                               reader.entry(following).identifier)
                                                    : key;
    handler.messageTable->prefetchKey(followingKey);
    MTE* const run = entries + constructed;
    for (std::uint32_t i = start; i < end; ++i) {
      if (!census.acceptable[i]) {
        continue;
      }
      const CompiledCatalogueReader::Entry entry = reader.entry(i);
      new (&entries[constructed])
          MTE(MTE::Unlinked{}, static_cast<short>(entry.severity), census.tags[i], entry.nameSpace,
              entry.identifier, entry.text);
      ++constructed;
    }
    handler.addEntries(run, static_cast<std::uint32_t>(entries + constructed - run), key);
    if (!forms.empty()) {
      // Attached once linked, to the table as it is after any growth.
      MTE* made = run;
      for (std::uint32_t i = start; i < end; ++i) {
        if (census.acceptable[i]) {
          if (forms[i] != nullptr) {
            handler.messageTable->attachPluralForms(made, std::move(forms[i]));
          }
          ++made;
        }
      }
    }
    start = following;
    key = followingKey;
  }
}

// The plain handler's load lives here, with the loader: the core knows
// nothing of the file format, and a program that loads only compiled
// catalogues links no XML.
void MessageHandler::loadCompiledCatalogue(const char* path) {
  CompiledCatalogueLoader::load(*this, path);
}

}  // namespace msg
