// MessageHandlerX: a message handler that fills its catalogue from XML
// message documents.

#ifndef MSG_MESSAGEHANDLERX_H_
#define MSG_MESSAGEHANDLERX_H_

#include "msg/MessageHandler.h"
#include "msg/export.h"

namespace msg {

// A MessageHandler that reads message documents (XML files in the format of
// docs/message-documents.md, schema share/msg/messages.xsd) into its table.
//
// Typical use: MessageHandlerX::object() puts a MessageHandlerX in front of
// the process-wide handler, once; set its language list, then load the
// documents. From then on MessageHandler::object() gives the same handler,
// and the library's built-in texts are still found through its parent, the
// plain handler it replaced (which ranks them by its own language list).
//
//   msg::MessageHandlerX* handler = msg::MessageHandlerX::object();
//   handler->setLanguageList(msg::LanguageList(msg::Language("de"), msg::Language("en")));
//   handler->loadMessageDocument("app-messages.xml");
//
// The language list must stand before a load: texts in languages the list
// does not accept are dropped while reading, and a later list does not bring
// them back.
//
// XML system: every MessageHandlerX keeps the library's XML system started
// for as long as it lives. The first one starts it with the process's local
// code page as the output encoding, so document texts reach the catalogue
// in that code page (with Debian's Xerces-C, UTF-8 under every locale,
// including the plain C locale). Later handlers join the running system.
//
// Ownership: as MessageHandler. In addition, the handler that object()
// stacked owns the handler it replaced and deletes it with itself. Nothing
// in the library deletes the process-wide handler; a client that does so
// must not call either object() afterwards.
//
// Thread safety: as MessageHandler. A load changes the table, so no other
// thread may use the handler during loadMessageDocument(); the first call of
// object() stacks the process-wide handler and belongs before any thread
// starts using it.
class MSG_EXPORT MessageHandlerX : public MessageHandler {
 public:
  // A root handler with the defaults of MessageHandler() (threshold info,
  // language list ["en"], a default channel of its own, an empty table),
  // counted as one start of the XML system.
  // Raises the XercesXML exception of a failed start; a constructor that
  // raises leaves no start behind.
  MessageHandlerX();

  // Gives back this handler's start of the XML system (the last one stops
  // it). The handler stacked by object() also deletes the handler it
  // replaced.
  ~MessageHandlerX() override;

  // The process-wide handler as a MessageHandlerX. The first call puts a new
  // MessageHandlerX in front of the process-wide plain handler, with that
  // handler as its parent, and makes it the process-wide handler; every
  // later call returns that same handler. The new handler starts with the
  // defaults above: the language list, threshold and channels set on the
  // plain handler are not taken over.
  // Raises what the constructor raises; nothing changes then.
  static MessageHandlerX* object();

  // Reads the message document `path` (XIncludes expanded, then validated
  // against the schema the document names) and registers one entry for each
  // Text whose language this handler's list accepts. An entry of the same
  // key (namespace, identifier, language) in this handler's table is
  // replaced; within a document the last Text of a key wins. Writes nothing
  // on success.
  //
  // Failures, each after a report through this handler's channels with the
  // path as argument &0, and with the table untouched:
  //  - the file cannot be read, is not well formed, an include fails, the
  //    document does not validate, or it breaks a rule for documents from
  //    outside (see below): report "msgx", "MessageDocumentError", then
  //    ErrorInMessageDocument with the text
  //    Message document "<path>" contains syntactical error.
  //    and getProblems() saying where and why.
  //  - no MessageCollection element: report "msgx", "NoMessageCollection",
  //    then ErrorInMessageDocument with the text
  //    No MessageCollection element found in document
  // If neither the report's key nor the not-found text is in an acceptable
  // language, the Message constructor's MessageNotFound leaves instead.
  // Any other XercesXML exception (for instance XercesXML::NotInitialized)
  // passes unchanged; entries registered before it stay.
  //
  // Documents from outside: the load reads nothing over a network and only
  // local files, refuses a document type declaration in the document and in
  // every included part, includes only files in the document's folder or
  // below it, refuses elements nested more than 1,000 levels deep while
  // parsing, and bounds the entities a schema file may expand. The time of
  // a load grows linearly with the document. See docs/message-documents.md.
  // REQUIRES: path is not null.
  void loadMessageDocument(const char* path);

  // MessageHandler::loadCompiledCatalogue, unchanged: the same checks,
  // report, exception and ownership. A compiled catalogue needs no XML, so a
  // plain handler loads one as well; this one stays so that programs built
  // against earlier versions of the library keep linking and behave alike.
  // REQUIRES: path is not null.
  void loadCompiledCatalogue(const char* path);
};

}  // namespace msg

#endif  // MSG_MESSAGEHANDLERX_H_
