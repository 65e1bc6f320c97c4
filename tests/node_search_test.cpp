// Tests of the breadth-first search of DOMNode by a list of names.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "xml_access/DOMNode.h"
#include "xml_access/XMLSystem.h"
#include "xml_test_document.h"

namespace {

using XercesXML::DOMNode;

class NodeSearchTest : public xml_test::XmlSystemFixture {};

TEST_F(NodeSearchTest, ANullStartGivesANullHandleWithoutRaising) {
  const DOMNode null;
  EXPECT_FALSE(null.findFirstNodeByNameList({"#document", ""}).isValid());
  EXPECT_FALSE(null.findFirstNodeByName("anything").isValid());
}

TEST_F(NodeSearchTest, TheStartNodeItselfIsACandidate) {
  const DOMNode document = parse("<root id='r'><root id='inner'/></root>");
  const DOMNode root = document.getFirstChild();
  const DOMNode found = root.findFirstNodeByName("root");
  EXPECT_EQ(found.getAttributeByName("id", ""), "r");
  EXPECT_EQ(document.findFirstNodeByName("#document").getFirstChild().getNodeName(), "root");
}

TEST_F(NodeSearchTest, TheShallowestMatchWinsAndThenDocumentOrder) {
  const DOMNode document = parse(
      "<root>"
      "<early><deeper><X id='deep'/></deeper><Y id='first'/></early>"
      "<late><X id='shallow'/><Y id='second'/></late>"
      "</root>");
  EXPECT_EQ(document.findFirstNodeByName("X").getAttributeByName("id", ""), "shallow");
  EXPECT_EQ(document.findFirstNodeByName("Y").getAttributeByName("id", ""), "first");
}

TEST_F(NodeSearchTest, TheOrderOfTheListDoesNotMatter) {
  const DOMNode document = parse("<root><A/><B/></root>");
  EXPECT_EQ(document.findFirstNodeByNameList({"B", "A"}).getNodeName(), "A");
  EXPECT_EQ(document.findFirstNodeByNameList({"A", "B"}).getNodeName(), "A");
  EXPECT_EQ(document.findFirstNodeByNameList({"none", "B"}).getNodeName(), "B");
}

TEST_F(NodeSearchTest, NothingMatches) {
  const DOMNode document = parse("<root only='x'><a/><b/></root>");
  // An empty list visits everything and finds nothing.
  EXPECT_FALSE(document.findFirstNodeByNameList({}).isValid());
  // Attributes are not visited.
  EXPECT_FALSE(document.findFirstNodeByName("only").isValid());
  // Every node of a parsed document has a name.
  EXPECT_FALSE(document.findFirstNodeByName("").isValid());
  // The name is taken whole, not split into alternatives or a path.
  EXPECT_FALSE(document.findFirstNodeByName("a,b").isValid());
  EXPECT_FALSE(document.findFirstNodeByName("root/a").isValid());
  // Names compare with case.
  EXPECT_FALSE(document.findFirstNodeByName("ROOT").isValid());
}

TEST_F(NodeSearchTest, EveryNodeTypeIsVisited) {
  const DOMNode document = parse("<!DOCTYPE root><root><a>deep</a>shallow</root>");
  // The document type has the root's name and stands ahead of it.
  const DOMNode doctype = document.findFirstNodeByName("root");
  EXPECT_EQ(doctype.getNextSibling().getNodeName(), "root");
  EXPECT_EQ(document.findFirstNodeByName("#text").getNodeValue(), "shallow");
}

TEST_F(NodeSearchTest, ElementsAreFoundByTheirLocalName) {
  const DOMNode document = parse("<p:root xmlns:p='urn:p'><p:Text>t</p:Text></p:root>");
  EXPECT_EQ(document.findFirstNodeByName("Text").getChildText(), "t");
  EXPECT_FALSE(document.findFirstNodeByName("p:Text").isValid());
}

TEST_F(NodeSearchTest, TheResultKeepsTheDocumentAlive) {
  DOMNode found(nullptr, nullptr);
  {
    const DOMNode document = parse("<root><a><target>kept</target></a></root>");
    found = document.findFirstNodeByName("target");
  }
  EXPECT_EQ(found.getChildText(), "kept");
  found = DOMNode();
  EXPECT_EQ(memory.getLiveBlocks(), 0);
}

TEST_F(NodeSearchTest, ADeepTreeIsSearchedWithoutRecursion) {
  constexpr int kDepth = 50000;
  std::string xml;
  for (int level = 0; level < kDepth; ++level) {
    xml += "<d>";
  }
  xml += "<bottom/>";
  for (int level = 0; level < kDepth; ++level) {
    xml += "</d>";
  }
  const DOMNode document = parse(xml);
  EXPECT_TRUE(document.findFirstNodeByName("bottom").isValid());
}

class NodeSearchUtf8Test : public xml_test::XmlSystemFixture {
 protected:
  NodeSearchUtf8Test() : XmlSystemFixture(XercesXML::UTF8) {}
};

TEST_F(NodeSearchUtf8Test, NamesCompareInTheOutputEncoding) {
  const DOMNode document = parse("<root><Schl\xC3\xBCssel/></root>");
  EXPECT_TRUE(document
                  .findFirstNodeByName("Schl\xC3\xBC"
                                       "ssel")
                  .isValid());
  EXPECT_FALSE(document
                   .findFirstNodeByName("Schl\xFC"
                                        "ssel")
                   .isValid());
}

}  // namespace
