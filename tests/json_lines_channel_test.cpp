#include "msg/JsonLinesMessageChannel.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>
#include <system_error>

#include "msg/Message.h"

namespace msg {
namespace {

using std::chrono::milliseconds;
using std::chrono::system_clock;

TEST(JsonLinesChannelTest, WritesOneObjectPerLine) {
  const system_clock::time_point time(milliseconds(1795409256007));  // 2026-11-23T04:47:36.007Z
  EXPECT_EQ(JsonLinesMessageChannel::toJson(
                Message("app", "diskfull", warning, "de-AT", "Nur \"512\" MB\nfrei"), time),
            R"({"time":"2026-11-23T04:47:36.007Z","severity":"warning","namespace":"app",)"
            R"("identifier":"diskfull","language":"de-AT","text":"Nur \"512\" MB\nfrei"})");
  EXPECT_EQ(JsonLinesMessageChannel::toJson(Message("", nullptr, abort, nullptr, ""),
                                            system_clock::time_point(milliseconds(-1))),
            R"({"time":"1969-12-31T23:59:59.999Z","severity":"abort","namespace":null,)"
            R"("identifier":null,"language":"","text":null})");
  // A severity that is none of the four levels goes out as its number.
  EXPECT_NE(JsonLinesMessageChannel::toJson(
                Message("app", "x", static_cast<SeverityLevel>(-7), "en", "t"), time)
                .find(R"("severity":"-7",)"),
            std::string::npos);
}

TEST(JsonLinesChannelTest, NoByteBreaksTheLineOrTheJson) {
  const struct {
    const char* text;
    const char* escaped;
  } cases[] = {
      {"a\\b\t\r\b\f\x01\x1f\x7f", R"(a\\b\t\r\b\f\u0001\u001f\u007f)"},
      {"Schl\374ssel", R"(Schl\u00fcssel)"},  // ISO 8859-1
      {"Schl\303\274ssel \342\202\254 \360\237\230\200",
       "Schl\303\274ssel \342\202\254 \360\237\230\200"},
      {"\xc0\xaf", R"(\u00c0\u00af)"},                      // overlong "/"
      {"\xed\xa0\x80", R"(\u00ed\u00a0\u0080)"},            // surrogate
      {"\xf4\x90\x80\x80", R"(\u00f4\u0090\u0080\u0080)"},  // above U+10FFFF
      {"\xe2\x82", R"(\u00e2\u0082)"},                      // cut short
  };
  for (const auto& test : cases) {
    EXPECT_EQ(JsonLinesMessageChannel::escape(test.text), test.escaped) << test.text;
  }

  // Random bytes always give a line that a strict JSON parser takes back.
  std::mt19937 random(11);
  for (int round = 0; round < 2000; ++round) {
    std::string text(random() % 12 + 1, ' ');
    for (char& c : text) {
      c = static_cast<char>(random() % 255 + 1);
    }
    const std::string line = JsonLinesMessageChannel::toJson(
        Message("app", "x", info, "en", text.c_str()), system_clock::now());
    ASSERT_EQ(line.find('\n'), std::string::npos);
    ASSERT_TRUE(nlohmann::json::accept(line)) << line;
  }
}

TEST(JsonLinesChannelTest, WritesWholeLinesToAFileDescriptor) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  JsonLinesMessageChannel channel(ends[1]);
  channel.onMessage(Message("app", "x", error, "en", "one"));
  channel.onMessage(Message("app", "x", error, "en", "two"));
  close(ends[1]);
  char buffer[1024];
  const ssize_t size = read(ends[0], buffer, sizeof buffer);
  close(ends[0]);
  std::istringstream lines(
      std::string(buffer, static_cast<std::size_t>(std::max<ssize_t>(size, 0))));
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_EQ(nlohmann::json::parse(line)["severity"], "error");
  }
  EXPECT_EQ(count, 2);

  JsonLinesMessageChannel closed(ends[1]);
  EXPECT_THROW(closed.onMessage(Message("app", "x", info, "en", "two")), std::system_error);
}

}  // namespace
}  // namespace msg
