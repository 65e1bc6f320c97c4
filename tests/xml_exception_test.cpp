// Tests of the exception family of the XML access layer.

#include "msg/XercesXMLException.h"

#include <exception>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "msg/structured_exception.h"

namespace {

template <typename Kind>
class XercesExceptionTest : public ::testing::Test {};

// Each kind with its catalogue identifier and the built-in text of its key.
struct NotInitializedKind {
  using Type = XercesXML::NotInitialized;
  static constexpr const char* identifier = "NotInitialized";
  static constexpr const char* catalogueText = "Das Xerces-Subsystem wurde nicht initialisiert.";
};
struct InitializationFailureKind {
  using Type = XercesXML::InitializationFailure;
  static constexpr const char* identifier = "InitializationFailure";
  static constexpr const char* catalogueText =
      "Fehler bei der Initialisierung des Xerces-Subsystems.";
};
struct ParsingErrorKind {
  using Type = XercesXML::ParsingError;
  static constexpr const char* identifier = "ParsingError";
  static constexpr const char* catalogueText = "Fehler bei der Analyse einer XML-Datei.";
};
struct NullPointerKind {
  using Type = XercesXML::NullPointer;
  static constexpr const char* identifier = "NullPointer";
  static constexpr const char* catalogueText =
      "Abbruch der Aktion aufgrund eines ung\xFC"
      "ltigen Null-Zeigers.";
};
struct NavigationErrorKind {
  using Type = XercesXML::NavigationError;
  static constexpr const char* identifier = "NavigationError";
  static constexpr const char* catalogueText = "Fehler bei der Navigation in einem XML-Dokument.";
};

using Kinds = ::testing::Types<NotInitializedKind, InitializationFailureKind, ParsingErrorKind,
                               NullPointerKind, NavigationErrorKind>;
// Names the instantiations after the kinds.
struct KindName {
  template <typename Kind>
  static std::string GetName(int) {
    return Kind::identifier;
  }
};
TYPED_TEST_SUITE(XercesExceptionTest, Kinds, KindName);

TYPED_TEST(XercesExceptionTest, KeepsItsTextAndItsCatalogueKey) {
  using Kind = typename TypeParam::Type;
  for (const std::string text : {"plain text", "stream text ends in a line end\n", ""}) {
    const Kind failure(text);
    EXPECT_EQ(failure.getText(), text);
    EXPECT_EQ(std::string(failure.what()), text);
    EXPECT_STREQ(failure.getMessageNamespace(), "Xerces");
    EXPECT_STREQ(failure.getMessageIdentifier(), TypeParam::identifier);
    EXPECT_EQ(failure.getArgumentCount(), 0u);
    EXPECT_EQ(failure.getDetailBuffer(), nullptr);
    EXPECT_EQ(failure.getExceptionCode(), 0u);
  }
}

TYPED_TEST(XercesExceptionTest, IsCaughtThroughEveryBase) {
  using Kind = typename TypeParam::Type;
  try {
    throw Kind("thrown");
  } catch (const XercesXML::Exception& failure) {
    EXPECT_EQ(failure.getText(), "thrown");
    EXPECT_STREQ(failure.getMessageIdentifier(), TypeParam::identifier);
    EXPECT_NE(dynamic_cast<const Kind*>(&failure), nullptr);
  }
  try {
    throw Kind("thrown");
  } catch (const structured_exception& failure) {
    EXPECT_STREQ(failure.what(), "thrown");
    EXPECT_STREQ(failure.getMessageIdentifier(), TypeParam::identifier);
  }
  try {
    throw Kind("thrown");
  } catch (const std::exception& failure) {
    EXPECT_STREQ(failure.what(), "thrown");
  }
}

TYPED_TEST(XercesExceptionTest, ACopyOwnsItsTexts) {
  using Kind = typename TypeParam::Type;
  auto original = std::make_unique<Kind>(std::string("the original text\n"));
  const Kind copy(*original);
  original.reset();
  EXPECT_EQ(copy.getText(), "the original text\n");
  EXPECT_STREQ(copy.what(), "the original text\n");
  EXPECT_STREQ(copy.getMessageIdentifier(), TypeParam::identifier);
}

TYPED_TEST(XercesExceptionTest, TheCatalogueTextComesFromTheKeyAlone) {
  using Kind = typename TypeParam::Type;
  const Kind first("XercesXML - one diagnostic text");
  const Kind second("XercesXML - another diagnostic text\n");
  EXPECT_STREQ(first.getMessageText(), TypeParam::catalogueText);
  EXPECT_STREQ(second.getMessageText(), TypeParam::catalogueText);
}

}  // namespace
