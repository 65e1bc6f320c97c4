// IncomingFile: a translator's PO or XLIFF file as import sees it, one
// IncomingUnit per message whatever the format: a plural message's forms
// are gathered into the unit that carries its key.

#ifndef MSGTOOL_INCOMINGFILE_H_
#define MSGTOOL_INCOMINGFILE_H_

#include <optional>
#include <string>
#include <vector>

#include "TranslationFormat.h"

namespace msgtool {

// One unit of the file, whatever its format.
struct IncomingUnit {
  std::string key;  // "namespace:identifier"
  std::string source;
  std::string target;  // "" when there is none
  bool untranslated = false;
  bool fuzzy = false;
  std::string severity;
  std::string count;  // the Message's count placeholder as exported ("&1"), "" if none
  int line = 0;
  std::string sourceLanguage;  // the unit's own xml:lang, "" if it names none
  std::string targetLanguage;
  // A plural message's cardinal forms (msgid_plural, msgstr[N]): the source's
  // `other`, and the translation of each form as gettext numbers them.
  std::optional<std::string> sourcePlural;
  std::vector<std::string> forms;
};

class IncomingFile {
 public:
  std::string sourceLanguage;  // "" when the file does not say
  std::string targetLanguage;
  const char* targetField;  // where the file names its target language
  std::vector<IncomingUnit> units;

  // Reads the translator's file at `path` in `format`. Raises ToolError
  // with the line of the fault for a file the reader refuses, an empty PO
  // file, a PO entry without msgctxt, or a key that appears twice.
  // REQUIRES: the XML system is up (for XLIFF).
  static IncomingFile read(const std::string& path, TranslationFormat format);
};

}  // namespace msgtool

#endif  // MSGTOOL_INCOMINGFILE_H_
