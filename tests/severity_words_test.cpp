#include "message_core/SeverityWords.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace msg {
namespace {

TEST(SeverityWordsTest, EachLevelHasOneWordAndBack) {
  for (const SeverityLevel level : {info, warning, error, abort}) {
    const char* word = severityWord(level);
    ASSERT_NE(word, nullptr) << level;
    SeverityLevel read = level == info ? abort : info;
    EXPECT_TRUE(severityFromWord(word, read)) << word;
    EXPECT_EQ(read, level) << word;
    EXPECT_EQ(severityText(level), word);
  }
  EXPECT_STREQ(severityWord(warning), "warning");
}

TEST(SeverityWordsTest, OtherWordsAndValuesNameNoLevel) {
  for (const char* word : {"", "Warning", "ERROR", "fatal", "info ", "abort\n"}) {
    SeverityLevel level = warning;
    EXPECT_FALSE(severityFromWord(word, level)) << word;
    EXPECT_EQ(level, warning) << word;
  }
  // A level outside the four is shown as its number, never read past the table.
  const struct {
    int value;
    const char* text;
  } outside[] = {{-1, "-1"}, {4, "4"}, {INT_MAX, "2147483647"}, {INT_MIN, "-2147483648"}};
  for (const auto& o : outside) {
    const auto level = static_cast<SeverityLevel>(o.value);
    EXPECT_EQ(severityWord(level), nullptr) << o.value;
    EXPECT_EQ(severityText(level), o.text);
  }
}

}  // namespace
}  // namespace msg
