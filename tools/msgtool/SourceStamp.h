// SourceStamp: which source text a translation was made from.
//
// When msgtool imports a translation it stamps the Text element with the
// language and a hash of the source text the translator saw:
//
//   <MessageCollection xmlns:msgtool="urn:x-msg:msgtool:1" ...>
//     ...
//     <Text xml:lang="de" msgtool:translated-from="en:3f2c9a7b1d0e4c55">...</Text>
//
// The attribute lives in msgtool's own namespace, which the schema of
// message documents admits on Text (any attribute of another namespace,
// not validated) and which the loader never reads. When the source text
// changes later, the stamp no longer matches it and the translation is
// stale: export marks it for review, check warns about it and stats counts
// it. A text without a stamp was not imported and is never called stale.

#ifndef MSGTOOL_SOURCESTAMP_H_
#define MSGTOOL_SOURCESTAMP_H_

#include <optional>
#include <string>
#include <vector>

namespace msgtool {

struct CatalogueEntry;

inline constexpr char kMsgtoolNamespace[] = "urn:x-msg:msgtool:1";
inline constexpr char kMsgtoolPrefix[] = "msgtool";
inline constexpr char kTranslatedFromAttribute[] = "translated-from";

struct SourceStamp {
  std::string language;  // language of the source text
  std::string hash;      // 16 lower-case hex digits of XXH64 of its bytes

  // The stamp of `text` in `language`.
  static SourceStamp of(const std::string& language, const std::string& text);

  // The stamp written as "language:hash"; nullopt for any other value.
  static std::optional<SourceStamp> parse(const std::string& value);

  std::string toString() const { return language + ":" + hash; }

  // True if `sourceText` is not the text this stamp was made from.
  bool isStaleFor(const std::string& sourceText) const;
};

// True if `translation` is stamped and the source text it was made from is
// no longer the one the stamp was made from, or is gone. That text is the
// key's text in the stamp's language, the last of `entriesOfKey` as the
// loader keeps it: the `other` text (a plain message's only text), or for
// an exact value or an ordinal category, which are exported one by one, the
// source's text of the same variant where there is one.
bool isStaleTranslation(const CatalogueEntry& translation,
                        const std::vector<const CatalogueEntry*>& entriesOfKey);

}  // namespace msgtool

#endif  // MSGTOOL_SOURCESTAMP_H_
