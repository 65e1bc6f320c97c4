// A program that only loads compiled catalogues. This executable links the
// layers below XML alone (platform, message core, compiled catalogues): it
// loads a catalogue into a plain handler, finds its texts, refuses a damaged
// file with the table as it was, and never has Xerces-C in its address
// space.

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "message_core/MessageTable.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"
#include "msg/MessageHandler.h"

namespace {

class PlainHandler : public msg::MessageHandler {
 public:
  std::uint32_t entryCount() const { return messageTableOf(*this)->getCount(); }
};

// Keeps each message written through it as "namespace:identifier".
class RecordingChannel : public msg::MessageChannel {
 public:
  std::vector<std::string> lines;

 protected:
  void onMessage(const msg::Message& message) override {
    lines.push_back(std::string(message.getNamespace()) + ":" + message.getIdentifier());
  }
};

std::string textOf(const msg::MessageHandler& handler, const char* nameSpace, const char* id) {
  std::unique_ptr<msg::Message> record(handler.getMessage(nameSpace, id));
  return record == nullptr
             ? "<none>"
             : std::string(record->getText()) + "|" + record->getLanguage().toString();
}

std::string fileText(const char* path) {
  std::ifstream in(path);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class CompiledOnlyTest : public ::testing::Test {
 protected:
  CompiledOnlyTest() {
    char pattern[] = "/tmp/msg-compiled-only-XXXXXX";
    dir = mkdtemp(pattern);
    msg::CompiledCatalogueWriter writer;
    writer.add(msg::warning, "en", "app", "start", "Starting &0.");
    writer.add(msg::warning, "de", "app", "start", "&0 startet.");
    writer.add(msg::error, "en", "app", "stop", "Stopped.");
    good = dir + "/app.msgc";
    writer.writeFile(good);
  }
  ~CompiledOnlyTest() override { std::filesystem::remove_all(dir); }

  std::string dir;
  std::string good;
};

TEST_F(CompiledOnlyTest, LoadsIntoAPlainHandlerWithoutXercesC) {
  PlainHandler handler;
  handler.setLanguageList(msg::LanguageList(msg::Language("de"), msg::Language("en")));
  handler.loadCompiledCatalogue(good.c_str());
  EXPECT_EQ(handler.entryCount(), 3u);
  EXPECT_EQ(textOf(handler, "app", "start"), "&0 startet.|de");
  EXPECT_EQ(textOf(handler, "app", "stop"), "Stopped.|en");

  const std::string maps = fileText("/proc/self/maps");
  ASSERT_NE(maps.find("libstdc++"), std::string::npos) << "cannot read the process's mappings";
  EXPECT_NE(maps.find("app.msgc"), std::string::npos) << "the catalogue is not mapped";
  EXPECT_EQ(maps.find("libxerces-c"), std::string::npos) << maps;
}

TEST_F(CompiledOnlyTest, RefusesADamagedFileAndKeepsTheTable) {
  PlainHandler handler;
  RecordingChannel channel;
  handler.setMessageChannel(&channel, false);
  // A root handler of its own has no built-in texts to report with.
  new msg::MTE(msg::error, "en", "msgx", "MessageDocumentError", "Cannot load &0.", &handler, false,
               true);
  handler.loadCompiledCatalogue(good.c_str());

  const std::string damaged = dir + "/damaged.msgc";
  {
    const std::string bytes = fileText(good.c_str());
    std::ofstream(damaged, std::ios::binary) << bytes.substr(0, bytes.size() - 3);
  }
  try {
    handler.loadCompiledCatalogue(damaged.c_str());
    ADD_FAILURE() << "a truncated file was accepted";
  } catch (const msg::ErrorInMessageDocument& failure) {
    EXPECT_EQ(failure.getText(),
              "Message document \"" + damaged + "\" contains syntactical error.");
    ASSERT_EQ(failure.getProblems().size(), 1u);
    EXPECT_NE(failure.getProblems()[0].message.find("truncated"), std::string::npos)
        << failure.getProblems()[0].message;
  }
  EXPECT_EQ(channel.lines, std::vector<std::string>{"msgx:MessageDocumentError"});
  EXPECT_EQ(handler.entryCount(), 3u);  // the report and the "en" texts of the first load
  EXPECT_EQ(textOf(handler, "app", "start"), "Starting &0.|en");
}

}  // namespace
