// CompiledCatalogueWriter: writes the texts of a catalogue as a compiled
// catalogue, the file that MessageHandler::loadCompiledCatalogue maps.
//
// Private to the library: not installed. msgtool, the tests and the
// benchmarks use it through the object library.

#ifndef MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEWRITER_H_
#define MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEWRITER_H_

#include <cstddef>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "msg/SeverityLevel.h"

namespace msg {

// Collects texts and writes them in the format of CompiledCatalogueFormat.h.
// Texts are kept by key (namespace, identifier, language tag): a later text
// of a key replaces the earlier one, as a later Text replaces an earlier one
// when documents are loaded. The output depends only on the texts that
// remain, not on the order in which they came, so the same catalogue always
// gives the same bytes.
//
// Language tags are stored as the library packs them (msg::Language): at
// most five characters, "de-AT-1996" as "de-AT", "de_AT" as "de". A handler
// that loads the file therefore sees the languages that loading the
// documents would have given it.
class CompiledCatalogueWriter {
 public:
  // Adds one text. Raises std::invalid_argument, adding nothing, if a string
  // holds a NUL byte, the tag packs to nothing, or severity is not a level.
  void add(SeverityLevel severity, const std::string& language, const std::string& nameSpace,
           const std::string& identifier, const std::string& text);

  // Adds every text of `later` as if each were added after the texts held
  // here, so a text of `later` replaces one of the same key. `later` is left
  // empty. Used to add a whole batch, or nothing when collecting it fails.
  void addAll(CompiledCatalogueWriter&& later);

  // Number of texts held.
  std::size_t size() const { return texts.size(); }

  // The whole file. Raises std::length_error if the catalogue does not fit
  // the format's 32-bit counts and offsets.
  std::vector<unsigned char> bytes() const;

  // Writes bytes() to a new file beside `path` and renames it to `path`, so
  // a reader sees either the old file or the whole new one, and a handler
  // that has the old file mapped keeps it. Raises std::runtime_error, with
  // the path and the system's reason, if the file cannot be written; `path`
  // is then as it was and no temporary file is left.
  void writeFile(const std::string& path) const;

 private:
  using Key = std::tuple<std::string, std::string, std::string>;  // namespace, id, language
  struct Value {
    SeverityLevel severity;
    std::string text;
  };
  std::map<Key, Value> texts;
};

}  // namespace msg

#endif  // MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEWRITER_H_
