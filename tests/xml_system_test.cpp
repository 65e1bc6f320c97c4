// Tests of the counted start and stop of the XML system, of the conversion of
// Xerces-C text into narrow strings, and of the layer's exception family.

#include "xml_access/XMLSystem.h"

#include <exception>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "msg/XercesXMLException.h"
#include "msg/structured_exception.h"
#include "xml_test_document.h"

namespace {

using namespace XercesXML;
using xml_test::expectText;

void expectDown() {
  EXPECT_FALSE(isSystemInitialized());
  const std::string text = "XercesXML - OutputEncoding requested without initializing system.";
  expectText<NotInitialized>([] { getOutputEncoding(); }, text);
  expectText<NotInitialized>([] { transcodeFromXMLCh(u"abc"); }, text);
  EXPECT_EQ(transcodeFromXMLCh(nullptr), "");
}

TEST(XmlSystemTest, StartsNestAndOnlyTheLastStopEndsThePlatform) {
  expectDown();
  initializeSystem(UTF8);
  initializeSystem(UTF8);
  terminateSystem();
  ASSERT_TRUE(isSystemInitialized());
  { xercesc::XercesDOMParser parser; }  // the platform is still up
  EXPECT_EQ(transcodeFromXMLCh(u"still up"), "still up");
  terminateSystem();
  expectDown();

  // A new first start begins from scratch and may choose another encoding;
  // a later start with another one is refused but still counts.
  initializeSystem(LocalCodePage);
  expectText<InitializationFailure>(
      [] { initializeSystem(UTF8); },
      "XercesXML - Error on initialization: No Modification allowed for Xerces-OutputEncoding");
  EXPECT_EQ(getOutputEncoding(), LocalCodePage);
  terminateSystem();
  EXPECT_TRUE(isSystemInitialized());
  terminateSystem();
  expectDown();

  initializeSystem(static_cast<OutputEncoding>(2));  // no conversion at all
  EXPECT_EQ(getOutputEncoding(), static_cast<OutputEncoding>(2));
  EXPECT_EQ(transcodeFromXMLCh(u"abc"), "");
  terminateSystem();
}

TEST(XmlSystemTest, BothEncodingsConvertNullEmptyAndAsciiTexts) {
  for (const OutputEncoding encoding : {LocalCodePage, UTF8}) {
    initializeSystem(encoding);
    EXPECT_EQ(transcodeFromXMLCh(nullptr), "");
    EXPECT_EQ(transcodeFromXMLCh(u""), "");
    EXPECT_EQ(transcodeFromXMLCh(u"<a href=\"x\"/> & 42"), "<a href=\"x\"/> & 42");
    terminateSystem();
  }
}

// Long texts of characters of two, three and four bytes, shifted by a few
// ASCII characters so that the end of a 1,024-byte pass falls inside a
// character in every possible way: each text must come out whole.
TEST(XmlSystemTest, Utf8TextsLoseNothingAtPassBoundaries) {
  initializeSystem(UTF8);
  const struct {
    std::u16string wide;
    std::string utf8;
  } characters[] = {
      {u"\u00E4", "\xC3\xA4"}, {u"\u20AC", "\xE2\x82\xAC"}, {u"\U0001F600", "\xF0\x9F\x98\x80"}};
  for (int shift = 0; shift < 4; ++shift) {
    for (const auto& character : characters) {
      std::u16string wide(shift, u'a');
      std::string expected(shift, 'a');
      for (int i = 0; i < 1500; ++i) {
        wide += character.wide;
        expected += character.utf8;
      }
      EXPECT_EQ(transcodeFromXMLCh(wide.c_str()), expected) << "shift " << shift;
    }
  }
  // A high surrogate at the very end waits for a partner that never comes: the
  // pass converts nothing, and nothing of the text before it is returned.
  const std::u16string unpaired = std::u16string(2000, u'x') + char16_t(0xD800);
  expectText<ParsingError>([&] { transcodeFromXMLCh(unpaired.c_str()); },
                           "XercesXML::transcodeFromXMLCh(): Error while transcoding a string.");
  terminateSystem();
}

// Checks one kind: its texts, its key, its copies and the bases it is caught by.
template <typename Kind>
void checkKind(const char* identifier) {
  SCOPED_TRACE(identifier);
  for (const std::string text : {"plain text", "stream text ends in a line end\n", ""}) {
    auto original = std::make_unique<Kind>(text);
    const Kind copy(*original);
    original.reset();
    EXPECT_EQ(copy.getText(), text);
    EXPECT_EQ(std::string(copy.what()), text);
    EXPECT_STREQ(copy.getMessageNamespace(), "Xerces");
    EXPECT_STREQ(copy.getMessageIdentifier(), identifier);
    EXPECT_EQ(copy.getDetailBuffer(), nullptr);
  }
  EXPECT_THROW(throw Kind("thrown"), XercesXML::Exception);
  EXPECT_THROW(throw Kind("thrown"), structured_exception);
  EXPECT_THROW(throw Kind("thrown"), std::exception);
}

TEST(XercesExceptionTest, EveryKindKeepsItsTextAndItsCatalogueKey) {
  checkKind<XercesXML::NotInitialized>("NotInitialized");
  checkKind<XercesXML::InitializationFailure>("InitializationFailure");
  checkKind<XercesXML::ParsingError>("ParsingError");
  checkKind<XercesXML::NullPointer>("NullPointer");
  checkKind<XercesXML::NavigationError>("NavigationError");
}

}  // namespace
