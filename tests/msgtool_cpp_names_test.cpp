// The C++ names that `msgtool header` gives namespaces and messages: always
// a valid identifier that no keyword, macro or reserved name can break,
// unique within its scope, and the original where that already is one.

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "CppNames.h"

namespace {

using msgtool::NameScope;

// An ASCII identifier without "__" and not reserved in `scope`.
bool isUsableIdentifier(const std::string& name, NameScope scope) {
  const char* reserved = scope == NameScope::global ? "_.*|.*__.*" : "_[A-Z].*|.*__.*";
  return std::regex_match(name, std::regex("[A-Za-z_][A-Za-z0-9_]*")) &&
         !std::regex_match(name, std::regex(reserved));
}

TEST(CppNamesTest, NamesAreUsableIdentifiersThatFollowTheirOriginals) {
  // An original, its name at global scope and its name in a namespace.
  const std::vector<std::array<const char*, 3>> cases{
      {"diskfull", "diskfull", "diskfull"},  // already a name: kept
      {"my-app", "my_app", "my_app"},
      {"a--b..c", "a_b_c", "a_b_c"},  // one "_" for a run
      {"3d", "ns_3d", "k_3d"},        // a leading digit gets a prefix
      {"", "ns_", "k_"},
      {"class", "class_", "class_"},  // keywords and reserved names get a suffix
      {"errno", "errno_", "errno_"},
      {"_x", "ns_x", "_x"},  // "_x" is reserved at global scope only
      {"_X", "ns_X", "k_X"},
      {"café", "caf_", "caf_"},  // each non-ASCII character is one "_"
      {"日本", "ns_", "_"},
  };
  for (const auto& [original, global, enclosed] : cases) {
    EXPECT_EQ(msgtool::safeCppName(original, NameScope::global), global) << original;
    EXPECT_EQ(msgtool::safeCppName(original, NameScope::enclosed), enclosed) << original;
  }

  const std::set<std::string> keywords{"class", "int", "std", "NULL", "errno", "major", "co_await"};
  for (const NameScope scope : {NameScope::global, NameScope::enclosed}) {
    for (const std::string original :
         {"-", "_", "__x", "a b.c", "日本語", "é1", "1", "int", "std", "NULL", "major",
          "disk-full!", "ok_name", "Upper", "x\ty\n", "\x7f\x01", "k_", "co_await"}) {
      const std::string name = msgtool::safeCppName(original, scope);
      EXPECT_TRUE(isUsableIdentifier(name, scope))
          << "'" << original << "' became '" << name << "'";
      EXPECT_EQ(keywords.count(name), 0u) << name;
      EXPECT_EQ(msgtool::safeCppName(original, scope), name);  // no hidden state
    }
  }
}

TEST(CppNamesTest, CollisionsGetNumbersAndUnchangedNamesKeepTheirs) {
  // Sorted, as the header writer passes them.
  const std::vector<std::string> originals{"a-b",    "a.b",       "a_b_2",    "class",
                                           "class_", "disk-full", "disk_full"};
  const std::map<std::string, std::string> names =
      msgtool::uniqueCppNames(originals, NameScope::enclosed);
  const std::map<std::string, std::string> expected{
      {"a-b", "a_b"},
      {"a.b", "a_b_3"},  // a_b_2 is taken by a name of its own
      {"a_b_2", "a_b_2"},
      {"class", "class_2"},  // no "__" after the keyword's "_"
      {"class_", "class_"},
      {"disk-full", "disk_full_2"},
      {"disk_full", "disk_full"}};
  EXPECT_EQ(names, expected);
}

TEST(CppNamesTest, EscapesLeaveAStringLiteralThatMeansTheSameBytes) {
  EXPECT_EQ(msgtool::escapeForCpp("say \"hi\"\\\n\t", false), "say \\\"hi\\\"\\\\\\n\\t");
  // Octal escapes take at most three digits, so a digit after one stays a digit.
  EXPECT_EQ(msgtool::escapeForCpp(std::string{'\x01', '7', '\x7f'}, false), "\\0017\\177");
  EXPECT_EQ(msgtool::escapeForCpp("ü", false), "ü");
  EXPECT_EQ(msgtool::escapeForCpp("ü", true), "\\303\\274");
}

}  // namespace
