#include "message_documents/DocumentCompilation.h"

#include <utility>

#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "message_documents/MessageDocumentReader.h"

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
  forEachDocumentText(collection, [&](const DocumentText& text) {
    collected.add(text.effectiveSeverity(), text.effectiveLanguage(), text.effectiveNamespace(),
                  text.effectiveIdentifier(), text.readText());
  });
  writer.addAll(std::move(collected));
}

}  // namespace msg
