#include "message_documents/DocumentCompilation.h"

#include <string>
#include <utility>
#include <vector>

#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "message_documents/MessageDocumentReader.h"
#include "message_documents/PluralMessage.h"

namespace msg {

namespace {

std::vector<CompiledCatalogueWriter::Form> formsOf(std::vector<PluralVariant>&& variants) {
  std::vector<CompiledCatalogueWriter::Form> forms;
  forms.reserve(variants.size());
  for (PluralVariant& variant : variants) {
    forms.push_back(CompiledCatalogueWriter::Form{variant.exact, variant.value, variant.category,
                                                  std::move(variant.text)});
  }
  return forms;
}

}  // namespace

void addMessageDocument(CompiledCatalogueWriter& writer, const char* path) {
  const XercesXML::DOMNode document = parseMessageDocument(path);
  const XercesXML::DOMNode collection = findMessageCollection(document);
  if (!collection.isValid()) {
    throw DocumentRefused{
        {DocumentProblem{path, 0, 0, "No MessageCollection element found in document"}}};
  }
  // Collected first, so a refusal half way adds nothing. A plain message
  // adds its texts as they come; a plural one, once complete, adds per
  // language its `other` with the variants, as the loader registers it.
  CompiledCatalogueWriter collected;
  std::vector<DocumentText> plainTexts;
  std::vector<PluralProblem> problems;
  PluralMessage message;
  DocumentText messageKey;
  int messageIndex = -1;
  int textIndex = -1;
  const auto finishMessage = [&]() {
    if (messageIndex < 0) {
      return;
    }
    if (!message.isPlural()) {
      for (const DocumentText& text : plainTexts) {
        collected.add(text.effectiveSeverity(), text.effectiveLanguage(), text.effectiveNamespace(),
                      text.effectiveIdentifier(), text.readText());
      }
    } else {
      const std::size_t before = problems.size();
      message.check(problems);
      if (problems.size() == before) {
        for (PluralLanguage& language : message.languages()) {
          collected.add(messageKey.effectiveSeverity(), language.language,
                        messageKey.effectiveNamespace(), messageKey.effectiveIdentifier(),
                        language.other, message.kind(), message.countPlaceholder(),
                        formsOf(std::move(language.variants)));
        }
      }
    }
    plainTexts.clear();
  };
  DocumentVisitor visitor;
  visitor.onMessage = [&](const DocumentText& text) {
    finishMessage();
    message.begin(text, ++messageIndex);
    messageKey = text;
  };
  visitor.onText = [&](const DocumentText& text) {
    message.add(text, ++textIndex);
    plainTexts.push_back(text);
  };
  walkMessageDocument(collection, visitor);
  finishMessage();
  if (!problems.empty()) {
    std::vector<DocumentProblem> refused;
    refused.reserve(problems.size());
    for (PluralProblem& problem : problems) {
      refused.push_back(DocumentProblem{path, 0, 0, std::move(problem.message)});
    }
    throw DocumentRefused{std::move(refused)};
  }
  writer.addAll(std::move(collected));
}

}  // namespace msg
