#include "MessageDocumentEditor.h"

#include <deque>
#include <filesystem>

#include "SourceStamp.h"
#include "message_documents/MessageDocumentReader.h"

namespace msgtool {

namespace {

using xercesc::DOMElement;
using xercesc::DOMNode;

constexpr char kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";
constexpr char kXmlnsNamespace[] = "http://www.w3.org/2000/xmlns/";
constexpr char kSchemaInstanceNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";

std::string orDefault(const std::string& value, const char* fallback) {
  return value.empty() ? std::string(fallback) : value;
}

bool isBlank(const DOMNode* node) {
  if (node == nullptr || node->getNodeType() != DOMNode::TEXT_NODE) {
    return false;
  }
  return toUtf8(node->getNodeValue()).find_first_not_of(" \t\r\n") == std::string::npos;
}

// The indentation in front of `element`: the part of the blank text before
// it that follows its last line break ("" if there is none).
std::string indentationOf(const DOMNode* element) {
  const DOMNode* before = element->getPreviousSibling();
  if (!isBlank(before)) {
    return std::string();
  }
  std::string blank = toUtf8(before->getNodeValue());
  std::size_t lineBreak = blank.rfind('\n');
  return lineBreak == std::string::npos ? blank : blank.substr(lineBreak + 1);
}

// The message document's collection, found where the loader finds it: the
// first MessageCollection breadth first from the document node.
DOMElement* findCollection(xercesc::DOMDocument* document) {
  std::deque<DOMNode*> queue{document};
  while (!queue.empty()) {
    DOMNode* node = queue.front();
    queue.pop_front();
    if (node->getNodeType() == DOMNode::ELEMENT_NODE && localNameOf(node) == "MessageCollection") {
      return static_cast<DOMElement*>(node);
    }
    for (DOMNode* child = node->getFirstChild(); child != nullptr;
         child = child->getNextSibling()) {
      queue.push_back(child);
    }
  }
  return nullptr;
}

XmlDocument emptyDocument(const std::string& schemaLocation) {
  XmlDocument document = XmlDocument::create("", "MessageCollection");
  DOMElement* root = document.root();
  root->setAttributeNS(XmlString(kXmlnsNamespace), XmlString("xmlns:xsi"),
                       XmlString(kSchemaInstanceNamespace));
  root->setAttributeNS(XmlString(kSchemaInstanceNamespace),
                       XmlString("xsi:noNamespaceSchemaLocation"), XmlString(schemaLocation));
  root->appendChild(document.get()->createTextNode(XmlString("\n")));
  return document;
}

}  // namespace

MessageDocumentEditor::MessageDocumentEditor(std::string path, const std::string& schemaLocation)
    : path(std::move(path)), document(XmlDocument::create("", "MessageCollection")) {
  std::error_code error;
  if (!std::filesystem::exists(this->path, error)) {
    created = true;
    document = emptyDocument(schemaLocation);
    collection = document.root();
    return;
  }
  readIncludedKeys();
  document = XmlDocument::parse(this->path, true);
  collection = findCollection(document.get());
  if (collection == nullptr) {
    throw FileProblem(this->path, 0, "holds no MessageCollection");
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
    XercesXML::DOMNode expanded = msg::parseMessageDocument(path.c_str());
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
    throw FileProblem(
        first.file.empty() ? path : first.file, first.line,
        first.message + " (the document must load before texts can be imported into it)");
  }
}

void MessageDocumentEditor::index() {
  for (DOMElement* space = collection->getFirstElementChild(); space != nullptr;
       space = space->getNextElementSibling()) {
    if (localNameOf(space) != "MessageNamespace") {
      continue;
    }
    std::string nameSpace = orDefault(attributeOf(space, "name"), msg::kDefaultNamespace);
    namespaces[nameSpace] = space;
    for (DOMElement* message = space->getFirstElementChild(); message != nullptr;
         message = message->getNextElementSibling()) {
      if (localNameOf(message) != "Message") {
        continue;
      }
      MessagePlace& place = messages[keyOf(
          nameSpace, orDefault(attributeOf(message, "id"), msg::kDefaultIdentifier))];
      place.message = message;
      for (DOMElement* text = message->getFirstElementChild(); text != nullptr;
           text = text->getNextElementSibling()) {
        if (localNameOf(text) == "Text") {
          place.texts[orDefault(attributeOf(text, "lang", kXmlNamespace), msg::kDefaultLanguage)] =
              text;
        }
      }
    }
  }
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
  return ExistingText{toUtf8(text->second->getTextContent()),
                      attributeOf(text->second, kTranslatedFromAttribute, kMsgtoolNamespace)};
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

DOMElement* MessageDocumentEditor::newElement(const char* name) {
  return document.get()->createElementNS(nullptr, XmlString(name));
}

void MessageDocumentEditor::insertIndented(DOMElement* parent, DOMElement* sibling,
                                           DOMElement* element) {
  xercesc::DOMDocument* owner = document.get();
  if (sibling != nullptr) {
    DOMNode* after = sibling->getNextSibling();
    if (isBlank(sibling->getPreviousSibling())) {
      parent->insertBefore(owner->createTextNode(XmlString("\n" + indentationOf(sibling))), after);
    }
    parent->insertBefore(element, after);
    return;
  }
  std::string outer = indentationOf(parent);
  DOMNode* last = parent->getLastChild();
  if (isBlank(last)) {
    // Keep the blank that closes the parent after the new element.
    parent->insertBefore(owner->createTextNode(XmlString("\n" + outer + "  ")), last);
    parent->insertBefore(element, last);
    return;
  }
  parent->appendChild(owner->createTextNode(XmlString("\n" + outer + "  ")));
  parent->appendChild(element);
  parent->appendChild(owner->createTextNode(XmlString("\n" + outer)));
}

void MessageDocumentEditor::setText(const std::string& nameSpace, const std::string& identifier,
                                    const std::string& severityWord, const std::string& language,
                                    const std::string& text, const std::string& stamp) {
  MessagePlace& place = messages[keyOf(nameSpace, identifier)];
  if (place.message == nullptr) {
    DOMElement*& space = namespaces[nameSpace];
    if (space == nullptr) {
      DOMElement* lastSpace = nullptr;
      for (const auto& [name, element] : namespaces) {
        if (element != nullptr &&
            (lastSpace == nullptr ||
             lastSpace->compareDocumentPosition(element) & DOMNode::DOCUMENT_POSITION_FOLLOWING)) {
          lastSpace = element;
        }
      }
      space = newElement("MessageNamespace");
      space->setAttribute(XmlString("name"), XmlString(nameSpace));
      insertIndented(collection, lastSpace, space);
    }
    DOMElement* lastMessage = nullptr;
    for (DOMElement* child = space->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
      if (localNameOf(child) == "Message") {
        lastMessage = child;
      }
    }
    place.message = newElement("Message");
    place.message->setAttribute(XmlString("id"), XmlString(identifier));
    if (!severityWord.empty()) {
      place.message->setAttribute(XmlString("severity"), XmlString(severityWord));
    }
    insertIndented(space, lastMessage, place.message);
  }
  DOMElement*& element = place.texts[language];
  if (element == nullptr) {
    DOMElement* lastText = nullptr;
    for (const auto& [lang, existing] : place.texts) {
      if (existing != nullptr &&
          (lastText == nullptr ||
           lastText->compareDocumentPosition(existing) & DOMNode::DOCUMENT_POSITION_FOLLOWING)) {
        lastText = existing;
      }
    }
    element = newElement("Text");
    element->setAttributeNS(XmlString(kXmlNamespace), XmlString("xml:lang"), XmlString(language));
    insertIndented(place.message, lastText, element);
  }
  while (element->getFirstChild() != nullptr) {
    element->removeChild(element->getFirstChild())->release();
  }
  element->appendChild(document.get()->createTextNode(XmlString(text)));
  DOMElement* root = document.root();
  std::string prefixed = std::string("xmlns:") + kMsgtoolPrefix;
  if (!root->hasAttributeNS(XmlString(kXmlnsNamespace), XmlString(kMsgtoolPrefix))) {
    root->setAttributeNS(XmlString(kXmlnsNamespace), XmlString(prefixed),
                         XmlString(kMsgtoolNamespace));
  }
  element->setAttributeNS(XmlString(kMsgtoolNamespace),
                          XmlString(std::string(kMsgtoolPrefix) + ":" + kTranslatedFromAttribute),
                          XmlString(stamp));
}

void MessageDocumentEditor::save() const {
  replaceFileAtomically(path, document.serialize(), [this](const std::string& temporary) {
    try {
      msg::parseMessageDocument(temporary.c_str());
    } catch (const msg::DocumentRefused& refused) {
      const msg::DocumentProblem& first = refused.problems.front();
      throw FileProblem(
          path, 0,
          "the edited document would not load, so it was left as it was: " + first.message);
    }
  });
}

}  // namespace msgtool
