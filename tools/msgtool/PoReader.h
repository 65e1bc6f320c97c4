// PoReader: reads a PO file line by line into a PoFile (see PoFile.h for
// what it accepts and refuses). Used through PoFile::read.

#ifndef MSGTOOL_POREADER_H_
#define MSGTOOL_POREADER_H_

#include <cstddef>
#include <string>

#include "PoFile.h"

namespace msgtool {

class PoReader {
 public:
  explicit PoReader(std::string path);

  // Reads the whole file. Raises ToolError with the line of the first
  // fault (see PoFile::read).
  PoFile read();

 private:
  enum class Part { none, context, id, idPlural, str, form };

  [[noreturn]] void fail(const std::string& message) const;

  void readLine(const std::string& raw);

  // A keyword line's keyword (msgctxt, msgid, msgid_plural, msgstr,
  // msgstr[N]): moves to the part it starts, finishing the entry before it
  // where it starts a new one; fails where the keyword may not stand.
  void readKeyword(const std::string& keyword);

  // msgstr[N]: the next form of a plural entry, numbered in order.
  void readFormKeyword(const std::string& keyword);

  void readComment(const std::string& text);

  std::string* target();

  // The value of the quoted strings that start at or after `from`, joined:
  // gettext takes "a" "b" on one line as "ab". Nothing else may follow.
  std::string parseString(const std::string& text, std::size_t from);

  // Appends the escape starting at text[i] (after the backslash); returns
  // the index of its last character.
  std::size_t readEscape(const std::string& text, std::size_t i, std::string& value);

  void finishEntry();

  void readHeader();

  void checkCharset() const;

  std::string path;
  int line = 0;
  PoFile file;
  PoEntry entry;
  Part part = Part::none;
  bool headerSeen = false;
  int headerLine = 0;
};

}  // namespace msgtool

#endif  // MSGTOOL_POREADER_H_
