// PoFile: a gettext PO file as msgtool reads and writes it.
//
// The reader accepts what gettext's own tools write: strings wrapped over
// several lines, every comment kind, flags, obsolete entries (dropped) and
// previous-msgid lines (dropped), plural entries (msgid_plural and msgstr[N],
// the forms numbered from 0 without gaps). It refuses every charset but
// UTF-8. The writer produces what msgfmt
// accepts, splitting strings after each "\n" and wrapping long lines at
// spaces the way gettext does, so that files diff cleanly against the ones
// gettext rewrites.

#ifndef MSGTOOL_POFILE_H_
#define MSGTOOL_POFILE_H_

#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace msgtool {

struct PoEntry {
  std::vector<std::string> translatorComments;  // "# ..."
  std::vector<std::string> extractedComments;   // "#. ..."
  std::vector<std::string> references;          // "#: ..."
  std::vector<std::string> flags;               // "#, a, b"
  std::optional<std::string> context;           // msgctxt
  std::string id;                               // msgid
  std::string str;                              // msgstr
  // A plural entry: msgid_plural, and msgstr[0], msgstr[1] ... in `forms`
  // (then `str` is unused).
  std::optional<std::string> idPlural;
  std::vector<std::string> forms;
  int line = 0;  // line of the entry's msgctxt or msgid, from the reader

  bool hasFlag(const std::string& flag) const;
};

class PoFile {
 public:
  // The header's fields in order, "Name: value" without the newline.
  std::vector<std::pair<std::string, std::string>> header;
  // Comment lines above the header (without "# ").
  std::vector<std::string> headerComments;
  std::vector<PoEntry> entries;

  // Reads `path`. Raises ToolError with the line of the first fault: an
  // unterminated string or unknown escape, a keyword out of place, a
  // msgstr[N] out of order, bytes that are not UTF-8, or a charset other
  // than UTF-8.
  static PoFile read(const std::string& path);

  // Writes header and entries in PO syntax.
  void write(std::ostream& out) const;

  // The value of a header field, "" if absent.
  std::string headerField(const std::string& name) const;
};

}  // namespace msgtool

#endif  // MSGTOOL_POFILE_H_
