// Problems of the serialised copy taken back to the files: the marks the
// parser notes for each element, and the map from the copy's places to
// where the elements start in the document and its parts.

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xercesc/framework/MemBufInputSource.hpp>

#include "xml_access/BoundedDOMParser.h"
#include "xml_access/RoundTripPlaces.h"
#include "xml_test_document.h"

namespace {

using XercesXML::ElementMarks;
using XercesXML::ParseProblem;
using XercesXML::RoundTripPlaces;
using XercesXML::SourcePosition;

class ElementMarksTest : public xml_test::XmlSystemFixture {};

TEST_F(ElementMarksTest, EachElementHasItsStartTheEndOfItsTagAndOfItsEndTag) {
  const std::string xml =
      "<?xml version=\"1.0\"?>\n"
      "<a x=\"1\"\n"
      "   y=\"2\"><b/>\n"
      "  <c>text</c></a>";
  XercesXML::BoundedDOMParser parser;
  std::vector<ElementMarks> marks;
  parser.setMarks(&marks);
  xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(),
                                    "marks.xml");
  parser.parseBounded(source);
  ASSERT_EQ(marks.size(), 3u);
  const auto at = [](const SourcePosition& p) {
    return std::to_string(p.line) + ":" + std::to_string(p.column);
  };
  std::vector<std::string> places;
  for (const ElementMarks& element : marks) {
    places.push_back(at(element.start) + " " + at(element.tagEnd) + " " + at(element.close));
  }
  // a's start tag spans two lines and its end tag closes the document; b is
  // written empty, so both of its ends are one place.
  EXPECT_EQ(places, (std::vector<std::string>{"2:1 3:10 4:18", "3:10 3:14 3:14", "4:3 4:6 4:14"}));

  // Without a list nothing is noted, and the list of the last parse stays.
  parser.setMarks(nullptr);
  parser.parseBounded(source);
  EXPECT_EQ(marks.size(), 3u);
}

// The copy of a document whose root holds an element of its own and one
// from a part, which holds one more element:
//   1:40 <root>  1:46 <own/>  1:52 <part>  1:58 <leaf/>  1:65 </part>  1:72 </root>
ElementMarks mark(std::uint32_t start, std::uint32_t tagEnd, std::uint32_t close) {
  return ElementMarks{{1, start}, {1, tagEnd}, {1, close}};
}

const std::vector<ElementMarks> kCopy = {mark(40, 46, 79), mark(46, 52, 52), mark(52, 58, 72),
                                         mark(58, 65, 65)};
// Where they start: root and own in the document, part and leaf in part 1.
const std::vector<SourcePosition> kOriginal = {{2, 1, 0}, {5, 3, 0}, {2, 1, 1}, {4, 5, 1}};

ParseProblem placed(const RoundTripPlaces& places, ParseProblem problem) {
  places.place(problem);
  return problem;
}

std::string where(const ParseProblem& problem) {
  return problem.file + ":" + std::to_string(problem.line) + ":" + std::to_string(problem.column);
}

TEST(RoundTripPlacesTest, AProblemGoesToTheStartOfTheElementItConcerns) {
  const RoundTripPlaces places("doc.xml", kCopy, kOriginal, {"parts/part.xml"});
  const struct {
    std::uint64_t column;
    const char* expected;
  } rows[] = {
      {46, "doc.xml:2:1"},         // just after the root's start tag
      {52, "doc.xml:5:3"},         // just after <own/>
      {65, "parts/part.xml:4:5"},  // just after <leaf/>, in the part
      {72, "parts/part.xml:2:1"},  // after </part>: the part's root, not its last element
      {79, "doc.xml:2:1"},         // after </root>
      {60, "parts/part.xml:4:5"},  // inside a tag: the element that starts before it
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.column);
    EXPECT_EQ(where(placed(places, ParseProblem{"doc.xml", 1, row.column, "m"})), row.expected);
  }
}

TEST(RoundTripPlacesTest, LeavesWhatIsNotInTheCopyAndClearsWhatHasNoPlace) {
  const RoundTripPlaces places("doc.xml", kCopy, kOriginal, {"parts/part.xml"});
  // Another file (a schema), no line, or the prolog before the root.
  for (const ParseProblem& problem :
       {ParseProblem{"messages.xsd", 1, 46, "m"}, ParseProblem{"doc.xml", 0, 0, "m"},
        ParseProblem{"doc.xml", 1, 20, "m"}}) {
    EXPECT_EQ(where(placed(places, problem)), where(problem));
  }
  // An element without a start of its own (from a fallback) has no place.
  std::vector<SourcePosition> withoutStart = kOriginal;
  withoutStart[1] = SourcePosition{};
  const RoundTripPlaces fallback("doc.xml", kCopy, withoutStart, {"parts/part.xml"});
  EXPECT_EQ(where(placed(fallback, ParseProblem{"doc.xml", 1, 52, "m"})), "doc.xml:0:0");

  // Documents that do not line up move nothing.
  const RoundTripPlaces changed("doc.xml", kCopy, {kOriginal[0]}, {});
  EXPECT_TRUE(changed.empty());
  EXPECT_EQ(where(placed(changed, ParseProblem{"doc.xml", 1, 52, "m"})), "doc.xml:1:52");
}

}  // namespace
