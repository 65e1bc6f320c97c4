#include "xml_access/MarkupScan.h"

#include <cstdio>
#include <cstring>

#include "msg/XercesXMLException.h"

namespace XercesXML {

namespace {

bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

class Scanner {
 public:
  explicit Scanner(const std::string& text) : text(text) {}

  std::vector<MarkupElement> run() {
    while ((at = text.find('<', at)) != std::string::npos) {
      if (startsHere("<?")) {
        skipPast("?>");
      } else if (startsHere("<!--")) {
        skipPast("-->");
      } else if (startsHere("<![CDATA[")) {
        skipPast("]]>");
      } else if (startsHere("<!")) {
        fail("a document type declaration");
      } else if (startsHere("</")) {
        endTag();
      } else {
        startTag();
      }
    }
    if (!open.empty()) {
      fail("an element that is not closed");
    }
    return std::move(elements);
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    // std::to_string would export a table of the standard library from libmsg.
    char offset[32];
    std::snprintf(offset, sizeof offset, " at byte %zu", at);
    throw ParsingError("the markup cannot be followed: " + what + offset);
  }

  bool startsHere(const char* prefix) const {
    return text.compare(at, std::strlen(prefix), prefix) == 0;
  }

  void skipPast(const char* terminator) {
    const std::size_t found = text.find(terminator, at);
    if (found == std::string::npos) {
      fail("markup that does not end");
    }
    at = found + std::strlen(terminator);
  }

  void skipSpace() {
    while (at < text.size() && isSpace(text[at])) {
      ++at;
    }
  }

  std::size_t nameEndFrom(std::size_t from) const {
    std::size_t end = from;
    while (end < text.size() && !isSpace(text[end]) && text[end] != '=' && text[end] != '/' &&
           text[end] != '>') {
      ++end;
    }
    return end;
  }

  void startTag() {
    MarkupElement element{};
    element.start = at;
    element.nameEnd = nameEndFrom(at + 1);
    element.attributesEnd = element.nameEnd;
    element.parent = open.empty() ? -1 : open.back();
    at = element.nameEnd;
    for (;;) {
      skipSpace();
      if (at >= text.size()) {
        fail("a start tag that does not end");
      }
      if (text[at] == '>' || startsHere("/>")) {
        break;
      }
      MarkupAttribute attribute{};
      attribute.nameStart = at;
      attribute.nameEnd = nameEndFrom(at);
      at = attribute.nameEnd;
      skipSpace();
      if (at >= text.size() || text[at] != '=') {
        fail("an attribute without a value");
      }
      ++at;
      skipSpace();
      if (at >= text.size() || (text[at] != '"' && text[at] != '\'')) {
        fail("an attribute value without quotes");
      }
      attribute.quote = text[at];
      attribute.valueStart = at + 1;
      attribute.valueEnd = text.find(attribute.quote, attribute.valueStart);
      if (attribute.valueEnd == std::string::npos) {
        fail("an attribute value that does not end");
      }
      at = attribute.valueEnd + 1;
      element.attributesEnd = at;
      element.attributes.push_back(attribute);
    }
    element.selfClosing = text[at] == '/';
    at += element.selfClosing ? 2 : 1;
    element.startTagEnd = at;
    if (element.selfClosing) {
      element.endTagStart = at;
      element.end = at;
    } else {
      open.push_back(static_cast<int>(elements.size()));
    }
    elements.push_back(std::move(element));
  }

  void endTag() {
    if (open.empty()) {
      fail("an end tag without a start tag");
    }
    MarkupElement& element = elements[open.back()];
    open.pop_back();
    element.endTagStart = at;
    skipPast(">");
    element.end = at;
  }

  const std::string& text;
  std::size_t at = 0;
  std::vector<MarkupElement> elements;
  std::vector<int> open;  // the elements whose end tag is still to come
};

}  // namespace

std::vector<MarkupElement> scanMarkup(const std::string& text) {
  return Scanner(text).run();
}

}  // namespace XercesXML
