#include "msg/MessageHandlerX.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "message_core/MessageTable.h"
#include "message_core/PluralForms.h"
#include "message_documents/MessageDocumentReader.h"
#include "message_documents/PluralMessage.h"
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

// One entry to register, read and checked before any is: a document whose
// plural messages break a rule loads nothing.
struct PendingEntry {
  short severity;
  std::string language;
  std::string nameSpace;
  std::string identifier;
  std::string text;
  // The variants of a plural entry beside `text`, its `other`; empty for a
  // plain entry.
  PluralKind kind = PluralKind::cardinal;
  unsigned count = 0;
  std::vector<PluralVariant> variants;
};

// Reads every Text of `collection` whose language `languages` accepts, and
// checks every plural message. Texts of other languages are not read, save
// those of plural messages, whose rules span all languages.
std::vector<PendingEntry> readCollection(const XercesXML::DOMNode& collection,
                                         const LanguageList& languages,
                                         std::vector<PluralProblem>& problems) {
  std::vector<PendingEntry> pending;
  std::vector<PendingEntry> ofMessage;  // the plain reading of the open message
  PluralMessage message;
  int messageIndex = -1;
  int textIndex = -1;
  DocumentText messageKey;
  // Only the languages the handler was told to keep are registered.
  const auto isWanted = [&](const std::string& language) {
    return languages.distance(Language(language.c_str())) >= 0;
  };
  const auto finishMessage = [&]() {
    if (messageIndex < 0) {
      return;
    }
    if (!message.isPlural()) {
      for (PendingEntry& entry : ofMessage) {
        pending.push_back(std::move(entry));
      }
    } else {
      message.check(problems);
      for (PluralLanguage& language : message.languages()) {
        if (isWanted(language.language)) {
          pending.push_back(PendingEntry{static_cast<short>(messageKey.effectiveSeverity()),
                                         language.language, messageKey.effectiveNamespace(),
                                         messageKey.effectiveIdentifier(),
                                         std::move(language.other), message.kind(),
                                         message.countPlaceholder(), std::move(language.variants)});
        }
      }
    }
    ofMessage.clear();
  };
  DocumentVisitor visitor;
  visitor.onMessage = [&](const DocumentText& entry) {
    finishMessage();
    message.begin(entry, ++messageIndex);
    messageKey = entry;
  };
  visitor.onText = [&](const DocumentText& entry) {
    message.add(entry, ++textIndex);
    const std::string language = entry.effectiveLanguage();
    // The filter comes before the text is read: a dropped language costs no
    // conversion.
    if (!message.isPlural() && isWanted(language)) {
      ofMessage.push_back(PendingEntry{static_cast<short>(entry.effectiveSeverity()),
                                       language,
                                       entry.effectiveNamespace(),
                                       entry.effectiveIdentifier(),
                                       entry.readText(),
                                       PluralKind::cardinal,
                                       0,
                                       {}});
    }
  };
  walkMessageDocument(collection, visitor);
  finishMessage();
  return pending;
}

// Registers the entries in `handler`, whose table is `table`. The table owns
// each entry and its copied strings, and the variants of a plural one; an
// entry of the same key is replaced without complaint.
void registerEntries(std::vector<PendingEntry>& pending, MessageHandler* handler,
                     MessageTable* table) {
  for (PendingEntry& entry : pending) {
    const MTE* linked = new MTE(entry.severity, entry.language.c_str(), entry.nameSpace.c_str(),
                                entry.identifier.c_str(), entry.text.c_str(), handler, false, true);
    if (entry.variants.empty()) {
      continue;
    }
    auto forms = std::make_unique<PluralForms>(entry.kind, entry.count,
                                               Language(entry.language.c_str()), linked->getText());
    for (const PluralVariant& variant : entry.variants) {
      const char* text = forms->keep(variant.text);
      if (variant.exact) {
        forms->addExact(variant.value, text);
      } else {
        forms->setText(variant.category, text);
      }
    }
    table->attachPluralForms(linked, std::move(forms));
  }
}

// The problems with the file, line and column of the element each names.
// The loader parses without positions; only a refused document is parsed
// again to find them. Elements an include brought in have none (line 0).
std::vector<DocumentProblem> placeProblems(const char* path,
                                           const std::vector<PluralProblem>& problems) {
  std::vector<XercesXML::DOMNode> messages;
  std::vector<XercesXML::DOMNode> texts;
  try {
    const XercesXML::DOMNode document = parseMessageDocumentWithPositions(path);
    walkMessageDocument(
        findMessageCollection(document),
        DocumentVisitor{nullptr,
                        [&](const DocumentText& e) { messages.push_back(e.messageElement); },
                        [&](const DocumentText& e) { texts.push_back(e.textElement); }});
  } catch (const DocumentRefused&) {
    // The file changed under us: the problems go out without places.
  }
  std::vector<DocumentProblem> placed;
  for (const PluralProblem& problem : problems) {
    const std::vector<XercesXML::DOMNode>& elements = problem.textIndex >= 0 ? texts : messages;
    const auto index =
        static_cast<std::size_t>(problem.textIndex >= 0 ? problem.textIndex : problem.messageIndex);
    DocumentProblem out{path, 0, 0, problem.message};
    if (index < elements.size()) {
      out.line = elements[index].getSourceLine();
      out.column = elements[index].getSourceColumn();
    }
    placed.push_back(std::move(out));
  }
  return placed;
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
  std::vector<PluralProblem> pluralProblems;
  std::vector<PendingEntry> pending = readCollection(collection, getLanguageList(), pluralProblems);
  if (!pluralProblems.empty()) {
    reportAndThrow(*this, kDocumentErrorId, path,
                   std::string("Message document \"") + path + "\" contains syntactical error.",
                   placeProblems(path, pluralProblems));
  }
  registerEntries(pending, this, messageTableOf(*this));
}

}  // namespace msg

namespace msg {

void MessageHandlerX::loadCompiledCatalogue(const char* path) {
  MessageHandler::loadCompiledCatalogue(path);
}

}  // namespace msg
