// The handler's hash table: hashing, duplicates, replacement, ownership,
// growth and ranking among the entries of one chain.

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "message_core/MessageTable.h"
#include "msg/MTE.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandler.h"

// Scalar new and delete are replaced for this executable so that a test can
// tell which objects the table deleted, without relying on leak reports.
// They are kept out of line, so that the optimiser sees no malloc paired with
// a delete.
namespace {

constexpr std::size_t kDeletionLogSize = 1 << 12;
void* deletedPointers[kDeletionLogSize];
std::size_t deletedCount = 0;
bool loggingDeletions = false;

}  // namespace

__attribute__((noinline)) void* operator new(std::size_t size) {
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

__attribute__((noinline)) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size == 0 ? 1 : size);
}

__attribute__((noinline)) void operator delete(void* memory) noexcept {
  if (loggingDeletions && memory != nullptr && deletedCount < kDeletionLogSize) {
    deletedPointers[deletedCount++] = memory;
  }
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
  operator delete(memory);
}

namespace msg {
namespace {

// Records the scalar deletions between its construction and destruction.
class DeletionLog {
 public:
  DeletionLog() {
    deletedCount = 0;
    loggingDeletions = true;
  }
  ~DeletionLog() { loggingDeletions = false; }

  bool contains(const void* object) const {
    for (std::size_t i = 0; i < deletedCount; ++i) {
      if (deletedPointers[i] == object) {
        return true;
      }
    }
    return false;
  }
};

// Reaches the private table of a handler.
struct TableAccess : MessageHandler {
  static MessageTable& of(const MessageHandler& handler) { return *messageTableOf(handler); }
};

class MessageTableTest : public ::testing::Test {
 protected:
  // An entry that the test keeps (as a static entry would be kept): the
  // table links it but must never delete it.
  MTE* addKept(const char* language, const char* nameSpace, const char* identifier,
               const char* text, bool throwOnDuplicate = false) {
    std::unique_ptr<MTE> entry(new MTE(info, language, nameSpace, identifier, text, handler.get(),
                                       throwOnDuplicate, false));
    kept.push_back(std::move(entry));
    return kept.back().get();
  }

  // An entry with copied strings, owned by the table once linked.
  MTE* addOwned(const char* language, const char* nameSpace, const char* identifier,
                const char* text) {
    return new MTE(info, language, nameSpace, identifier, text, handler.get(), false, true);
  }

  MessageTable& table() { return TableAccess::of(*handler); }

  // The entries of the chain of a key, head first.
  std::vector<const MTE*> chainOf(const char* nameSpace, const char* identifier) {
    std::vector<const MTE*> chain;
    std::uint32_t bucket = table().tableHash(nameSpace, identifier);
    for (std::uint32_t i = 0; i < table().chainLength(bucket); ++i) {
      chain.push_back(table().chainEntry(bucket, i));
    }
    return chain;
  }

  const MTE* best(const char* nameSpace, const char* identifier, const LanguageList& list) {
    return table().findBestEntry(nameSpace, identifier, list);
  }

  // Declared before the handler, so the kept entries outlive its table.
  std::vector<std::unique_ptr<MTE>> kept;
  std::unique_ptr<MessageHandler> handler = std::make_unique<MessageHandler>();
};

TEST(MessageTableHashTest, SumsLittleEndianGroupsOfEachStringSeparately) {
  MessageTable table;
  EXPECT_EQ(table.getSize(), 997u);
  EXPECT_EQ(table.getCount(), 0u);
  EXPECT_EQ(table.tableHash("ab", "cd"), 37u);   // 0x6261 + 0x6463
  EXPECT_EQ(table.tableHash("abcd", ""), 755u);  // 0x64636261
  EXPECT_EQ(table.tableHash("", "abcd"), 755u);
  EXPECT_NE(table.tableHash("a", "bcd"), 755u);         // groups restart with the identifier
  EXPECT_EQ(table.tableHash("msg", "notfound"), 841u);  // 0xCB4A584A
  // Bytes are unsigned and the sum wraps: 2 * 0xFFFFFFFF = 0xFFFFFFFE mod 2^32.
  EXPECT_EQ(table.tableHash("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", ""), 0xFFFFFFFEu % 997u);
}

TEST(MessageTableHashTest, LargestPrimeUpTo) {
  EXPECT_EQ(MessageTable::largestPrimeUpTo(0), 0u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(1), 1u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(2), 2u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(4), 3u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(9), 7u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(1000), 997u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(2 * 997), 1993u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(2 * 1993), 3967u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(2 * 3967), 7933u);
  EXPECT_EQ(MessageTable::largestPrimeUpTo(2 * 7933), 15859u);
}

TEST_F(MessageTableTest, LanguagesOfOneKeyShareAChainAndDuplicatesAreRefused) {
  const char nameSpace[] = "app";
  const char identifier[] = "start";
  MTE* english = addKept("en", nameSpace, identifier, "Start");
  MTE* german = addKept("de", nameSpace, identifier, "Beginn");
  addKept("de-AT", nameSpace, identifier, "Anfang");
  EXPECT_EQ(table().getCount(), 3u);
  EXPECT_EQ(chainOf("app", "start").size(), 3u);

  // The same namespace, identifier and language again, refused.
  try {
    addKept("de", nameSpace, identifier, "Start!", true);
    FAIL() << "no MessageExists";
  } catch (const MessageExists& exists) {
    EXPECT_EQ(exists.getNamespace(), nameSpace);  // the caller's pointers
    EXPECT_EQ(exists.getIdentifier(), identifier);
  }
  // An entry with copied strings is refused before it copies anything; the
  // new-expression gives its memory back (a leak would fail this run).
  EXPECT_THROW(new MTE(info, "en", "app", "start", "x", handler.get(), true, true), MessageExists);
  EXPECT_EQ(table().getCount(), 3u);
  MTE* predecessor = nullptr;
  EXPECT_EQ(table().findEntry(german, &predecessor), german);
  EXPECT_EQ(table().findEntry(english, &predecessor), english);
  EXPECT_EQ(predecessor, german);  // the chain is de-AT, de, en
}

TEST_F(MessageTableTest, ReplacementKeepsThePlaceAndTheCount) {
  MTE* english = addKept("en", "app", "start", "en 1");
  MTE* german = addKept("de", "app", "start", "de 1");
  MTE* french = addKept("fr", "app", "start", "fr 1");
  ASSERT_EQ(chainOf("app", "start"), (std::vector<const MTE*>{french, german, english}));

  DeletionLog log;
  MTE* german2 = addKept("de", "app", "start", "de 2");  // in the middle
  MTE* french2 = addKept("fr", "app", "start", "fr 2");  // at the head
  EXPECT_EQ(chainOf("app", "start"), (std::vector<const MTE*>{french2, german2, english}));
  EXPECT_EQ(table().getCount(), 3u);

  // The replaced entries were kept by the test: unlinked, not deleted.
  EXPECT_FALSE(log.contains(german));
  EXPECT_FALSE(log.contains(french));
  EXPECT_STREQ(german->getText(), "de 1");
  EXPECT_STREQ(best("app", "start", LanguageList(Language("de")))->getText(), "de 2");
}

TEST_F(MessageTableTest, OwnedEntriesAreDeletedWhenReplacedOrWhenTheTableDies) {
  const MTE* first = addOwned("en", "app", "owned", "first");
  {
    DeletionLog log;
    const MTE* second = addOwned("en", "app", "owned", "second");
    EXPECT_TRUE(log.contains(first));
    EXPECT_EQ(table().getCount(), 1u);
    EXPECT_EQ(best("app", "owned", LanguageList(Language("en"))), second);
  }

  const MTE* owned = best("app", "owned", LanguageList(Language("en")));
  const MTE* kept = addKept("de", "app", "owned", "kept");
  DeletionLog log;
  handler.reset();
  EXPECT_TRUE(log.contains(owned));
  EXPECT_FALSE(log.contains(kept));
  EXPECT_STREQ(kept->getText(), "kept");
}

TEST_F(MessageTableTest, CopiedStringsAreTheEntrysOwn) {
  char text[] = "original";
  char nameSpace[] = "app";
  const MTE* entry = addOwned("en", nameSpace, "copy", text);
  EXPECT_TRUE(entry->getOwnsStrings());
  EXPECT_NE(entry->getText(), text);
  EXPECT_NE(entry->getNamespace(), nameSpace);
  std::strcpy(text, "changed!");
  std::strcpy(nameSpace, "xyz");
  EXPECT_STREQ(entry->getText(), "original");
  EXPECT_EQ(best("app", "copy", LanguageList(Language("en"))), entry);

  const MTE* kept = addKept("en", "app", "nocopy", text);
  EXPECT_FALSE(kept->getOwnsStrings());
  EXPECT_EQ(kept->getText(), text);
}

TEST_F(MessageTableTest, LanguageNumbersMeanGermanOrEnglish) {
  for (int number : {-1, 0, 1, 2, 3, 1000}) {
    std::unique_ptr<MTE> entry(new MTE(info, number, "app", "number", "t", handler.get(), false));
    EXPECT_EQ(entry->getLanguage(), number == 2 ? Language("de") : Language("en")) << number;
    EXPECT_FALSE(entry->getOwnsStrings());
    kept.push_back(std::move(entry));
  }
  EXPECT_EQ(table().getCount(), 2u);  // the "en" entries replaced one another
}

TEST_F(MessageTableTest, BestEntryRanksTheWholeChainAndTiesGoToTheHead) {
  // "ab"/"cd" and "cd"/"ab" share bucket 37 but are different keys.
  addKept("en", "cd", "ab", "other key");
  addKept("en-GB", "ab", "cd", "British");
  addKept("de", "ab", "cd", "German");
  ASSERT_EQ(table().chainLength(37), 3u);
  EXPECT_STREQ(best("cd", "ab", LanguageList(Language("en")))->getText(), "other key");
  EXPECT_STREQ(best("ab", "cd", LanguageList(Language("en")))->getText(), "British");
  EXPECT_STREQ(best("ab", "cd", LanguageList(Language("de-AT"), Language("en")))->getText(),
               "German");  // rank 2 beats rank 4
  EXPECT_EQ(best("ab", "cd", LanguageList(Language("fr"))), nullptr);
  EXPECT_EQ(best("ab", "cd", LanguageList(0, nullptr)), nullptr);
  EXPECT_EQ(best("ab", "xx", LanguageList(Language("en"))), nullptr);

  // de-AT and de-CH both rank 1 against [de]: the later one is the head.
  addKept("de-AT", "tie", "key", "Austria");
  addKept("de-CH", "tie", "key", "Switzerland");
  EXPECT_STREQ(best("tie", "key", LanguageList(Language("de")))->getText(), "Switzerland");
  // An exact match later in the chain still beats them.
  addKept("de-DE", "tie", "key", "Germany");
  EXPECT_STREQ(best("tie", "key", LanguageList(Language("de-CH")))->getText(), "Switzerland");
}

TEST_F(MessageTableTest, BucketZeroWorksLikeAnyOther) {
  ASSERT_EQ(table().tableHash("zero", "k567"), 0u);
  MTE* english = addKept("en", "zero", "k567", "en");
  addKept("de", "zero", "k567", "de");
  EXPECT_EQ(table().bucketOf(english), 0u);
  // Replacing the head goes through bucketOf, which hashes afresh each time.
  MTE* german2 = addKept("de", "zero", "k567", "de 2");
  EXPECT_EQ(chainOf("zero", "k567"), (std::vector<const MTE*>{german2, english}));
  EXPECT_EQ(table().getCount(), 2u);
}

TEST_F(MessageTableTest, AMismatchedChainHeadIsReportedAndChangesNothing) {
  MTE* english = addKept("en", "app", "key", "en");
  MTE* german = addKept("de", "app", "key", "de");
  MessageTable other;
  try {
    other.insertEntry(english, german, nullptr);  // german is no head of `other`
    FAIL() << "no MessageHandlerError";
  } catch (const MessageHandlerError& error) {
    EXPECT_STREQ(error.getText(), "MessageHandler corrupted.");
  }
  EXPECT_EQ(other.getCount(), 0u);
  EXPECT_EQ(other.chainLength(other.tableHash("app", "key")), 0u);
  EXPECT_EQ(chainOf("app", "key"), (std::vector<const MTE*>{german, english}));
}

TEST_F(MessageTableTest, GrowsOnlyPastFiftyOneEntriesPerBucketAndKeepsEveryEntry) {
  addKept("de-AT", "tie", "key", "Austria");
  addKept("de-CH", "tie", "key", "Switzerland");
  LanguageList german(Language("de"));
  EXPECT_STREQ(best("tie", "key", german)->getText(), "Switzerland");

  const std::uint32_t threshold = 51 * 997;  // 50 * 997 is not enough
  std::vector<std::string> identifiers;
  for (std::uint32_t i = table().getCount(); i < threshold; ++i) {
    identifiers.push_back("entry" + std::to_string(i));
    addOwned("en", "grow", identifiers.back().c_str(), identifiers.back().c_str());
  }
  ASSERT_EQ(table().getCount(), threshold);
  EXPECT_EQ(table().getSize(), 997u);

  addOwned("en", "grow", "last", "last");
  EXPECT_EQ(table().getSize(), 1993u);
  EXPECT_EQ(table().getCount(), threshold + 1);

  // Every entry is found and sits in the bucket of the new size; cachedHash
  // holds no index of the old table.
  LanguageList english(Language("en"));
  for (const std::string& identifier : identifiers) {
    const MTE* entry = best("grow", identifier.c_str(), english);
    ASSERT_NE(entry, nullptr) << identifier;
    ASSERT_EQ(identifier, entry->getText());
  }
  std::uint32_t linked = 0;
  for (std::uint32_t bucket = 0; bucket < table().getSize(); ++bucket) {
    for (std::uint32_t i = 0; i < table().chainLength(bucket); ++i) {
      MTE* entry = table().chainEntry(bucket, i);
      ASSERT_EQ(table().tableHash(entry->getNamespace(), entry->getIdentifier()), bucket);
      ASSERT_EQ(table().bucketOf(entry), bucket);
      ++linked;
    }
  }
  EXPECT_EQ(linked, threshold + 1);
  // Growth reversed the chain, so the tie now goes the other way.
  EXPECT_STREQ(best("tie", "key", german)->getText(), "Austria");
}

}  // namespace
}  // namespace msg
