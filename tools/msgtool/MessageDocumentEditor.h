// MessageDocumentEditor: changes texts of a message document and of the
// parts it includes, and writes back only what changed: every file keeps
// its encoding, line ends, quotes, attribute order and spacing, XML
// declaration, comments and indentation; a file that nothing changed is not
// written.
//
// Each file is read as written (DocumentFile) and walked where and as the
// loader walks it (msg::walkMessageDocument); an edit changes the file's own
// text (XercesXML::MarkupEditor). A key is edited in the file that holds its
// Message, the document or an included part; where several hold one, the
// text the loader keeps is edited, the last in the expanded document. The
// editor also works on a part given directly: a file whose root is a
// MessageNamespace, or a MessageCollection that names no schema.

#ifndef MSGTOOL_MESSAGEDOCUMENTEDITOR_H_
#define MSGTOOL_MESSAGEDOCUMENTEDITOR_H_

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "DocumentFile.h"

namespace msgtool {

class MessageDocumentEditor {
 public:
  // Opens the document or part at `path` and the parts it includes; if no
  // file is there, starts a new document that names `schemaLocation` as its
  // schema.
  // Raises ToolError naming the file if the document is read-only, if it
  // exists but the loader refuses it, it is larger than
  // limits::kMaxMessageDocumentBytes, it holds no MessageCollection (a part:
  // no MessageNamespace either), or a file is in an encoding the editor
  // cannot write.
  // REQUIRES: the XML system is up (UTF-8 output).
  MessageDocumentEditor(std::string path, const std::string& schemaLocation);
  ~MessageDocumentEditor();

  // Which Text of a language: by default the one without plural and
  // ordinal attributes (the only text of a plain message, `other` of a
  // plural one); else the one whose `attribute` ("plural" or "ordinal") is
  // `value` ("few", "=0").
  struct Variant {
    std::string attribute;
    std::string value;
  };

  // A text of a key in one language: the last one, which the loader keeps.
  struct ExistingText {
    std::string text;
    std::string stamp;  // value of msgtool:translated-from, "" if none
  };
  std::optional<ExistingText> find(const std::string& nameSpace, const std::string& identifier,
                                   const std::string& language,
                                   const Variant& variant = Variant()) const;

  // True if the key has a Message in the document or an included part.
  bool hasMessage(const std::string& nameSpace, const std::string& identifier) const;

  // The count placeholder ("&1") that the key's Message names, as the loader
  // reads it; "" if it names none or the key has no Message.
  std::string countOf(const std::string& nameSpace, const std::string& identifier) const;

  // True if the key's Message stands where the editor cannot write: in a
  // part included only in part (xpointer) or as text, or whose root is a
  // Message.
  bool isOutOfReach(const std::string& nameSpace, const std::string& identifier) const;

  // Makes `text` the key's text in `language` (its `variant`), stamped with
  // `stamp`: the Text the loader keeps, the last of the language and variant
  // in the expanded document. Adds the Text (with the variant's attribute)
  // after the key's last Text, the Message (with `severityWord`) after the
  // namespace's last Message, and the MessageNamespace after the document's
  // last one, where they are missing. A Message it adds names `count` as its
  // count placeholder ("&1") unless that is empty; an existing Message keeps
  // its own.
  // Raises ToolError for a namespace that a part given directly cannot hold.
  // REQUIRES: !isOutOfReach(nameSpace, identifier).
  void setText(const std::string& nameSpace, const std::string& identifier,
               const std::string& severityWord, const std::string& language,
               const std::string& text, const std::string& stamp,
               const Variant& variant = Variant(), const std::string& count = std::string());

  bool isNew() const { return created; }

  // Writes each changed file in place, atomically, once the result loads:
  // the parts first, each checked to be well formed, then the document,
  // loaded as the loader loads it, with its new parts. A file whose bytes
  // did not change is not written. Raises ToolError naming the file; the
  // files written before it are then put back as they were (the error says
  // so if one of them cannot be).
  void save() const;

 private:
  struct TextPlace {
    int file = -1;
    int element = -1;
    ExistingText current;
  };
  struct MessagePlace {
    int file = -1;
    int element = -1;                        // the last Message of the key
    int lastText = -1;                       // its last Text
    std::map<std::string, TextPlace> texts;  // textKey -> last Text
  };
  struct NamespacePlace {
    int file = -1;
    int element = -1;
    int lastMessage = -1;
  };

  // A part as a file includes it: the include element, and the part's
  // index in `files`.
  struct PartAt {
    int element;
    int file;
  };

  void readLoadedTexts();
  void openParts();
  void index(int file, std::vector<int>& within);
  static std::string keyOf(const std::string& nameSpace, const std::string& identifier);
  // The language and variant of a Text, as one key.
  static std::string textKey(const std::string& language, const std::string& plural,
                             const std::string& ordinal);
  static std::string textKey(const std::string& language, const Variant& variant);
  void stamp(int file, int element, const std::string& value);

  std::string path;
  bool created = false;
  std::vector<std::unique_ptr<DocumentFile>> files;  // [0] is `path`, then its parts
  std::vector<std::vector<PartAt>> partsOf;          // per file, in document order
  int collection = -1;     // the MessageCollection of files[0]; -1 in a namespace part
  int lastNamespace = -1;  // the last MessageNamespace of files[0], -1 if none
  std::map<std::string, MessagePlace> messages;      // keyOf -> place
  std::map<std::string, NamespacePlace> namespaces;  // name -> the last one
  std::set<std::string> loadedKeys;                  // keyOf, as the loader reads them
  std::map<std::string, std::string> loadedCounts;   // keyOf -> the Message's count
  std::map<std::string, ExistingText> loadedTexts;   // keyOf + '\n' + textKey, as loaded
};

}  // namespace msgtool

#endif  // MSGTOOL_MESSAGEDOCUMENTEDITOR_H_
