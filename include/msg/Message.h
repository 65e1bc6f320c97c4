// Message: one message on its way to the output.

#ifndef MSG_MESSAGE_H_
#define MSG_MESSAGE_H_

#include <cstddef>
#include <cstdint>

#include "msg/Language.h"
#include "msg/MTE.h"
#include "msg/SeverityLevel.h"
#include "msg/export.h"

namespace msg {

class MessageHandler;
class PluralForms;
struct NumberArgument;

// A record of one message: its key (namespace, identifier), severity,
// language, the catalogue text with its placeholders, and the text as far as
// it has been filled in.
//
// Placeholders are "&" followed by 1 to 22 decimal digits; the number is the
// value of the digits, so &0, &00 and &000 are all placeholder 0 and &10 is
// placeholder 10. A "&" without digits, or with more than 22, is plain text.
// There is no escape for "&". A run of digits whose value exceeds INT_MAX
// (2147483647), such as &99999999999, names no number: no call of
// substitute() replaces it, so it stays in the text as it stands.
//
// substitute() replaces the leftmost placeholder of a number, in place, in two
// working buffers that the record keeps across substitutions and clear(), so
// a record that is written again and again allocates only when its text grows
// beyond all before it.
//
// A record made by key borrows the strings of its catalogue entry and must
// not outlive that entry (its replacement or the end of its table). A record
// made from strings owns copies of them. Records cannot be copied.
//
// A record of a plural key (one whose catalogue entry has variants by count,
// see docs/message-documents.md) starts with the entry's `other` text and
// holds the entry's variants beside it. Substituting the count placeholder
// into a record that nothing has been filled into since it was made or
// cleared chooses the variant for that count first: an exact value, then
// the category of the count as written ("1" is one in English, "1.0"
// other), then `other`. Once another placeholder has been filled in, the
// variant in use stays until clear(): fill the count first. writeMessageN,
// writeMessage1..4, msg::write and msg::format do so themselves, so for
// them the order of the placeholders in the text does not matter (and for
// a plural record they fill the count before the other arguments).
//
// A record belongs to one thread at a time.
class MSG_EXPORT Message {
 public:
  // Words for a boolean argument.
  enum BoolOption : std::int32_t {
    trueFalse = 0,  // "true"/"false" (every value other than yesNo acts so)
    yesNo = 1,      // "yes"/"no"
  };

  // A record with its own copies of the three strings. A null or empty
  // string gives a null pointer in the record, not an empty string.
  Message(const char* nameSpace, const char* identifier, SeverityLevel severity, Language language,
          const char* text);

  // The record of a catalogue key, in the best language that `handler` (or
  // its parents) offers. If the key is not found, the record shows the
  // not-found message ("msg", "notfound") with the asked namespace and
  // identifier filled in as &0 and &1; its own key is then msg:notfound.
  // Throws MessageHandlerError if `handler` is null, and MessageNotFound if
  // neither the key nor the not-found message is acceptable.
  // REQUIRES: nameSpace and identifier are not null.
  Message(const MessageHandler* handler, const char* nameSpace, const char* identifier);

  Message(const Message&) = delete;
  Message& operator=(const Message&) = delete;

  ~Message();

  // Records made with `new` (as getMessage() makes them) come from a small
  // cache of blocks kept per thread, and go back to the cache of the thread
  // that deletes them. Use `new` and `delete` as for any class; placement
  // new works as usual.
  static void* operator new(std::size_t size);
  static void operator delete(void* memory, std::size_t size) noexcept;
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void*, void*) noexcept {}

  // The record's key, severity and language; for the not-found record
  // standing in for a key, those of the not-found entry.
  const char* getNamespace() const {
    return keySource != nullptr ? keySource->getNamespace() : nameSpace;
  }
  const char* getIdentifier() const {
    return keySource != nullptr ? keySource->getIdentifier() : identifier;
  }
  SeverityLevel getSeverityLevel() const { return severity; }
  Language getLanguage() const { return language; }

  // The text with its placeholders. Never changes, whatever is substituted.
  const char* getText() const { return text; }

  // The text as shown: the filled-in text once substitute() has run,
  // otherwise getText(). May be null for a record made from an empty text.
  // The pointer stays valid until the next substitute(), clear() or clean()
  // on this record, or its destruction.
  const char* getMessage() const;

  // Takes back all substitutions and keeps the buffers: until the next
  // substitute(), getMessage() gives "" if buffers exist. A plural record
  // goes back to its `other` text.
  void clear();

  // Whether the record has variants by count (see above).
  bool isPlural() const { return forms != nullptr; }

  // The number of the placeholder that holds the count; 0 for a record that
  // is not plural.
  unsigned int getCountPlaceholder() const;

  // Takes back all substitutions and frees the buffers: getMessage() gives
  // getText() again.
  void clean();

  // Replaces the leftmost placeholder `number` with `value`. Returns true if
  // one was found. A null value returns false and changes nothing. The value
  // goes into the working text unchanged, so a placeholder inside a value is
  // found by a later call. `value` may point into this record itself (say,
  // the result of getMessage()); it is copied before the buffers change.
  //
  // The working buffers grow when the shown text plus the value plus a NUL
  // do not fit: the first pair gets that room but at least 100 bytes, a
  // later pair twice the old capacity or the room if that is more.
  //
  // A record without text (made from a null or empty text) substitutes into
  // the empty text: the result is false and getMessage() then gives "".
  bool substitute(unsigned int number, const char* value);

  // The value in decimal ("%d").
  bool substitute(unsigned int number, int value);

  // The value in fixed notation with `precision` decimals: 1 to 16 as
  // given, above 16 as 16, 0 or below as none (0.0 shows as "0.0").
  // The number is formed in 32 bytes; a value whose fixed text would not fit
  // (more than 31 characters, e.g. 1e20 with 16 decimals) is shown in
  // exponential notation with the same decimals instead ("1.00e+30" for
  // 1e30 with precision 2), which always fits. It is never cut short.
  bool substitute(unsigned int number, double value, int precision);

  // A word for the value in the language of the process-wide handler's list,
  // from the catalogue keys msg:true/false/yes/no, or, if the catalogue has
  // none, a built-in English or German word by this record's language.
  bool substitute(unsigned int number, bool value, BoolOption option);

  // The number as the record's language writes it (see msg/Number.h): the
  // language of the text chosen for the message, not that of the handler.
  // As the count of a plural record it chooses the variant by its digits as
  // shown, so French 1,5 is "one" and English 1.0 "other".
  bool substitute(unsigned int number, const NumberArgument& value);

  // Capacity in bytes of each working buffer; 0 when there are none.
  unsigned int getBufferSize() const { return bufferSize; }

 private:
  friend class MessageHandler;

  // Borrows (copyStrings false) or copies (true) the three strings.
  Message(const char* nameSpace, const char* identifier, SeverityLevel severity, Language language,
          const char* text, bool copyStrings);

  // The record of a catalogue entry, from what the table's index keeps of
  // it: the key strings are read from the entry only when asked for.
  // `forms` are the entry's variants, null if it has none.
  Message(const MTE* entry, const char* text, SeverityLevel severity, Language language,
          const PluralForms* forms);

  // Makes `chosen` the text and empties the working text, as clear() does.
  void useText(const char* chosen);

  // substitute(number, value), with the variant of a plural record chosen
  // by `countText` ("[-]digits[.digits]") instead of by `value`.
  bool substituteValue(unsigned int number, const char* value, const char* countText);

  // Finds the leftmost placeholder `number` in workBuffer; on success `first`
  // is the index of its "&" and `last` that of its last digit.
  bool findPlaceholder(unsigned int number, unsigned int& first, unsigned int& last) const;

  // The word for a boolean, see substitute(unsigned int, bool, BoolOption).
  const char* boolText(bool value, BoolOption option) const;

  // Makes both working buffers anew with room for at least `room` bytes and
  // moves the working text over (or puts `text` in if there were none).
  void growBuffers(std::size_t room);

  // A record of a catalogue entry borrows the entry's key strings through
  // keySource, and then leaves nameSpace and identifier null: a lookup so
  // need not read the entry, which at a million keys is a cache miss of its
  // own. Every other record has a null keySource.
  const MTE* keySource;
  const char* nameSpace;
  const char* identifier;
  const char* text;
  SeverityLevel severity;
  Language language;
  bool ownsStrings;
  char* ownNamespace;
  char* ownIdentifier;
  char* ownText;
  char* resultBuffer;  // what getMessage() shows once it exists
  char* workBuffer;    // what the placeholder scanner reads
  std::uint32_t bufferSize;
  // The variants of a record of a plural entry (owned by its table), else
  // null. While it is set, `text` is the variant in use.
  const PluralForms* forms;
};

}  // namespace msg

#endif  // MSG_MESSAGE_H_
