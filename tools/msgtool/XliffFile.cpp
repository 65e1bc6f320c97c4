#include "XliffFile.h"

#include <map>

#include "OutsideXml.h"
#include "XliffSupport.h"

namespace msgtool {

namespace {

using xercesc::DOMElement;
using xercesc::DOMNode;

constexpr char kXliffNamespace[] = "urn:oasis:names:tc:xliff:document:1.2";

// Writes `text` into `element`, each placeholder as <x/>. `ids` gives each
// distinct placeholder its id and grows as new ones appear.
void addInline(XliffBuilder& builder, DOMElement* element, const std::string& text,
               std::map<std::string, std::string>& ids) {
  for (const TextPiece& piece : splitPlaceholders(text)) {
    if (!piece.placeholder) {
      builder.addText(element, piece.text);
      continue;
    }
    auto known = ids.find(piece.text);
    if (known == ids.end()) {
      known = ids.emplace(piece.text, std::to_string(ids.size() + 1)).first;
    }
    DOMElement* x = builder.element("x");
    XliffBuilder::set(x, "id", known->second);
    XliffBuilder::set(x, "equiv-text", piece.text);
    element->appendChild(x);
  }
}

class XliffReader {
 public:
  explicit XliffReader(std::string path)
      : path(std::move(path)), document(XmlDocument::parse(this->path, false)) {}

  XliffFile read() {
    DOMElement* root = document.root();
    if (localNameOf(root) != "xliff") {
      fail(root, "is no XLIFF file: its root element is <" + localNameOf(root) + ">");
    }
    std::string version = attributeOf(root, "version");
    if (version == "2.0" || version == "2.1") {
      return readXliff2(path, document);
    }
    if (version != "1.2" && version != "1.1" && version != "1.0") {
      fail(root, "has XLIFF version '" + version + "'; msgtool reads XLIFF 1.2 (1.0 and 1.1 too)");
    }
    for (DOMElement* file = root->getFirstElementChild(); file != nullptr;
         file = file->getNextElementSibling()) {
      if (localNameOf(file) != "file") {
        continue;
      }
      if (result.sourceLanguage.empty()) {
        result.original = attributeOf(file, "original");
        result.sourceLanguage = attributeOf(file, "source-language");
        result.targetLanguage = attributeOf(file, "target-language");
      }
      for (DOMElement* body = file->getFirstElementChild(); body != nullptr;
           body = body->getNextElementSibling()) {
        if (localNameOf(body) == "body") {
          forEachUnit(path, document, body, "trans-unit",
                      [this](const DOMElement* unit) { result.units.push_back(readUnit(unit)); });
        }
      }
    }
    return std::move(result);
  }

 private:
  [[noreturn]] void fail(const DOMNode* at, const std::string& message) const {
    throw FileProblem(path, document.lineOf(at), message);
  }

  XliffUnit readUnit(const DOMElement* element) {
    XliffUnit unit;
    unit.line = document.lineOf(element);
    unit.key = attributeOf(element, "resname");
    if (unit.key.empty()) {
      unit.key = attributeOf(element, "id");
    }
    if (unit.key.empty()) {
      fail(element, "a trans-unit has no id");
    }
    unit.approved = attributeOf(element, "approved") == "yes";
    std::map<std::string, std::string> ids;  // inline element id -> placeholder
    const DOMElement* source = nullptr;
    const DOMElement* target = nullptr;
    for (DOMElement* child = element->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
      std::string name = localNameOf(child);
      if (name == "source" && source == nullptr) {
        source = child;
      } else if (name == "target" && target == nullptr) {
        target = child;
      } else if (name == "note") {
        std::string note = toUtf8(child->getTextContent());
        if (note.rfind(kSeverityNote, 0) == 0) {
          unit.severity = note.substr(sizeof kSeverityNote - 1);
        }
      }
    }
    if (source == nullptr) {
      fail(element, "the trans-unit '" + unit.key + "' has no <source>");
    }
    readInline(source, unit.source, ids, true, 0);
    if (target != nullptr) {
      unit.state = attributeOf(target, "state");
      unit.target.emplace();
      readInline(target, *unit.target, ids, false, 0);
    }
    return unit;
  }

  // Appends the text of `element` to `out`, turning inline elements back
  // into the placeholders they stand for. In the source each element's id
  // is learnt; in the target it is looked up first.
  void readInline(const DOMElement* element, std::string& out,
                  std::map<std::string, std::string>& ids, bool isSource, int depth) {
    if (depth > kMaxXliffNesting) {
      fail(element,
           "has inline elements nested more than " + std::to_string(kMaxXliffNesting) + " deep");
    }
    for (DOMNode* child = element->getFirstChild(); child != nullptr;
         child = child->getNextSibling()) {
      auto type = child->getNodeType();
      if (type == DOMNode::TEXT_NODE || type == DOMNode::CDATA_SECTION_NODE) {
        out += toUtf8(child->getNodeValue());
        continue;
      }
      if (type != DOMNode::ELEMENT_NODE) {
        continue;
      }
      auto* inner = static_cast<const DOMElement*>(child);
      std::string name = localNameOf(inner);
      bool standsAlone = name == "x" || name == "ph" || name == "bx" || name == "ex" ||
                         name == "it" || name == "bpt" || name == "ept";
      if (!standsAlone) {
        readInline(inner, out, ids, isSource, depth + 1);  // <g>, <mrk>, <sub>: their text counts
        continue;
      }
      std::string id = attributeOf(inner, "id");
      auto known = ids.find(id);
      std::string placeholder;
      if (!isSource && !id.empty() && known != ids.end()) {
        placeholder = known->second;
      } else if (isPlaceholder(attributeOf(inner, "equiv-text"))) {
        placeholder = attributeOf(inner, "equiv-text");
      } else if (isPlaceholder(toUtf8(inner->getTextContent()))) {
        placeholder = toUtf8(inner->getTextContent());
      } else {
        fail(inner, "the inline element <" + name + " id=\"" + id +
                        "\"> stands for no placeholder of the source");
      }
      if (isSource && !id.empty()) {
        ids.emplace(id, placeholder);
      }
      out += placeholder;
    }
  }

  std::string path;
  XmlDocument document;
  XliffFile result;
};

}  // namespace

XliffFile XliffFile::read(const std::string& path) {
  return XliffReader(path).read();
}

std::string XliffFile::write() const {
  if (version2) {
    return writeXliff2(*this);
  }
  XliffBuilder writer(kXliffNamespace);
  DOMElement* root = writer.root();
  XliffBuilder::set(root, "version", "1.2");
  DOMElement* file = writer.add(root, "file", 1);
  XliffBuilder::set(file, "original", original);
  XliffBuilder::set(file, "source-language", sourceLanguage);
  XliffBuilder::set(file, "target-language", targetLanguage);
  XliffBuilder::set(file, "datatype", "plaintext");
  DOMElement* body = writer.add(file, "body", 2);
  for (const XliffUnit& unit : units) {
    DOMElement* element = writer.add(body, "trans-unit", 3);
    XliffBuilder::set(element, "id", unit.key);
    XliffBuilder::set(element, "resname", unit.key);
    if (unit.approved) {
      XliffBuilder::set(element, "approved", "yes");
    }
    element->setAttributeNS(XmlString(kXmlNamespace), XmlString("xml:space"),
                            XmlString("preserve"));
    std::map<std::string, std::string> ids;
    addInline(writer, writer.add(element, "source", 4), unit.source, ids);
    if (unit.target) {
      DOMElement* target = writer.add(element, "target", 4);
      if (!unit.state.empty()) {
        XliffBuilder::set(target, "state", unit.state);
      }
      addInline(writer, target, *unit.target, ids);
    }
    if (!unit.severity.empty()) {
      writer.addText(writer.add(element, "note", 4), kSeverityNote + unit.severity);
    }
    if (!unit.sourceFile.empty()) {
      DOMElement* group = writer.add(element, "context-group", 4);
      XliffBuilder::set(group, "purpose", "location");
      DOMElement* context = writer.add(group, "context", 5);
      XliffBuilder::set(context, "context-type", "sourcefile");
      writer.addText(context, unit.sourceFile);
      if (unit.sourceLine > 0) {
        context = writer.add(group, "context", 5);
        XliffBuilder::set(context, "context-type", "linenumber");
        writer.addText(context, std::to_string(unit.sourceLine));
      }
      writer.close(group, 4);
    }
    writer.close(element, 3);
  }
  writer.close(body, 2);
  writer.close(file, 1);
  writer.close(root, 0);
  return writer.serialize();
}

}  // namespace msgtool
