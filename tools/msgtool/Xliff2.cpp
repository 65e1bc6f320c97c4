// XLIFF 2.0 for XliffFile: one <unit> per key (id and name), a <segment>
// whose state is initial or translated, the severity and the place as
// notes. Each placeholder is <ph id=".." dataRef=".."/> with the placeholder
// itself as the unit's original data, which is how XLIFF 2 carries native
// codes. Units keep the 1.2 state names: a translation in state initial
// reads as needs-review-translation, one that is translated, reviewed or
// final (or has no state) as translated.

#include <map>

#include "XliffFile.h"
#include "XliffReader.h"
#include "XliffSupport.h"

namespace msgtool {

namespace {

using XercesXML::DOMNode;

constexpr char kXliff2Namespace[] = "urn:oasis:names:tc:xliff:document:2.0";
constexpr char kReviewSubState[] = "msgtool:needs-review";
constexpr char kPluralGroupType[] = "msgtool:plurals";

bool isPluralGroup(const DOMNode& group) {
  return group.getAttributeByName("type") == kPluralGroupType;
}

bool standsForPlaceholder(const std::string& name) {
  return name == "ph" || name == "sc" || name == "ec";
}

void readRoot(const DOMNode& root, XliffFile& file) {
  file.version2 = true;
  file.sourceLanguage = root.getAttributeByName("srcLang");
  file.targetLanguage = root.getAttributeByName("trgLang");
}

void readFile(const DOMNode& fileElement, XliffFile& file) {
  if (file.original.empty()) {
    file.original = fileElement.getAttributeByName("original");
  }
}

DOMNode childNamed(const DOMNode& parent, const char* name) {
  for (DOMNode child = parent.getFirstElementChild(); child.isValid();
       child = child.getNextElementSibling()) {
    if (child.getNodeName() == name) {
      return child;
    }
  }
  return DOMNode();
}

void readSeverity(const DOMNode& notes, XliffUnit& unit) {
  for (DOMNode note = notes.getFirstElementChild(); note.isValid();
       note = note.getNextElementSibling()) {
    if (note.getAttributeByName("category") == "severity") {
      unit.severity = note.getTextContent();
    } else if (note.getAttributeByName("category") == "count") {
      unit.count = note.getTextContent();
    }
  }
}

// The placeholder an inline code stands for: its original data, or its
// equiv or disp text.
std::string placeholderOf(const XliffReader& reader, const DOMNode& inner,
                          const std::map<std::string, std::string>& data) {
  auto native = data.find(inner.getAttributeByName("dataRef"));
  if (native != data.end() && isPlaceholder(native->second)) {
    return native->second;
  }
  if (isPlaceholder(inner.getAttributeByName("equiv"))) {
    return inner.getAttributeByName("equiv");
  }
  if (isPlaceholder(inner.getAttributeByName("disp"))) {
    return inner.getAttributeByName("disp");
  }
  reader.fail(inner, "the inline element <" + inner.getNodeName() + " id=\"" +
                         inner.getAttributeByName("id") + "\"> stands for no placeholder");
}

// Keeps the first xml:lang that a segment's source or target names.
void readLanguage(const DOMNode& part, std::string& language) {
  if (language.empty()) {
    language = part.getAttributeByName("xml:lang");
  }
}

void readUnit(const XliffReader& reader, const DOMNode& unitElement, XliffUnit& unit) {
  std::map<std::string, std::string> data;  // originalData id -> native code
  const auto codes = [&](const DOMNode& inner) { return placeholderOf(reader, inner, data); };
  std::string target;
  bool everyPartTranslated = true;
  bool anyTarget = false;
  bool needsReview = false;
  bool anySource = false;
  for (DOMNode part = unitElement.getFirstElementChild(); part.isValid();
       part = part.getNextElementSibling()) {
    const std::string name = part.getNodeName();
    if (name == "originalData") {
      for (DOMNode item = part.getFirstElementChild(); item.isValid();
           item = item.getNextElementSibling()) {
        data[item.getAttributeByName("id")] = item.getTextContent();
      }
    } else if (name == "notes") {
      readSeverity(part, unit);
    } else if (name == "segment" || name == "ignorable") {
      const DOMNode source = childNamed(part, "source");
      const DOMNode partTarget = childNamed(part, "target");
      if (!source.isValid()) {
        reader.fail(part, "a " + name + " of unit '" + unit.key + "' has no <source>");
      }
      anySource = true;
      readLanguage(source, unit.sourceLanguage);
      reader.readInline(source, unit.source, codes);
      if (partTarget.isValid()) {
        anyTarget = true;
        readLanguage(partTarget, unit.targetLanguage);
        reader.readInline(partTarget, target, codes);
      } else if (name == "ignorable") {
        reader.readInline(source, target, codes);
      } else {
        everyPartTranslated = false;
      }
      needsReview =
          needsReview || (name == "segment" && part.getAttributeByName("state") == "initial");
    }
  }
  if (!anySource) {
    reader.fail(unitElement, "the unit '" + unit.key + "' has no segment");
  }
  if (anyTarget && everyPartTranslated) {
    unit.target = target;
    unit.state = needsReview ? "needs-review-translation" : "translated";
  }
}

// Writes `text` into `element`, each placeholder as <ph/> referring to its
// original data.
void addInline(const XliffBuilder& builder, const DOMNode& element, const std::string& text,
               const std::map<std::string, std::string>& ids) {
  std::map<std::string, int> seen;  // the same placeholder twice: p1, p1-2
  for (const TextPiece& piece : splitPlaceholders(text)) {
    if (!piece.placeholder) {
      builder.addText(element, piece.text);
      continue;
    }
    DOMNode ph = builder.element("ph");
    const std::string& dataId = ids.at(piece.text);
    const int count = ++seen[piece.text];
    XliffBuilder::set(ph, "id",
                      "p" + dataId.substr(1) + (count > 1 ? "-" + std::to_string(count) : ""));
    XliffBuilder::set(ph, "dataRef", dataId);
    XliffBuilder::set(ph, "disp", piece.text);
    element.appendChild(ph);
  }
}

// The unit's notes, at `depth`: its severity, count and place.
void addNotes(XliffBuilder& writer, const DOMNode& element, const XliffUnit& unit, int depth) {
  DOMNode notes = writer.add(element, "notes", depth);
  DOMNode severity = writer.add(notes, "note", depth + 1);
  XliffBuilder::set(severity, "category", "severity");
  writer.addText(severity, unit.severity);
  if (!unit.count.empty()) {
    DOMNode count = writer.add(notes, "note", depth + 1);
    XliffBuilder::set(count, "category", "count");
    writer.addText(count, unit.count);
  }
  if (!unit.sourceFile.empty()) {
    DOMNode note = writer.add(notes, "note", depth + 1);
    XliffBuilder::set(note, "category", "location");
    writer.addText(
        note, unit.sourceFile + (unit.sourceLine > 0 ? ":" + std::to_string(unit.sourceLine) : ""));
  }
  writer.close(notes, depth);
}

// The unit's placeholders as original data, at `depth`, if it has any;
// returns the data id of each placeholder.
std::map<std::string, std::string> addOriginalData(XliffBuilder& writer, const DOMNode& element,
                                                   const XliffUnit& unit, int depth) {
  std::map<std::string, std::string> ids;  // placeholder -> data id
  for (const std::string* text : {&unit.source, unit.target ? &*unit.target : &unit.source}) {
    for (const TextPiece& piece : splitPlaceholders(*text)) {
      if (piece.placeholder && ids.count(piece.text) == 0) {
        ids.emplace(piece.text, "d" + std::to_string(ids.size() + 1));
      }
    }
  }
  if (!ids.empty()) {
    DOMNode originalData = writer.add(element, "originalData", depth);
    for (const auto& [placeholder, id] : ids) {
      DOMNode item = writer.add(originalData, "data", depth + 1);
      XliffBuilder::set(item, "id", id);
      writer.addText(item, placeholder);
    }
    writer.close(originalData, depth);
  }
  return ids;
}

// The unit's segment, at `depth`: its state, source and target.
void addSegment(XliffBuilder& writer, const DOMNode& element, const XliffUnit& unit,
                const std::map<std::string, std::string>& ids, int depth) {
  DOMNode segment = writer.add(element, "segment", depth);
  const bool review = unit.state.rfind("needs-review", 0) == 0;
  XliffBuilder::set(segment, "state", unit.target && !review ? "translated" : "initial");
  if (unit.target && review) {
    XliffBuilder::set(segment, "subState", kReviewSubState);
  }
  DOMNode source = writer.add(segment, "source", depth + 1);
  XliffBuilder::preserveSpace(source);
  addInline(writer, source, unit.source, ids);
  if (unit.target) {
    DOMNode target = writer.add(segment, "target", depth + 1);
    XliffBuilder::preserveSpace(target);
    addInline(writer, target, *unit.target, ids);
  }
  writer.close(segment, depth);
}

}  // namespace

const XliffDialect kXliff2Dialect{"unit",   "name",   nullptr,  standsForPlaceholder,
                                  readRoot, readFile, readUnit, isPluralGroup};

std::string writeXliff2(const XliffFile& file) {
  XliffBuilder writer(kXliff2Namespace);
  DOMNode root = writer.root();
  XliffBuilder::set(root, "version", "2.0");
  XliffBuilder::set(root, "srcLang", file.sourceLanguage);
  XliffBuilder::set(root, "trgLang", file.targetLanguage);
  DOMNode fileElement = writer.add(root, "file", 1);
  XliffBuilder::set(fileElement, "id", "f1");
  XliffBuilder::set(fileElement, "original", file.original);
  static const XliffUnitNames kNames{"unit", "name", "type", kPluralGroupType};
  XliffUnitPlacer placer(writer, fileElement, 2, kNames);
  for (const XliffUnit& unit : file.units) {
    int depth = 0;
    DOMNode element = placer.place(unit, depth);
    addNotes(writer, element, unit, depth + 1);
    const std::map<std::string, std::string> ids =
        addOriginalData(writer, element, unit, depth + 1);
    addSegment(writer, element, unit, ids, depth + 1);
    writer.close(element, depth);
  }
  placer.finish();
  writer.close(fileElement, 1);
  writer.close(root, 0);
  return writer.serialize();
}

}  // namespace msgtool
