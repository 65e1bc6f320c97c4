// Tests of the counted start and stop of the XML system and of the
// conversion of Xerces-C text into narrow strings.

#include "xml_access/XMLSystem.h"

#include <string>
#include <type_traits>

#include <gtest/gtest.h>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "msg/XercesXMLException.h"

namespace {

using XercesXML::getOutputEncoding;
using XercesXML::initializeSystem;
using XercesXML::isSystemInitialized;
using XercesXML::OutputEncoding;
using XercesXML::terminateSystem;
using XercesXML::transcodeFromXMLCh;

// XMLCh is char16_t, so u"" literals are Xerces-C text.
static_assert(std::is_same<XMLCh, char16_t>::value, "XMLCh is expected to be char16_t");

constexpr char kEncodingNotInitialized[] =
    "XercesXML - OutputEncoding requested without initializing system.";

template <typename Exception, typename Operation>
void expectText(Operation operation, const std::string& text) {
  try {
    operation();
    ADD_FAILURE() << "no exception";
  } catch (const Exception& failure) {
    EXPECT_EQ(failure.getText(), text);
  }
}

TEST(XmlSystemTest, ADownSystemRefusesTheEncodingButNotANullText) {
  ASSERT_FALSE(isSystemInitialized());
  expectText<XercesXML::NotInitialized>([] { getOutputEncoding(); }, kEncodingNotInitialized);
  EXPECT_EQ(transcodeFromXMLCh(nullptr), "");
  // A text is refused for the down system, not for a failed conversion.
  expectText<XercesXML::NotInitialized>([] { transcodeFromXMLCh(u"abc"); },
                                        kEncodingNotInitialized);
}

TEST(XmlSystemTest, StartsNestAndTheLastStopEndsThePlatform) {
  initializeSystem(XercesXML::UTF8);
  initializeSystem(XercesXML::UTF8);
  EXPECT_EQ(getOutputEncoding(), XercesXML::UTF8);

  terminateSystem();
  ASSERT_TRUE(isSystemInitialized());
  // The platform is still up: its parser and the transcoder still work.
  { xercesc::XercesDOMParser parser; }
  EXPECT_EQ(transcodeFromXMLCh(u"still up"), "still up");

  terminateSystem();
  EXPECT_FALSE(isSystemInitialized());
  expectText<XercesXML::NotInitialized>([] { getOutputEncoding(); }, kEncodingNotInitialized);

  // A new first start begins from scratch and may choose another encoding.
  initializeSystem(XercesXML::LocalCodePage);
  EXPECT_EQ(getOutputEncoding(), XercesXML::LocalCodePage);
  EXPECT_EQ(transcodeFromXMLCh(u"up again"), "up again");
  terminateSystem();
  EXPECT_FALSE(isSystemInitialized());
}

TEST(XmlSystemTest, ARefusedChangeOfEncodingStillCountsAsAStart) {
  initializeSystem(XercesXML::LocalCodePage);
  expectText<XercesXML::InitializationFailure>(
      [] { initializeSystem(XercesXML::UTF8); },
      "XercesXML - Error on initialization: No Modification allowed for Xerces-OutputEncoding");
  EXPECT_EQ(getOutputEncoding(), XercesXML::LocalCodePage);

  terminateSystem();
  EXPECT_TRUE(isSystemInitialized());
  terminateSystem();
  EXPECT_FALSE(isSystemInitialized());
}

TEST(XmlSystemTest, AnUnknownEncodingGivesEmptyTexts) {
  const OutputEncoding unknown = static_cast<OutputEncoding>(2);
  initializeSystem(unknown);
  EXPECT_EQ(getOutputEncoding(), unknown);
  EXPECT_EQ(transcodeFromXMLCh(u"abc"), "");
  EXPECT_EQ(transcodeFromXMLCh(nullptr), "");
  terminateSystem();
}

class TranscodeTest : public ::testing::TestWithParam<OutputEncoding> {
 protected:
  void SetUp() override { initializeSystem(GetParam()); }
  void TearDown() override { terminateSystem(); }
};

TEST_P(TranscodeTest, NullEmptyAndAsciiTexts) {
  EXPECT_EQ(transcodeFromXMLCh(nullptr), "");
  EXPECT_EQ(transcodeFromXMLCh(u""), "");
  EXPECT_EQ(transcodeFromXMLCh(u"Message: <a href=\"x\"/> & 42"), "Message: <a href=\"x\"/> & 42");
}

INSTANTIATE_TEST_SUITE_P(BothEncodings, TranscodeTest,
                         ::testing::Values(XercesXML::LocalCodePage, XercesXML::UTF8));

class Utf8TranscodeTest : public TranscodeTest {};

TEST_P(Utf8TranscodeTest, CharactersOfEveryLength) {
  EXPECT_EQ(transcodeFromXMLCh(u"S\u00FC\u20AC\U0001D11Ez"),
            "S\xC3\xBC\xE2\x82\xAC\xF0\x9D\x84\x9E"
            "z");
}

// Long texts of characters of two, three and four bytes, shifted by a few
// ASCII characters so that the end of a 1,024-byte pass falls inside a
// character in every possible way: each text must come out whole.
TEST_P(Utf8TranscodeTest, LongTextsLoseNothingAtPassBoundaries) {
  struct Character {
    std::u16string wide;
    std::string utf8;
  };
  const Character characters[] = {
      {u"\u00E4", "\xC3\xA4"}, {u"\u20AC", "\xE2\x82\xAC"}, {u"\U0001F600", "\xF0\x9F\x98\x80"}};
  for (int shift = 0; shift < 4; ++shift) {
    for (const Character& character : characters) {
      std::u16string wide(shift, u'a');
      std::string expected(shift, 'a');
      for (int i = 0; i < 1500; ++i) {
        wide += character.wide;
        expected += character.utf8;
      }
      wide += u'!';
      expected += '!';
      EXPECT_EQ(transcodeFromXMLCh(wide.c_str()), expected)
          << "shift " << shift << ", character " << character.utf8;
    }
  }
}

// A high surrogate at the very end waits for a partner that never comes: the
// pass converts nothing, and nothing of the text before it is returned.
TEST_P(Utf8TranscodeTest, APassThatConvertsNothingFails) {
  const std::u16string text = std::u16string(2000, u'x') + char16_t(0xD800);
  expectText<XercesXML::ParsingError>(
      [&] { transcodeFromXMLCh(text.c_str()); },
      "XercesXML::transcodeFromXMLCh(): Error while transcoding a string.");
}

INSTANTIATE_TEST_SUITE_P(Utf8, Utf8TranscodeTest, ::testing::Values(XercesXML::UTF8));

}  // namespace
