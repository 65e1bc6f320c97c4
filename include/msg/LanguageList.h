// LanguageList: the languages a reader accepts, best first, and their ranking.

#ifndef MSG_LANGUAGELIST_H_
#define MSG_LANGUAGELIST_H_

#include <cstdint>

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

  // Copies `count` languages out of `languages`.
  // REQUIRES: count >= 0 (a negative count fails in the allocator with
  // std::bad_array_new_length); languages holds count entries.
  LanguageList(int count, const Language languages[]);

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
