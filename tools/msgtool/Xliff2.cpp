// XLIFF 2.0 for XliffFile: one <unit> per key (id and name), a <segment>
// whose state is initial or translated, the severity and the place as
// notes. Each placeholder is <ph id=".." dataRef=".."/> with the placeholder
// itself as the unit's original data, which is how XLIFF 2 carries native
// codes. Units keep the 1.2 state names: a translation in state initial
// reads as needs-review-translation, one that is translated, reviewed or
// final (or has no state) as translated.

#include <map>

#include "XliffFile.h"
#include "XliffSupport.h"

namespace msgtool {

namespace {

using xercesc::DOMElement;
using xercesc::DOMNode;

constexpr char kXliff2Namespace[] = "urn:oasis:names:tc:xliff:document:2.0";
constexpr char kReviewSubState[] = "msgtool:needs-review";

class Xliff2Reader {
 public:
  Xliff2Reader(const std::string& path, const XmlDocument& document)
      : path(path), document(document) {}

  XliffFile read() {
    const DOMElement* root = document.root();
    result.version2 = true;
    result.sourceLanguage = attributeOf(root, "srcLang");
    result.targetLanguage = attributeOf(root, "trgLang");
    for (DOMElement* file = root->getFirstElementChild(); file != nullptr;
         file = file->getNextElementSibling()) {
      if (localNameOf(file) == "file") {
        if (result.original.empty()) {
          result.original = attributeOf(file, "original");
        }
        forEachUnit(path, document, file, "unit",
                    [this](const DOMElement* unit) { result.units.push_back(readUnit(unit)); });
      }
    }
    return std::move(result);
  }

 private:
  [[noreturn]] void fail(const DOMNode* at, const std::string& message) const {
    throw FileProblem(path, document.lineOf(at), message);
  }

  XliffUnit readUnit(const DOMElement* unitElement) {
    XliffUnit unit;
    unit.line = document.lineOf(unitElement);
    unit.key = attributeOf(unitElement, "name");
    if (unit.key.empty()) {
      unit.key = attributeOf(unitElement, "id");
    }
    if (unit.key.empty()) {
      fail(unitElement, "a unit has no id");
    }
    std::map<std::string, std::string> data;  // originalData id -> native code
    std::string target;
    bool everyPartTranslated = true;
    bool anyTarget = false;
    bool needsReview = false;
    bool anySource = false;
    for (DOMElement* part = unitElement->getFirstElementChild(); part != nullptr;
         part = part->getNextElementSibling()) {
      std::string name = localNameOf(part);
      if (name == "originalData") {
        for (DOMElement* item = part->getFirstElementChild(); item != nullptr;
             item = item->getNextElementSibling()) {
          data[attributeOf(item, "id")] = toUtf8(item->getTextContent());
        }
      } else if (name == "notes") {
        readSeverity(part, unit);
      } else if (name == "segment" || name == "ignorable") {
        const DOMElement* source = childNamed(part, "source");
        const DOMElement* partTarget = childNamed(part, "target");
        if (source == nullptr) {
          fail(part, "a " + name + " of unit '" + unit.key + "' has no <source>");
        }
        anySource = true;
        readInline(source, unit.source, data, 0);
        if (partTarget != nullptr) {
          anyTarget = true;
          readInline(partTarget, target, data, 0);
        } else if (name == "ignorable") {
          readInline(source, target, data, 0);
        } else {
          everyPartTranslated = false;
        }
        needsReview = needsReview || (name == "segment" && attributeOf(part, "state") == "initial");
      }
    }
    if (!anySource) {
      fail(unitElement, "the unit '" + unit.key + "' has no segment");
    }
    if (anyTarget && everyPartTranslated) {
      unit.target = target;
      unit.state = needsReview ? "needs-review-translation" : "translated";
    }
    return unit;
  }

  static const DOMElement* childNamed(const DOMElement* parent, const char* name) {
    for (DOMElement* child = parent->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
      if (localNameOf(child) == name) {
        return child;
      }
    }
    return nullptr;
  }

  static void readSeverity(const DOMElement* notes, XliffUnit& unit) {
    for (DOMElement* note = notes->getFirstElementChild(); note != nullptr;
         note = note->getNextElementSibling()) {
      if (attributeOf(note, "category") == "severity") {
        unit.severity = toUtf8(note->getTextContent());
      }
    }
  }

  // Appends the text of `element`, each inline code as the placeholder its
  // original data (or its equiv or disp text) holds.
  void readInline(const DOMElement* element, std::string& out,
                  const std::map<std::string, std::string>& data, int depth) {
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
      if (name != "ph" && name != "sc" && name != "ec") {
        readInline(inner, out, data, depth + 1);  // <pc>, <mrk>: their text counts
        continue;
      }
      auto native = data.find(attributeOf(inner, "dataRef"));
      if (native != data.end() && isPlaceholder(native->second)) {
        out += native->second;
      } else if (isPlaceholder(attributeOf(inner, "equiv"))) {
        out += attributeOf(inner, "equiv");
      } else if (isPlaceholder(attributeOf(inner, "disp"))) {
        out += attributeOf(inner, "disp");
      } else {
        fail(inner, "the inline element <" + name + " id=\"" + attributeOf(inner, "id") +
                        "\"> stands for no placeholder");
      }
    }
  }

  std::string path;
  const XmlDocument& document;
  XliffFile result;
};

// Writes `text` into `element`, each placeholder as <ph/> referring to its
// original data.
void addInline(XliffBuilder& builder, DOMElement* element, const std::string& text,
               const std::map<std::string, std::string>& ids) {
  std::map<std::string, int> seen;  // the same placeholder twice: p1, p1-2
  for (const TextPiece& piece : splitPlaceholders(text)) {
    if (!piece.placeholder) {
      builder.addText(element, piece.text);
      continue;
    }
    DOMElement* ph = builder.element("ph");
    const std::string& dataId = ids.at(piece.text);
    const int count = ++seen[piece.text];
    XliffBuilder::set(ph, "id",
                      "p" + dataId.substr(1) + (count > 1 ? "-" + std::to_string(count) : ""));
    XliffBuilder::set(ph, "dataRef", dataId);
    XliffBuilder::set(ph, "disp", piece.text);
    element->appendChild(ph);
  }
}

}  // namespace

XliffFile readXliff2(const std::string& path, const XmlDocument& document) {
  return Xliff2Reader(path, document).read();
}

std::string writeXliff2(const XliffFile& file) {
  XliffBuilder writer(kXliff2Namespace);
  DOMElement* root = writer.root();
  XliffBuilder::set(root, "version", "2.0");
  XliffBuilder::set(root, "srcLang", file.sourceLanguage);
  XliffBuilder::set(root, "trgLang", file.targetLanguage);
  DOMElement* fileElement = writer.add(root, "file", 1);
  XliffBuilder::set(fileElement, "id", "f1");
  XliffBuilder::set(fileElement, "original", file.original);
  for (const XliffUnit& unit : file.units) {
    DOMElement* element = writer.add(fileElement, "unit", 2);
    XliffBuilder::set(element, "id", unit.key);
    XliffBuilder::set(element, "name", unit.key);
    DOMElement* notes = writer.add(element, "notes", 3);
    DOMElement* severity = writer.add(notes, "note", 4);
    XliffBuilder::set(severity, "category", "severity");
    writer.addText(severity, unit.severity);
    if (!unit.sourceFile.empty()) {
      DOMElement* note = writer.add(notes, "note", 4);
      XliffBuilder::set(note, "category", "location");
      writer.addText(note, unit.sourceFile +
                               (unit.sourceLine > 0 ? ":" + std::to_string(unit.sourceLine) : ""));
    }
    writer.close(notes, 3);
    std::map<std::string, std::string> ids;  // placeholder -> data id
    for (const std::string* text : {&unit.source, unit.target ? &*unit.target : &unit.source}) {
      for (const TextPiece& piece : splitPlaceholders(*text)) {
        if (piece.placeholder && ids.count(piece.text) == 0) {
          ids.emplace(piece.text, "d" + std::to_string(ids.size() + 1));
        }
      }
    }
    if (!ids.empty()) {
      DOMElement* originalData = writer.add(element, "originalData", 3);
      for (const auto& [placeholder, id] : ids) {
        DOMElement* item = writer.add(originalData, "data", 4);
        XliffBuilder::set(item, "id", id);
        writer.addText(item, placeholder);
      }
      writer.close(originalData, 3);
    }
    DOMElement* segment = writer.add(element, "segment", 3);
    bool review = unit.state.rfind("needs-review", 0) == 0;
    XliffBuilder::set(segment, "state", unit.target && !review ? "translated" : "initial");
    if (unit.target && review) {
      XliffBuilder::set(segment, "subState", kReviewSubState);
    }
    DOMElement* source = writer.add(segment, "source", 4);
    source->setAttributeNS(XmlString(kXmlNamespace), XmlString("xml:space"), XmlString("preserve"));
    addInline(writer, source, unit.source, ids);
    if (unit.target) {
      DOMElement* target = writer.add(segment, "target", 4);
      target->setAttributeNS(XmlString(kXmlNamespace), XmlString("xml:space"),
                             XmlString("preserve"));
      addInline(writer, target, *unit.target, ids);
    }
    writer.close(segment, 3);
    writer.close(element, 2);
  }
  writer.close(fileElement, 1);
  writer.close(root, 0);
  return writer.serialize();
}

}  // namespace msgtool
