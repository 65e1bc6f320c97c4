// MTE: one entry of a message catalogue (message table entry).

#ifndef MSG_MTE_H_
#define MSG_MTE_H_

#include <cstdint>

#include "msg/Language.h"
#include "msg/export.h"

namespace msg {

class MessageHandler;
class MessageTable;

// One text of one key (namespace, identifier) in one language, with its
// severity. Constructing an MTE links it into a handler's table at once; the
// entry is its own chain node, so linking allocates nothing.
//
// Ownership comes in two kinds:
//  - copyStrings false (static entries, as a rule): the entry and its three
//    strings belong to whoever made them and must outlive the table. The
//    table only links and, when replacing the entry or dying, forgets it.
//  - copyStrings true: the entry copies its strings, must have been made with
//    `new`, and once linked belongs to the table, which deletes it when the
//    entry is replaced or the table dies. Nobody else may destroy it.
//
// The destructor frees the copies only; it never unlinks the entry, so the
// destructors of static entries that run at unload leave the table alone.
class MSG_EXPORT MTE {
 public:
  // Makes an entry with a language tag ("de", "de-AT") and links it into
  // `handler`'s table, or into MessageHandler::object()'s if `handler` is
  // null. With a duplicate (same namespace, identifier and language) in the
  // table, `throwOnDuplicate` true throws MessageExists and links nothing;
  // false puts this entry in the place of the old one.
  // With `copyStrings` true the three strings are copied after linking.
  // REQUIRES: nameSpace and identifier are not null; text is not null when
  // copyStrings is true.
  MTE(short severity, const char* language, const char* nameSpace, const char* identifier,
      const char* text, MessageHandler* handler, bool throwOnDuplicate, bool copyStrings);

  // The same with a language number: 2 stands for "de", every other number
  // for "en". The strings are never copied.
  MTE(short severity, int language, const char* nameSpace, const char* identifier, const char* text,
      MessageHandler* handler, bool throwOnDuplicate);

  MTE(const MTE&) = delete;
  MTE& operator=(const MTE&) = delete;

  // Frees the copied strings if the entry owns them. Does not unlink.
  ~MTE();

  // The entry as made: severity, language, key and text, and whether it
  // owns copies of its strings.
  short getSeverity() const { return severity; }
  Language getLanguage() const { return language; }
  const char* getNamespace() const { return nameSpace; }
  const char* getIdentifier() const { return identifier; }
  const char* getText() const { return text; }
  bool getOwnsStrings() const { return ownsStrings; }

 private:
  friend class MessageTable;
  friend class MessageHandler;
  friend class CompiledCatalogueLoader;

  // An entry that borrows its strings and is not linked yet: whoever makes
  // it links it through MessageHandler::addEntry.
  struct Unlinked {};
  MTE(Unlinked, short severity, Language language, const char* nameSpace, const char* identifier,
      const char* text);

  // Links the entry into `handler` (or the process-wide handler) and
  // returns the handler it went to.
  MessageHandler* link(MessageHandler* handler, bool throwOnDuplicate);

  MTE* next;       // next entry of the chain, null at its end
  short severity;  // a SeverityLevel, 16 bits wide here
  Language language;
  // Set by the table when it links the entry: the sum of the key's 4-byte
  // groups folded to 16 bits. A lookup compares it before the strings, so
  // that walking past the other keys of a chain reads no string. It sits in
  // what would be padding, beside `next`, and depends on the key alone.
  std::uint16_t keyCheck;
  const char* nameSpace;
  const char* identifier;
  const char* text;
  std::uint32_t cachedHash;  // bucket index kept by the table, 0 = not computed
  bool ownsStrings;
};

}  // namespace msg

#endif  // MSG_MTE_H_
