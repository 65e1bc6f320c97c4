#include "XliffReader.h"

#include <utility>
#include <vector>

#include "OutsideFiles.h"
#include "ToolError.h"
#include "platform/InputLimits.h"

namespace msgtool {

using XercesXML::DOMNode;

namespace {

// The index N of the form id "KEY[N]", npos unless N is below `forms`.
std::size_t formIndex(const std::string& id, const std::string& key, std::size_t forms) {
  if (id.size() < key.size() + 3 || id.compare(0, key.size(), key) != 0 || id[key.size()] != '[' ||
      id.back() != ']') {
    return std::string::npos;
  }
  const std::string digits = id.substr(key.size() + 1, id.size() - key.size() - 2);
  if (digits.size() > 2 || digits.find_first_not_of("0123456789") != std::string::npos) {
    return std::string::npos;
  }
  const std::size_t index = std::stoul(digits);
  return index < forms ? index : std::string::npos;
}

}  // namespace

XliffFile XliffReader::read(const std::string& path) {
  const DOMNode document = readOutsideFile(path, msg::limits::kMaxTranslatorsFileBytes, false);
  const DOMNode root = document.getFirstElementChild();
  const XliffReader probe(path, kXliff12Dialect);
  if (root.getNodeName() != "xliff") {
    probe.fail(root, "is no XLIFF file: its root element is <" + root.getNodeName() + ">");
  }
  const std::string version = root.getAttributeByName("version");
  if (version == "2.0" || version == "2.1") {
    return XliffReader(path, kXliff2Dialect).readAll(root);
  }
  if (version != "1.2" && version != "1.1" && version != "1.0") {
    probe.fail(root,
               "has XLIFF version '" + version + "'; msgtool reads XLIFF 1.2 (1.0 and 1.1 too)");
  }
  return XliffReader(path, kXliff12Dialect).readAll(root);
}

XliffReader::XliffReader(std::string path, const XliffDialect& dialect)
    : path(std::move(path)), dialect(&dialect) {}

void XliffReader::fail(const DOMNode& at, const std::string& message) const {
  throw ToolError(path, at.getSourceLine(), message);
}

XliffFile XliffReader::readAll(const DOMNode& root) {
  XliffFile file;
  dialect->readRoot(root, file);
  for (DOMNode fileElement = root.getFirstElementChild(); fileElement.isValid();
       fileElement = fileElement.getNextElementSibling()) {
    if (fileElement.getNodeName() != "file") {
      continue;
    }
    dialect->readFile(fileElement, file);
    if (dialect->unitContainer == nullptr) {
      readUnits(fileElement, 0, file);
      continue;
    }
    for (DOMNode container = fileElement.getFirstElementChild(); container.isValid();
         container = container.getNextElementSibling()) {
      if (container.getNodeName() == dialect->unitContainer) {
        readUnits(container, 0, file);
      }
    }
  }
  return file;
}

void XliffReader::readUnits(const DOMNode& parent, int depth, XliffFile& file) const {
  if (depth > msg::limits::kMaxExchangeNesting) {
    fail(parent, "has groups nested more than " + std::to_string(msg::limits::kMaxExchangeNesting) +
                     " deep");
  }
  for (DOMNode child = parent.getFirstElementChild(); child.isValid();
       child = child.getNextElementSibling()) {
    const std::string name = child.getNodeName();
    if (name == "group" && dialect->isPluralGroup(child)) {
      readForms(child, file);
    } else if (name == "group") {
      readUnits(child, depth + 1, file);
    } else if (name == dialect->unitName) {
      file.units.push_back(readUnit(child));
    }
  }
}

void XliffReader::readForms(const DOMNode& group, XliffFile& file) const {
  std::string key = group.getAttributeByName(dialect->nameAttribute);
  if (key.empty()) {
    key = group.getAttributeByName("id");
  }
  if (key.empty()) {
    fail(group, "a group of plural forms has no id");
  }
  // Tools may reorder the units of a group; each form is known by the index
  // in its id, and the indexes must be 0 .. n-1, each once.
  std::vector<XliffUnit> forms;
  std::vector<DOMNode> elements;
  for (DOMNode child = group.getFirstElementChild(); child.isValid();
       child = child.getNextElementSibling()) {
    if (child.getNodeName() == dialect->unitName) {
      elements.push_back(child);
    }
  }
  if (elements.empty()) {
    fail(group, "the group of plural forms of \"" + key + "\" holds no form");
  }
  forms.resize(elements.size());
  for (const DOMNode& element : elements) {
    const std::string id = element.getAttributeByName("id");
    const std::size_t form = formIndex(id, key, elements.size());
    if (form == std::string::npos || forms[form].form >= 0) {
      fail(element, "the form of \"" + key + "\" has the id \"" + id + "\" where \"" + key +
                        "[0]\" to \"" + key + "[" + std::to_string(elements.size() - 1) +
                        "]\", each once, were expected");
    }
    XliffUnit unit = readUnit(element);
    unit.key = key;
    unit.form = static_cast<int>(form);
    forms[form] = std::move(unit);
  }
  for (XliffUnit& unit : forms) {
    file.units.push_back(std::move(unit));
  }
}

XliffUnit XliffReader::readUnit(const DOMNode& element) const {
  XliffUnit unit;
  unit.line = element.getSourceLine();
  unit.key = element.getAttributeByName(dialect->nameAttribute);
  if (unit.key.empty()) {
    unit.key = element.getAttributeByName("id");
  }
  if (unit.key.empty()) {
    fail(element, std::string("a ") + dialect->unitName + " has no id");
  }
  dialect->readUnit(*this, element, unit);
  return unit;
}

void XliffReader::readInline(
    const DOMNode& element, std::string& out,
    const std::function<std::string(const DOMNode&)>& placeholderOf) const {
  readInlineAt(element, out, placeholderOf, 0);
}

void XliffReader::readInlineAt(const DOMNode& element, std::string& out,
                               const std::function<std::string(const DOMNode&)>& placeholderOf,
                               int depth) const {
  if (depth > msg::limits::kMaxExchangeNesting) {
    fail(element, "has inline elements nested more than " +
                      std::to_string(msg::limits::kMaxExchangeNesting) + " deep");
  }
  for (DOMNode child = element.getFirstChild(); child.isValid(); child = child.getNextSibling()) {
    if (child.isText()) {
      out += child.getNodeValue();
    } else if (!child.isElement()) {
      continue;
    } else if (dialect->standsForPlaceholder(child.getNodeName())) {
      out += placeholderOf(child);
    } else {
      readInlineAt(child, out, placeholderOf, depth + 1);  // <g>, <mrk>, <pc>: their text counts
    }
  }
}

}  // namespace msgtool
