#include "msg/FormattingMessageChannel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>

#include "msg/Message.h"

namespace msg {
namespace {

// Keeps the lines of each message joined by '/' and closed by '\n'. A first
// line flag out of place shows as '!'; a wrong last line flag shows as a
// missing or a misplaced '\n'.
class RecordingChannel : public FormattingMessageChannel {
 public:
  void onMessageLine(bool firstLine, bool lastLine, const char* line) override {
    out += firstLine == (out.empty() || out.back() == '\n') ? "" : "!";
    out += line;
    out += lastLine ? "\n" : "/";
  }
  std::string out;
};

TEST(FormattingChannelTest, WrapsBetweenTheMargins) {
  RecordingChannel defaults;
  const std::string text(45, 'x');
  defaults.onMessage(Message("msg", "notfound", error, "en", text.c_str()));
  EXPECT_EQ(defaults.out, "msg:notfound: " + text + " \n");  // 60 characters

  const struct {
    const char* text;
    int leftMargin;
    int indent;
    const char* format;
    const char* lines;
  } cases[] = {
      {"aaaa bbbbb", 0, 0, "&t", "aaaa bbbbb\n"},
      {"aaaa bbbbb", 0, 0, "&t ", "aaaa/bbbbb \n"},  // a blank behind a full line breaks it
      {"0123456789ABCDEFGHIJabcde", 0, 0, "&t", "0123456789/ABCDEFGHIJ/abcde\n"},
      {" bbbbbbbbbbb", 0, 0, "&t", " bbbbbbbbb/bb\n"},  // column 0 is no break point
      {"a bbbbbbbbbb", 0, 0, "&t", "a/bbbbbbbbbb\n"},
      {"aa  bbbbbbbbbb", 0, 0, "&t", "aa /bbbbbbbbbb\n"},  // only the last blank goes
      {"aa bb cc dd ee ff gg", 2, 0, "&t", "  aa bb/  cc dd/  ee ff gg\n"},
      {"aa bb cc dd ee ff gg", 2, 3, "&t", "     aa/  bb cc/  dd ee/  ff gg\n"},
      {"aaaa bbbb cccc", 2, -2, "&t", "aaaa bbbb/  cccc\n"},
      // A blank at the left margin of a continuation line is a break point;
      // left of the margin it is none, since its word would not fit.
      {"aaaaaaaa bbbbbbbbbbbbbb", 2, 0, "&t", "  aaaaaaaa/  /  bbbbbbbb/  bbbbbb\n"},
      {"a bbbbbbbbbbbb", 4, -4, "&t", "a bbbbbbbb/    bbbb\n"},
      {"aaaa bbbbbbb", 4, -4, "&t", "aaaa/    bbbbbb/    b\n"},
      {nullptr, 0, 0, "&t", "\n"},
  };
  for (const auto& c : cases) {
    RecordingChannel channel;
    channel.setTextHeaderFormat(c.format);
    channel.setLeftMargin(c.leftMargin);
    channel.setIndent(c.indent);
    channel.setRightMargin(9);
    channel.onMessage(Message("N", "id", info, "en", c.text));
    EXPECT_EQ(channel.out, c.lines) << (c.text ? c.text : "<null>") << " left " << c.leftMargin
                                    << " indent " << c.indent << " format " << c.format;
  }
}

// What the format language makes of one message, before any wrapping.
std::string expandFormat(const std::string& format, const Message& message) {
  std::string out;
  for (std::size_t i = 0; i < format.size(); ++i) {
    const char next = i + 1 < format.size() ? format[i + 1] : '\0';
    const char* value = next == 'n'   ? message.getNamespace()
                        : next == 'i' ? message.getIdentifier()
                                      : message.getMessage();
    if (format[i] == '&' && (next == 'n' || next == 'i' || next == 't')) {
      out += value != nullptr ? value : "";
      ++i;
    } else {
      out += format[i];
    }
  }
  return out;
}

std::string randomText(std::mt19937& random, std::size_t maxLength, const std::string& alphabet) {
  std::string text(std::uniform_int_distribution<std::size_t>(0, maxLength)(random), ' ');
  for (char& c : text) {
    c = alphabet[std::uniform_int_distribution<std::size_t>(0, alphabet.size() - 1)(random)];
  }
  return text;
}

// For random texts, formats and settings (negative indents, tiny and
// out-of-range margins), the lines give back every character of the expanded
// format in order, once the margin fill and the one blank dropped at each
// break are accounted for. A full line is a cut, which drops nothing and only
// happens where the line had no usable blank.
TEST(FormattingChannelTest, NoCharacterIsLostForAnySettings) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 1000; ++round) {
    const int right = std::uniform_int_distribution<int>(-2, 24)(random);
    const int left = std::uniform_int_distribution<int>(-2, std::max(right, 0) + 2)(random);
    const int indent = std::uniform_int_distribution<int>(-30, 30)(random);
    const std::string format = randomText(random, 12, "&&&nit x");
    const std::string nameSpace = randomText(random, 6, "ns ");
    const std::string text = randomText(random, 90, "abcdefg    &\t");
    RecordingChannel channel;
    channel.setRightMargin(right);
    channel.setLeftMargin(left);
    channel.setIndent(indent);
    channel.setTextHeaderFormat(format.c_str());
    Message message(nameSpace.c_str(), "id", info, "en", text.c_str());
    channel.onMessage(message);

    SCOPED_TRACE("right " + std::to_string(right) + " left " + std::to_string(left) + " indent " +
                 std::to_string(indent) + " format \"" + format + "\" text \"" + text + "\"");
    ASSERT_EQ(channel.out.find_first_of("!\n"), channel.out.size() - 1);
    const int lineRight = std::max(right, 0);
    const int lineLeft = std::clamp(left, 0, lineRight);
    const std::size_t full = lineRight + 1;
    std::size_t fill = std::clamp(indent + lineLeft, 0, lineRight);
    std::string rebuilt;
    std::istringstream lines(channel.out);
    for (std::string line; std::getline(lines, line, '/'); fill = lineLeft) {
      const bool last = !line.empty() && line.back() == '\n';
      line.erase(line.size() - (last ? 1 : 0));
      ASSERT_LE(line.size(), full);
      ASSERT_EQ(line.substr(0, fill), std::string(fill, ' '));
      rebuilt += line.substr(fill);
      if (!last && line.size() < full) {
        rebuilt += ' ';  // the blank the break dropped
      } else if (!last) {
        for (std::size_t p = std::max<std::size_t>({fill, 1, std::size_t(lineLeft)}); p < full;
             ++p) {
          ASSERT_NE(line[p], ' ') << "a cut line had a break point at column " << p;
        }
      }
    }
    ASSERT_EQ(rebuilt, expandFormat(format, message));
  }
}

}  // namespace
}  // namespace msg
