#include "message_documents/MessageDocumentReader.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <limits>
#include <system_error>

#include "message_core/SeverityWords.h"
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
  SeverityLevel level = error;
  msg::severityFromWord(word, level);
  return level;
}

bool DocumentText::isSeverityWord(const std::string& word) {
  SeverityLevel level = error;
  return msg::severityFromWord(word, level);
}

namespace {

int clampToInt(std::uint64_t value) {
  constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<int>::max());
  return static_cast<int>(value > kLargest ? kLargest : value);
}

// The problems the parser recorded for its last parse, as the refusal of
// `path`.
DocumentRefused refusalFromParser(const char* path, const XercesXML::Parser& parser) {
  DocumentRefused refused;
  for (const XercesXML::ParseProblem& problem : parser.getProblems()) {
    refused.problems.push_back(DocumentProblem{problem.file, clampToInt(problem.line),
                                               clampToInt(problem.column), problem.message});
  }
  if (refused.problems.empty()) {
    refused.problems.push_back(DocumentProblem{path, 0, 0, "the document could not be parsed"});
  }
  return refused;
}

enum class Positions { Drop, Keep };

XercesXML::DOMNode parse(const char* path, Positions positions) {
  // A folder is refused before Xerces-C opens it: its reader loses a buffer
  // when the first read of a directory fails.
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    throw DocumentRefused{{DocumentProblem{path, 0, 0, "is a folder, not a document"}}};
  }
  XercesXML::Parser parser(false, false);
  parser.setXInclude(true, std::string());
  parser.setMessageDocumentRules(true);
  try {
    // The document outlives the parser: it belongs to its handles.
    if (positions == Positions::Keep) {
      return parser.parseFileWithPositions(path);
    }
    return parser.parseFile(path);
  } catch (const XercesXML::ParsingError&) {
    throw refusalFromParser(path, parser);
  }
}

}  // namespace

XercesXML::DOMNode parseMessageDocument(const char* path) {
  return parse(path, Positions::Drop);
}

XercesXML::DOMNode parseMessageDocumentWithPositions(const char* path) {
  return parse(path, Positions::Keep);
}

// Breadth first, as the name search of DOMNode, but over elements alone: a
// document type or processing instruction of the same name is no catalogue.
XercesXML::DOMNode findMessageCollection(const XercesXML::DOMNode& document) {
  std::deque<XercesXML::DOMNode> queue;
  if (document.isValid()) {
    queue.push_back(document.getFirstElementChild());
  }
  while (!queue.empty() && queue.front().isValid()) {
    if (queue.front().getNodeName() == "MessageCollection") {
      return queue.front();
    }
    for (XercesXML::DOMNode child = queue.front().getFirstElementChild(); child.isValid();
         child = child.getNextElementSibling()) {
      queue.push_back(child);
    }
    queue.pop_front();
  }
  return XercesXML::DOMNode();
}

void walkMessageDocument(const XercesXML::DOMNode& collection, const DocumentVisitor& visitor) {
  DocumentText entry;
  for (ElementsNamed space(collection, "MessageNamespace"); !space.atEnd(); space.next()) {
    entry.namespaceElement = space.get();
    entry.nameSpace = space.get().getAttributeByName("name", std::string());
    if (visitor.onNamespace) {
      visitor.onNamespace(entry);
    }
    for (ElementsNamed message(space.get(), "Message"); !message.atEnd(); message.next()) {
      entry.messageElement = message.get();
      entry.identifier = message.get().getAttributeByName("id", std::string());
      entry.severityWord = message.get().getAttributeByName("severity", std::string());
      entry.count = message.get().getAttributeByName("count", std::string());
      if (visitor.onMessage) {
        visitor.onMessage(entry);
      }
      for (ElementsNamed text(message.get(), "Text"); !text.atEnd(); text.next()) {
        entry.textElement = text.get();
        entry.language = text.get().getAttributeByName("xml:lang", std::string());
        entry.plural = text.get().getAttributeByName("plural", std::string());
        entry.ordinal = text.get().getAttributeByName("ordinal", std::string());
        if (visitor.onText) {
          visitor.onText(entry);
        }
      }
    }
  }
}

void forEachDocumentText(const XercesXML::DOMNode& collection,
                         const std::function<void(const DocumentText&)>& visit) {
  walkMessageDocument(collection, DocumentVisitor{nullptr, nullptr, visit});
}

}  // namespace msg
