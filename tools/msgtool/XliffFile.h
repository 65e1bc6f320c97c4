// XliffFile: an XLIFF 1.2 file as msgtool writes it and reads it back (and
// XLIFF 2.0, see Xliff2.cpp).
//
// One trans-unit per catalogue key (the key is both `id` and `resname`), its
// source, its target with a `state`, the severity in a note and the place
// in the message document in a location context group. Each placeholder
// "&N" of a text becomes <x id=".." equiv-text="&N"/>, an inline element
// that translation tools protect; reading maps every such element back to
// its placeholder byte for byte, by its id or its equiv-text, wherever the
// translator moved it.
//
// The reader takes what other tools add (groups, alt-trans, extra notes,
// attributes of any namespace, <g> and <mrk> around text) and passes over
// what msgtool does not use. Files are documents from outside and are read
// through the library's profile for them (see XliffReader and
// OutsideFiles.h).

#ifndef MSGTOOL_XLIFFFILE_H_
#define MSGTOOL_XLIFFFILE_H_

#include <optional>
#include <string>
#include <vector>

namespace msgtool {

struct XliffUnit {
  std::string key;                    // resname, else id
  std::string source;                 // with its placeholders as "&N"
  std::optional<std::string> target;  // absent: no <target>
  std::string state;                  // the target's state ("" if none)
  bool approved = false;              // approved="yes" on the unit
  std::string severity;               // from the note "severity: ..."
  std::string count;                  // from the note "count: &1", "" if none
  std::string sourceLanguage;         // xml:lang of the source, "" if none
  std::string targetLanguage;         // xml:lang of the target, "" if none
  std::string sourceFile;             // location context, for the writer
  int sourceLine = 0;
  int line = 0;  // line of the trans-unit, from the reader
  // A form of a plural message, numbered as gettext numbers them; -1 for a
  // plain unit. The forms of one key follow one another in `units`, and are
  // written in one group: <group restype="x-gettext-plurals"> in 1.2,
  // <group type="msgtool:plurals"> in 2.0, the group's id the key and each
  // unit's id "KEY[i]".
  int form = -1;
};

class XliffFile {
 public:
  std::string original;  // the message documents, as given
  std::string sourceLanguage;
  std::string targetLanguage;
  std::vector<XliffUnit> units;
  // Written as XLIFF 2.0 (see Xliff2.cpp) rather than 1.2; set by the
  // reader for a 2.x file. Units keep the 1.2 state names either way.
  bool version2 = false;

  // Reads `path`, XLIFF 1.0 to 1.2 or 2.x (see XliffReader). Raises
  // ToolError with a line for a file that is not well formed, is no XLIFF,
  // has another version, or has a unit without id or source or with an
  // inline element that stands for no placeholder.
  // REQUIRES: the XML system is up.
  static XliffFile read(const std::string& path);

  // The file as UTF-8 XML text.
  // REQUIRES: the XML system is up.
  std::string write() const;
};

// The XLIFF 2 writer (Xliff2.cpp).
std::string writeXliff2(const XliffFile& file);

}  // namespace msgtool

#endif  // MSGTOOL_XLIFFFILE_H_
