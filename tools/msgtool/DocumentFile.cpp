#include "DocumentFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "OutsideFiles.h"
#include "ToolError.h"
#include "msg/XercesXMLException.h"
#include "platform/InputLimits.h"

namespace msgtool {

namespace {

constexpr char kXIncludeNamespace[] = "http://www.w3.org/2001/XInclude";

std::string readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  if (!in || !(bytes << in.rdbuf())) {
    throw ToolError(path, 0, std::string("cannot be read: ") + std::strerror(errno));
  }
  return bytes.str();
}

XercesXML::MarkupEditor editorOf(const std::string& path, std::string bytes) {
  try {
    return XercesXML::MarkupEditor(std::move(bytes));
  } catch (const XercesXML::Exception& refused) {
    throw ToolError(path, 0, refused.getText());
  }
}

std::uint64_t positionKey(const XercesXML::DOMNode& element) {
  return static_cast<std::uint64_t>(element.getSourceLine()) << 32 |
         static_cast<std::uint32_t>(element.getSourceColumn());
}

}  // namespace

DocumentFile::DocumentFile(std::string path)
    : filePath(std::move(path)),
      dom(readOutsideFile(filePath, msg::limits::kMaxMessageDocumentBytes, true)),
      original(readBytes(filePath)),
      editor(editorOf(filePath, original)) {
  matchElements();
}

DocumentFile::DocumentFile(std::string path, std::string bytes)
    : filePath(std::move(path)), original(std::move(bytes)), editor(editorOf(filePath, original)) {}

// The n-th element of the DOM in document order is the n-th start tag of
// the text. The parser's position of an element tells it apart from every
// other, so it names the element's id.
void DocumentFile::matchElements() {
  std::vector<XercesXML::DOMNode> pending{dom.getFirstElementChild()};
  int next = 0;
  while (!pending.empty()) {
    XercesXML::DOMNode element = pending.back();
    pending.pop_back();
    if (!ids.emplace(positionKey(element), next).second || element.getSourceLine() == 0) {
      next = -1;
      break;
    }
    if (element.getNodeName() == "include" && isXIncludeElement(next)) {
      includes.push_back(element);
    }
    ++next;
    const std::size_t firstChild = pending.size();
    for (XercesXML::DOMNode child = element.getFirstElementChild(); child.isValid();
         child = child.getNextElementSibling()) {
      pending.push_back(child);
    }
    std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(firstChild), pending.end());
  }
  if (next != editor.elementCount()) {
    ids.clear();
    throw ToolError(filePath, 0,
                    "cannot be edited: its elements could not be matched to its text; nothing "
                    "was changed");
  }
}

// True if the element's prefix is bound to the XInclude namespace, on the
// element or an ancestor.
bool DocumentFile::isXIncludeElement(int id) const {
  const std::string name = editor.writtenName(id);
  const std::size_t colon = name.find(':');
  const std::string declaration =
      colon == std::string::npos ? "xmlns" : "xmlns:" + name.substr(0, colon);
  for (int at = id; at >= 0; at = editor.parentOf(at)) {
    if (std::optional<std::string> bound = editor.writtenAttribute(at, declaration)) {
      return *bound == kXIncludeNamespace;
    }
  }
  return false;
}

int DocumentFile::idOf(const XercesXML::DOMNode& element) const {
  auto found = ids.find(positionKey(element));
  if (found == ids.end()) {
    throw ToolError(filePath, element.getSourceLine(), "cannot be edited: an element has no place");
  }
  return found->second;
}

bool DocumentFile::isPart() const {
  if (!dom.isValid()) {
    return false;
  }
  const std::string root = editor.writtenName(0);
  return root == "MessageNamespace" ||
         (root == "MessageCollection" &&
          !dom.getFirstElementChild().hasAttribute("noNamespaceSchemaLocation",
                                                   "http://www.w3.org/2001/XMLSchema-instance"));
}

std::vector<DocumentFile::Inclusion> DocumentFile::includedFiles() const {
  std::vector<Inclusion> files;
  const std::filesystem::path folder = std::filesystem::path(filePath).parent_path();
  for (const XercesXML::DOMNode& include : includes) {
    const std::string href = include.getAttributeByName("href");
    const std::string parse = include.getAttributeByName("parse");
    if (!href.empty() && (parse.empty() || parse == "xml") &&
        include.getAttributeByName("xpointer").empty()) {
      files.push_back(Inclusion{idOf(include), (folder / href).lexically_normal().string()});
    }
  }
  return files;
}

std::string DocumentFile::editedBytes() const {
  try {
    return editor.fileBytes();
  } catch (const XercesXML::Exception& refused) {
    throw ToolError(filePath, 0, refused.getText());
  }
}

}  // namespace msgtool
