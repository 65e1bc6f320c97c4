#include "Catalogue.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <system_error>

#include "BinaryFiles.h"
#include "SourceStamp.h"
#include "ToolError.h"
#include "message_documents/MessageDocumentReader.h"
#include "msg/Language.h"
#include "platform/InputLimits.h"
#include "xml_access/XercesXML.h"

namespace msgtool {

namespace {

// Raises ToolError unless `file` can be handed to the parser as a document.
void requireReadableDocument(const std::string& file) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (!fs::exists(status)) {
    throw ToolError(file + ": no such file");
  }
  if (fs::is_directory(status)) {
    throw ToolError(file + ": is a folder; name the message documents in it");
  }
  if (!fs::is_regular_file(status)) {
    throw ToolError(file + ": is not a regular file");
  }
  const std::uintmax_t size = fs::file_size(file, error);
  if (error) {
    throw ToolError(file + ": " + error.message());
  }
  if (size == 0) {
    throw ToolError(file + ": is empty, not a message document");
  }
  if (size > msg::limits::kMaxMessageDocumentBytes) {
    throw ToolError(file + ": is " + std::to_string(size) +
                    " bytes; msgtool reads documents of up to " +
                    std::to_string(msg::limits::kMaxMessageDocumentBytes) + " bytes");
  }
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    throw ToolError(file + ": cannot be read: " + std::strerror(errno));
  }
  if (looksBinary(headOf(file), true)) {
    throw ToolError(file + ": is a binary file, not a message document");
  }
}

// Where `element` of the document `file` starts: in the part it came from,
// if an include brought it in.
SourcePlace placeOf(const std::string& file, const XercesXML::DOMNode& element) {
  const std::string part = element.getSourceFile();
  return SourcePlace{part.empty() ? file : part, element.getSourceLine(),
                     element.getSourceColumn()};
}

}  // namespace

XmlSession::XmlSession() {
  XercesXML::initializeSystem(XercesXML::UTF8);
}

XmlSession::~XmlSession() {
  XercesXML::terminateSystem();
}

Catalogue Catalogue::read(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    requireReadableDocument(file);
  }
  Catalogue catalogue;
  XmlSession session;
  for (const std::string& file : files) {
    catalogue.readDocument(file);
  }
  return catalogue;
}

void Catalogue::readDocument(const std::string& file) {
  // The loader's parse decides whether the document is taken, and gives the
  // values and the places in one go. One document is in memory at a time.
  XercesXML::DOMNode document;
  try {
    document = msg::parseMessageDocumentWithPositions(file.c_str());
  } catch (msg::DocumentRefused& refused) {
    // The parser names the document by its full path; a problem in the
    // document itself names it as the user did.
    for (msg::DocumentProblem& problem : refused.problems) {
      std::error_code ignored;
      if (problem.file.empty() || std::filesystem::equivalent(problem.file, file, ignored)) {
        problem.file = file;
      }
    }
    refused_.push_back(RefusedDocument{file, std::move(refused.problems)});
    return;
  }
  const XercesXML::DOMNode collection = msg::findMessageCollection(document);
  if (!collection.isValid()) {
    refused_.push_back(RefusedDocument{
        file,
        {msg::DocumentProblem{file, 0, 0, "No MessageCollection element found in document"}}});
    return;
  }
  // Counted first so that the entries take exactly the room they need.
  std::size_t count = 0;
  msg::forEachDocumentText(collection, [&](const msg::DocumentText&) { ++count; });
  entries_.reserve(entries_.size() + count);
  msg::forEachDocumentText(collection, [&](const msg::DocumentText& text) {
    CatalogueEntry entry;
    entry.place = placeOf(file, text.textElement);
    entry.messagePlace = placeOf(file, text.messageElement);
    entry.namespacePlace = placeOf(file, text.namespaceElement);
    entry.nameSpace = text.nameSpace;
    entry.identifier = text.identifier;
    entry.severityWord = text.severityWord;
    entry.language = text.language;
    entry.count = text.count;
    entry.plural = text.plural;
    entry.ordinal = text.ordinal;
    entry.text = text.readText();
    entry.translatedFrom =
        text.textElement.getAttributeByName(kTranslatedFromAttribute, kMsgtoolNamespace);
    entry.effectiveNamespace = text.effectiveNamespace();
    entry.effectiveIdentifier = text.effectiveIdentifier();
    entry.effectiveLanguage = text.effectiveLanguage();
    entry.packedLanguage = msg::Language(entry.effectiveLanguage.c_str()).toString();
    entry.severity = text.effectiveSeverity();
    entries_.push_back(std::move(entry));
  });
}

std::vector<std::string> Catalogue::languages() const {
  std::set<std::string> present;
  for (const CatalogueEntry& entry : entries_) {
    present.insert(entry.packedLanguage);
  }
  return std::vector<std::string>(present.begin(), present.end());
}

Catalogue::EntriesByKey Catalogue::byKey() const {
  EntriesByKey keys;
  for (const CatalogueEntry& entry : entries_) {
    keys[MessageKey(entry.effectiveNamespace, entry.effectiveIdentifier)].push_back(&entry);
  }
  return keys;
}

}  // namespace msgtool
