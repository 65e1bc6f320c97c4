// Several threads share one handler loaded from a document: they look keys
// up, fill in records of their own and write through the default and the
// formatting channel at the same time. `make tsan` runs this test built with
// ThreadSanitizer, which fails it on any data race; every build checks that
// no output line is torn or lost.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "msg/msg.h"
#include "tests/catalogue_support.h"
#include "tests/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

constexpr int kKeys = 200;
constexpr int kThreads = 4;
constexpr int kWritesPerThread = 500;

// A document of kKeys messages, each with a number, a boolean and a string
// placeholder.
std::string document() {
  std::string body = "<MessageNamespace name=\"threads\">\n";
  for (int key = 0; key < kKeys; ++key) {
    const std::string number = std::to_string(key);
    body += "<Message id=\"k" + number + "\" severity=\"warning\"><Text xml:lang=\"en\">key " +
            number + ": &amp;0 done &amp;1 by &amp;2</Text><Text xml:lang=\"de\">Schluessel " +
            number + "</Text></Message>\n";
  }
  return test_support::messageDocument(body + "</MessageNamespace>\n");
}

// Standard error goes to a file while the object lives.
class StderrToFile {
 public:
  explicit StderrToFile(const fs::path& path) : saved(dup(2)) {
    std::fflush(stderr);
    std::FILE* file = std::fopen(path.c_str(), "w");
    dup2(fileno(file), 2);
    std::fclose(file);
  }
  ~StderrToFile() {
    std::fflush(stderr);
    dup2(saved, 2);
    close(saved);
  }

 private:
  int saved;
};

TEST(Threads, OneLoadedHandlerServesFourWritingThreadsWithWholeLines) {
  const test_support::ScratchFolder dir;
  test_support::copySchemaInto(dir.path());
  msg::MessageHandlerX* handler = msg::MessageHandlerX::object();
  handler->setLanguageList(msg::LanguageList(msg::Language("en")));
  handler->loadMessageDocument(dir.write("threads.xml", document()).c_str());
  msg::FormattingMessageChannel formatting;  // default channel first, this one second
  formatting.setRightMargin(200);            // every message on one line
  handler->setMessageChannel2(&formatting, false);

  // Each thread keeps the lines it expects; the default channel writes
  // "threads:k<key>: <text>", the formatting channel the same and a blank.
  std::vector<std::vector<std::string>> expected(kThreads);
  {
    StderrToFile redirect(dir / "stderr.txt");
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([t, handler, &expected] {
        const std::string who = "thread " + std::to_string(t);
        for (int i = 0; i < kWritesPerThread; ++i) {
          const int key = (i * 7 + t) % kKeys;
          const std::string identifier = "k" + std::to_string(key);
          std::unique_ptr<msg::Message> message(handler->getMessage("threads", identifier.c_str()));
          std::unique_ptr<msg::Message> missing(handler->getMessage("threads", "missing"));
          if (!message || missing) {
            expected[t].push_back("lookup failed");
            continue;
          }
          message->substitute(0, i);
          message->substitute(1, i % 2 == 0, msg::Message::yesNo);
          message->substitute(2, who.c_str());
          handler->writeMessage(*message);
          const std::string text = "key " + std::to_string(key) + ": " + std::to_string(i) +
                                   " done " + (i % 2 == 0 ? "yes" : "no") + " by " + who;
          expected[t].push_back("threads:" + identifier + ": " + text);
          expected[t].push_back("threads:" + identifier + ": " + text + " ");
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  }
  handler->setMessageChannel2(nullptr, false);

  std::multiset<std::string> wanted;
  for (const std::vector<std::string>& lines : expected) {
    wanted.insert(lines.begin(), lines.end());
  }
  std::ifstream in(dir / "stderr.txt");
  std::multiset<std::string> written;
  for (std::string line; std::getline(in, line);) {
    written.insert(line);
  }
  EXPECT_EQ(wanted.size(), std::size_t{2 * kThreads * kWritesPerThread});
  EXPECT_TRUE(written == wanted) << written.size() << " lines written, " << wanted.size()
                                 << " expected";
}

}  // namespace
