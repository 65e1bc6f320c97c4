// Plural messages in msgtool's check: which forms a language needs, which
// it may leave out or never uses, and which texts must show the count.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Catalogue.h"
#include "Findings.h"
#include "PluralNeeds.h"
#include "SourceStamp.h"
#include "tests/catalogue_support.h"
#include "tests/scratch_folder.h"

namespace {

using msg::PluralCategory;
using msg::PluralKind;

unsigned maskOf(std::initializer_list<PluralCategory> categories) {
  unsigned mask = 0;
  for (const PluralCategory category : categories) {
    mask |= msgtool::LanguagePlurals::bit(category);
  }
  return mask;
}

struct NeedsCase {
  const char* language;
  PluralKind kind;
  unsigned wholeNumbers;
  std::vector<std::pair<PluralCategory, std::int64_t>> onlyNumbers;  // the others: -1
};

// What the rules give to whole numbers, and to which category one number
// alone leads, for languages whose rules look at different things.
TEST(PluralNeedsTest, WholeNumbersAndSingleNumbersFollowTheRules) {
  using C = PluralCategory;
  const NeedsCase cases[] = {
      {"en", PluralKind::cardinal, maskOf({C::one, C::other}), {{C::one, 1}}},
      // Polish `other` is for decimals alone.
      {"pl", PluralKind::cardinal, maskOf({C::one, C::few, C::many}), {{C::one, 1}}},
      {"ar",
       PluralKind::cardinal,
       maskOf({C::zero, C::one, C::two, C::few, C::many, C::other}),
       {{C::zero, 0}, {C::one, 1}, {C::two, 2}}},
      // French `one` takes 0 and 1 (and 1.5); `many` only millions.
      // Hebrew `one` takes 1 but also 0.5: no single number.
      {"he", PluralKind::cardinal, maskOf({C::one, C::two, C::other}), {{C::two, 2}}},
      {"fr", PluralKind::cardinal, maskOf({C::one, C::many, C::other}), {}},
      {"ru", PluralKind::cardinal, maskOf({C::one, C::few, C::many}), {}},
      // Lithuanian `many` is for decimals alone.
      {"lt", PluralKind::cardinal, maskOf({C::one, C::few, C::other}), {}},
      {"ja", PluralKind::cardinal, maskOf({C::other}), {}},
      {"en", PluralKind::ordinal, maskOf({C::one, C::two, C::few, C::other}), {}},
      {"cy",
       PluralKind::cardinal,
       maskOf({C::zero, C::one, C::two, C::few, C::many, C::other}),
       {{C::zero, 0}, {C::one, 1}, {C::two, 2}, {C::few, 3}, {C::many, 6}}},
  };
  for (const NeedsCase& row : cases) {
    SCOPED_TRACE(std::string(row.language) +
                 (row.kind == PluralKind::ordinal ? " ordinal" : " cardinal"));
    const msgtool::LanguagePlurals& plurals =
        msgtool::LanguagePlurals::of(msg::Language(row.language), row.kind);
    EXPECT_EQ(msgtool::describeCategories(plurals.wholeNumbers),
              msgtool::describeCategories(row.wholeNumbers));
    for (int c = 0; c < msg::kPluralCategoryCount; ++c) {
      std::int64_t expected = -1;
      for (const auto& only : row.onlyNumbers) {
        expected = static_cast<int>(only.first) == c ? only.second : expected;
      }
      EXPECT_EQ(plurals.onlyNumber[static_cast<std::size_t>(c)], expected)
          << msg::Plurals::categoryName(static_cast<PluralCategory>(c));
    }
  }
}

struct CheckCase {
  const char* name;
  std::string messages;                            // inside a MessageNamespace
  std::set<std::pair<int, std::string>> findings;  // line, code
};

// A document of namespace "app" with `messages` inside, the first on line 4.
std::string documentOf(const std::string& messages) {
  return test_support::messageDocument(
      "<MessageNamespace name=\"app\" xmlns:msgtool=\"urn:x-msg:msgtool:1\">\n" + messages +
      "</MessageNamespace>\n");
}

class PluralCheckTest : public ::testing::Test {
 protected:
  PluralCheckTest() { test_support::copySchemaInto(scratch.path()); }

  std::set<std::pair<int, std::string>> findingsOf(const std::string& messages) {
    const std::string file = scratch.write("plurals.xml", documentOf(messages));
    const msgtool::Catalogue catalogue = msgtool::Catalogue::read({file});
    EXPECT_TRUE(catalogue.refused().empty()) << catalogue.refused().front().problems[0].message;
    std::set<std::pair<int, std::string>> found;
    for (const msgtool::Finding& finding :
         msgtool::findFindings(catalogue, msgtool::CheckSettings())) {
      found.emplace(finding.place.line, finding.code);
    }
    return found;
  }

  test_support::ScratchFolder scratch;
};

// The English texts of a plural message: one and other.
const std::string kEnglish =
    "<Text xml:lang=\"en\" plural=\"one\">&amp;0 file</Text>\n"
    "<Text xml:lang=\"en\">&amp;0 files</Text>\n";

// A Message of the key app:m holding `texts`.
std::string message(const std::string& texts, const std::string& attributes = "") {
  return "<Message id=\"m\"" + attributes + ">\n" + texts + "</Message>\n";
}

TEST_F(PluralCheckTest, FindsEachPluralFaultAndNothingInCompleteMessages) {
  const CheckCase cases[] = {
      {"complete en, pl and ar: no variant is a duplicate",
       message(kEnglish + "<Text xml:lang=\"pl\" plural=\"one\">&amp;0 plik</Text>\n"
                          "<Text xml:lang=\"pl\" plural=\"few\">&amp;0 pliki</Text>\n"
                          "<Text xml:lang=\"pl\" plural=\"many\">&amp;0 plików</Text>\n"
                          "<Text xml:lang=\"pl\">&amp;0 pliku</Text>\n"
                          "<Text xml:lang=\"ar\" plural=\"zero\">لا ملفات</Text>\n"
                          "<Text xml:lang=\"ar\" plural=\"one\">ملف واحد</Text>\n"
                          "<Text xml:lang=\"ar\" plural=\"two\">ملفان</Text>\n"
                          "<Text xml:lang=\"ar\" plural=\"few\">&amp;0 ملفات</Text>\n"
                          "<Text xml:lang=\"ar\" plural=\"many\">&amp;0 ملفًا</Text>\n"
                          "<Text xml:lang=\"ar\">&amp;0 ملف</Text>\n"),
       {}},
      {"Polish without one falls back to other for 1",
       message(kEnglish + "<Text xml:lang=\"pl\" plural=\"few\">&amp;0 pliki</Text>\n"
                          "<Text xml:lang=\"pl\" plural=\"many\">&amp;0 plików</Text>\n"
                          "<Text xml:lang=\"pl\">&amp;0 pliku</Text>\n"),
       {{9, "plural-form-missing"}}},
      {"a plain text in a language of a plural key lacks its forms",
       message(kEnglish) + message("<Text xml:lang=\"de\">&amp;0 Dateien</Text>\n"),
       {{9, "plural-form-missing"}}},
      {"an exact value stands in for a category of that number alone",
       message("<Text xml:lang=\"en\" plural=\"=1\">one file</Text>\n"
               "<Text xml:lang=\"en\">&amp;0 files</Text>\n"),
       {}},
      {"but not for a category of more numbers",
       message("<Text xml:lang=\"fr\" plural=\"=1\">un fichier</Text>\n"
               "<Text xml:lang=\"fr\" plural=\"many\">&amp;0 de fichiers</Text>\n"
               "<Text xml:lang=\"fr\">&amp;0 fichiers</Text>\n"),
       {{7, "plural-form-missing"}}},
      {"a form the rules never choose",
       message("<Text xml:lang=\"en\" plural=\"one\">&amp;0 file</Text>\n"
               "<Text xml:lang=\"en\" plural=\"few\">&amp;0 files</Text>\n"
               "<Text xml:lang=\"en\">&amp;0 files</Text>\n"
               "<Text xml:lang=\"ja\" plural=\"one\">&amp;0 ファイル</Text>\n"
               "<Text xml:lang=\"ja\">&amp;0 ファイル</Text>\n"),
       {{6, "plural-form-unused"}, {8, "plural-form-unused"}}},
      {"ordinal rules: English needs one, two and few",
       message("<Text xml:lang=\"en\" ordinal=\"one\">&amp;0st</Text>\n"
               "<Text xml:lang=\"en\">&amp;0th</Text>\n"),
       {{6, "plural-form-missing"}}},
      // Russian `one` is also 21, 31, ...
      {"a form for one number may leave out the count, a form for many may not",
       message("<Text xml:lang=\"en\" plural=\"=0\">No files</Text>\n"
               "<Text xml:lang=\"en\" plural=\"one\">One file</Text>\n"
               "<Text xml:lang=\"en\">&amp;0 files</Text>\n"
               "<Text xml:lang=\"ru\" plural=\"one\">Один файл</Text>\n"
               "<Text xml:lang=\"ru\" plural=\"few\">&amp;0 файла</Text>\n"
               "<Text xml:lang=\"ru\" plural=\"many\">&amp;0 файлов</Text>\n"
               "<Text xml:lang=\"ru\">&amp;0 файла</Text>\n"),
       {{8, "placeholder-mismatch"}}},
      {"a variant with other placeholders than the reference other",
       message("<Text xml:lang=\"en\" plural=\"one\">&amp;0: &amp;1 file</Text>\n"
               "<Text xml:lang=\"en\">&amp;0: &amp;1 files</Text>\n"
               "<Text xml:lang=\"pl\" plural=\"one\">&amp;1 plik</Text>\n"
               "<Text xml:lang=\"pl\" plural=\"few\">&amp;0: &amp;1 pliki</Text>\n"
               "<Text xml:lang=\"pl\" plural=\"many\">&amp;1 plików</Text>\n"
               "<Text xml:lang=\"pl\">&amp;0: &amp;1 pliku</Text>\n",
               " count=\"&amp;1\""),
       {{7, "placeholder-mismatch"}, {9, "placeholder-mismatch"}}},
      // The exact value has the count the others lack.
      {"the count is in no text that serves many numbers",
       message("<Text xml:lang=\"en\" plural=\"=1\">&amp;0: &amp;1 file</Text>\n"
               "<Text xml:lang=\"en\">&amp;0: files</Text>\n"
               "<Text xml:lang=\"de\" plural=\"one\">&amp;0: eine Datei</Text>\n"
               "<Text xml:lang=\"de\">&amp;0: Dateien</Text>\n",
               " count=\"&amp;1\""),
       {{5, "placeholder-mismatch"}, {6, "plural-count-missing"}, {8, "plural-count-missing"}}},
  };
  for (const CheckCase& row : cases) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(findingsOf(row.messages), row.findings);
  }
}

// Two Messages of one key in one language: the second is one duplicate,
// not one per variant.
TEST_F(PluralCheckTest, ASecondMessageOfAPluralKeyIsOneDuplicate) {
  const std::string file = scratch.write("first.xml", documentOf(message(kEnglish)));
  const std::string again = scratch.write("again.xml", documentOf(message(kEnglish)));
  const msgtool::Catalogue catalogue = msgtool::Catalogue::read({file, again});
  const std::vector<msgtool::Finding> findings =
      msgtool::findFindings(catalogue, msgtool::CheckSettings());
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].code, "duplicate-text");
  EXPECT_EQ(findings[0].place.file, again);
}

// Every form of a plural message is exported with the source's `other` and
// stamped with it; an exact value travels with its own source text. A form
// is stale only when the text it was made from changed.
TEST_F(PluralCheckTest, FormsAreStaleOnlyWhenTheirSourceTextChanged) {
  const std::string other = msgtool::SourceStamp::of("en", "&0 files").toString();
  const std::string none = msgtool::SourceStamp::of("en", "No files").toString();
  const std::string old = msgtool::SourceStamp::of("en", "&0 file(s)").toString();
  const auto stamped = [](const std::string& fewStamp, const std::string& exactStamp) {
    return message(
        "<Text xml:lang=\"en\" plural=\"one\">&amp;0 file</Text>\n"
        "<Text xml:lang=\"en\" plural=\"=0\">No files</Text>\n"
        "<Text xml:lang=\"en\">&amp;0 files</Text>\n"
        "<Text xml:lang=\"pl\" plural=\"one\">&amp;0 plik</Text>\n"
        "<Text xml:lang=\"pl\" plural=\"few\" msgtool:translated-from=\"" +
        fewStamp +
        "\">&amp;0 pliki</Text>\n"
        "<Text xml:lang=\"pl\" plural=\"many\">&amp;0 plików</Text>\n"
        "<Text xml:lang=\"pl\" plural=\"=0\" msgtool:translated-from=\"" +
        exactStamp +
        "\">Brak plików</Text>\n"
        "<Text xml:lang=\"pl\">&amp;0 pliku</Text>\n");
  };
  using Found = std::set<std::pair<int, std::string>>;
  EXPECT_EQ(findingsOf(stamped(other, none)), Found{});
  EXPECT_EQ(findingsOf(stamped(old, none)), (Found{{9, "stale-translation"}}));
  EXPECT_EQ(findingsOf(stamped(other, old)), (Found{{11, "stale-translation"}}));
}

}  // namespace
