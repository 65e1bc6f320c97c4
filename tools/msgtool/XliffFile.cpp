#include "XliffFile.h"

#include <map>

#include "OutsideXml.h"

namespace msgtool {

namespace {

using xercesc::DOMElement;
using xercesc::DOMNode;

constexpr char kXliffNamespace[] = "urn:oasis:names:tc:xliff:document:1.2";
constexpr char kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";
constexpr char kSeverityNote[] = "severity: ";
constexpr int kMaxInlineDepth = 32;

// A text cut into plain runs and placeholder-like runs: "&" and every digit
// behind it. All of them are protected, also runs too long for substitution
// to replace, so that each comes back byte for byte.
struct Piece {
  bool placeholder;
  std::string text;
};

std::vector<Piece> splitPlaceholders(const std::string& text) {
  std::vector<Piece> pieces;
  std::string plain;
  std::size_t i = 0;
  while (i < text.size()) {
    std::size_t digits = 0;
    if (text[i] == '&') {
      while (i + 1 + digits < text.size() && text[i + 1 + digits] >= '0' &&
             text[i + 1 + digits] <= '9') {
        ++digits;
      }
    }
    if (digits == 0) {
      plain.append(text, i, digits + 1);
      i += digits + 1;
      continue;
    }
    if (!plain.empty()) {
      pieces.push_back(Piece{false, plain});
      plain.clear();
    }
    pieces.push_back(Piece{true, text.substr(i, digits + 1)});
    i += digits + 1;
  }
  if (!plain.empty()) {
    pieces.push_back(Piece{false, plain});
  }
  return pieces;
}

bool isPlaceholder(const std::string& text) {
  std::vector<Piece> pieces = splitPlaceholders(text);
  return pieces.size() == 1 && pieces[0].placeholder;
}

// Builds the DOM of a file, indenting as it goes.
class XliffWriter {
 public:
  XliffWriter() : document(XmlDocument::create(kXliffNamespace, "xliff")) {}

  DOMElement* root() const { return document.root(); }

  DOMElement* add(DOMElement* parent, const char* name, int depth) {
    parent->appendChild(
        document.get()->createTextNode(XmlString("\n" + std::string(2 * depth, ' '))));
    DOMElement* element =
        document.get()->createElementNS(XmlString(kXliffNamespace), XmlString(name));
    parent->appendChild(element);
    return element;
  }

  void close(DOMElement* element, int depth) {
    element->appendChild(
        document.get()->createTextNode(XmlString("\n" + std::string(2 * depth, ' '))));
  }

  static void set(DOMElement* element, const char* name, const std::string& value) {
    element->setAttribute(XmlString(name), XmlString(value));
  }

  void addText(DOMElement* element, const std::string& text) {
    element->appendChild(document.get()->createTextNode(XmlString(text)));
  }

  // Writes `text` into `element`, each placeholder as <x/>. `ids` gives each
  // distinct placeholder its id and grows as new ones appear.
  void addInline(DOMElement* element, const std::string& text,
                 std::map<std::string, std::string>& ids) {
    for (const Piece& piece : splitPlaceholders(text)) {
      if (!piece.placeholder) {
        addText(element, piece.text);
        continue;
      }
      auto known = ids.find(piece.text);
      if (known == ids.end()) {
        known = ids.emplace(piece.text, std::to_string(ids.size() + 1)).first;
      }
      DOMElement* x = document.get()->createElementNS(XmlString(kXliffNamespace), XmlString("x"));
      set(x, "id", known->second);
      set(x, "equiv-text", piece.text);
      element->appendChild(x);
    }
  }

  XmlDocument document;
};

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
          readUnits(body, 0);
        }
      }
    }
    return std::move(result);
  }

 private:
  [[noreturn]] void fail(const DOMNode* at, const std::string& message) const {
    throw FileProblem(path, XmlDocument::lineOf(at), message);
  }

  void readUnits(const DOMElement* parent, int depth) {
    if (depth > kMaxInlineDepth) {
      fail(parent, "has groups nested more than " + std::to_string(kMaxInlineDepth) + " deep");
    }
    for (DOMElement* child = parent->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
      std::string name = localNameOf(child);
      if (name == "group") {
        readUnits(child, depth + 1);
      } else if (name == "trans-unit") {
        result.units.push_back(readUnit(child));
      }
    }
  }

  XliffUnit readUnit(const DOMElement* element) {
    XliffUnit unit;
    unit.line = XmlDocument::lineOf(element);
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
    if (depth > kMaxInlineDepth) {
      fail(element,
           "has inline elements nested more than " + std::to_string(kMaxInlineDepth) + " deep");
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
  XliffWriter writer;
  DOMElement* root = writer.root();
  XliffWriter::set(root, "version", "1.2");
  DOMElement* file = writer.add(root, "file", 1);
  XliffWriter::set(file, "original", original);
  XliffWriter::set(file, "source-language", sourceLanguage);
  XliffWriter::set(file, "target-language", targetLanguage);
  XliffWriter::set(file, "datatype", "plaintext");
  DOMElement* body = writer.add(file, "body", 2);
  for (const XliffUnit& unit : units) {
    DOMElement* element = writer.add(body, "trans-unit", 3);
    XliffWriter::set(element, "id", unit.key);
    XliffWriter::set(element, "resname", unit.key);
    if (unit.approved) {
      XliffWriter::set(element, "approved", "yes");
    }
    element->setAttributeNS(XmlString(kXmlNamespace), XmlString("xml:space"),
                            XmlString("preserve"));
    std::map<std::string, std::string> ids;
    writer.addInline(writer.add(element, "source", 4), unit.source, ids);
    if (unit.target) {
      DOMElement* target = writer.add(element, "target", 4);
      if (!unit.state.empty()) {
        XliffWriter::set(target, "state", unit.state);
      }
      writer.addInline(target, *unit.target, ids);
    }
    if (!unit.severity.empty()) {
      writer.addText(writer.add(element, "note", 4), kSeverityNote + unit.severity);
    }
    if (!unit.sourceFile.empty()) {
      DOMElement* group = writer.add(element, "context-group", 4);
      XliffWriter::set(group, "purpose", "location");
      DOMElement* context = writer.add(group, "context", 5);
      XliffWriter::set(context, "context-type", "sourcefile");
      writer.addText(context, unit.sourceFile);
      if (unit.sourceLine > 0) {
        context = writer.add(group, "context", 5);
        XliffWriter::set(context, "context-type", "linenumber");
        writer.addText(context, std::to_string(unit.sourceLine));
      }
      writer.close(group, 4);
    }
    writer.close(element, 3);
  }
  writer.close(body, 2);
  writer.close(file, 1);
  writer.close(root, 0);
  return writer.document.serialize();
}

}  // namespace msgtool
