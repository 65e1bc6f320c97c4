// TextWrite: one text that an imported unit writes into the document: a
// plain message's, or one variant of a plural message's. A plural unit from
// a PO file writes one text per gettext form, each as its CLDR category.

#ifndef MSGTOOL_TEXTWRITE_H_
#define MSGTOOL_TEXTWRITE_H_

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "IncomingFile.h"
#include "MessageDocumentEditor.h"

namespace msgtool {

struct TextWrite {
  MessageDocumentEditor::Variant variant;
  std::string text;
  // The variant is chosen for one number only, so its text may leave out
  // the count.
  bool single = false;

  // The variant "[plural =0]" or "[ordinal few]" at the end of a unit's
  // key, for the texts of a plural message that gettext cannot number.
  // Removes it from `key`; returns nullopt (and leaves `key` as it was) if
  // the key ends in none. "other" is the text without the attribute.
  static std::optional<MessageDocumentEditor::Variant> takeVariant(std::string& key);

  // The texts that `unit` writes in `language` (a tag); `variant` is the
  // one its key named, if any.
  static std::vector<TextWrite> writesOf(
      const IncomingUnit& unit, const std::optional<MessageDocumentEditor::Variant>& variant,
      const std::string& language);

  // Why the text cannot be imported, "" if it can: it is empty, holds what
  // a document cannot, or its placeholders are not those of the source
  // (`expected`), but for the count placeholder number `count` that a
  // `single` text may leave out. `which` names the text in the result.
  std::string fault(const std::set<unsigned>& expected, unsigned count,
                    const std::string& which) const;
};

}  // namespace msgtool

#endif  // MSGTOOL_TEXTWRITE_H_
