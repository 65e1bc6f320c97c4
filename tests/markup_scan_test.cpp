// scanMarkup: where elements, attributes and contents stand in a text, past
// the markup that only looks like elements, and what it refuses to follow.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "msg/XercesXMLException.h"
#include "xml_access/MarkupScan.h"

namespace {

using XercesXML::MarkupAttribute;
using XercesXML::MarkupElement;

std::string between(const std::string& text, std::size_t from, std::size_t to) {
  return text.substr(from, to - from);
}

// One element as its offsets cut the text: "name^parent", each attribute
// as name=quote value quote, what stands between the last attribute and the
// end of the start tag, then the content in [] and the end tag, or "/" for
// an empty-element tag (whose end must be that of its start tag).
std::string describe(const std::string& text, const MarkupElement& element) {
  std::string out =
      between(text, element.start, element.nameEnd) + '^' + std::to_string(element.parent);
  for (const MarkupAttribute& attribute : element.attributes) {
    out += ' ' + between(text, attribute.nameStart, attribute.nameEnd) + '=' + attribute.quote +
           between(text, attribute.valueStart, attribute.valueEnd) + attribute.quote;
    EXPECT_EQ(text[attribute.valueStart - 1], attribute.quote);
    EXPECT_EQ(text[attribute.valueEnd], attribute.quote);
  }
  out += '|' + between(text, element.attributesEnd, element.startTagEnd);
  if (element.selfClosing) {
    EXPECT_EQ(element.endTagStart, element.startTagEnd);
    EXPECT_EQ(element.end, element.startTagEnd);
    return out + " /";
  }
  return out + " [" + between(text, element.startTagEnd, element.endTagStart) + "] " +
         between(text, element.endTagStart, element.end);
}

TEST(MarkupScan, FindsElementsAttributesAndContentsAsWritten) {
  struct Case {
    const char* what;
    std::string text;
    std::vector<std::string> elements;
  };
  const std::vector<Case> cases = {
      {"nesting, document order, parents",
       "<r><a><b/></a><c></c></r>",
       {"<r^-1|> [<a><b/></a><c></c>] </r>", "<a^0|> [<b/>] </a>", "<b^1|/> /", "<c^0|> [] </c>"}},
      {"declaration, processing instructions and comments around the root",
       "<?xml version=\"1.0\"?>\n<?pi <b> ?>\n<!-- <c> -->\n<a/>\n<!-- <d/> -->",
       {"<a^-1|/> /"}},
      {"markup characters in comments, CDATA and processing instructions",
       "<a><!-- <b> & </a> --><![CDATA[ <c> ]] ]> </a> ]]><?pi </a> ?>x > y</a>",
       {"<a^-1|> [<!-- <b> & </a> --><![CDATA[ <c> ]] ]> </a> ]]><?pi </a> ?>x > y] </a>"}},
      {"'>' and '/>' in attribute values, both quote kinds",
       "<a x=\"1>2\" y='/>' z='say \"hi\"' w=\"it's\">t</a>",
       {"<a^-1 x=\"1>2\" y='/>' z='say \"hi\"' w=\"it's\"|> [t] </a>"}},
      {"white space around '=' and before the end of tags",
       "<a x = \"1\"\n\ty\t=\t'2' ><b\r\nz='3'\n/></a >",
       {"<a^-1 x=\"1\" y='2'| > [<b\r\nz='3'\n/>] </a >", "<b^0 z='3'|\n/> /"}},
      {"prefixed names",
       "<m:a xmlns:m=\"urn:m\"><m:b m:c=\"\"/></m:a>",
       {"<m:a^-1 xmlns:m=\"urn:m\"|> [<m:b m:c=\"\"/>] </m:a>", "<m:b^0 m:c=\"\"|/> /"}},
      {"an empty-element tag with a space, after a sibling",
       "<a><b/> <c x=\"1\" /></a>",
       {"<a^-1|> [<b/> <c x=\"1\" />] </a>", "<b^0|/> /", "<c^0 x=\"1\"| /> /"}},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.what);
    const std::vector<MarkupElement> elements = XercesXML::scanMarkup(test.text);
    std::vector<std::string> described;
    for (const MarkupElement& element : elements) {
      described.push_back(describe(test.text, element));
    }
    EXPECT_EQ(described, test.elements);
  }
}

// A text the scan cannot follow is refused with what it met and where.
TEST(MarkupScan, RefusesWhatItCannotFollow) {
  struct Case {
    std::string text;
    const char* reason;
  };
  const std::vector<Case> cases = {
      {"<!DOCTYPE a><a/>", "a document type declaration at byte 0"},
      {"<a><b></a>", "an element that is not closed"},
      {"<a/></a>", "an end tag without a start tag at byte 4"},
      {"<a x></a>", "an attribute without a value"},
      {"<a x=1/>", "an attribute value without quotes"},
      {"<a x=\"1/>", "an attribute value that does not end"},
      {"<a x=\"1\"", "a start tag that does not end"},
      {"<a><!-- </a>", "markup that does not end"},
      {"<a><![CDATA[ ]]</a>", "markup that does not end"},
      {"<?xml version=\"1.0\"<a/>", "markup that does not end"},
      {"<a></a", "markup that does not end"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.text);
    try {
      XercesXML::scanMarkup(test.text);
      ADD_FAILURE() << "not refused";
    } catch (const XercesXML::ParsingError& error) {
      EXPECT_NE(error.getText().find(std::string("the markup cannot be followed: ") + test.reason),
                std::string::npos)
          << error.getText();
    }
  }
}

}  // namespace
