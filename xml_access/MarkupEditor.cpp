#include "xml_access/MarkupEditor.h"

#include <algorithm>

#include "msg/XercesXMLException.h"

namespace XercesXML {

namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

bool isSpace(char c) {
  return isBlank(c) || c == '\n' || c == '\r';
}

// Where splices at one offset go, in this order: a new attribute before the
// "/>" that a content replaces, elements added after an element before
// those added at the end of its parent.
enum Rank { kNewAttributes, kReplacement, kFollowing, kChildren };

}  // namespace

MarkupEditor::MarkupEditor(std::string fileBytes)
    : encoding(MarkupEncoding::of(fileBytes)), original(std::move(fileBytes)) {
  text = encoding.toWorkingText(original);
  scanned = scanMarkup(text);
  const std::size_t firstLineEnd = text.find('\n');
  if (firstLineEnd != std::string::npos && firstLineEnd > 0 && text[firstLineEnd - 1] == '\r') {
    lineEnd = "\r\n";
  }
  for (const MarkupElement& element : scanned) {
    if (!element.attributes.empty()) {
      quote = element.attributes.front().quote;
      break;
    }
  }
  // The step of indentation: the first child that stands on a line of its
  // own below a parent that does, and is indented further.
  for (ElementId id = 0; id < elementCount(); ++id) {
    const int parent = scanned[id].parent;
    if (parent < 0 || leadingOf(id).find('\n') == std::string::npos ||
        leadingOf(parent).find('\n') == std::string::npos) {
      continue;
    }
    const std::string inner = indentOf(id);
    const std::string outer = indentOf(parent);
    if (inner.size() > outer.size() && inner.compare(0, outer.size(), outer) == 0) {
      indentStep = inner.substr(outer.size());
      break;
    }
  }
}

std::string MarkupEditor::writtenName(ElementId id) const {
  return text.substr(scanned[id].start + 1, scanned[id].nameEnd - scanned[id].start - 1);
}

std::optional<std::string> MarkupEditor::writtenAttribute(ElementId id,
                                                          const std::string& qualifiedName) const {
  const MarkupAttribute* attribute = attributeOf(id, qualifiedName);
  if (attribute == nullptr) {
    return std::nullopt;
  }
  return text.substr(attribute->valueStart, attribute->valueEnd - attribute->valueStart);
}

void MarkupEditor::setAttribute(ElementId id, const std::string& qualifiedName,
                                const std::string& value) {
  Attributes& attributes = changes[id].attributes;
  for (auto& [name, known] : attributes) {
    if (name == qualifiedName) {
      known = value;
      return;
    }
  }
  attributes.emplace_back(qualifiedName, value);
}

void MarkupEditor::setContent(ElementId id, const std::string& content) {
  changes[id].content = content;
}

MarkupEditor::ElementId MarkupEditor::addElement(ElementId parent, ElementId after,
                                                 const std::string& name) {
  const ElementId id = elementCount() + static_cast<ElementId>(added.size());
  if (after >= 0 && isNew(after)) {
    // Into the list that holds `after`, right behind it.
    const ElementId owner = added[after - elementCount()].after;
    std::vector<ElementId>& list = listHolding(after);
    auto at = std::find(list.rbegin(), list.rend(), after).base();
    added.push_back(Added{name, parent, owner});
    list.insert(at, id);
    return id;
  }
  added.push_back(Added{name, parent, after});
  (after >= 0 ? changes[after].following : changes[parent].children).push_back(id);
  return id;
}

std::vector<MarkupEditor::ElementId>& MarkupEditor::listHolding(ElementId id) {
  const Added& element = added[id - elementCount()];
  return element.after >= 0 ? changes[element.after].following : changes[element.parent].children;
}

const MarkupAttribute* MarkupEditor::attributeOf(ElementId id,
                                                 const std::string& qualifiedName) const {
  for (const MarkupAttribute& attribute : scanned[id].attributes) {
    if (text.compare(attribute.nameStart, attribute.nameEnd - attribute.nameStart, qualifiedName) ==
        0) {
      return &attribute;
    }
  }
  return nullptr;
}

// The blanks and line ends right before an element of the file.
std::string MarkupEditor::leadingOf(ElementId id) const {
  std::size_t from = scanned[id].start;
  while (from > 0 && isSpace(text[from - 1])) {
    --from;
  }
  return text.substr(from, scanned[id].start - from);
}

// The indentation of the line an element starts on.
std::string MarkupEditor::indentOf(ElementId id) const {
  if (isNew(id)) {
    const Added& element = added[id - elementCount()];
    return element.after >= 0 ? indentOf(element.after) : childIndent(element.parent);
  }
  const std::size_t lineStart = text.rfind('\n', scanned[id].start);
  std::size_t from = lineStart == std::string::npos ? 0 : lineStart + 1;
  std::size_t end = from;
  while (end < scanned[id].start && isBlank(text[end])) {
    ++end;
  }
  return text.substr(from, end - from);
}

// The indentation of a child added at the end of `parent`: that of its last
// child where that one stands on a line of its own, else one step more.
std::string MarkupEditor::childIndent(ElementId parent) const {
  if (!isNew(parent)) {
    ElementId last = -1;
    for (ElementId id = parent + 1; id < elementCount() && scanned[id].start < scanned[parent].end;
         ++id) {
      if (scanned[id].parent == parent) {
        last = id;
      }
    }
    if (last >= 0 && leadingOf(last).find('\n') != std::string::npos) {
      return indentOf(last);
    }
  }
  return indentOf(parent) + indentStep;
}

std::string MarkupEditor::renderAttributes(const Attributes& attributes, char quoteMark) const {
  std::string out;
  for (const auto& [name, value] : attributes) {
    out += ' ' + name + '=' + quoteMark + encoding.escapeAttribute(value, quoteMark) + quoteMark;
  }
  return out;
}

std::string MarkupEditor::renderNew(ElementId id, const std::string& indent) const {
  const std::string& name = added[id - elementCount()].name;
  std::string out = '<' + name;
  auto found = changes.find(id);
  if (found == changes.end()) {
    return out + "/>";
  }
  const Changes& at = found->second;
  out += renderAttributes(at.attributes, quote);
  if (!at.children.empty()) {
    out += '>';
    const std::string inner = indent + indentStep;
    for (ElementId child : at.children) {
      out += lineEnd + inner + renderNew(child, inner);
    }
    return out + lineEnd + indent + "</" + name + '>';
  }
  if (at.content) {
    return out + '>' + encoding.escapeText(*at.content) + "</" + name + '>';
  }
  return out + "/>";
}

void MarkupEditor::spliceChanges(ElementId id, const Changes& at,
                                 std::vector<Splice>& splices) const {
  const MarkupElement& element = scanned[id];
  Attributes newAttributes;
  for (const auto& [name, value] : at.attributes) {
    if (const MarkupAttribute* written = attributeOf(id, name)) {
      splices.push_back(Splice{written->valueStart, written->valueEnd - written->valueStart,
                               encoding.escapeAttribute(value, written->quote), kReplacement});
    } else {
      newAttributes.emplace_back(name, value);
    }
  }
  if (!newAttributes.empty()) {
    const char mark = element.attributes.empty() ? quote : element.attributes.back().quote;
    splices.push_back(
        Splice{element.attributesEnd, 0, renderAttributes(newAttributes, mark), kNewAttributes});
  }
  const std::string name = writtenName(id);
  if (at.content) {
    const std::string content = encoding.escapeText(*at.content);
    splices.push_back(
        element.selfClosing
            ? Splice{element.startTagEnd - 2, 2, '>' + content + "</" + name + '>', kReplacement}
            : Splice{element.startTagEnd, element.endTagStart - element.startTagEnd, content,
                     kReplacement});
  }
  if (!at.children.empty()) {
    const std::string inner = childIndent(id);
    std::string lines;
    for (ElementId child : at.children) {
      lines += lineEnd + inner + renderNew(child, inner);
    }
    std::size_t trailing = element.endTagStart;
    while (trailing > element.startTagEnd && isSpace(text[trailing - 1])) {
      --trailing;
    }
    const std::string closing = lineEnd + indentOf(id);
    if (element.selfClosing) {
      splices.push_back(Splice{element.startTagEnd - 2, 2,
                               '>' + lines + closing + "</" + name + '>', kReplacement});
    } else if (text.find('\n', trailing) < element.endTagStart) {
      // Before the blank that closes the element, which stays as it is.
      splices.push_back(Splice{trailing, 0, lines, kChildren});
    } else {
      splices.push_back(Splice{element.endTagStart, 0, lines + closing, kChildren});
    }
  }
  if (!at.following.empty()) {
    const std::string leading = leadingOf(id);
    const std::string indent = indentOf(id);
    const std::string before = leading.find('\n') != std::string::npos ? lineEnd + indent : leading;
    std::string siblings;
    for (ElementId sibling : at.following) {
      siblings += before + renderNew(sibling, indent);
    }
    splices.push_back(Splice{element.end, 0, siblings, kFollowing});
  }
}

std::string MarkupEditor::fileBytes() const {
  if (changes.empty()) {
    return original;
  }
  std::vector<ElementId> edited;
  for (const auto& [id, at] : changes) {
    if (!isNew(id)) {
      edited.push_back(id);
    }
  }
  std::sort(edited.begin(), edited.end());
  std::vector<Splice> splices;
  for (ElementId id : edited) {
    spliceChanges(id, changes.at(id), splices);
  }
  std::stable_sort(splices.begin(), splices.end(), [](const Splice& a, const Splice& b) {
    return a.offset != b.offset ? a.offset < b.offset : a.rank < b.rank;
  });
  std::string out;
  out.reserve(text.size() + text.size() / 4);
  std::size_t copied = 0;
  for (const Splice& splice : splices) {
    // A splice that starts before the one ahead of it ends lies inside a
    // content that is replaced: it has no place left in the result.
    if (splice.offset < copied) {
      throw ParsingError(
          "the edits overlap: an element inside a content that is replaced is edited as well");
    }
    out.append(text, copied, splice.offset - copied);
    out += splice.replacement;
    copied = splice.offset + splice.length;
  }
  out.append(text, copied, std::string::npos);
  return encoding.toFileBytes(out);
}

}  // namespace XercesXML
