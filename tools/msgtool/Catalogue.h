// Catalogue: the message documents named on msgtool's command line, read as
// the library's loader reads them, with the place of every element kept.
//
// Several documents form one catalogue: entries of all files stand side by
// side, and keys are compared across files. Each Text element becomes one
// CatalogueEntry holding the attributes exactly as written and the place of
// the element, so that a finding can point at it. What the loader would
// make of an entry (defaults for absent attributes, the packed language,
// the severity level) comes from the library's own rules.

#ifndef MSGTOOL_CATALOGUE_H_
#define MSGTOOL_CATALOGUE_H_

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "msg/ErrorInMessageDocument.h"
#include "msg/SeverityLevel.h"

namespace msgtool {

// A place in a document: 1-based line and column, 0 when not known.
struct SourcePlace {
  std::string file;
  int line = 0;
  int column = 0;

  bool operator==(const SourcePlace& other) const {
    return line == other.line && column == other.column && file == other.file;
  }
};

// One Text element of a Message of a MessageNamespace.
struct CatalogueEntry {
  SourcePlace place;           // the Text element
  SourcePlace messagePlace;    // its Message
  SourcePlace namespacePlace;  // its MessageNamespace

  // As written; "" where the attribute is absent or empty (the loader does
  // not tell the two apart either).
  std::string nameSpace;
  std::string identifier;
  std::string severityWord;
  std::string language;
  std::string count;    // count of the Message ("&1"), "" if absent
  std::string plural;   // plural of the Text: a category or "=N", "" if absent
  std::string ordinal;  // ordinal of the Text, as plural
  std::string text;
  std::string translatedFrom;  // msgtool:translated-from (see SourceStamp.h), "" if absent

  // What the loader registers.
  std::string effectiveNamespace;   // "no-ns" in place of an absent name
  std::string effectiveIdentifier;  // "no-id" in place of an absent id
  std::string effectiveLanguage;    // "en" in place of an absent xml:lang
  std::string packedLanguage;       // the effective language as the table keeps it
  msg::SeverityLevel severity = msg::error;
};

// The key of a message: namespace and identifier, as the loader registers
// them.
using MessageKey = std::pair<std::string, std::string>;

// A document that the loader would refuse; nothing of it is read.
struct RefusedDocument {
  std::string file;
  std::vector<msg::DocumentProblem> problems;  // at least one
};

class Catalogue {
 public:
  // Reads `files` in order. A document the loader refuses (not well formed,
  // not valid, no MessageCollection, refused by a safety rule) is kept in
  // refused() with the problems the library reports, and gives no entries.
  // Raises ToolError for a file that cannot be taken as a document at all:
  // missing, a folder, unreadable, empty, binary, or over limits::kMaxMessageDocumentBytes.
  static Catalogue read(const std::vector<std::string>& files);

  const std::vector<CatalogueEntry>& entries() const { return entries_; }
  const std::vector<RefusedDocument>& refused() const { return refused_; }

  // The packed languages present, sorted.
  std::vector<std::string> languages() const;

  // The entries of every key, keys sorted, entries in reading order.
  using EntriesByKey = std::map<MessageKey, std::vector<const CatalogueEntry*>>;
  EntriesByKey byKey() const;

 private:
  // Adds the entries of `file` as the loader reads them, with their
  // places; a document the loader refuses is recorded in refused_.
  void readDocument(const std::string& file);

  std::vector<CatalogueEntry> entries_;
  std::vector<RefusedDocument> refused_;
};

// Keeps the library's XML system started while it lives, with UTF-8 output,
// so that the tool's texts come out as UTF-8 whatever the locale.
class XmlSession {
 public:
  XmlSession();
  ~XmlSession();
  XmlSession(const XmlSession&) = delete;
  XmlSession& operator=(const XmlSession&) = delete;
};

}  // namespace msgtool

#endif  // MSGTOOL_CATALOGUE_H_
