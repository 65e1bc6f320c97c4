// Tests of the DOMNode handle: walking, reading, the shared ownership of a
// document, and the breadth-first search by names.

#include "xml_access/DOMNode.h"

#include <string>

#include <gtest/gtest.h>

#include "msg/XercesXMLException.h"
#include "xml_access/XMLSystem.h"
#include "xml_test_document.h"

namespace {

using XercesXML::DOMNode;
using xml_test::expectText;

TEST(DOMNodeWithoutSystem, NullAndCopyConstructorsRefuseADownSystem) {
  const std::string text = "XercesXML - DOMNode object created without initializing system.";
  expectText<XercesXML::NotInitialized>([] { DOMNode handle; }, text);
  const DOMNode null(nullptr, nullptr);  // the internal constructor checks nothing
  EXPECT_FALSE(null.isValid());
  expectText<XercesXML::NotInitialized>([&] { DOMNode copy(null); }, text);
}

class DOMNodeTest : public xml_test::XmlSystemFixture {};

TEST_F(DOMNodeTest, NullHandlesRefuseEveryAccess) {
  const DOMNode null;
  const DOMNode copy(null);
  EXPECT_FALSE(copy.isValid());
  const std::string text = "XercesXML - Access to DOM null pointer.";
  for (auto walk : {&DOMNode::getFirstChild, &DOMNode::getFirstElementChild,
                    &DOMNode::getNextSibling, &DOMNode::getNextElementSibling}) {
    expectText<XercesXML::NullPointer>([&] { (copy.*walk)(); }, text);
  }
  for (auto read : {&DOMNode::getNodeName, &DOMNode::getNodeValue, &DOMNode::getChildText}) {
    expectText<XercesXML::NullPointer>([&] { (copy.*read)(); }, text);
  }
  expectText<XercesXML::NullPointer>([&] { copy.getAttributeByName("a", ""); }, text);
}

TEST_F(DOMNodeTest, PlainWalksVisitEveryNodeAndElementWalksSkipToElements) {
  const DOMNode document = parse(
      "<p:root xmlns:p='urn:p'>lead<p:a/>mid<b>inner</b>tail<?target data?><![CDATA[c]]>"
      "</p:root>");
  EXPECT_EQ(document.getNodeName(), "#document");
  EXPECT_EQ(document.getNodeValue(), "");
  const DOMNode root = document.getFirstChild();
  EXPECT_EQ(root.getNodeName(), "root");  // the local name
  EXPECT_EQ(root.getNodeValue(), "");
  EXPECT_EQ(root.getFirstChild().getNodeName(), "#text");
  const DOMNode a = root.getFirstElementChild();
  EXPECT_EQ(a.getNextSibling().getNodeValue(), "mid");
  EXPECT_FALSE(a.getFirstChild().isValid());
  const DOMNode b = a.getNextElementSibling();
  EXPECT_FALSE(b.getFirstElementChild().isValid());
  EXPECT_EQ(b.getFirstChild().getNodeValue(), "inner");
  EXPECT_FALSE(b.getNextElementSibling().isValid());
  const DOMNode instruction = b.getNextSibling().getNextSibling();
  EXPECT_EQ(instruction.getNodeName() + "=" + instruction.getNodeValue(), "target=data");
  EXPECT_EQ(instruction.getNextSibling().getNodeName(), "#cdata-section");
  EXPECT_FALSE(instruction.getNextSibling().getNextSibling().isValid());
  // Child text joins the direct children only, of every kind.
  EXPECT_EQ(root.getChildText(), "leadmidtaildatac");
  EXPECT_EQ(a.getChildText(), "");
}

TEST_F(DOMNodeTest, AttributesByQualifiedOrNamespacedName) {
  const DOMNode root =
      parse("<root xml:lang='de' plain='v' xmlns:q='urn:q' q:attr='nsv'>text</root>")
          .getFirstChild();
  EXPECT_EQ(root.getAttributeByName("xml:lang", ""), "de");
  EXPECT_EQ(root.getAttributeByName("plain", ""), "v");
  EXPECT_EQ(root.getAttributeByName("attr", "urn:q"), "nsv");
  // With a namespace the name is a local name, without one a qualified name.
  EXPECT_EQ(root.getAttributeByName("q:attr", "urn:q"), "");
  EXPECT_EQ(root.getAttributeByName("attr", ""), "");
  EXPECT_EQ(root.getAttributeByName("missing", ""), "");
  EXPECT_EQ(root.getFirstChild().getAttributeByName("plain", ""), "");  // a text node
}

// A wrong count shows either as a document released too early (a use after
// free) or as one never released (blocks left at the end).
TEST_F(DOMNodeTest, TheLastHandleOnADocumentReleasesIt) {
  {
    DOMNode document = parse("<root><child>text</child></root>");
    const DOMNode child = document.getFirstChild().getFirstChild();
    document = DOMNode();  // the parser's handle goes first
    EXPECT_GT(memory.liveBlocks, 0);
    EXPECT_EQ(child.getChildText(), "text");
  }
  EXPECT_EQ(memory.liveBlocks, 0);

  DOMNode walker = parse("<root>1<a/>2</root>").getFirstChild().getFirstChild();
  while (walker.isValid()) {
    walker = walker.getNextSibling();  // the temporary holds its own reference
  }
  EXPECT_EQ(memory.liveBlocks, 0);

  xml_test::CountingMemoryManager otherMemory;
  {
    DOMNode only = parse("<root><a/><b/></root>");
    const DOMNode& alias = only;
    only = alias;  // the only reference survives being assigned to itself
    DOMNode a = only.getFirstChild().getFirstChild();
    DOMNode sameNode = only.getFirstChild().getFirstChild();
    a = sameNode;  // a handle on the same node: nothing changes
    DOMNode copy(a);
    copy = a.getNextSibling();
    only = DOMNode();
    a = DOMNode();
    sameNode = copy;
    EXPECT_EQ(sameNode.getNodeName(), "b");
    // Handles of another document release the first.
    sameNode = xml_test::parseDocument("<second/>", otherMemory);
    copy = sameNode.getFirstChild();
    EXPECT_EQ(memory.liveBlocks, 0);
    EXPECT_EQ(copy.getNodeName(), "second");
  }
  EXPECT_EQ(otherMemory.liveBlocks, 0);
}

class NodeSearchTest : public xml_test::XmlSystemFixture {};

TEST_F(NodeSearchTest, FindsTheShallowestMatchFirstInDocumentOrder) {
  EXPECT_FALSE(DOMNode().findFirstNodeByNameList({"#document", ""}).isValid());
  DOMNode found(nullptr, nullptr);
  {
    const DOMNode document = parse(
        "<root id='r'>"
        "<early><deeper><X id='deep'/></deeper><Y id='first'/></early>"
        "<late><X id='shallow'/><Y id='second'/><root id='inner'/></late>"
        "</root>");
    EXPECT_EQ(document.findFirstNodeByName("X").getAttributeByName("id", ""), "shallow");
    EXPECT_EQ(document.findFirstNodeByName("Y").getAttributeByName("id", ""), "first");
    EXPECT_EQ(document.findFirstNodeByNameList({"X", "Y"}).getAttributeByName("id", ""),
              "first");  // the order of the list does not count
    // The start node itself is a candidate.
    found = document.getFirstChild().findFirstNodeByName("root");
  }
  EXPECT_EQ(found.getAttributeByName("id", ""), "r");  // and keeps the document alive
  found = DOMNode();
  EXPECT_EQ(memory.liveBlocks, 0);
}

TEST_F(NodeSearchTest, VisitsEveryNodeTypeButNoAttributes) {
  const DOMNode document =
      parse("<!DOCTYPE root><root only='x' xmlns:p='urn:p'><p:a>deep</p:a>shallow</root>");
  // The document type has the root's name and stands ahead of it.
  EXPECT_EQ(document.findFirstNodeByName("root").getNextSibling().getNodeName(), "root");
  EXPECT_EQ(document.findFirstNodeByName("#text").getNodeValue(), "shallow");
  EXPECT_EQ(document.findFirstNodeByName("a").getChildText(), "deep");  // by local name
  for (const char* absent : {"p:a", "only", "", "a,b", "root/a", "ROOT"}) {
    EXPECT_FALSE(document.findFirstNodeByName(absent).isValid()) << absent;
  }
  EXPECT_FALSE(document.findFirstNodeByNameList({}).isValid());
}

TEST_F(NodeSearchTest, ADeepTreeIsSearchedWithoutRecursion) {
  std::string opening, closing;
  for (int level = 0; level < 50000; ++level) {
    opening += "<d>";
    closing += "</d>";
  }
  const std::string xml = opening + "<bottom/>" + closing;
  EXPECT_TRUE(parse(xml).findFirstNodeByName("bottom").isValid());
}

}  // namespace
