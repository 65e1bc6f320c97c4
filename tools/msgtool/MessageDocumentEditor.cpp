#include "MessageDocumentEditor.h"

#include <filesystem>

#include "FileReplacement.h"
#include "OutsideFiles.h"
#include "SourceStamp.h"
#include "ToolError.h"
#include "message_documents/MessageDocumentReader.h"
#include "platform/InputLimits.h"
#include "xml_access/DocumentSerializer.h"

namespace msgtool {

namespace {

using XercesXML::DOMNode;

constexpr char kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";
constexpr char kXmlnsNamespace[] = "http://www.w3.org/2000/xmlns/";
constexpr char kSchemaInstanceNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";

DOMNode emptyDocument(const std::string& schemaLocation) {
  DOMNode document = DOMNode::createDocument("", "MessageCollection");
  const DOMNode root = document.getFirstElementChild();
  root.setAttribute("xmlns:xsi", kSchemaInstanceNamespace, kXmlnsNamespace);
  root.setAttribute("xsi:noNamespaceSchemaLocation", schemaLocation, kSchemaInstanceNamespace);
  root.appendText("\n");
  return document;
}

// The last of `candidates` in document order; null if there is none.
template <typename Map>
DOMNode lastInDocument(const Map& candidates) {
  DOMNode last;
  for (const auto& [name, element] : candidates) {
    if (element.isValid() && (!last.isValid() || last.precedes(element))) {
      last = element;
    }
  }
  return last;
}

}  // namespace

MessageDocumentEditor::MessageDocumentEditor(std::string path, const std::string& schemaLocation)
    : path(std::move(path)) {
  // A document that cannot be written is refused before the import does any
  // work on it or reports a unit as imported.
  requireReplaceable(this->path);
  std::error_code error;
  if (!std::filesystem::exists(this->path, error)) {
    created = true;
    document = emptyDocument(schemaLocation);
    collection = document.getFirstElementChild();
    return;
  }
  readIncludedKeys();
  document = readOutsideFile(this->path, msg::limits::kMaxMessageDocumentBytes, true);
  collection = msg::findMessageCollection(document);
  if (!collection.isValid()) {
    throw ToolError(this->path, 0, "holds no MessageCollection");
  }
  index();
  for (const auto& [key, place] : messages) {
    includedKeys.erase(key);
  }
  for (auto text = includedTexts.begin(); text != includedTexts.end();) {
    text = includedKeys.count(text->first.substr(0, text->first.rfind('\n'))) != 0
               ? std::next(text)
               : includedTexts.erase(text);
  }
}

std::string MessageDocumentEditor::keyOf(const std::string& nameSpace,
                                         const std::string& identifier) {
  return nameSpace + '\n' + identifier;
}

void MessageDocumentEditor::readIncludedKeys() {
  try {
    DOMNode expanded = msg::parseMessageDocument(path.c_str());
    msg::forEachDocumentText(
        msg::findMessageCollection(expanded), [this](const msg::DocumentText& text) {
          const std::string key = keyOf(text.effectiveNamespace(), text.effectiveIdentifier());
          includedKeys.insert(key);
          includedTexts[key + '\n' + text.effectiveLanguage()] = ExistingText{
              text.readText(),
              text.textElement.getAttributeByName(kTranslatedFromAttribute, kMsgtoolNamespace)};
        });
  } catch (const msg::DocumentRefused& refused) {
    const msg::DocumentProblem& first = refused.problems.front();
    throw ToolError(
        first.file.empty() ? path : first.file, first.line,
        first.message + " (the document must load before texts can be imported into it)");
  }
}

// The document as written, walked as the loader walks the expanded one.
void MessageDocumentEditor::index() {
  msg::DocumentVisitor visitor;
  visitor.onNamespace = [this](const msg::DocumentText& at) {
    namespaces[at.effectiveNamespace()] = at.namespaceElement;
  };
  visitor.onMessage = [this](const msg::DocumentText& at) {
    messages[keyOf(at.effectiveNamespace(), at.effectiveIdentifier())].message = at.messageElement;
  };
  visitor.onText = [this](const msg::DocumentText& at) {
    messages[keyOf(at.effectiveNamespace(), at.effectiveIdentifier())]
        .texts[at.effectiveLanguage()] = at.textElement;
  };
  msg::walkMessageDocument(collection, visitor);
  lastNamespace = lastInDocument(namespaces);
}

DOMNode& MessageDocumentEditor::lastMessageOf(const std::string& nameSpace, const DOMNode& space) {
  auto [known, isNew] = lastMessages.emplace(nameSpace, DOMNode());
  if (isNew) {
    for (DOMNode child = space.getFirstElementChild(); child.isValid();
         child = child.getNextElementSibling()) {
      if (child.getNodeName() == "Message") {
        known->second = child;
      }
    }
  }
  return known->second;
}

std::optional<MessageDocumentEditor::ExistingText> MessageDocumentEditor::find(
    const std::string& nameSpace, const std::string& identifier,
    const std::string& language) const {
  auto place = messages.find(keyOf(nameSpace, identifier));
  if (place == messages.end()) {
    auto included = includedTexts.find(keyOf(nameSpace, identifier) + '\n' + language);
    return included == includedTexts.end() ? std::nullopt
                                           : std::optional<ExistingText>(included->second);
  }
  auto text = place->second.texts.find(language);
  if (text == place->second.texts.end()) {
    return std::nullopt;
  }
  return ExistingText{text->second.getTextContent(),
                      text->second.getAttributeByName(kTranslatedFromAttribute, kMsgtoolNamespace)};
}

bool MessageDocumentEditor::hasMessage(const std::string& nameSpace,
                                       const std::string& identifier) const {
  return messages.count(keyOf(nameSpace, identifier)) != 0 ||
         isInIncludedPart(nameSpace, identifier);
}

bool MessageDocumentEditor::isInIncludedPart(const std::string& nameSpace,
                                             const std::string& identifier) const {
  return includedKeys.count(keyOf(nameSpace, identifier)) != 0;
}

DOMNode MessageDocumentEditor::newElement(const char* name) const {
  return document.createElement("", name);
}

void MessageDocumentEditor::setText(const std::string& nameSpace, const std::string& identifier,
                                    const std::string& severityWord, const std::string& language,
                                    const std::string& text, const std::string& stamp) {
  MessagePlace& place = messages[keyOf(nameSpace, identifier)];
  if (!place.message.isValid()) {
    DOMNode& space = namespaces[nameSpace];
    if (!space.isValid()) {
      space = newElement("MessageNamespace");
      space.setAttribute("name", nameSpace);
      collection.insertIndented(lastNamespace, space);
      lastNamespace = space;
    }
    place.message = newElement("Message");
    place.message.setAttribute("id", identifier);
    if (!severityWord.empty()) {
      place.message.setAttribute("severity", severityWord);
    }
    DOMNode& lastMessage = lastMessageOf(nameSpace, space);
    space.insertIndented(lastMessage, place.message);
    lastMessage = place.message;
  }
  DOMNode& element = place.texts[language];
  if (!element.isValid()) {
    const DOMNode lastText = lastInDocument(place.texts);
    element = newElement("Text");
    element.setAttribute("xml:lang", language, kXmlNamespace);
    place.message.insertIndented(lastText, element);
  }
  element.replaceContentWithText(text);
  const DOMNode root = document.getFirstElementChild();
  if (!root.hasAttribute(kMsgtoolPrefix, kXmlnsNamespace)) {
    root.setAttribute(std::string("xmlns:") + kMsgtoolPrefix, kMsgtoolNamespace, kXmlnsNamespace);
  }
  element.setAttribute(std::string(kMsgtoolPrefix) + ":" + kTranslatedFromAttribute, stamp,
                       kMsgtoolNamespace);
}

void MessageDocumentEditor::save() const {
  replaceFileAtomically(
      path, XercesXML::serializeAsWritten(document), [this](const std::string& temporary) {
        try {
          msg::parseMessageDocument(temporary.c_str());
        } catch (const msg::DocumentRefused& refused) {
          const msg::DocumentProblem& first = refused.problems.front();
          throw ToolError(
              path, 0,
              "the edited document would not load, so it was left as it was: " + first.message);
        }
      });
}

}  // namespace msgtool
