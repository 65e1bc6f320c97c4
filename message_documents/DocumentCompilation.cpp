#include "message_documents/DocumentCompilation.h"

#include <utility>
#include <vector>

#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "message_documents/MessageDocumentReader.h"
#include "message_documents/PluralMessage.h"

namespace msg {

void addMessageDocument(CompiledCatalogueWriter& writer, const char* path) {
  const XercesXML::DOMNode document = parseMessageDocument(path);
  const XercesXML::DOMNode collection = findMessageCollection(document);
  if (!collection.isValid()) {
    throw DocumentRefused{
        {DocumentProblem{path, 0, 0, "No MessageCollection element found in document"}}};
  }
  // Collected first, so a refusal half way adds nothing.
  CompiledCatalogueWriter collected;
  // The compiled format holds no variants yet: a plural message is refused
  // rather than compiled as its last text.
  PluralMessage message;
  int messageIndex = -1;
  std::vector<DocumentProblem> plural;
  const auto refusePlural = [&](const DocumentText& text) {
    if (messageIndex >= 0 && message.isPlural()) {
      plural.push_back(DocumentProblem{path, 0, 0,
                                       "message " + text.effectiveNamespace() + ":" +
                                           text.effectiveIdentifier() +
                                           " has plural forms, which compiled catalogues "
                                           "cannot hold yet"});
    }
  };
  DocumentText last;
  DocumentVisitor visitor;
  visitor.onMessage = [&](const DocumentText& text) {
    refusePlural(last);
    message.begin(text, ++messageIndex);
    last = text;
  };
  visitor.onText = [&](const DocumentText& text) {
    message.add(text, 0);
    collected.add(text.effectiveSeverity(), text.effectiveLanguage(), text.effectiveNamespace(),
                  text.effectiveIdentifier(), text.readText());
  };
  walkMessageDocument(collection, visitor);
  refusePlural(last);
  if (!plural.empty()) {
    throw DocumentRefused{std::move(plural)};
  }
  writer.addAll(std::move(collected));
}

}  // namespace msg
