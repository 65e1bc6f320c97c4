// Packing of language tags and ranking by LanguageList::distance.

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "msg/Language.h"
#include "msg/LanguageList.h"

namespace msg {
namespace {

std::string bytesOf(const Language& language) {
  return std::string(language.tagChars, sizeof language.tagChars);
}

TEST(LanguageTest, PacksLanguageAndRegion) {
  EXPECT_EQ(bytesOf(Language("de")), std::string("de\0\0", 4));
  EXPECT_EQ(bytesOf(Language("de-AT")),
            "de"
            "AT");
  // Only the first five characters count, and only "-" introduces a region.
  EXPECT_EQ(Language("de-AT-1996"), Language("de-AT"));
  EXPECT_EQ(Language("deu"), Language("de"));
  EXPECT_EQ(Language("de_AT"), Language("de"));
  EXPECT_NE(Language("DE"), Language("de"));
  EXPECT_NE(Language("de-AT"), Language("de-at"));
  EXPECT_FALSE(Language("de").hasRegion());
  EXPECT_TRUE(Language("de-AT").hasRegion());
  EXPECT_EQ(Language("de-AT").toString(), "de-AT");
}

TEST(LanguageTest, ShortTagsStopAtTheirEnd) {
  // Each tag lives in a buffer of exactly its own length, so a read past the
  // terminator is caught by AddressSanitizer.
  auto packExact = [](const char* tag) {
    std::string copy(tag);
    char* exact = new char[copy.size() + 1];
    copy.copy(exact, copy.size());
    exact[copy.size()] = '\0';
    Language packed(exact);
    delete[] exact;
    return bytesOf(packed);
  };
  EXPECT_EQ(packExact(""), std::string(4, '\0'));
  EXPECT_EQ(packExact("d"), std::string("d\0\0\0", 4));
  EXPECT_EQ(packExact("de"), std::string("de\0\0", 4));
  EXPECT_EQ(packExact("de-"), std::string("de\0\0", 4));
  EXPECT_EQ(packExact("de-A"), std::string("deA\0", 4));
  EXPECT_EQ(packExact("de-AT"),
            "de"
            "AT");
  EXPECT_EQ(Language(nullptr), Language());
  EXPECT_EQ(Language("de-"), Language("de"));
}

TEST(LanguageListTest, DistanceFollowsTheRankingTable) {
  const Language austrianFirst[] = {"de-AT", "de", "en"};
  LanguageList list(3, austrianFirst);
  EXPECT_EQ(list.distance("de-AT"), 0);
  EXPECT_EQ(list.distance("de"), 3);
  EXPECT_EQ(list.distance("de-CH"), 4);
  EXPECT_EQ(list.distance("en"), 6);
  EXPECT_EQ(list.distance("en-GB"), 7);
  EXPECT_EQ(list.distance("fr"), -1);

  // Only other regions: the last such position is the one noted.
  LanguageList regionsOnly(Language("de-AT"), Language("de-CH"));
  EXPECT_EQ(regionsOnly.distance("de"), 5);
  EXPECT_EQ(regionsOnly.distance("de-DE"), 5);

  // An exact match anywhere beats an earlier bare match.
  LanguageList bareFirst(Language("de"), Language("de-AT"));
  EXPECT_EQ(bareFirst.distance("de-AT"), 3);
  EXPECT_EQ(bareFirst.distance("de-CH"), 1);

  EXPECT_EQ(LanguageList(Language("en")).distance("en-GB"), 1);
  EXPECT_EQ(LanguageList(Language("en-GB")).distance("en"), 2);
}

TEST(LanguageListTest, DistanceCornerCases) {
  // The first of two bare positions, and the first exact one, are used.
  const Language repeated[] = {"fr", "de", "de", "de-AT", "de-AT"};
  LanguageList list(5, repeated);
  EXPECT_EQ(list.distance("de-CH"), 4);
  EXPECT_EQ(list.distance("de-AT"), 9);

  // A match in the first language beats any match in the second.
  LanguageList austrianThenEnglish(Language("de-AT"), Language("en"));
  EXPECT_EQ(austrianThenEnglish.distance("de"), 2);
  EXPECT_EQ(austrianThenEnglish.distance("en-GB"), 4);

  // Case counts: "DE" is another language.
  EXPECT_EQ(LanguageList(Language("de")).distance("DE"), -1);

  // An empty list accepts nothing.
  LanguageList empty(0, nullptr);
  EXPECT_EQ(empty.getCount(), 0);
  EXPECT_EQ(empty.distance("en"), -1);
  EXPECT_EQ(empty.distance(Language()), -1);
}

TEST(LanguageListTest, CopiesAreDeepAndIndependent) {
  Language source[] = {"de-AT", "en"};
  LanguageList list(2, source);
  source[0] = Language("fr");  // the list keeps its own array
  EXPECT_EQ(list.getLanguage(0), Language("de-AT"));

  LanguageList copy(list);
  LanguageList assigned(Language("it"));
  assigned = list;
  list = LanguageList(Language("fr"));
  EXPECT_EQ(list.getCount(), 1);
  for (const LanguageList* other : {&copy, &assigned}) {
    ASSERT_EQ(other->getCount(), 2);
    EXPECT_EQ(other->getLanguage(0), Language("de-AT"));
    EXPECT_EQ(other->getLanguage(1), Language("en"));
    EXPECT_EQ(other->distance("en"), 3);
  }

  LanguageList& self = assigned;
  assigned = self;
  ASSERT_EQ(assigned.getCount(), 2);
  EXPECT_EQ(assigned.getLanguage(1), Language("en"));
}

TEST(LanguageListTest, NegativeCountFailsInTheAllocator) {
  const Language one[] = {"en"};
  int count = -1;
  EXPECT_THROW(LanguageList(count, one), std::bad_array_new_length);
}

}  // namespace
}  // namespace msg
