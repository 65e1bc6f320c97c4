// Languages and their ranking, and the handler's hash table: hashing,
// duplicates, replacement, ownership, growth and ranking within one chain.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "message_core/MessageTable.h"
#include "msg/Language.h"
#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandler.h"
#include "platform/PageMapping.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#define MSG_TEST_LEAK_CHECK 1
#endif

// Scalar new and delete are replaced for this executable, so that a test can
// tell which objects were deleted since it last set deletedCount to 0, and
// make the allocation after the next `failAfter` ones fail. Both go to
// malloc and free, out of line, so that no allocator sees a mismatch.
namespace {
void* deleted[4096];
std::size_t deletedCount = 0;
long failAfter = -1;  // -1: never fail
bool wasDeleted(const void* object) {
  return std::find(deleted, deleted + deletedCount, object) != deleted + deletedCount;
}
}  // namespace

__attribute__((noinline)) void* operator new(std::size_t size) {
  if (failAfter >= 0 && failAfter-- == 0) {
    throw std::bad_alloc();
  }
  if (void* memory = std::malloc(size == 0 ? 1 : size)) {
    return memory;
  }
  throw std::bad_alloc();
}
__attribute__((noinline)) void operator delete(void* memory) noexcept {
  if (memory != nullptr && deletedCount < 4096) {
    deleted[deletedCount++] = memory;
  }
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

namespace msg {
namespace {

struct TableAccess : MessageHandler {
  static MessageTable& of(const MessageHandler& handler) { return *messageTableOf(handler); }
};

class MessageTableTest : public ::testing::Test {
 protected:
  // An entry the test keeps, as a static entry is kept: the table must never delete it.
  MTE* addKept(const char* language, const char* nameSpace, const char* identifier,
               const char* text = "kept") {
    kept.emplace_back(
        new MTE(info, language, nameSpace, identifier, text, handler.get(), false, false));
    return kept.back().get();
  }
  // An entry with copied strings, owned by the table once linked.
  MTE* addOwned(const char* identifier, const char* text) {
    return new MTE(info, "en", "app", identifier, text, handler.get(), false, true);
  }
  MessageTable& table() { return TableAccess::of(*handler); }
  std::vector<const MTE*> chainOf(const char* nameSpace, const char* identifier) {
    const std::uint32_t bucket = table().tableHash(nameSpace, identifier);
    std::vector<const MTE*> chain;
    for (std::uint32_t i = 0; i < table().chainLength(bucket); ++i) {
      chain.push_back(table().chainEntry(bucket, i));
    }
    return chain;
  }
  std::string best(const char* nameSpace, const char* identifier, const LanguageList& list) {
    const MTE* entry = table().findBestEntry(nameSpace, identifier, list);
    return entry == nullptr ? "<none>" : entry->getText();
  }

  // Declared before the handler, so the kept entries outlive its table.
  std::vector<std::unique_ptr<MTE>> kept;
  std::unique_ptr<MessageHandler> handler = std::make_unique<MessageHandler>();
};

TEST(LanguageTest, PacksAtMostFiveCharactersWithoutReadingPastTheTag) {
  // The four bytes expected, with '.' for a zero byte.
  const char* const cases[][2] = {
      {"de", "de.."}, {"de-AT", "deAT"}, {"de-AT-1996", "deAT"}, {"deu", "de.."}, {"de_AT", "de.."},
      {"DE", "DE.."}, {"", "...."},      {"d", "d..."},          {"de-", "de.."}, {"de-A", "deA."}};
  for (const auto& c : cases) {
    // A buffer of exactly the tag's length: AddressSanitizer sees a read past it.
    const std::vector<char> exact(c[0], c[0] + std::string(c[0]).size() + 1);
    const Language packed(exact.data());
    std::string expected(c[1]);
    std::replace(expected.begin(), expected.end(), '.', '\0');
    EXPECT_EQ(std::string(packed.tagChars, 4), expected) << c[0];
  }
  EXPECT_EQ(Language(nullptr), Language());
}

TEST(LanguageListTest, DistanceRanksExactThenBareThenOtherRegion) {
  const struct {
    std::vector<Language> list;
    std::vector<std::pair<const char*, int>> ranks;
  } cases[] = {
      {{"de-AT", "de", "en"},
       {{"de-AT", 0}, {"de", 3}, {"de-CH", 4}, {"en", 6}, {"en-GB", 7}, {"fr", -1}}},
      {{"de-AT", "de-CH"}, {{"de", 5}, {"de-DE", 5}}},  // the last other-region position
      {{"de", "de-AT"}, {{"de-AT", 3}, {"de-CH", 1}}},  // exact beats an earlier bare match
      {{"fr", "de", "de", "de-AT", "de-AT"}, {{"de-CH", 4}, {"de-AT", 9}}},  // the first ones
      {{"de-AT", "en"}, {{"de", 2}, {"en-GB", 4}}},
      {{"en"}, {{"en-GB", 1}}},
      {{"en-GB"}, {{"en", 2}}},
      {{"de"}, {{"DE", -1}}},
      {{}, {{"en", -1}}},
  };
  for (const auto& c : cases) {
    const LanguageList list(static_cast<int>(c.list.size()), c.list.data());
    for (const auto& rank : c.ranks) {
      EXPECT_EQ(list.distance(rank.first), rank.second) << rank.first << " in list " << &c - cases;
    }
  }
}

TEST(LanguageListTest, CopiesAreDeep) {
  Language source[] = {"de-AT", "en"};
  LanguageList list(2, source);
  source[0] = Language("fr");
  LanguageList copy(list);
  LanguageList& self = copy;
  copy = self;
  list = LanguageList(Language("fr"));
  EXPECT_EQ(copy.distance("de-AT") + copy.distance("en"), 3);
  int negative = -1;
  EXPECT_THROW(LanguageList(negative, source), std::bad_array_new_length);
}

TEST(MessageTableHashTest, SumsLittleEndianGroupsOfEachStringAndSizesArePrimes) {
  MessageTable table;
  EXPECT_EQ(table.getSize(), 997u);
  EXPECT_EQ(table.tableHash("ab", "cd"), 37u);          // 0x6261 + 0x6463
  EXPECT_EQ(table.tableHash("abcd", ""), 755u);         // 0x64636261
  EXPECT_NE(table.tableHash("a", "bcd"), 755u);         // groups restart with the identifier
  EXPECT_EQ(table.tableHash("msg", "notfound"), 841u);  // 0xCB4A584A
  // Bytes are unsigned and the sum wraps: 2 * 0xFFFFFFFF = 0xFFFFFFFE mod 2^32.
  EXPECT_EQ(table.tableHash("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", ""), 0xFFFFFFFEu % 997u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(0), 0u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(4), 3u);
  std::uint32_t size = 997;
  for (std::uint32_t next : {1993u, 3967u, 7933u, 15859u}) {
    EXPECT_EQ(MessageTable::largestPrimeUpTo(2 * size), next);
    size = next;
  }
}

TEST_F(MessageTableTest, DuplicatesAreRefusedOrReplacedInPlace) {
  const char nameSpace[] = "app";
  const char identifier[] = "start";
  MTE* english = addKept("en", nameSpace, identifier);
  MTE* german = addKept("de", nameSpace, identifier);
  MTE* french = addKept("fr", nameSpace, identifier);
  try {
    new MTE(info, "de", nameSpace, identifier, "x", handler.get(), true, true);
    FAIL() << "no MessageExists";
  } catch (const MessageExists& exists) {
    EXPECT_EQ(exists.getNamespace(), nameSpace);  // the caller's pointers
    EXPECT_EQ(exists.getIdentifier(), identifier);
  }
  MTE* predecessor = nullptr;
  EXPECT_EQ(table().findEntry(english, &predecessor), english);
  EXPECT_EQ(predecessor, german);

  deletedCount = 0;
  MTE* german2 = addKept("de", "app", "start");  // in the middle
  MTE* french2 = addKept("fr", "app", "start");  // at the head
  EXPECT_EQ(chainOf("app", "start"), (std::vector<const MTE*>{french2, german2, english}));
  // An entry put in the place of another, also in mid-chain, is found like it.
  EXPECT_EQ(table().findBestEntry("app", "start", LanguageList(Language("de"))), german2);
  EXPECT_EQ(table().findEntry(german2, &predecessor), german2);
  EXPECT_EQ(table().getCount(), 3u);
  EXPECT_FALSE(wasDeleted(german) || wasDeleted(french));

  // A chain head that does not fit the entry to be replaced.
  MessageTable other;
  EXPECT_THROW(other.insertEntry(english, german2, nullptr, IndexKey("app", "start")),
               MessageHandlerError);
  EXPECT_EQ(other.getCount(), 0u);
}

TEST_F(MessageTableTest, AnAdditionThatRunsOutOfMemoryChangesNothing) {
  for (int i = 0; i < 48; ++i) {  // the 49th key makes the index grow
    addKept("en", "app", ("key" + std::to_string(i)).c_str());
  }
  kept.reserve(kept.size() + 1);
  const LanguageList german(Language("de"));
  for (long failing = 0;; ++failing) {  // each allocation of the addition fails once
    failAfter = failing;
    try {
      kept.emplace_back(new MTE(info, "de", "app", "new", "neu", handler.get(), false, false));
      failAfter = -1;
      break;
    } catch (const std::bad_alloc&) {
      failAfter = -1;
      EXPECT_EQ(table().getCount(), 48u) << failing;
      EXPECT_EQ(best("app", "new", german), "<none>");
    }
  }
  EXPECT_EQ(best("app", "new", german), "neu");
  EXPECT_EQ(best("app", "key47", LanguageList(Language("en"))), "kept");
}

TEST_F(MessageTableTest, OwnedEntriesHaveCopiesAndAreDeletedWhenReplacedOrWhenTheTableDies) {
  char text[] = "first";
  const MTE* first = addOwned("owned", text);
  text[0] = 'F';
  EXPECT_STREQ(first->getText(), "first");
  deletedCount = 0;
  const MTE* second = addOwned("owned", "second");
  EXPECT_TRUE(wasDeleted(first));
  EXPECT_EQ(table().getCount(), 1u);

  for (int number : {-1, 0, 1, 2, 3}) {  // language numbers: 2 is German, all others English
    kept.emplace_back(new MTE(info, number, "app", "number", "t", handler.get(), false));
    EXPECT_EQ(kept.back()->getLanguage(), Language(number == 2 ? "de" : "en"));
  }
  EXPECT_EQ(table().getCount(), 3u);

  deletedCount = 0;
  handler.reset();
  EXPECT_TRUE(wasDeleted(second));
  EXPECT_FALSE(wasDeleted(kept.back().get()));
}

TEST_F(MessageTableTest, BestEntryRanksTheWholeChainAndTiesGoToTheHead) {
  addKept("en", "cd", "ab", "other key");  // same bucket as ab:cd
  addKept("en-GB", "ab", "cd", "British");
  addKept("de", "ab", "cd", "German");
  EXPECT_EQ(best("ab", "cd", LanguageList(Language("en"))), "British");
  EXPECT_EQ(best("ab", "cd", LanguageList(Language("de-AT"), Language("en"))), "German");
  EXPECT_EQ(best("ab", "cd", LanguageList(Language("fr"))), "<none>");

  addKept("de-AT", "tie", "key", "Austria");
  addKept("de-CH", "tie", "key", "Switzerland");
  EXPECT_EQ(best("tie", "key", LanguageList(Language("de"))), "Switzerland");
  addKept("de-DE", "tie", "key", "Germany");  // ahead in the chain, but no exact match
  EXPECT_EQ(best("tie", "key", LanguageList(Language("de-CH"))), "Switzerland");
}

// The index keeps the bytes of each key beside its entries; a long key, or
// one with many languages, takes a block of its own outside the index's
// arena, which must be found and freed when the table dies (the sanitizer
// run reports a leak otherwise).
TEST_F(MessageTableTest, LongKeysAndKeysWithManyLanguagesAreFoundAndFreed) {
  const std::string longIdentifier(700, 'k');
  addOwned(longIdentifier.c_str(), "long");
  const char* const tags[] = {
      "en", "de", "fr", "it", "es", "pt", "nl", "sv", "da", "fi", "pl", "cs", "sk", "hu", "ro",
      "bg", "el", "tr", "ru", "uk", "et", "lv", "lt", "sl", "hr", "sr", "ja", "ko", "zh", "ar",
      "he", "hi", "th", "vi", "id", "ms", "fa", "ur", "bn", "ta", "te", "mr", "gu", "kn", "ml"};
  for (const char* tag : tags) {
    new MTE(info, tag, "app", "many", tag, handler.get(), false, true);
  }
  EXPECT_EQ(best("app", longIdentifier.c_str(), LanguageList(Language("en"))), "long");
  EXPECT_EQ(best("app", "many", LanguageList(Language("ml"))), "ml");
  EXPECT_EQ(best("app", "many", LanguageList(Language("en"))), "en");
  EXPECT_EQ(table().keyEntryCount("app", "many"), sizeof tags / sizeof tags[0]);
}

TEST_F(MessageTableTest, GrowsOnlyPastFiftyOneEntriesPerBucketAndKeepsEveryEntry) {
  addKept("de-AT", "tie", "key", "Austria");
  addKept("de-CH", "tie", "key", "Switzerland");
  const std::uint32_t threshold = 51 * 997;  // 50 * 997 is not enough
  std::vector<std::string> identifiers;
  for (std::uint32_t i = table().getCount(); i < threshold; ++i) {
    identifiers.push_back("entry" + std::to_string(i));
    addOwned(identifiers.back().c_str(), identifiers.back().c_str());
  }
  EXPECT_EQ(table().getSize(), 997u);
  addOwned("last", "last");
  EXPECT_EQ(table().getSize(), 1993u);
  EXPECT_EQ(table().getCount(), threshold + 1);

  for (const std::string& identifier : identifiers) {
    ASSERT_EQ(best("app", identifier.c_str(), LanguageList(Language("en"))), identifier);
  }
  // Every entry sits in its bucket of the new size, and cachedHash says so.
  std::uint32_t linked = 0;
  for (std::uint32_t bucket = 0; bucket < table().getSize(); ++bucket) {
    for (std::uint32_t i = 0; i < table().chainLength(bucket); ++i, ++linked) {
      MTE* entry = table().chainEntry(bucket, i);
      ASSERT_EQ(table().tableHash(entry->getNamespace(), entry->getIdentifier()), bucket);
      ASSERT_EQ(table().bucketOf(entry), bucket);
    }
  }
  EXPECT_EQ(linked, threshold + 1);
  // Growth reversed the chain, so the tie now goes the other way.
  EXPECT_EQ(best("tie", "key", LanguageList(Language("de"))), "Austria");
}

// Past 2 MiB the index takes its slot array and arena chunks straight from
// the system (in huge pages); each must go back whole when the table dies,
// and lookups must not notice where their slots live. A key group too large
// for the arena is a heap block that only the mapped slot array points to:
// the sanitizer's leak check must still see it as reachable.
TEST(MessageTableMappingTest, ALargeIndexIsMappedAndGivenBackWhole) {
  const std::size_t mappedBefore = platform::mappedBytes();
  {
    MessageHandler handler;
    const std::string longIdentifier(700, 'k');
    new MTE(info, "en", "app", longIdentifier.c_str(), "long", &handler, false, true);
    std::vector<std::string> identifiers;
    for (int i = 0; i < 120000; ++i) {
      identifiers.push_back("key" + std::to_string(i));
      new MTE(info, "en", "app", identifiers.back().c_str(), identifiers.back().c_str(), &handler,
              false, true);
    }
    EXPECT_GE(platform::mappedBytes(), mappedBefore + platform::kHugePageSize);
    const MessageTable& table = TableAccess::of(handler);
    for (const std::string& identifier : identifiers) {
      const MTE* entry =
          table.findBestEntry("app", identifier.c_str(), LanguageList(Language("en")));
      ASSERT_NE(entry, nullptr);
      ASSERT_STREQ(entry->getText(), identifier.c_str());
    }
#if defined(MSG_TEST_LEAK_CHECK)
    EXPECT_EQ(__lsan_do_recoverable_leak_check(), 0);
#endif
  }
  EXPECT_EQ(platform::mappedBytes(), mappedBefore);
}

}  // namespace
}  // namespace msg
