// MessageDocumentEditor: changes texts of one message document through its
// DOM and writes it back, leaving everything else as it stood: other
// languages, other keys, comments, includes, the order of elements and the
// indentation around them.
//
// The document is read as written (includes are not expanded), through the
// library's profile for files from outside, so that the file written back
// still includes its parts; it is walked where and as the loader walks it
// (msg::walkMessageDocument). Keys that live only in an included part are
// reported by isInIncludedPart() and are not edited here.

#ifndef MSGTOOL_MESSAGEDOCUMENTEDITOR_H_
#define MSGTOOL_MESSAGEDOCUMENTEDITOR_H_

#include <map>
#include <optional>
#include <set>
#include <string>

#include "xml_access/DOMNode.h"

namespace msgtool {

class MessageDocumentEditor {
 public:
  // Opens the document at `path`; if no file is there, starts a new one
  // that names `schemaLocation` as its schema.
  // Raises ToolError naming the file if the document is read-only, if it
  // exists but the loader refuses it, it is larger than limits::kMaxMessageDocumentBytes, or it
  // holds no MessageCollection.
  // REQUIRES: the XML system is up (UTF-8 output).
  MessageDocumentEditor(std::string path, const std::string& schemaLocation);

  // A text of a key in one language: the last one, which the loader keeps.
  struct ExistingText {
    std::string text;
    std::string stamp;  // value of msgtool:translated-from, "" if none
  };
  std::optional<ExistingText> find(const std::string& nameSpace, const std::string& identifier,
                                   const std::string& language) const;

  // True if the key has a Message in the document or an included part.
  bool hasMessage(const std::string& nameSpace, const std::string& identifier) const;

  // True if the key has a Message in an included part but none in the
  // document itself.
  bool isInIncludedPart(const std::string& nameSpace, const std::string& identifier) const;

  // Makes `text` the key's text in `language`, stamped with `stamp`. Adds
  // the Text after the key's last Text, the Message (with `severityWord`)
  // after the namespace's last Message, and the MessageNamespace at the end
  // of the collection, where they are missing.
  void setText(const std::string& nameSpace, const std::string& identifier,
               const std::string& severityWord, const std::string& language,
               const std::string& text, const std::string& stamp);

  bool isNew() const { return created; }

  // Writes the document in place of the file, atomically, once the loader
  // has accepted the new content. Raises ToolError naming the file; the file
  // is then unchanged.
  void save() const;

 private:
  struct MessagePlace {
    XercesXML::DOMNode message;                       // the last Message of the key
    std::map<std::string, XercesXML::DOMNode> texts;  // language -> last Text
  };

  void index();
  void readIncludedKeys();
  static std::string keyOf(const std::string& nameSpace, const std::string& identifier);
  XercesXML::DOMNode newElement(const char* name) const;

  // The last Message child of `space`, the namespace's element in the
  // document: found once, then kept up to date by setText, so that adding
  // many messages to one namespace does not scan it for each.
  XercesXML::DOMNode& lastMessageOf(const std::string& nameSpace, const XercesXML::DOMNode& space);

  std::string path;
  bool created = false;
  XercesXML::DOMNode document;
  XercesXML::DOMNode collection;
  std::map<std::string, MessagePlace> messages;            // keyOf -> place
  std::map<std::string, XercesXML::DOMNode> namespaces;    // name -> last one
  XercesXML::DOMNode lastNamespace;                        // the last in the document, null if none
  std::map<std::string, XercesXML::DOMNode> lastMessages;  // name -> see lastMessageOf
  std::set<std::string> includedKeys;                      // keys only in included parts
  std::map<std::string, ExistingText> includedTexts;       // keyOf + '\n' + language
};

}  // namespace msgtool

#endif  // MSGTOOL_MESSAGEDOCUMENTEDITOR_H_
