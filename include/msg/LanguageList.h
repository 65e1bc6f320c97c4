// LanguageList: the languages a reader accepts, best first, and their ranking.

#ifndef MSG_LANGUAGELIST_H_
#define MSG_LANGUAGELIST_H_

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string_view>

#include "msg/Language.h"
#include "msg/export.h"

namespace msg {

// An owned array of languages in order of preference. A handler holds one by
// value and ranks every catalogue entry against it with distance().
//
// Copies are deep: each list owns its own array.
class MSG_EXPORT LanguageList {
 public:
  // A list of one language.
  explicit LanguageList(Language only);

  // A list of two languages, in this order.
  LanguageList(Language first, Language second);

  // The languages in this order: LanguageList{"de-AT", "de", "en"}. An
  // empty list accepts no language.
  LanguageList(std::initializer_list<Language> languages);

  // Copies `count` languages out of `languages`.
  // REQUIRES: count >= 0 (a negative count fails in the allocator with
  // std::bad_array_new_length); languages holds count entries.
  LanguageList(int count, const Language languages[]);

  // The list written as text: tags separated by commas, as in
  // "de-AT, de, en". Blanks around a tag and empty items are skipped. A tag
  // is two letters with an optional region of two letters behind "-" or "_";
  // later subtags ("de-AT-1996") are ignored. Case is normalised to "de-AT".
  // Throws std::invalid_argument naming the first item that is no such tag,
  // or if the text names no language at all.
  static LanguageList parse(std::string_view text);

  // The user's preference from the environment, in gettext's order:
  //  - the colon list of LANGUAGE ("de_AT:de:en"), if it names a usable tag;
  //  - else the first non-empty one of LC_ALL, LC_MESSAGES, LANG, unless it
  //    is "C" or "POSIX" (with any codeset, such as "C.UTF-8");
  //  - else ["en"].
  // Locale names lose their codeset and modifier and take "-" for "_":
  // "de_AT.UTF-8@euro" gives de-AT. Entries that are no two-letter tag
  // ("ast_ES", "sr@latin" keeps "sr") are skipped, and repeats are dropped;
  // if nothing is left the list is ["en"]. Never throws for any content.
  //
  // The library never reads the environment by itself; the application
  // calls this (typically once, before handing the list to a handler). It
  // reads with std::getenv, so no thread may change the environment
  // meanwhile.
  static LanguageList fromEnvironment();

  // The same, with `lookup` in place of std::getenv: it gets a variable's
  // name and returns its value, or null if it is not set.
  static LanguageList fromEnvironment(const std::function<const char*(const char*)>& lookup);

  // Deep copies: the copy shares no storage with `other`.
  LanguageList(const LanguageList& other);
  LanguageList& operator=(const LanguageList& other);  // self-assignment is a no-op
  ~LanguageList();

  // Rank of `language` against this list; lower is better, -1 means not
  // acceptable. For list position i an exact match (all four bytes) ranks
  // 3*i, a bare list entry with the same language code ranks 3*i+1 and a list
  // entry with another region ranks 3*i+2. An exact match anywhere decides at
  // once; otherwise the first bare position wins, then the last other-region
  // position. So [de-AT, de, en] ranks de-AT 0, de 3, de-CH 4, en 6, en-GB 7
  // and fr -1.
  int distance(Language language) const;

  // Number of languages in the list.
  int getCount() const { return count; }

  // The language at `index`.
  // REQUIRES: 0 <= index < getCount().
  Language getLanguage(int index) const { return languages[index]; }

 private:
  Language* languages;  // new[], owned
  std::int32_t count;
};

}  // namespace msg

#endif  // MSG_LANGUAGELIST_H_
