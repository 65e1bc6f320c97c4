#include "msg/MessageHandlerX.h"

#include <string>
#include <utility>
#include <vector>

#include "message_documents/MessageDocumentReader.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/SeverityLevel.h"
#include "structured_exceptions/ExceptionCatalogue.h"
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

// Exception texts come from the document handler: rendering the first one
// stacks it, as MessageHandlerX::object() does. Set while the library loads.
MessageHandler* documentHandler() {
  return MessageHandlerX::object();
}
[[maybe_unused]] const bool exceptionCatalogueSet =
    (setExceptionCatalogueSource(&documentHandler), true);

// Writes the report `identifier` of namespace "msgx" through `handler`,
// with `path` as argument &0, and throws ErrorInMessageDocument with `text`.
// If the handler has no acceptable text for the report, not even the
// not-found text, MessageNotFound leaves instead.
[[noreturn]] void reportAndThrow(MessageHandler& handler, const char* identifier, const char* path,
                                 const std::string& text,
                                 std::vector<DocumentProblem> problems = {}) {
  {
    Message report(&handler, kReportNamespace, identifier);
    handler.writeMessage1(report, path);
  }
  throw ErrorInMessageDocument(text.c_str(), std::move(problems));
}

// Registers every Text of `collection` whose language `languages` accepts
// in `handler`.
void registerCollection(const XercesXML::DOMNode& collection, const LanguageList& languages,
                        MessageHandler* handler) {
  forEachDocumentText(collection, [&](const DocumentText& entry) {
    const std::string language = entry.effectiveLanguage();
    // The filter comes before the text is read: a dropped language costs no
    // conversion.
    if (languages.distance(Language(language.c_str())) < 0) {
      return;
    }
    const std::string value = entry.readText();
    // The table owns the entry and its copied strings; an entry of the same
    // key is replaced without complaint.
    new MTE(static_cast<short>(entry.effectiveSeverity()), language.c_str(),
            entry.effectiveNamespace().c_str(), entry.effectiveIdentifier().c_str(), value.c_str(),
            handler, false, true);
  });
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
  std::vector<DocumentProblem> problems;
  try {
    document = parseMessageDocument(path);
  } catch (DocumentRefused& refused) {
    problems = std::move(refused.problems);
  }
  if (!problems.empty()) {
    // The report and the text name the document only; where and why go with
    // the exception.
    reportAndThrow(*this, kDocumentErrorId, path,
                   std::string("Message document \"") + path + "\" contains syntactical error.",
                   std::move(problems));
  }

  const XercesXML::DOMNode collection = findMessageCollection(document);
  if (!collection.isValid()) {
    reportAndThrow(*this, kNoCollectionId, path, kNoCollectionText);
  }
  registerCollection(collection, getLanguageList(), this);
}

}  // namespace msg

namespace msg {

void MessageHandlerX::loadCompiledCatalogue(const char* path) {
  MessageHandler::loadCompiledCatalogue(path);
}

}  // namespace msg
