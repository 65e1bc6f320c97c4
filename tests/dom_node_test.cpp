// Tests of the DOMNode handle: walking, reading and the shared ownership of a
// document.

#include "xml_access/DOMNode.h"

#include <string>

#include <gtest/gtest.h>

#include "msg/XercesXMLException.h"
#include "xml_access/XMLSystem.h"
#include "xml_test_document.h"

namespace {

using XercesXML::DOMNode;

constexpr char kNullAccess[] = "XercesXML - Access to DOM null pointer.";
constexpr char kNotInitialized[] =
    "XercesXML - DOMNode object created without initializing system.";

template <typename Operation>
void expectNullPointer(Operation operation) {
  try {
    operation();
    ADD_FAILURE() << "no exception";
  } catch (const XercesXML::NullPointer& failure) {
    EXPECT_EQ(failure.getText(), kNullAccess);
  }
}

TEST(DOMNodeWithoutSystem, NullAndCopyConstructorsRefuseADownSystem) {
  ASSERT_FALSE(XercesXML::isSystemInitialized());
  try {
    DOMNode handle;
    ADD_FAILURE() << "no exception";
  } catch (const XercesXML::NotInitialized& failure) {
    EXPECT_EQ(failure.getText(), kNotInitialized);
  }

  // The internal constructor checks nothing; a null handle made by it holds
  // no block, and neither copying (refused) nor destroying it touches one.
  const DOMNode null(nullptr, nullptr);
  EXPECT_FALSE(null.isValid());
  try {
    DOMNode copy(null);
    ADD_FAILURE() << "no exception";
  } catch (const XercesXML::NotInitialized& failure) {
    EXPECT_EQ(failure.getText(), kNotInitialized);
  }
}

class DOMNodeTest : public xml_test::XmlSystemFixture {};

TEST_F(DOMNodeTest, NullHandlesAreNotValidAndRefuseEveryAccess) {
  const DOMNode null;
  EXPECT_FALSE(null.isValid());
  const DOMNode copy(null);
  EXPECT_FALSE(copy.isValid());

  expectNullPointer([&] { null.getFirstChild(); });
  expectNullPointer([&] { null.getFirstElementChild(); });
  expectNullPointer([&] { null.getNextSibling(); });
  expectNullPointer([&] { null.getNextElementSibling(); });
  expectNullPointer([&] { null.getNodeName(); });
  expectNullPointer([&] { null.getNodeValue(); });
  expectNullPointer([&] { null.getChildText(); });
  expectNullPointer([&] { null.getAttributeByName("a", ""); });
}

TEST_F(DOMNodeTest, PlainWalksVisitEveryNodeAndElementWalksSkipToElements) {
  const DOMNode document = parse("<root>lead<a/>mid<b>inner</b>tail</root>");
  ASSERT_TRUE(document.isValid());
  EXPECT_EQ(document.getNodeName(), "#document");

  const DOMNode root = document.getFirstChild();
  EXPECT_EQ(root.getNodeName(), "root");

  const DOMNode lead = root.getFirstChild();
  EXPECT_EQ(lead.getNodeName(), "#text");
  EXPECT_EQ(lead.getNodeValue(), "lead");

  const DOMNode a = root.getFirstElementChild();
  EXPECT_EQ(a.getNodeName(), "a");
  EXPECT_EQ(a.getNextSibling().getNodeValue(), "mid");
  const DOMNode b = a.getNextElementSibling();
  EXPECT_EQ(b.getNodeName(), "b");

  // Only text behind b: the element walk ends, the plain walk finds the text.
  EXPECT_FALSE(b.getNextElementSibling().isValid());
  const DOMNode tail = b.getNextSibling();
  EXPECT_EQ(tail.getNodeValue(), "tail");

  // The end of a list is a null handle, and walking on from it raises.
  const DOMNode end = tail.getNextSibling();
  EXPECT_FALSE(end.isValid());
  expectNullPointer([&] { end.getNextSibling(); });

  // An element whose only child is text.
  EXPECT_FALSE(b.getFirstElementChild().isValid());
  EXPECT_EQ(b.getFirstChild().getNodeValue(), "inner");
  // A node without children.
  EXPECT_FALSE(a.getFirstChild().isValid());
  EXPECT_FALSE(a.getFirstElementChild().isValid());
}

TEST_F(DOMNodeTest, NamesAndValues) {
  const DOMNode document =
      parse("<p:root xmlns:p='urn:p'><p:Text>t</p:Text><?target data?><![CDATA[c]]></p:root>");
  const DOMNode root = document.getFirstChild();
  EXPECT_EQ(root.getNodeName(), "root");
  EXPECT_EQ(root.getNodeValue(), "");
  EXPECT_EQ(document.getNodeValue(), "");

  const DOMNode text = root.getFirstChild();
  EXPECT_EQ(text.getNodeName(), "Text");
  const DOMNode instruction = text.getNextSibling();
  EXPECT_EQ(instruction.getNodeName(), "target");
  EXPECT_EQ(instruction.getNodeValue(), "data");
  const DOMNode cdata = instruction.getNextSibling();
  EXPECT_EQ(cdata.getNodeName(), "#cdata-section");
  EXPECT_EQ(cdata.getNodeValue(), "c");
}

TEST_F(DOMNodeTest, ChildTextJoinsTheDirectChildrenOnly) {
  const DOMNode document = parse(
      "<root>"
      "<mixed>a<child>b</child>c</mixed>"
      "<empty/>"
      "<kinds>x<![CDATA[y]]><?pi data?>z</kinds>"
      "</root>");
  const DOMNode mixed = document.getFirstChild().getFirstElementChild();
  EXPECT_EQ(mixed.getChildText(), "ac");
  const DOMNode empty = mixed.getNextElementSibling();
  EXPECT_EQ(empty.getChildText(), "");
  EXPECT_EQ(empty.getNextElementSibling().getChildText(), "xydataz");
}

TEST_F(DOMNodeTest, AttributesByQualifiedOrNamespacedName) {
  const DOMNode document =
      parse("<root xml:lang='de' plain='v' empty='' xmlns:q='urn:q' q:attr='nsv'>text</root>");
  const DOMNode root = document.getFirstChild();

  EXPECT_EQ(root.getAttributeByName("xml:lang", ""), "de");
  EXPECT_EQ(root.getAttributeByName("lang", "http://www.w3.org/XML/1998/namespace"), "de");
  EXPECT_EQ(root.getAttributeByName("plain", ""), "v");
  EXPECT_EQ(root.getAttributeByName("q:attr", ""), "nsv");
  EXPECT_EQ(root.getAttributeByName("attr", "urn:q"), "nsv");
  // With a namespace the name is a local name, without one a qualified name.
  EXPECT_EQ(root.getAttributeByName("q:attr", "urn:q"), "");
  EXPECT_EQ(root.getAttributeByName("attr", ""), "");
  EXPECT_EQ(root.getAttributeByName("plain", "urn:q"), "");
  // Absent and empty look alike.
  EXPECT_EQ(root.getAttributeByName("missing", ""), "");
  EXPECT_EQ(root.getAttributeByName("empty", ""), "");
  // Nodes without attributes.
  EXPECT_EQ(root.getFirstChild().getAttributeByName("plain", ""), "");
  EXPECT_EQ(document.getAttributeByName("plain", ""), "");
}

TEST_F(DOMNodeTest, AChildHandleKeepsTheDocumentAliveAndTheLastHandleReleasesIt) {
  {
    DOMNode document = parse("<root><child>text</child></root>");
    ASSERT_GT(memory.getLiveBlocks(), 0);
    const DOMNode child = document.getFirstChild().getFirstChild();

    document = DOMNode();  // the parser's handle goes first
    EXPECT_FALSE(document.isValid());
    EXPECT_GT(memory.getLiveBlocks(), 0);
    EXPECT_EQ(child.getNodeName(), "child");
    EXPECT_EQ(child.getChildText(), "text");
  }
  EXPECT_EQ(memory.getLiveBlocks(), 0);
}

// A wrong count shows either as a document released too early (a use after
// free) or as one never released (blocks left at the end).
TEST_F(DOMNodeTest, CopiesAndAssignmentsKeepTheCountRight) {
  {
    DOMNode only = parse("<root><a/><b/></root>");
    const DOMNode& alias = only;
    only = alias;  // the only reference survives being assigned to itself
    EXPECT_EQ(only.getFirstChild().getNodeName(), "root");

    DOMNode a = only.getFirstChild().getFirstChild();
    DOMNode sameNode = only.getFirstChild().getFirstChild();
    a = sameNode;  // a handle on the same node: nothing changes
    DOMNode copy(a);
    copy = a.getNextSibling();
    EXPECT_EQ(copy.getNodeName(), "b");

    only = DOMNode();
    a = DOMNode();
    sameNode = copy;
    EXPECT_GT(memory.getLiveBlocks(), 0);
    EXPECT_EQ(sameNode.getNodeName(), "b");
    DOMNode null;
    null = DOMNode();
    EXPECT_FALSE(null.isValid());
  }
  EXPECT_EQ(memory.getLiveBlocks(), 0);
}

TEST_F(DOMNodeTest, WalkingTheLastHandleOffTheEndReleasesTheDocument) {
  DOMNode walker = parse("<root>1<a/>2</root>").getFirstChild().getFirstChild();
  std::string seen;
  while (walker.isValid()) {
    seen += walker.getNodeName() + ";";
    walker = walker.getNextSibling();
  }
  EXPECT_EQ(seen, "#text;a;#text;");
  EXPECT_EQ(memory.getLiveBlocks(), 0);
}

TEST_F(DOMNodeTest, AssigningAHandleOfAnotherDocumentReleasesTheFirst) {
  xml_test::CountingMemoryManager otherMemory;
  {
    DOMNode handle = parse("<first/>");
    const DOMNode other =
        xml_test::adoptIntoHandle(xml_test::parseDocument("<second/>", otherMemory));
    handle = other.getFirstChild();
    EXPECT_EQ(memory.getLiveBlocks(), 0);
    EXPECT_EQ(handle.getNodeName(), "second");
  }
  EXPECT_EQ(otherMemory.getLiveBlocks(), 0);
}

}  // namespace
