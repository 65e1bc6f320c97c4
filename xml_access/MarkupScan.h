// MarkupScan: where the elements of an XML text stand, byte by byte, so
// that an editor can change one attribute or one content and keep every
// other character as it was written.

#ifndef MSG_XML_ACCESS_MARKUPSCAN_H_
#define MSG_XML_ACCESS_MARKUPSCAN_H_

#include <cstddef>
#include <string>
#include <vector>

namespace XercesXML {

// One attribute of a start tag; offsets into the scanned text.
struct MarkupAttribute {
  std::size_t nameStart;
  std::size_t nameEnd;
  std::size_t valueStart;  // the first character after the opening quote
  std::size_t valueEnd;    // the closing quote
  char quote;              // '"' or '\''
};

// One element; offsets into the scanned text.
struct MarkupElement {
  std::size_t start;          // its '<'
  std::size_t nameEnd;        // the end of its qualified name
  std::size_t attributesEnd;  // after the last attribute's closing quote, else nameEnd
  std::size_t startTagEnd;    // after the '>' of the start tag
  std::size_t endTagStart;    // the '<' of the end tag; startTagEnd for "<a/>"
  std::size_t end;            // after the element's last character
  bool selfClosing;           // written as "<a ... />"
  int parent;                 // index of the parent element, -1 for the root
  std::vector<MarkupAttribute> attributes;
};

// The elements of `text` in document order (the order of their start
// tags). `text` is the working text of a well-formed XML document without a
// document type declaration (see MarkupEncoding): the scan reads tags,
// comments, CDATA sections and processing instructions lexically and
// checks no more than it needs to find them. Linear in the text's length.
// Raises ParsingError for a text it cannot follow (a tag left open, an end
// tag without a start).
std::vector<MarkupElement> scanMarkup(const std::string& text);

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_MARKUPSCAN_H_
