// The C++ names that `msgtool header` gives namespaces and messages: always
// a valid identifier that no keyword, macro or reserved name can break,
// unique within its scope, and the original where that already is one.

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "CppNames.h"

namespace {

using msgtool::NameScope;

bool isUsableIdentifier(const std::string& name, NameScope scope) {
  if (name.empty() || (name[0] >= '0' && name[0] <= '9')) {
    return false;
  }
  for (const char c : name) {
    const bool ascii =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    if (!ascii) {
      return false;
    }
  }
  const bool reservedEverywhere =
      name.find("__") != std::string::npos ||
      (name[0] == '_' && name.size() > 1 && name[1] >= 'A' && name[1] <= 'Z');
  return !reservedEverywhere && !(scope == NameScope::global && name[0] == '_');
}

TEST(CppNamesTest, EveryNameIsAUsableIdentifier) {
  const std::vector<std::string> originals{
      "",        "-",     "3d",     "_",        "__x",    "_X",      "_x",
      "a--b",    "a b.c", "my-app", "café",     "日本語", "é1",      "1",
      "class",   "int",   "std",    "NULL",     "errno",  "major",   "disk-full!",
      "ok_name", "Upper", "x\ty\n", "\x7f\x01", "k_",     "co_await"};
  const std::set<std::string> keywords{"class", "int", "std", "NULL", "errno", "major", "co_await"};
  for (const NameScope scope : {NameScope::global, NameScope::enclosed}) {
    for (const std::string& original : originals) {
      const std::string name = msgtool::safeCppName(original, scope);
      EXPECT_TRUE(isUsableIdentifier(name, scope))
          << "'" << original << "' became '" << name << "'";
      EXPECT_EQ(keywords.count(name), 0u) << name;
      EXPECT_EQ(msgtool::safeCppName(original, scope), name);  // no hidden state
    }
  }
}

TEST(CppNamesTest, NamesFollowTheirOriginalsReadably) {
  struct Case {
    const char* original;
    const char* global;
    const char* enclosed;
  };
  const std::vector<Case> cases{
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
  for (const Case& c : cases) {
    EXPECT_EQ(msgtool::safeCppName(c.original, NameScope::global), c.global) << c.original;
    EXPECT_EQ(msgtool::safeCppName(c.original, NameScope::enclosed), c.enclosed) << c.original;
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
  EXPECT_EQ(msgtool::escapeForCpp(std::string("\x01"
                                              "7\x7f",
                                              3),
                                  false),
            "\\0017\\177");
  EXPECT_EQ(msgtool::escapeForCpp("ü", false), "ü");
  EXPECT_EQ(msgtool::escapeForCpp("ü", true), "\\303\\274");
}

}  // namespace
