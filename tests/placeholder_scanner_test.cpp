#include "message_core/PlaceholderScanner.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace msg {
namespace {

// The runs of `text` as "offset+length=value", with "!" for a run that
// substitution never replaces.
// `terminated` reads the text up to its first NUL, as substitution does.
std::string runsOf(const std::string& text, bool terminated = false) {
  PlaceholderScanner scanner = terminated
                                   ? PlaceholderScanner(text.c_str())
                                   : PlaceholderScanner(text.data(), text.data() + text.size());
  PlaceholderRun run{};
  std::string out;
  while (scanner.next(run)) {
    EXPECT_EQ(run.length, run.digits + 1);
    out += (out.empty() ? "" : " ") + std::to_string(run.offset) + "+" +
           std::to_string(run.length) +
           (run.replaceable ? "=" + std::to_string(run.value) : std::string("!"));
  }
  EXPECT_FALSE(scanner.next(run)) << "a finished scan stays finished";
  return out;
}

TEST(PlaceholderScannerTest, EachRunIsTheAmpersandWithEveryDigitBehindIt) {
  const std::string zeros22(22, '0');
  const std::string nines23(23, '9');
  const struct {
    std::string text;
    std::string runs;
  } cases[] = {
      {"", ""},
      {"no placeholders & none", ""},
      {"&", ""},
      {"&0", "0+2=0"},
      {"a&007b", "1+4=7"},
      {"&10&1", "0+3=10 3+2=1"},
      {"&&1", "1+2=1"},
      {"& 1 &x1", ""},
      {"100&", ""},
      {"&" + zeros22, "0+23=0"},
      {"&0" + zeros22 + "&5", "0+24! 24+2=5"},
      {"&" + nines23, "0+24!"},
      {"&2147483647", "0+11=2147483647"},
      {"&2147483648 &4294967296", "0+11! 12+11!"},
      {std::string("&1\0&2", 5), "0+2=1 3+2=2"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(runsOf(c.text), c.runs) << c.text;
    if (c.text.find('\0') == std::string::npos) {
      EXPECT_EQ(runsOf(c.text, true), c.runs) << c.text << " (NUL-terminated)";
    }
  }
  EXPECT_EQ(runsOf(std::string("&1\0&2", 5), true), "0+2=1") << "the terminator ends the text";
}

TEST(PlaceholderScannerTest, ARunEndsAtTheEndOfTheRangeNotOfTheString) {
  const std::string text = "&123456";
  PlaceholderScanner scanner(text.data(), text.data() + 3);
  PlaceholderRun run{};
  ASSERT_TRUE(scanner.next(run));
  EXPECT_EQ(run.value, 12u);
  EXPECT_FALSE(scanner.next(run));
}

}  // namespace
}  // namespace msg
