#include "XliffFile.h"

#include <map>

#include "XliffReader.h"
#include "XliffSupport.h"

namespace msgtool {

namespace {

using XercesXML::DOMNode;

constexpr char kXliffNamespace[] = "urn:oasis:names:tc:xliff:document:1.2";
constexpr char kPluralGroup[] = "x-gettext-plurals";

// Writes `text` into `element`, each placeholder as <x/>. `ids` gives each
// distinct placeholder its id and grows as new ones appear.
void addInline(const XliffBuilder& builder, const DOMNode& element, const std::string& text,
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
    DOMNode x = builder.element("x");
    XliffBuilder::set(x, "id", known->second);
    XliffBuilder::set(x, "equiv-text", piece.text);
    element.appendChild(x);
  }
}

bool isPluralGroup(const DOMNode& group) {
  return group.getAttributeByName("restype") == kPluralGroup;
}

bool standsForPlaceholder(const std::string& name) {
  return name == "x" || name == "ph" || name == "bx" || name == "ex" || name == "it" ||
         name == "bpt" || name == "ept";
}

void readRoot(const DOMNode&, XliffFile&) {}

void readFile(const DOMNode& fileElement, XliffFile& file) {
  if (file.sourceLanguage.empty()) {
    file.original = fileElement.getAttributeByName("original");
    file.sourceLanguage = fileElement.getAttributeByName("source-language");
    file.targetLanguage = fileElement.getAttributeByName("target-language");
  }
}

// The placeholder an inline element stands for. In the source each
// element's id is learnt; in the target it is looked up first.
std::string placeholderOf(const XliffReader& reader, const DOMNode& inner,
                          std::map<std::string, std::string>& ids, bool isSource) {
  const std::string id = inner.getAttributeByName("id");
  auto known = ids.find(id);
  std::string placeholder;
  if (!isSource && !id.empty() && known != ids.end()) {
    placeholder = known->second;
  } else if (isPlaceholder(inner.getAttributeByName("equiv-text"))) {
    placeholder = inner.getAttributeByName("equiv-text");
  } else if (isPlaceholder(inner.getTextContent())) {
    placeholder = inner.getTextContent();
  } else {
    reader.fail(inner, "the inline element <" + inner.getNodeName() + " id=\"" + id +
                           "\"> stands for no placeholder of the source");
  }
  if (isSource && !id.empty()) {
    ids.emplace(id, placeholder);
  }
  return placeholder;
}

void readUnit(const XliffReader& reader, const DOMNode& element, XliffUnit& unit) {
  unit.approved = element.getAttributeByName("approved") == "yes";
  DOMNode source;
  DOMNode target;
  for (DOMNode child = element.getFirstElementChild(); child.isValid();
       child = child.getNextElementSibling()) {
    const std::string name = child.getNodeName();
    if (name == "source" && !source.isValid()) {
      source = child;
    } else if (name == "target" && !target.isValid()) {
      target = child;
    } else if (name == "note") {
      const std::string note = child.getTextContent();
      if (note.rfind(kSeverityNote, 0) == 0) {
        unit.severity = note.substr(sizeof kSeverityNote - 1);
      } else if (note.rfind(kCountNote, 0) == 0) {
        unit.count = note.substr(sizeof kCountNote - 1);
      }
    }
  }
  if (!source.isValid()) {
    reader.fail(element, "the trans-unit '" + unit.key + "' has no <source>");
  }
  std::map<std::string, std::string> ids;  // inline element id -> placeholder
  unit.sourceLanguage = source.getAttributeByName("xml:lang");
  reader.readInline(source, unit.source,
                    [&](const DOMNode& inner) { return placeholderOf(reader, inner, ids, true); });
  if (target.isValid()) {
    unit.state = target.getAttributeByName("state");
    unit.targetLanguage = target.getAttributeByName("xml:lang");
    unit.target.emplace();
    reader.readInline(target, *unit.target, [&](const DOMNode& inner) {
      return placeholderOf(reader, inner, ids, false);
    });
  }
}

// Where the unit's text comes from, as a context group at `depth`.
void addLocation(XliffBuilder& writer, const DOMNode& element, const XliffUnit& unit, int depth) {
  DOMNode contextGroup = writer.add(element, "context-group", depth);
  XliffBuilder::set(contextGroup, "purpose", "location");
  DOMNode context = writer.add(contextGroup, "context", depth + 1);
  XliffBuilder::set(context, "context-type", "sourcefile");
  writer.addText(context, unit.sourceFile);
  if (unit.sourceLine > 0) {
    context = writer.add(contextGroup, "context", depth + 1);
    XliffBuilder::set(context, "context-type", "linenumber");
    writer.addText(context, std::to_string(unit.sourceLine));
  }
  writer.close(contextGroup, depth);
}

// What a trans-unit holds, its children at `depth`: whether it is approved,
// its source and target, its notes and where it comes from.
void addUnit(XliffBuilder& writer, const DOMNode& element, const XliffUnit& unit, int depth) {
  if (unit.approved) {
    XliffBuilder::set(element, "approved", "yes");
  }
  XliffBuilder::preserveSpace(element);
  std::map<std::string, std::string> ids;
  addInline(writer, writer.add(element, "source", depth), unit.source, ids);
  if (unit.target) {
    DOMNode target = writer.add(element, "target", depth);
    if (!unit.state.empty()) {
      XliffBuilder::set(target, "state", unit.state);
    }
    addInline(writer, target, *unit.target, ids);
  }
  if (!unit.severity.empty()) {
    writer.addText(writer.add(element, "note", depth), kSeverityNote + unit.severity);
  }
  if (!unit.count.empty()) {
    writer.addText(writer.add(element, "note", depth), kCountNote + unit.count);
  }
  if (!unit.sourceFile.empty()) {
    addLocation(writer, element, unit, depth);
  }
}

}  // namespace

const XliffDialect kXliff12Dialect{"trans-unit", "resname", "body",   standsForPlaceholder,
                                   readRoot,     readFile,  readUnit, isPluralGroup};

XliffFile XliffFile::read(const std::string& path) {
  return XliffReader::read(path);
}

std::string XliffFile::write() const {
  if (version2) {
    return writeXliff2(*this);
  }
  XliffBuilder writer(kXliffNamespace);
  DOMNode root = writer.root();
  XliffBuilder::set(root, "version", "1.2");
  DOMNode file = writer.add(root, "file", 1);
  XliffBuilder::set(file, "original", original);
  XliffBuilder::set(file, "source-language", sourceLanguage);
  XliffBuilder::set(file, "target-language", targetLanguage);
  // translate-toolkit turns a plural group back into msgid_plural only in a
  // file of gettext's datatype.
  bool plural = false;
  for (const XliffUnit& unit : units) {
    plural = plural || unit.form >= 0;
  }
  XliffBuilder::set(file, "datatype", plural ? "po" : "plaintext");
  DOMNode body = writer.add(file, "body", 2);
  static const XliffUnitNames kNames{"trans-unit", "resname", "restype", kPluralGroup};
  XliffUnitPlacer placer(writer, body, 3, kNames);
  for (const XliffUnit& unit : units) {
    int depth = 0;
    DOMNode element = placer.place(unit, depth);
    addUnit(writer, element, unit, depth + 1);
    writer.close(element, depth);
  }
  placer.finish();
  writer.close(body, 2);
  writer.close(file, 1);
  writer.close(root, 0);
  return writer.serialize();
}

}  // namespace msgtool
