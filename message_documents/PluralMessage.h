// PluralMessage: the texts of one Message element read as a plural message,
// and the rules such a message must keep. The loader and the compiler both
// read documents through it, so they refuse the same documents.
//
// Private to the library: not installed.

#ifndef MSG_MESSAGE_DOCUMENTS_PLURALMESSAGE_H_
#define MSG_MESSAGE_DOCUMENTS_PLURALMESSAGE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "message_documents/MessageDocumentReader.h"
#include "msg/Plural.h"

namespace msg {

// One text of a plural message beside `other`: for an exact value
// (plural="=3") or a category (plural="few").
struct PluralVariant {
  bool exact = false;
  std::uint64_t value = 0;                          // when exact
  PluralCategory category = PluralCategory::other;  // when not exact
  std::string text;
};

// The texts of one language of a plural message.
struct PluralLanguage {
  std::string language;  // as the loader reads it ("en" when absent)
  std::string other;
  std::vector<PluralVariant> variants;  // in document order
};

// A rule of plural messages that a document breaks. `textIndex` (or, if it
// is -1, `messageIndex`) numbers the element in the order of
// walkMessageDocument, from 0, counting Text and Message elements apart.
struct PluralProblem {
  int messageIndex;
  int textIndex;
  std::string message;
};

// Collects the texts of one Message during a walk. A message is plural when
// it has a count attribute or one of its texts has a plural or ordinal
// attribute; only then do the rules below apply and does it read its texts:
//  - plural and ordinal attributes take a category (zero one two few many
//    other) or an exact value "=N", N a whole number of at most 18 digits;
//  - a message uses plural or ordinal, not both;
//  - in each language, a text without the attribute is `other`; each
//    category and exact value appears at most once, and a language with
//    variants has an `other`;
//  - count names one placeholder ("&1"; "&0" when absent), and some text of
//    the message has it.
class PluralMessage {
 public:
  // Starts the message `message` (a walk's onMessage), the `index`th.
  void begin(const DocumentText& message, int index);

  // Adds a Text of the message (a walk's onText), the `index`th of the walk.
  void add(const DocumentText& text, int index);

  bool isPlural() const { return plural; }

  // Appends a problem for every rule the message breaks. Nothing for a
  // message that is not plural.
  void check(std::vector<PluralProblem>& problems) const;

  // For a plural message without problems: its kind, its count placeholder
  // and its languages in the order of their first text.
  PluralKind kind() const { return pluralKind; }
  unsigned countPlaceholder() const { return count; }
  std::vector<PluralLanguage> languages() const;

  // The variant a plural or ordinal attribute names (a category or "=N");
  // false if it names none. Also for readers of documents other than the
  // loader, so that they read the attributes as it does.
  static bool readVariant(const std::string& attribute, PluralVariant& variant);

  // The placeholder a count attribute names ("&1" names 1, "" names 0);
  // false for any other text.
  static bool readCount(const std::string& attribute, unsigned& number);

 private:
  struct Text {
    int index;
    std::string language;
    std::string plural;
    std::string ordinal;
    XercesXML::DOMNode element;  // its value is read only for a plural message
  };
  int messageIndex = -1;
  std::string countAttribute;
  unsigned count = 0;
  bool countNamed = true;  // count is absent or names a placeholder
  bool plural = false;
  bool kindKnown = false;
  PluralKind pluralKind = PluralKind::cardinal;
  std::vector<Text> texts;
};

}  // namespace msg

#endif  // MSG_MESSAGE_DOCUMENTS_PLURALMESSAGE_H_
