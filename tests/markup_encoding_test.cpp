// MarkupEncoding: which encoding a file is in, its working text and back
// byte for byte, and how text going in is escaped for each encoding.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "msg/XercesXMLException.h"
#include "tests/xml_test_document.h"
#include "xml_access/MarkupEncoding.h"

namespace {

using XercesXML::MarkupEncoding;

using xml_test::utf16;

const std::string kLatin1Head = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";
const std::string kAsciiHead = "<?xml version='1.0' encoding='us-ascii'?>";
const std::string kWindowsHead = "<?xml version=\"1.0\" encoding=\"windows-1252\"?>";

// What of() makes of a file, and that its working text is the UTF-8 of its
// characters and turns back into the very same bytes.
TEST(MarkupEncoding, WorkingTextTurnsBackIntoTheFileByteForByte) {
  struct Case {
    const char* what;
    std::string file;
    const char* name;
    std::string working;
  };
  // U+1F600 is the pair D83D DE00 in UTF-16; U+00E9 is one unit.
  const std::string utf16Body = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>";
  const std::string le =
      utf16(utf16Body, false) + std::string("\xE9\x00=\xD8\x00\xDE", 6) + utf16("</a>\r\n", false);
  const std::string be =
      utf16(utf16Body, true) + std::string("\x00\xE9\xD8=\xDE\x00", 6) + utf16("</a>\r\n", true);
  const std::string working = utf16Body + "\xC3\xA9\xF0\x9F\x98\x80</a>\r\n";
  const std::vector<Case> cases = {
      {"no declaration", "<a>\xC3\xA9</a>", "UTF-8", "<a>\xC3\xA9</a>"},
      {"a UTF-8 byte order mark", "\xEF\xBB\xBF<a/>", "UTF-8", "\xEF\xBB\xBF<a/>"},
      {"ISO-8859-1, its upper half as bytes", kLatin1Head + "<a>\xE9\xFF</a>", "ISO-8859-1",
       kLatin1Head + "<a>\xE9\xFF</a>"},
      {"US-ASCII in single quotes, lower case", kAsciiHead + "<a/>", "US-ASCII",
       kAsciiHead + "<a/>"},
      {"windows-1252", kWindowsHead + "<a>\x80</a>", "WINDOWS-1252", kWindowsHead + "<a>\x80</a>"},
      {"UTF-16LE with a byte order mark, a surrogate pair", "\xFF\xFE" + le, "UTF-16LE", working},
      {"UTF-16BE with a byte order mark", "\xFE\xFF" + be, "UTF-16BE", working},
      {"UTF-16LE without a byte order mark", le, "UTF-16LE", working},
      {"UTF-16BE without a byte order mark", be, "UTF-16BE", working},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.what);
    const MarkupEncoding encoding = MarkupEncoding::of(test.file);
    EXPECT_EQ(encoding.name(), test.name);
    const std::string text = encoding.toWorkingText(test.file);
    EXPECT_EQ(text, test.working);
    EXPECT_EQ(encoding.toFileBytes(text), test.file);
  }
}

// Encodings the editor cannot write back, and UTF-16 that is not well
// formed, are refused with the reason.
TEST(MarkupEncoding, RefusesWhatItCannotWriteBack) {
  struct Case {
    std::string file;
    const char* reason;
  };
  const std::string head = utf16("<?xml version=\"1.0\"?><a>", false);
  const std::vector<Case> cases = {
      {"<?xml version=\"1.0\" encoding=\"KOI8-R\"?><a/>", "the encoding \"KOI8-R\""},
      {"<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><a/>", "the encoding \"SHIFT_JIS\""},
      {"\xFF\xFE" + head + "<", "an odd number of bytes"},
      {head + std::string("\x3D\xD8", 2) + utf16("</a>", false), "a lone surrogate"},
      {head + std::string("\x00\xDE", 2) + utf16("</a>", false), "a lone surrogate"},
      {head + std::string("\x3D\xD8", 2), "a lone surrogate"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.reason);
    try {
      const MarkupEncoding encoding = MarkupEncoding::of(test.file);
      encoding.toWorkingText(test.file);
      ADD_FAILURE() << "not refused";
    } catch (const XercesXML::ParsingError& error) {
      EXPECT_NE(error.getText().find("the file cannot be edited"), std::string::npos)
          << error.getText();
      EXPECT_NE(error.getText().find(test.reason), std::string::npos) << error.getText();
    }
  }
}

// Text going in, escaped for content (quote 0) and for attribute values in
// either quote, in each kind of encoding: a character the encoding lacks
// becomes a reference.
TEST(MarkupEncoding, EscapesForContentAndForEitherQuote) {
  struct Case {
    const char* what;
    std::string file;  // names the encoding
    char quote;
    std::string in;
    std::string out;
  };
  const std::string utf8 = "<a/>";
  const std::string latin1 = kLatin1Head + "<a/>";
  const std::string windows = kWindowsHead + "<a/>";
  const std::string utf16le = "\xFF\xFE" + utf16("<a/>", false);
  const std::vector<Case> cases = {
      {"markup characters in content", utf8, 0, "a<b&c>d ]]> e", "a&lt;b&amp;c&gt;d ]]&gt; e"},
      {"quotes, tab and line feed in content", utf8, 0, "\"x\" 'y'\t\n", "\"x\" 'y'\t\n"},
      {"a carriage return in content", utf8, 0, "a\r\nb\r", "a&#xD;\nb&#xD;"},
      {"double-quoted value", utf8, '"', "say \"hi\", it's <&>",
       "say &quot;hi&quot;, it's &lt;&amp;&gt;"},
      {"single-quoted value", utf8, '\'', "say \"hi\", it's", "say \"hi\", it&apos;s"},
      {"white space in a value", utf8, '"', "a\tb\nc\rd", "a&#x9;b&#xA;c&#xD;d"},
      {"UTF-8 keeps every character", utf8, 0, "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80",
       "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"ISO-8859-1: its upper half as bytes, the rest as references", latin1, '"',
       "\xC2\xA0\xC3\xA9\xC3\xBF\xC4\x80\xE2\x82\xAC\xF0\x9F\x98\x80\"",
       "\xA0\xE9\xFF&#x100;&#x20AC;&#x1F600;&quot;"},
      {"windows-1252: all but ASCII as references", windows, 0, "\xC3\xA9\xE2\x82\xAC<",
       "&#xE9;&#x20AC;&lt;"},
      {"UTF-16: the working text is UTF-8", utf16le, '\'', "\xF0\x9F\x98\x80'",
       "\xF0\x9F\x98\x80&apos;"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.what);
    const MarkupEncoding encoding = MarkupEncoding::of(test.file);
    EXPECT_EQ(test.quote == 0 ? encoding.escapeText(test.in)
                              : encoding.escapeAttribute(test.in, test.quote),
              test.out);
  }
}

}  // namespace
