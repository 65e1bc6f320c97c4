#include "message_documents/MessageDocumentReader.h"

#include <filesystem>
#include <system_error>

#include "xml_access/XercesXML.h"

namespace msg {

namespace {

std::string orDefault(const std::string& value, const char* fallback) {
  return value.empty() ? std::string(fallback) : value;
}

// The element children of `parent` named `name`, in document order; elements
// of other names are passed over with all they hold.
class ElementsNamed {
 public:
  ElementsNamed(const XercesXML::DOMNode& parent, const char* name) : name(name) {
    current = parent.getFirstElementChild();
    skipOthers();
  }

  bool atEnd() const { return !current.isValid(); }
  const XercesXML::DOMNode& get() const { return current; }

  void next() {
    current = current.getNextElementSibling();
    skipOthers();
  }

 private:
  void skipOthers() {
    while (current.isValid() && current.getNodeName() != name) {
      current = current.getNextElementSibling();
    }
  }

  const char* name;
  XercesXML::DOMNode current;
};

}  // namespace

std::string DocumentText::effectiveNamespace() const {
  return orDefault(nameSpace, kDefaultNamespace);
}

std::string DocumentText::effectiveIdentifier() const {
  return orDefault(identifier, kDefaultIdentifier);
}

std::string DocumentText::effectiveLanguage() const {
  return orDefault(language, kDefaultLanguage);
}

SeverityLevel DocumentText::severityFromWord(const std::string& word) {
  if (word == "info") {
    return info;
  }
  if (word == "warning") {
    return warning;
  }
  if (word == "abort") {
    return abort;
  }
  return error;
}

bool DocumentText::isSeverityWord(const std::string& word) {
  return word == "info" || word == "warning" || word == "error" || word == "abort";
}

namespace {

// The lines of a ParsingError's text as problems of `path`.
DocumentRefused refusalFromParserText(const char* path, const std::string& text) {
  DocumentRefused refused;
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t end = text.find('\n', begin);
    if (end == std::string::npos) {
      end = text.size();
    }
    if (end > begin) {
      refused.problems.push_back(DocumentProblem{path, 0, 0, text.substr(begin, end - begin)});
    }
    begin = end + 1;
  }
  if (refused.problems.empty()) {
    refused.problems.push_back(DocumentProblem{path, 0, 0, "the document could not be parsed"});
  }
  return refused;
}

XercesXML::DOMNode parse(const char* path) {
  // A folder is refused before Xerces-C opens it: its reader loses a buffer
  // when the first read of a directory fails.
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    throw DocumentRefused{{DocumentProblem{path, 0, 0, "is a folder, not a document"}}};
  }
  try {
    XercesXML::Parser parser(false, false);
    parser.setXInclude(true, std::string());
    // The document outlives the parser: it belongs to its handles.
    return parser.parseFile(path);
  } catch (const XercesXML::ParsingError& failure) {
    throw refusalFromParserText(path, failure.getText());
  }
}

}  // namespace

XercesXML::DOMNode parseMessageDocument(const char* path) {
  return parse(path);
}

XercesXML::DOMNode parseMessageDocumentWithPositions(const char* path) {
  return parse(path);
}

XercesXML::DOMNode findMessageCollection(const XercesXML::DOMNode& document) {
  return document.findFirstNodeByName("MessageCollection");
}

void forEachDocumentText(const XercesXML::DOMNode& collection,
                         const std::function<void(const DocumentText&)>& visit) {
  DocumentText entry;
  for (ElementsNamed space(collection, "MessageNamespace"); !space.atEnd(); space.next()) {
    entry.namespaceElement = space.get();
    entry.nameSpace = space.get().getAttributeByName("name", std::string());
    for (ElementsNamed message(space.get(), "Message"); !message.atEnd(); message.next()) {
      entry.messageElement = message.get();
      entry.identifier = message.get().getAttributeByName("id", std::string());
      entry.severityWord = message.get().getAttributeByName("severity", std::string());
      for (ElementsNamed text(message.get(), "Text"); !text.atEnd(); text.next()) {
        entry.textElement = text.get();
        entry.language = text.get().getAttributeByName("xml:lang", std::string());
        visit(entry);
      }
    }
  }
}

}  // namespace msg
