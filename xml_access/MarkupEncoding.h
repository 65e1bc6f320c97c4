// MarkupEncoding: the characters of an XML file as its own encoding writes
// them, for editing the file's text without decoding and encoding all of it.

#ifndef MSG_XML_ACCESS_MARKUPENCODING_H_
#define MSG_XML_ACCESS_MARKUPENCODING_H_

#include <string>
#include <utility>

namespace XercesXML {

// An editor works on the "working text" of a file: for UTF-8 and for the
// one-byte encodings whose first 128 characters are ASCII (US-ASCII,
// ISO-8859-n, windows-125n) that is the file's own bytes, so that every byte
// it does not edit stays as it was; for UTF-16 it is the file decoded to
// UTF-8, encoded back as a whole. In every case the characters of markup
// ('<', '&', quotes, names of the format) are single ASCII bytes of the
// working text.
//
// Text going in (escapeText, escapeAttribute) is UTF-8 and comes out
// escaped for XML in the working text's bytes; a character the encoding
// cannot hold becomes a character reference.
class MarkupEncoding {
 public:
  // The encoding of `fileBytes`: a byte order mark, else the encoding the XML
  // declaration names, else UTF-8.
  // Raises ParsingError for an encoding other than those above, and for
  // UTF-16 that is not well formed.
  static MarkupEncoding of(const std::string& fileBytes);

  // The working text of `fileBytes` (see above).
  // REQUIRES: `fileBytes` are those given to of().
  std::string toWorkingText(const std::string& fileBytes) const;

  // The file's bytes for a working text.
  std::string toFileBytes(const std::string& workingText) const;

  // `utf8` as the content of an element: '&', '<' and '>' as entities, a
  // carriage return as "&#xD;" so that it survives the reading.
  std::string escapeText(const std::string& utf8) const;

  // `utf8` as the value of an attribute between `quote` characters: as
  // escapeText, and the quote, tab and line feed as references as well.
  std::string escapeAttribute(const std::string& utf8, char quote) const;

  // The encoding's name as this class knows it ("UTF-8", "ISO-8859-1",
  // "UTF-16LE", ...).
  const std::string& name() const { return label; }

 private:
  enum class Kind { utf8, latin1, ascii, utf16le, utf16be };

  MarkupEncoding(Kind kind, std::string label, bool byteOrderMark)
      : kind(kind), label(std::move(label)), byteOrderMark(byteOrderMark) {}

  // `utf8` escaped; `quote` is the quote of an attribute value, 0 in text.
  std::string escape(const std::string& utf8, char quote) const;

  Kind kind;
  std::string label;
  bool byteOrderMark;  // UTF-16 only: the file starts with one
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_MARKUPENCODING_H_
