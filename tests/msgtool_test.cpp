// msgtool as a user runs it: the built tool is started as a process on
// documents with planted faults, and its exit code, findings and output are
// checked.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "tests/catalogue_support.h"
#include "tests/scratch_folder.h"

#ifndef MSGTOOL_PATH
#error "msgtool_test needs the msgtool target (configure with MSG_BUILD_TOOLS=ON)"
#endif

namespace fs = std::filesystem;

namespace {

using ::testing::HasSubstr;

const std::string kData = std::string(MSG_TEST_DATA_DIR) + "/msgtool/";

struct Outcome {
  int exitCode;
  std::string out;
  std::string err;
};

using test_support::messageDocument;
using test_support::readFile;

class MsgtoolTest : public ::testing::Test {
 protected:
  MsgtoolTest() { test_support::copySchemaInto(scratch.path()); }

  // Runs msgtool with `arguments` (already quoted where needed) in `folder`.
  Outcome run(const std::string& arguments, const fs::path& folder = ".") const {
    const fs::path out = scratch / "stdout";
    const fs::path err = scratch / "stderr";
    const std::string command = "cd '" + folder.string() + "' && '" + MSGTOOL_PATH + "' " +
                                arguments + " >'" + out.string() + "' 2>'" + err.string() + "'";
    const int status = std::system(command.c_str());
    return Outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out), readFile(err)};
  }

  fs::path write(const std::string& name, const std::string& content) const {
    return scratch.write(name, content);
  }

  test_support::ScratchFolder scratch;
};

TEST_F(MsgtoolTest, CheckFindsEveryPlantedFaultAtItsLineAndStatsCountsEachLanguage) {
  const std::string en = kData + "faults-en.xml";
  const std::string de = kData + "faults-de.xml";
  const std::string broken = kData + "broken.xml";
  const Outcome result = run("check --format json " + en + " " + de + " " + broken);
  ASSERT_EQ(result.exitCode, 1) << result.err;
  const nlohmann::json report = nlohmann::json::parse(result.out);
  EXPECT_EQ(report["version"], 1);

  using Place = std::tuple<std::string, int, std::string>;
  std::set<Place> found;
  int errors = 0;
  for (const auto& finding : report["findings"]) {
    found.emplace(finding["file"], finding["line"], finding["code"]);
    errors += finding["severity"] == "error" ? 1 : 0;
  }
  const std::set<Place> expected{
      {en, 17, "unknown-severity"},    {en, 21, "missing-id"},
      {en, 25, "missing-translation"}, {en, 29, "placeholder-gap"},
      {en, 32, "ignored-placeholder"}, {en, 41, "missing-namespace-name"},
      {de, 9, "placeholder-mismatch"}, {de, 12, "duplicate-text"},
      {de, 15, "language-tag"},        {de, 18, "ignored-placeholder"},
      {de, 21, "whitespace-mismatch"}, {de, 24, "empty-text"},
      {broken, 6, "document-refused"},
  };
  EXPECT_EQ(found, expected);
  EXPECT_EQ(report["summary"]["errors"], errors);

  // The duplicate names the first definition too.
  for (const auto& finding : report["findings"]) {
    if (finding["code"] == "duplicate-text") {
      EXPECT_EQ(finding["related"][0]["file"], en);
      EXPECT_EQ(finding["related"][0]["line"], 15);
    }
  }

  EXPECT_EQ(run("stats " + en + " " + de).out,
            "de: 10 translated, 1 missing, 90.9% of 11 messages\n"
            "en: 11 translated, 0 missing, 100.0% of 11 messages\n");
}

TEST_F(MsgtoolTest, CheckExitCodeFollowsStrictAndLanguages) {
  const fs::path file = write("partial.xml", messageDocument(R"(  <MessageNamespace name="app">
    <Message id="a" severity="info"><Text xml:lang="en">A &amp;0</Text>
      <Text xml:lang="de">A &amp;0</Text></Message>
    <Message id="b" severity="info"><Text xml:lang="en">B</Text></Message>
  </MessageNamespace>
)"));
  EXPECT_EQ(run("check " + file.string()).exitCode, 0);  // a missing text only warns
  EXPECT_EQ(run("check --strict " + file.string()).exitCode, 1);
  // de-AT falls back to de, so only b misses it; fr is missing everywhere.
  const Outcome json = run("check --format json --languages de-AT,fr " + file.string());
  EXPECT_EQ(json.exitCode, 0);
  EXPECT_EQ(nlohmann::json::parse(json.out)["summary"]["warnings"], 3);
}

TEST_F(MsgtoolTest, BadInputEndsWithExitCodeTwoAndSaysWhy) {
  const fs::path empty = write("empty.xml", "");
  const fs::path binary = write("binary.xml", std::string{'\x7f', 'E', 'L', 'F', 0, 0, 1});
  const fs::path locked = write("locked.xml", messageDocument(""));
  fs::permissions(locked, fs::perms::none);
  const fs::path huge = scratch / "huge.xml";
  std::ofstream(huge).put('<');
  fs::resize_file(huge, 257u * 1024u * 1024u);  // sparse: takes no disk space

  std::vector<std::string> inputs{(scratch / "missing.xml").string(), scratch.path().string(),
                                  empty.string(), binary.string(), huge.string()};
  if (::geteuid() != 0) {  // root reads any file
    inputs.push_back(locked.string());
  }
  for (const std::string& input : inputs) {
    for (const char* command : {"check", "stats", "header -o out.h"}) {
      const Outcome result = run(std::string(command) + " '" + input + "'");
      EXPECT_EQ(result.exitCode, 2) << command << ' ' << input;
      EXPECT_EQ(result.out, "");
      EXPECT_EQ(result.err.rfind("msgtool: error: " + input + ": ", 0), 0u) << result.err;
    }
  }
}

TEST_F(MsgtoolTest, ShowRendersLikeTheLibrary) {
  const std::string demo = std::string(MSG_SOURCE_DIR) + "/examples/catalogue/demo.xml";
  const Outcome plain = run("show --languages de-AT,de,en " + demo + " demo diskspace 12 /home");
  ASSERT_EQ(plain.exitCode, 0) << plain.err;
  EXPECT_EQ(plain.out, "demo:diskspace (de, warning)\nNur noch 12 MB frei auf /home.\n");
  // After "--" every word is the key or an argument, also one that looks
  // like an option or names a file.
  write("demo", "a file named as the namespace");
  const Outcome dashed =
      run("show --languages de " + demo + " -- demo diskspace -12 --", scratch.path());
  EXPECT_EQ(dashed.out, "demo:diskspace (de, warning)\nNur noch -12 MB frei auf --.\n")
      << dashed.err;

  const Outcome wrapped = run("show --width 24 --languages en " + demo + " demo maintenance /srv");
  // Lines fill all 24 columns, as the Unicode model lays them out.
  EXPECT_EQ(wrapped.out,
            "demo:maintenance (en, info)\nThe archive on /srv will\nbe reorganised tonight\n"
            "between 01:00 and 03:00.\nFiles stay readable all\nthe time, but changes\nmade "
            "while it runs may\nbe lost.\n")
      << wrapped.err;

  EXPECT_EQ(run("show --languages fr " + demo + " demo diskspace").exitCode, 2);
  EXPECT_EQ(run("show " + demo + " demo nosuchkey").exitCode, 2);
}

TEST_F(MsgtoolTest, HeaderIsSafeDeterministicAndKeepsTheOldFileOnFailure) {
  const fs::path file = write("names.xml", messageDocument(R"(  <MessageNamespace name="my-app">
    <Message id="disk-full"><Text xml:lang="en">Disk &amp;1 full */ \</Text></Message>
    <Message id="disk_full"><Text xml:lang="en">Disk full</Text></Message>
    <Message id="class"><Text xml:lang="en">Class</Text></Message>
    <Message id="3d"><Text xml:lang="de">3D</Text></Message>
  </MessageNamespace>
)"));
  const fs::path first = scratch / "keys.h";
  const std::string arguments = "header -o '" + first.string() + "' '" + file.string() + "'";
  ASSERT_EQ(run(arguments).exitCode, 0);
  const std::string header = readFile(first);
  ASSERT_EQ(run(arguments).exitCode, 0);
  EXPECT_EQ(readFile(first), header);  // the same bytes again
  for (const char* expected :
       {"namespace my_app {", "::msg::Key<2> disk_full_2{\"my-app\", \"disk-full\"};",
        "::msg::Key<0> disk_full{\"my-app\", \"disk_full\"};", "// en: \"Disk &1 full */ \\\\\"\n",
        "// de: \"3D\"\n"}) {
    EXPECT_THAT(header, HasSubstr(expected));
  }

  // A refused document writes nothing: the header stays as it was.
  const fs::path broken = write("broken.xml", "<MessageCollection><Message>");
  EXPECT_EQ(run("header -o '" + first.string() + "' '" + broken.string() + "'").exitCode, 2);
  EXPECT_EQ(readFile(first), header);
}

// Import writes through a link into the real document and keeps the link.
TEST_F(MsgtoolTest, ImportWritesThroughALink) {
  fs::create_directory(scratch / "repo");
  test_support::copySchemaInto(scratch / "repo");
  const fs::path real =
      write("repo/messages.xml", messageDocument(R"(  <MessageNamespace name="app">
    <Message id="start" severity="info"><Text xml:lang="en">Starting</Text></Message>
  </MessageNamespace>
)"));
  fs::create_symlink("repo/messages.xml", scratch / "linked.xml");
  write("de.po",
        "msgid \"\"\nmsgstr \"\"\n\"Language: de\\n\"\n\nmsgctxt \"app:start\"\n"
        "msgid \"Starting\"\nmsgstr \"Los\"\n");
  const Outcome linked = run("import --format po de.po --into linked.xml", scratch.path());
  EXPECT_EQ(linked.exitCode, 0) << linked.err;
  EXPECT_TRUE(fs::is_symlink(scratch / "linked.xml"));
  EXPECT_THAT(readFile(real), HasSubstr(">Los</Text>"));
}

}  // namespace

TEST_F(MsgtoolTest, StatsAndCheckAgreeOnStaleTextsWithoutAReferenceText) {
  // Both texts were stamped from an English text that is gone.
  const std::string stamp = "msgtool:translated-from=\"en:0123456789abcdef\"";
  const fs::path file = write(
      "app-xx.xml",
      messageDocument("<MessageNamespace name=\"app\" xmlns:msgtool=\"urn:x-msg:msgtool:1\">\n"
                      "<Message id=\"hi\" severity=\"info\">\n<Text xml:lang=\"de\" " +
                      stamp + ">Hallo</Text>\n<Text xml:lang=\"fr\" " + stamp +
                      ">Salut</Text>\n</Message></MessageNamespace>\n"));

  const Outcome stats = run("stats '" + file.string() + "'");
  EXPECT_EQ(stats.out,
            "de: 1 translated, 0 missing, 100.0% of 1 messages, 1 stale\n"
            "fr: 1 translated, 0 missing, 100.0% of 1 messages, 1 stale\n");
  const Outcome check = run("check '" + file.string() + "'");
  EXPECT_EQ(check.out, file.string() +
                           ":5:1: warning: \"app:hi\" in \"de\" was translated from a source text "
                           "that has changed since; review it [stale-translation]\n" +
                           file.string() +
                           ":6:1: warning: \"app:hi\" in \"fr\" was translated from a source text "
                           "that has changed since; review it [stale-translation]\n");
}

TEST_F(MsgtoolTest, ExportRefusesAFolderForTheFileOfOneTarget) {
  const fs::path doc = write("app-de.xml", messageDocument(""));
  fs::create_directory(scratch / "l10n");
  const Outcome result =
      run("export --format po --target de -o l10n '" + doc.string() + "'", scratch.path());
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.err,
            "msgtool: error: l10n: is a folder; with one target, -o names the file to write "
            "(l10n/de.po, for instance)\n");
  EXPECT_TRUE(fs::is_empty(scratch / "l10n"));
}

// Plural messages, from the documents tests/data/msgtool/plurals-*.xml: en
// and pl complete, ar without two of the keys, de without its `one`.
class MsgtoolPluralTest : public MsgtoolTest {
 protected:
  const std::string documents = kData + "plurals-en.xml " + kData + "plurals-pl.xml";
};

// Which category each number takes is the library's, proved against ICU;
// here the tool passes the count on as the user wrote it.
TEST_F(MsgtoolPluralTest, ShowPrintsTheVariantThatTheCountAsWrittenChooses) {
  struct Row {
    const char* languages;
    const char* keyAndArguments;
    const char* shown;
  };
  const Row rows[] = {
      {"en", "deleted 0", "app:deleted (en, info, form =0)\nNo files deleted.\n"},
      {"en", "deleted 1.0", "app:deleted (en, info, form other)\n1.0 files deleted.\n"},
      // The count is &1 here, the first argument a folder.
      {"pl", "moved docs 3", "app:moved (pl, info, form few)\ndocs: przeniesiono 3 pliki.\n"},
      {"en", "place 22", "app:place (en, info, form two)\n22nd place\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.keyAndArguments);
    const Outcome shown = run("show --languages " + std::string(row.languages) + " " + documents +
                              " app " + row.keyAndArguments);
    EXPECT_EQ(shown.exitCode, 0) << shown.err;
    EXPECT_EQ(shown.out, row.shown);
  }
}

TEST_F(MsgtoolPluralTest, StatsCountsAPluralMessageOnlyWithEveryFormTheLanguageNeeds) {
  const Outcome counted = run("stats --format json " + documents);
  ASSERT_EQ(counted.exitCode, 0) << counted.err;
  const auto language = [](const char* tag, int translated, int missing, double share) {
    return nlohmann::json{{"language", tag},
                          {"translated", translated},
                          {"missing", missing},
                          {"stale", 0},
                          {"share", share}};
  };
  EXPECT_EQ(nlohmann::json::parse(counted.out),
            (nlohmann::json{{"messages", 4},
                            {"languages",
                             {language("ar", 2, 2, 0.5), language("de", 1, 3, 0.25),
                              language("en", 4, 0, 1.0), language("pl", 4, 0, 1.0)}}}));
}

// Which plural forms check asks for is PluralCheckTest's.
TEST_F(MsgtoolPluralTest, HeaderDeclaresPluralKeys) {
  const Outcome written = run("header -o " + (scratch / "keys.h").string() + " " + documents);
  ASSERT_EQ(written.exitCode, 0) << written.err;
  const std::string header = readFile(scratch / "keys.h");
  EXPECT_THAT(header, HasSubstr("::msg::PluralKey<1, 0> deleted{\"app\", \"deleted\"};"));
  EXPECT_THAT(header, HasSubstr("::msg::PluralKey<2, 1> moved{\"app\", \"moved\"};"));
  EXPECT_THAT(header, HasSubstr("::msg::PluralKey<1, 0> place{\"app\", \"place\"};"));
  EXPECT_THAT(header, HasSubstr("::msg::Key<0> plain{\"app\", \"plain\"};"));
  // The comment holds the `other` text, not the variant written first.
  EXPECT_THAT(header, HasSubstr("// en: \"&0 files deleted.\"\n"));
}
