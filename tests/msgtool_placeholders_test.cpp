// The tool's reading of placeholders: what check reports, and how export
// protects them in exchange files.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "Placeholders.h"
#include "XliffSupport.h"

namespace msgtool {
namespace {

// The pieces as "[&1]plain[&22]", placeholders in brackets.
std::string piecesOf(const std::string& text) {
  std::string out;
  std::string joined;
  for (const TextPiece& piece : splitPlaceholders(text)) {
    EXPECT_FALSE(piece.text.empty()) << text;
    out += piece.placeholder ? "[" + piece.text + "]" : piece.text;
    joined += piece.text;
  }
  EXPECT_EQ(joined, text) << "every byte comes back";
  return out;
}

TEST(MsgtoolPlaceholdersTest, ExportProtectsEveryRunAlsoThoseSubstitutionIgnores) {
  const std::string long23 = "&" + std::string(23, '1');
  EXPECT_EQ(piecesOf(""), "");
  EXPECT_EQ(piecesOf("a & b"), "a & b");
  EXPECT_EQ(piecesOf("&0 of &10&&2x"), "[&0] of [&10]&[&2]x");
  EXPECT_EQ(piecesOf(long23 + " &9999999999"), "[" + long23 + "] [&9999999999]");

  EXPECT_TRUE(isPlaceholder("&007"));
  EXPECT_TRUE(isPlaceholder(long23));
  for (const char* text : {"", "&", "&1 ", " &1", "&1&2", "x"}) {
    EXPECT_FALSE(isPlaceholder(text)) << text;
  }
}

TEST(MsgtoolPlaceholdersTest, CheckCountsWhatSubstitutionFillsAndNamesTheRest) {
  const PlaceholderScan scan =
      scanPlaceholders("&3 &01 &3 &" + std::string(23, '0') + " &2147483648 &");
  EXPECT_EQ(scan.numbers, (std::set<unsigned>{1, 3}));
  ASSERT_EQ(scan.ignored.size(), 2u);
  EXPECT_EQ(scan.ignored[0].offset, 10u);
  EXPECT_EQ(scan.ignored[0].digits, 23u);
  EXPECT_EQ(scan.ignored[1].offset, 35u);
  EXPECT_EQ(scan.ignored[1].digits, 10u);

  EXPECT_EQ(describePlaceholders(placeholderNumbers("&2 and &0, &2")), "&0 &2");
  EXPECT_EQ(describePlaceholders(placeholderNumbers("none & here")), "none");
}

}  // namespace
}  // namespace msgtool
