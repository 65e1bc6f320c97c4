// MarkupEditor: the splices of several edits in one text, the places and
// indentation of new elements, and that every byte it is not asked to
// change stays as written.

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "msg/XercesXMLException.h"
#include "tests/xml_test_document.h"
#include "xml_access/MarkupEditor.h"

namespace {

using XercesXML::MarkupEditor;
using Edits = std::function<void(MarkupEditor&)>;

struct Case {
  const char* what;
  std::string before;
  Edits edits;
  std::string after;
};

void expectEdits(const std::vector<Case>& cases) {
  for (const Case& test : cases) {
    SCOPED_TRACE(test.what);
    MarkupEditor editor(test.before);
    test.edits(editor);
    EXPECT_EQ(editor.fileBytes(), test.after);
  }
}

TEST(MarkupEditor, ReadsNamesAttributesAndParentsAsWritten) {
  MarkupEditor editor("<m:r xmlns:m='urn:m' a=\"x &amp; y\"><m:c/><d/></m:r>");
  ASSERT_EQ(editor.elementCount(), 3);
  EXPECT_EQ(editor.writtenName(0), "m:r");
  EXPECT_EQ(editor.writtenName(1), "m:c");
  EXPECT_EQ(editor.parentOf(0), -1);
  EXPECT_EQ(editor.parentOf(2), 0);
  EXPECT_EQ(editor.writtenAttribute(0, "a"), "x &amp; y");
  EXPECT_EQ(editor.writtenAttribute(0, "xmlns:m"), "urn:m");
  EXPECT_EQ(editor.writtenAttribute(0, "m"), std::nullopt);
  EXPECT_EQ(editor.writtenAttribute(1, "a"), std::nullopt);
  EXPECT_FALSE(editor.changed());
}

// Attributes and contents of elements of the file: each edit replaces only
// its own bytes, whatever the order of the edits.
TEST(MarkupEditor, SplicesEditsOfTheFileInAnyOrder) {
  const std::string file =
      "<?xml version='1.0' standalone='yes'?>\r\n"
      "<r  b='1'   a=\"2\">\r\n"
      "\t<e x = 'old' >old &amp; <![CDATA[kept]]></e><f/>\r\n"
      "\t<g/></r>\r\n";
  const std::string edited =
      "<?xml version='1.0' standalone='yes'?>\r\n"
      "<r  b='it&apos;s \"1\"'   a=\"2\" n=\"&lt;&#xA;\">\r\n"
      "\t<e x = 'new' >new &lt;&amp;&gt;</e><f>f</f>\r\n"
      "\t<g y='1'>g</g></r>\r\n";
  const Edits forward = [](MarkupEditor& editor) {
    editor.setAttribute(0, "b", "it's \"1\"");
    editor.setAttribute(0, "n", "<\n");
    editor.setAttribute(1, "x", "new");
    editor.setContent(1, "new <&>");
    editor.setContent(2, "f");
    editor.setAttribute(3, "y", "1");
    editor.setContent(3, "g");
  };
  const Edits backward = [](MarkupEditor& editor) {
    editor.setContent(3, "g");
    editor.setAttribute(3, "y", "1");
    editor.setContent(2, "f");
    editor.setContent(1, "new <&>");
    editor.setAttribute(1, "x", "new");
    editor.setAttribute(0, "n", "<\n");
    editor.setAttribute(0, "b", "it's \"1\"");
  };
  expectEdits({
      {"nothing set", file, [](MarkupEditor&) {}, file},
      {"in document order", file, forward, edited},
      {"in reverse order", file, backward, edited},
      {"the last value set counts", file,
       [](MarkupEditor& editor) {
         editor.setAttribute(1, "x", "first");
         editor.setContent(1, "first");
         editor.setAttribute(1, "x", "old");
         editor.setContent(1, "old & ");
         editor.setContent(1, "old &amp; <![CDATA[kept]]>");
       },
       "<?xml version='1.0' standalone='yes'?>\r\n"
       "<r  b='1'   a=\"2\">\r\n"
       "\t<e x = 'old' >old &amp;amp; &lt;![CDATA[kept]]&gt;</e><f/>\r\n"
       "\t<g/></r>\r\n"},
      {"a new attribute takes the quote of the document's first", "<r a='1'><e/></r>",
       [](MarkupEditor& editor) { editor.setAttribute(1, "b", "2"); }, "<r a='1'><e b='2'/></r>"},
  });
}

// New elements: after an element of the file, after one added before, and
// at the end of a parent, indented and ended as their neighbours are.
TEST(MarkupEditor, PlacesNewElementsAsTheirNeighboursStand) {
  const std::string tabs =
      "<r>\n"
      "\t<a>\n"
      "\t\t<t/>\n"
      "\t</a>\n"
      "\t<b/>\n"
      "</r>\n";
  expectEdits({
      {"after an element of the file, then after the new one, then after the first again", tabs,
       [](MarkupEditor& editor) {
         const int one = editor.addElement(0, 1, "n1");
         editor.addElement(0, one, "n2");
         editor.addElement(0, 1, "n3");
         editor.setAttribute(one, "k", "v");
       },
       "<r>\n"
       "\t<a>\n"
       "\t\t<t/>\n"
       "\t</a>\n"
       "\t<n1 k=\"v\"/>\n"
       "\t<n2/>\n"
       "\t<n3/>\n"
       "\t<b/>\n"
       "</r>\n"},
      {"at the end of parents, with children and content of their own", tabs,
       [](MarkupEditor& editor) {
         editor.addElement(1, -1, "c");
         const int outer = editor.addElement(0, -1, "o");
         const int inner = editor.addElement(outer, -1, "i");
         editor.setContent(inner, "x<y");
         editor.addElement(3, -1, "d");
       },
       "<r>\n"
       "\t<a>\n"
       "\t\t<t/>\n"
       "\t\t<c/>\n"
       "\t</a>\n"
       "\t<b>\n"
       "\t\t<d/>\n"
       "\t</b>\n"
       "\t<o>\n"
       "\t\t<i>x&lt;y</i>\n"
       "\t</o>\n"
       "</r>\n"},
      {"line ends of the first line, the indentation of siblings",
       "<?xml version=\"1.0\"?>\r\n<r>\r\n   <a>x</a>\r\n</r>",
       [](MarkupEditor& editor) {
         editor.addElement(0, 1, "b");
         editor.addElement(0, -1, "c");
       },
       "<?xml version=\"1.0\"?>\r\n<r>\r\n   <a>x</a>\r\n   <b/>\r\n   <c/>\r\n</r>"},
      {"an element on one line keeps its siblings on it", "<r><a/></r>",
       [](MarkupEditor& editor) {
         editor.addElement(0, 1, "b");
         editor.addElement(0, -1, "c");
       },
       "<r><a/><b/>\n  <c/>\n</r>"},
      {"a new attribute and a new child of an empty-element tag", "<r>\n  <a/>\n</r>\n",
       [](MarkupEditor& editor) {
         editor.setAttribute(1, "k", "v");
         editor.addElement(1, -1, "c");
       },
       "<r>\n  <a k=\"v\">\n    <c/>\n  </a>\n</r>\n"},
  });
}

// An insertion at the offset where a replacement starts or ends goes on the
// right side of it.
TEST(MarkupEditor, InsertionsBesideReplacementsKeepTheirSide) {
  expectEdits({
      {"a new attribute and a content of an empty-element tag", "<r><a/></r>",
       [](MarkupEditor& editor) {
         editor.setContent(1, "t");
         editor.setAttribute(1, "k", "v");
       },
       "<r><a k=\"v\">t</a></r>"},
      {"a new attribute, a changed one, a content", "<r><a x=\"1\"/></r>",
       [](MarkupEditor& editor) {
         editor.setContent(1, "t");
         editor.setAttribute(1, "k", "v");
         editor.setAttribute(1, "x", "2");
       },
       "<r><a x=\"2\" k=\"v\">t</a></r>"},
      {"a content and an element added right after it", "<r><a>old</a></r>",
       [](MarkupEditor& editor) {
         editor.addElement(0, 1, "b");
         editor.setContent(1, "new");
       },
       "<r><a>new</a><b/></r>"},
      {"an element after the last child and one at the end of the parent", "<r>\n <a/>\n</r>",
       [](MarkupEditor& editor) {
         editor.addElement(0, -1, "end");
         editor.addElement(0, 1, "after");
       },
       "<r>\n <a/>\n <after/>\n <end/>\n</r>"},
  });
}

// The file keeps its encoding: new text is written in it, references where
// it lacks a character.
TEST(MarkupEditor, WritesInTheFilesOwnEncoding) {
  const std::string latin1 = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r a=\"\xE9\"/>";
  const std::string utf16Head = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>";
  expectEdits({
      {"ISO-8859-1", latin1,
       [](MarkupEditor& editor) {
         EXPECT_EQ(editor.writtenAttribute(0, "a"), "\xE9");
         editor.setContent(0, "\xC3\xBC \xE2\x82\xAC");
       },
       "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r a=\"\xE9\">\xFC &#x20AC;</r>"},
      {"UTF-16LE with a byte order mark",
       "\xFF\xFE" + xml_test::utf16(utf16Head + "<r>\n  <a/>\n</r>"),
       [](MarkupEditor& editor) {
         editor.setContent(1, "\xC3\xA9");
         editor.addElement(0, 1, "b");
       },
       "\xFF\xFE" + xml_test::utf16(utf16Head + "<r>\n  <a>") + std::string("\xE9\0", 2) +
           xml_test::utf16("</a>\n  <b/>\n</r>")},
  });
}

// An edit inside an element whose content is replaced has no place in the
// result: the editor refuses to build it rather than write a broken file.
TEST(MarkupEditor, RefusesEditsInsideAReplacedContent) {
  const std::vector<Edits> overlapping = {
      [](MarkupEditor& editor) {
        editor.setContent(0, "t");
        editor.setAttribute(1, "k", "v");
      },
      [](MarkupEditor& editor) {
        editor.setContent(1, "t");
        editor.setContent(0, "u");
      },
      [](MarkupEditor& editor) {
        editor.setContent(0, "t");
        editor.addElement(1, -1, "b");
      },
  };
  for (const Edits& edits : overlapping) {
    MarkupEditor editor("<r><a>x</a></r>");
    edits(editor);
    try {
      editor.fileBytes();
      ADD_FAILURE() << "overlapping edits were applied";
    } catch (const XercesXML::ParsingError& error) {
      EXPECT_NE(error.getText().find("overlap"), std::string::npos) << error.getText();
    }
  }
}

}  // namespace
