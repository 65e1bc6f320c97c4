#include "msg/MessageHandlerX.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "msg/ErrorInMessageDocument.h"
#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/SeverityLevel.h"
#include "xml_access/XercesXML.h"

namespace msg {

namespace {

// True once object() has put a MessageHandlerX in front of the process-wide
// handler. One flag for the whole process; nothing turns it false again.
bool handlerStacked = false;

const char kReportNamespace[] = "msgx";
const char kDocumentErrorId[] = "MessageDocumentError";
const char kNoCollectionId[] = "NoMessageCollection";
const char kNoCollectionText[] = "No MessageCollection element found in document";

// Writes the report `identifier` of namespace "msgx" through `handler`,
// with `path` as argument &0, and throws ErrorInMessageDocument with `text`.
// If the handler has no acceptable text for the report, not even the
// not-found text, MessageNotFound leaves instead.
[[noreturn]] void reportAndThrow(MessageHandler& handler, const char* identifier, const char* path,
                                 const std::string& text) {
  {
    Message report(&handler, kReportNamespace, identifier);
    handler.writeMessage1(report, path);
  }
  throw ErrorInMessageDocument(text.c_str());
}

bool isDirectory(const char* path) {
  std::error_code ignored;
  return std::filesystem::is_directory(path, ignored);
}

// The value of an attribute, or `fallback` if it is absent or empty.
std::string attributeOr(const XercesXML::DOMNode& element, const char* name, const char* fallback) {
  std::string value = element.getAttributeByName(name, std::string());
  return value.empty() ? std::string(fallback) : value;
}

// The severity word of a Message; every word but the four, and a missing
// one, counts as error.
SeverityLevel severityFromWord(const std::string& word) {
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

// The element children of `parent` named `name`, in document order, one
// after the other; elements of other names are passed over with all they
// hold.
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

// Registers the Text elements of every Message of every MessageNamespace of
// `collection` in `handler`, keeping only languages `languages` accepts.
void registerCollection(const XercesXML::DOMNode& collection, const LanguageList& languages,
                        MessageHandler* handler) {
  for (ElementsNamed space(collection, "MessageNamespace"); !space.atEnd(); space.next()) {
    const std::string nameSpace = attributeOr(space.get(), "name", "no-ns");
    for (ElementsNamed message(space.get(), "Message"); !message.atEnd(); message.next()) {
      const std::string identifier = attributeOr(message.get(), "id", "no-id");
      const SeverityLevel severity =
          severityFromWord(message.get().getAttributeByName("severity", std::string()));
      for (ElementsNamed text(message.get(), "Text"); !text.atEnd(); text.next()) {
        const std::string language = attributeOr(text.get(), "xml:lang", "en");
        // The filter comes before the text is read: a dropped language costs
        // no conversion.
        if (languages.distance(Language(language.c_str())) < 0) {
          continue;
        }
        const std::string value = text.get().getChildText();
        // The table owns the entry and its copied strings; an entry of the
        // same key is replaced without complaint.
        new MTE(static_cast<short>(severity), language.c_str(), nameSpace.c_str(),
                identifier.c_str(), value.c_str(), handler, false, true);
      }
    }
  }
}

}  // namespace

MessageHandlerX::MessageHandlerX() : MessageHandler() {
  // Join a running system with the encoding in force, so the start is never
  // refused for a changed encoding.
  const bool wasRunning = XercesXML::isSystemInitialized();
  const XercesXML::OutputEncoding encoding =
      wasRunning ? XercesXML::getOutputEncoding() : XercesXML::LocalCodePage;
  try {
    XercesXML::initializeSystem(encoding);
  } catch (...) {
    // A start that raises may still have counted itself (a failed
    // transcoder leaves the system up); the destructor will not run, so
    // give that start back here.
    if (wasRunning || XercesXML::isSystemInitialized()) {
      XercesXML::terminateSystem();
    }
    throw;
  }
}

MessageHandlerX::~MessageHandlerX() {
  XercesXML::terminateSystem();
  if (handlerStacked && getParent() != nullptr) {
    delete getParent();
  }
  setParent(nullptr);
}

MessageHandlerX* MessageHandlerX::object() {
  MessageHandler*& slot = singletonSlot();
  if (slot == nullptr) {
    // Only in a process where no entry has been registered yet. The flag is
    // set as well, so a later call cannot stack a second handler.
    MessageHandlerX* handler = new MessageHandlerX();
    slot = handler;
    handlerStacked = true;
    return handler;
  }
  if (!handlerStacked) {
    MessageHandlerX* handler = new MessageHandlerX();
    handler->setParent(slot);
    slot = handler;
    handlerStacked = true;
    return handler;
  }
  // Once stacked, the slot holds the handler stacked here and nothing
  // replaces it.
  return static_cast<MessageHandlerX*>(slot);
}

void MessageHandlerX::loadMessageDocument(const char* path) {
  XercesXML::DOMNode document;  // raises NotInitialized while the system is down
  bool parsed = false;
  // A folder is refused before Xerces-C opens it: its reader loses a buffer
  // when the first read of a directory fails.
  if (!isDirectory(path)) {
    try {
      XercesXML::Parser parser(false, false);
      parser.setXInclude(true, std::string());
      // The document outlives the parser: it belongs to its handles.
      document = parser.parseFile(path);
      parsed = true;
    } catch (const XercesXML::ParsingError&) {
      // Its text (the parser's error lines) is not passed on: the report
      // and the exception name the document only.
    }
  }
  if (!parsed) {
    reportAndThrow(*this, kDocumentErrorId, path,
                   std::string("Message document \"") + path + "\" contains syntactical error.");
  }

  const XercesXML::DOMNode collection = document.findFirstNodeByName("MessageCollection");
  if (!collection.isValid()) {
    reportAndThrow(*this, kNoCollectionId, path, kNoCollectionText);
  }
  registerCollection(collection, getLanguageList(), this);
}

}  // namespace msg
