// MessageDocumentReader: parses a message document and walks its texts, the
// one place where the rules for reading message documents live. The loader
// (MessageHandlerX) and the catalogue tool both read documents through it, so
// a document the loader refuses is refused by the tool in the same way.

#ifndef MSG_MESSAGE_DOCUMENTS_MESSAGEDOCUMENTREADER_H_
#define MSG_MESSAGE_DOCUMENTS_MESSAGEDOCUMENTREADER_H_

#include <functional>
#include <string>
#include <vector>

#include "msg/ErrorInMessageDocument.h"

#include "msg/SeverityLevel.h"
#include "xml_access/DOMNode.h"

namespace msg {

// The values the loader puts in place of what a document leaves out.
inline constexpr char kDefaultNamespace[] = "no-ns";
inline constexpr char kDefaultIdentifier[] = "no-id";
inline constexpr char kDefaultLanguage[] = "en";

// One Text element of a message document, with the attributes of its Message
// and MessageNamespace exactly as written: an absent attribute is "". The
// element handles keep the document alive and let a caller ask for more
// (positions, for instance).
struct DocumentText {
  std::string nameSpace;     // name of the MessageNamespace
  std::string identifier;    // id of the Message
  std::string severityWord;  // severity of the Message
  std::string language;      // xml:lang of the Text
  std::string count;         // count of the Message: its count placeholder ("&1")
  std::string plural;        // plural of the Text: a category or "=N"
  std::string ordinal;       // ordinal of the Text: the same for ordinal rules
  XercesXML::DOMNode namespaceElement;
  XercesXML::DOMNode messageElement;
  XercesXML::DOMNode textElement;

  // The loader's view: the defaults above in place of absent or empty values.
  std::string effectiveNamespace() const;
  std::string effectiveIdentifier() const;
  std::string effectiveLanguage() const;
  SeverityLevel effectiveSeverity() const { return severityFromWord(severityWord); }

  // The text as the catalogue stores it: the Text element's direct text and
  // CDATA children joined. Read on demand, so a walker that filters by
  // language pays nothing for dropped texts.
  std::string readText() const { return textElement.getChildText(); }

  // "info", "warning", "error" and "abort" name their levels; every other
  // word, and an absent one, counts as error.
  static SeverityLevel severityFromWord(const std::string& word);
  // True for the four words above.
  static bool isSeverityWord(const std::string& word);
};

// A message document was refused: it cannot be read, is not well formed,
// an include fails, it does not validate, or it breaks a rule for documents
// from outside. `problems` says where and why, at least one entry.
struct DocumentRefused {
  std::vector<DocumentProblem> problems;
};

// Parses the message document at `path` with the loader's settings:
// XIncludes expanded, then validated against the schema the document names.
// Returns the document node, which owns the document.
// Raises DocumentRefused.
// REQUIRES: the XML system is started; path is not null.
XercesXML::DOMNode parseMessageDocument(const char* path);

// For tools that point at places in a document; the loader never uses it.
// parseMessageDocument, the same parse with the same verdict, in which every
// element also knows its line and column (DOMNode::getSourceLine and
// getSourceColumn); an element that an include brings in from a part counts
// them in the part and names it (DOMNode::getSourceFile), by the folder of
// `path` and the part's path from there.
// Raises DocumentRefused.
XercesXML::DOMNode parseMessageDocumentWithPositions(const char* path);

// The MessageCollection element of a parsed document, or a null handle if it
// has none.
XercesXML::DOMNode findMessageCollection(const XercesXML::DOMNode& document);

// What a walk of a document calls, each in document order; an empty
// function is not called. The walk fills one DocumentText as it goes:
// onNamespace sees the name and element of a MessageNamespace, onMessage
// those of a Message as well, onText everything. Fields of a deeper level
// still hold the values of the element before.
struct DocumentVisitor {
  std::function<void(const DocumentText&)> onNamespace;
  std::function<void(const DocumentText&)> onMessage;
  std::function<void(const DocumentText&)> onText;
};

// The walk of a message document, as the loader reads it: every
// MessageNamespace child of `collection`, every Message child of those, and
// every Text child of those, in document order. Elements of other names
// are passed over with all they hold. The loader, the compiler and the
// tool's document editor all read documents through it.
void walkMessageDocument(const XercesXML::DOMNode& collection, const DocumentVisitor& visitor);

// walkMessageDocument that calls `visit` for every Text.
void forEachDocumentText(const XercesXML::DOMNode& collection,
                         const std::function<void(const DocumentText&)>& visit);

}  // namespace msg

#endif  // MSG_MESSAGE_DOCUMENTS_MESSAGEDOCUMENTREADER_H_
