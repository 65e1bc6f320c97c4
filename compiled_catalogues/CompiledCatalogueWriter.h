// CompiledCatalogueWriter: writes the texts of a catalogue as a compiled
// catalogue, the file that MessageHandler::loadCompiledCatalogue maps.
//
// Private to the library: not installed. msgtool, the tests and the
// benchmarks use it through the object library.

#ifndef MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEWRITER_H_
#define MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEWRITER_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "msg/Plural.h"
#include "msg/SeverityLevel.h"
#include "platform/PrivateApi.h"

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
//
// A text may carry plural or ordinal variants beside it (it is then their
// `other`). A catalogue with variants is written in format 2.1, one without
// in 1.1; both carry a key index, which readers of 1.0 and 2.0 ignore.
class CompiledCatalogueWriter {
 public:
  // One variant of a plural or ordinal text: the text for an exact value
  // ("=0") or for a category other than `other`.
  struct Form {
    bool exact = false;
    std::uint64_t value = 0;                          // when exact
    PluralCategory category = PluralCategory::other;  // when not exact
    std::string text;
  };

  // Adds one text. Raises std::invalid_argument, adding nothing, if a string
  // holds a NUL byte, the tag packs to nothing, or severity is not a level.
  MSG_PRIVATE_API void add(SeverityLevel severity, const std::string& language,
                           const std::string& nameSpace, const std::string& identifier,
                           const std::string& text);

  // Adds one text of a plural or ordinal message, `other` being its text
  // for every count that `forms` does not take; the count stands in
  // placeholder `count`. Without forms it is a plain text. Raises
  // std::invalid_argument, adding nothing, for what add() refuses, a form
  // of category `other`, the same form twice, or more than 65,535 forms.
  MSG_PRIVATE_API void add(SeverityLevel severity, const std::string& language,
                           const std::string& nameSpace, const std::string& identifier,
                           const std::string& other, PluralKind kind, unsigned count,
                           std::vector<Form> forms);

  // Adds every text of `later` as if each were added after the texts held
  // here, so a text of `later` replaces one of the same key. `later` is left
  // empty. Used to add a whole batch, or nothing when collecting it fails.
  MSG_PRIVATE_API void addAll(CompiledCatalogueWriter&& later);

  // Number of texts held.
  std::size_t size() const { return texts.size(); }

  // The whole file. Raises std::length_error if the catalogue does not fit
  // the format's 32-bit counts and offsets. Without `withIndex` the file is
  // one of format 1.0 or 2.0, as written before key indexes existed: what
  // the loader's whole-file path reads.
  std::vector<unsigned char> bytes(bool withIndex = true) const;

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
    PluralKind kind = PluralKind::cardinal;
    unsigned count = 0;
    std::vector<Form> forms;  // empty for a plain text
  };
  // The parts of a file behind its header (entry table, strings, variants,
  // key index), made from `texts`; bytes() puts the header before them.
  struct Sections;
  Sections sections(bool withIndex) const;

  // The key of a text after its checks; raises as add() does.
  static Key keyOf(SeverityLevel severity, const std::string& language,
                   const std::string& nameSpace, const std::string& identifier,
                   const std::string& text);
  std::map<Key, Value> texts;
};

}  // namespace msg

#endif  // MSG_COMPILED_CATALOGUES_COMPILEDCATALOGUEWRITER_H_
