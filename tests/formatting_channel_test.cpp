#include "msg/FormattingMessageChannel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "msg/Message.h"
#include "msg/MessageHandler.h"

namespace msg {
namespace {

struct Line {
  bool first;
  bool last;
  std::string text;
};

bool operator==(const Line& a, const Line& b) {
  return a.first == b.first && a.last == b.last && a.text == b.text;
}

void PrintTo(const Line& line, std::ostream* os) {
  *os << "(" << line.first << "," << line.last << ",\"" << line.text << "\")";
}

// Keeps the lines instead of writing them.
class RecordingChannel : public FormattingMessageChannel {
 public:
  void onMessageLine(bool firstLine, bool lastLine, const char* line) override {
    lines.push_back({firstLine, lastLine, line});
  }
  std::vector<Line> lines;
};

// The lines of `text` through a channel with format "&t" and the given
// margins (rightMargin 9 unless named).
std::vector<Line> layOut(const char* text, int leftMargin = 0, int indent = 0,
                         const char* format = "&t", int rightMargin = 9) {
  RecordingChannel channel;
  channel.setTextHeaderFormat(format);
  channel.setLeftMargin(leftMargin);
  channel.setIndent(indent);
  channel.setRightMargin(rightMargin);
  Message message("N", "id", info, "en", text);
  channel.onMessage(message);
  return channel.lines;
}

TEST(FormattingChannelTest, DefaultsGiveSixtyCharacterLinesWithTheHeader) {
  RecordingChannel channel;
  EXPECT_EQ(channel.getLeftMargin(), 0);
  EXPECT_EQ(channel.getRightMargin(), 59);
  EXPECT_EQ(channel.getIndent(), 0);
  EXPECT_STREQ(channel.getTextHeaderFormat(), "&n:&i: &t ");

  const std::string text(45, 'x');
  Message message("msg", "notfound", error, "en", text.c_str());
  channel.onMessage(message);
  ASSERT_EQ(channel.lines.size(), 1u);
  EXPECT_EQ(channel.lines[0], (Line{true, true, "msg:notfound: " + text + " "}));
  EXPECT_EQ(channel.lines[0].text.size(), 60u);
}

TEST(FormattingChannelTest, BreaksOnlyWhenACharacterArrivesBehindAFullLine) {
  EXPECT_EQ(layOut("aaaa bbbbb"), (std::vector<Line>{{true, true, "aaaa bbbbb"}}));
  // The blank of the format arrives behind the full line and breaks it.
  EXPECT_EQ(layOut("aaaa bbbbb", 0, 0, "&t "),
            (std::vector<Line>{{true, false, "aaaa"}, {false, true, "bbbbb "}}));
}

TEST(FormattingChannelTest, CutsWordsWithoutABreakPoint) {
  EXPECT_EQ(layOut("0123456789"), (std::vector<Line>{{true, true, "0123456789"}}));
  EXPECT_EQ(layOut("0123456789A"),
            (std::vector<Line>{{true, false, "0123456789"}, {false, true, "A"}}));
  EXPECT_EQ(layOut("0123456789ABCDEFGHIJabcde"), (std::vector<Line>{{true, false, "0123456789"},
                                                                    {false, false, "ABCDEFGHIJ"},
                                                                    {false, true, "abcde"}}));
  // A blank in column 0 is no break point; one in column 1 is.
  EXPECT_EQ(layOut(" bbbbbbbbbbb"),
            (std::vector<Line>{{true, false, " bbbbbbbbb"}, {false, true, "bb"}}));
  EXPECT_EQ(layOut("a bbbbbbbbbb"),
            (std::vector<Line>{{true, false, "a"}, {false, true, "bbbbbbbbbb"}}));
}

TEST(FormattingChannelTest, DropsOnlyTheLastBlankAtABreak) {
  EXPECT_EQ(layOut("aa  bbbbbbbbbb"),
            (std::vector<Line>{{true, false, "aa "}, {false, true, "bbbbbbbbbb"}}));
}

TEST(FormattingChannelTest, HonoursMarginsAndIndent) {
  EXPECT_EQ(layOut("aa bb cc dd ee ff gg", 2),
            (std::vector<Line>{
                {true, false, "  aa bb"}, {false, false, "  cc dd"}, {false, true, "  ee ff gg"}}));
  EXPECT_EQ(layOut("aa bb cc dd ee ff gg", 2, 3), (std::vector<Line>{{true, false, "     aa"},
                                                                     {false, false, "  bb cc"},
                                                                     {false, false, "  dd ee"},
                                                                     {false, true, "  ff gg"}}));
  // A hanging first line.
  EXPECT_EQ(layOut("aaaa bbbb cccc", 2, -2),
            (std::vector<Line>{{true, false, "aaaa bbbb"}, {false, true, "  cccc"}}));
  // The start column is clamped to the line.
  EXPECT_EQ(layOut("xy", 5, 100),
            (std::vector<Line>{{true, false, "         x"}, {false, true, "     y"}}));
  EXPECT_EQ(layOut("abc", 5, -100), (std::vector<Line>{{true, true, "abc"}}));
}

TEST(FormattingChannelTest, BlankAtTheLeftMarginOfAContinuationLineGivesABlankLine) {
  EXPECT_EQ(layOut("aaaaaaaa bbbbbbbbbbbbbb", 2), (std::vector<Line>{{true, false, "  aaaaaaaa"},
                                                                     {false, false, "  "},
                                                                     {false, false, "  bbbbbbbb"},
                                                                     {false, true, "  bbbbbb"}}));
}

TEST(FormattingChannelTest, BlankLeftOfTheLeftMarginIsNoBreakPoint) {
  // Blank in column 1, left margin 4: the word behind it would not fit on a
  // continuation line, so the line is cut.
  EXPECT_EQ(layOut("a bbbbbbbbbbbb", 4, -4),
            (std::vector<Line>{{true, false, "a bbbbbbbb"}, {false, true, "    bbbb"}}));
  // Directly before the margin it is no break point either.
  EXPECT_EQ(layOut("aaa bbbbbbbb", 4, -4),
            (std::vector<Line>{{true, false, "aaa bbbbbb"}, {false, true, "    bb"}}));
  // At the margin it is one.
  EXPECT_EQ(layOut("aaaa bbbbbbb", 4, -4),
            (std::vector<Line>{
                {true, false, "aaaa"}, {false, false, "    bbbbbb"}, {false, true, "    b"}}));
}

TEST(FormattingChannelTest, FormatLanguage) {
  RecordingChannel channel;
  channel.setTextHeaderFormat("x&qy&&nz&");
  Message message("N", "id", info, "en", "text");
  channel.onMessage(message);
  channel.setTextHeaderFormat("&n/&i/&t/&");
  Message noIdentifier("N", nullptr, info, "en", "t");
  channel.onMessage(noIdentifier);
  EXPECT_EQ(channel.lines, (std::vector<Line>{{true, true, "x&qy&Nz&"}, {true, true, "N//t/&"}}));
}

TEST(FormattingChannelTest, EmptyOutputStillGivesOneLineOfMarginFill) {
  EXPECT_EQ(layOut("text", 3, 2, ""), (std::vector<Line>{{true, true, "     "}}));
  EXPECT_EQ(layOut(nullptr, 0, 0, "&t"), (std::vector<Line>{{true, true, ""}}));
}

TEST(FormattingChannelTest, TextGetsItsSubstitutionsAndWrapsLikeTheHeader) {
  RecordingChannel channel;
  channel.setRightMargin(9);
  channel.setTextHeaderFormat("&n:&i &t");
  Message message("ns", "ident", info, "en", "is &0");
  message.substitute(0, "ready");
  channel.onMessage(message);
  EXPECT_EQ(channel.lines,
            (std::vector<Line>{{true, false, "ns:ident"}, {false, true, "is ready"}}));
}

TEST(FormattingChannelTest, CopyTakesTheSettingsAndAHandlerCanUseIt) {
  RecordingChannel original;
  original.setLeftMargin(1);
  original.setRightMargin(20);
  original.setIndent(-1);
  const char* format = "&i> &t";
  original.setTextHeaderFormat(format);
  FormattingMessageChannel copy(original);
  EXPECT_EQ(copy.getLeftMargin(), 1);
  EXPECT_EQ(copy.getRightMargin(), 20);
  EXPECT_EQ(copy.getIndent(), -1);
  EXPECT_EQ(copy.getTextHeaderFormat(), format);

  MessageHandler handler;
  handler.setMessageChannel(&original, false);
  Message message("app", "start", info, "en", "Hello &0");
  handler.writeMessage1(message, "world");
  EXPECT_EQ(original.lines, (std::vector<Line>{{true, true, "start> Hello world"}}));
  handler.setMessageChannel(nullptr, false);
}

TEST(FormattingChannelTest, DefaultLineOutputGoesToStandardError) {
  FormattingMessageChannel channel;
  channel.setRightMargin(4);
  channel.setTextHeaderFormat("&t");
  Message message("N", "id", info, "en", "ab cdef");
  std::ostringstream captured;
  std::streambuf* saved = std::cerr.rdbuf(captured.rdbuf());
  channel.onMessage(message);
  std::cerr.rdbuf(saved);
  EXPECT_EQ(captured.str(), "ab\ncdef\n");
}

TEST(FormattingChannelTest, ExceptionFromALineLeavesTheChannelUsable) {
  class Throwing : public FormattingMessageChannel {
   public:
    void onMessageLine(bool, bool, const char* line) override {
      if (throwNext) {
        throwNext = false;
        throw std::runtime_error("line refused");
      }
      lines.emplace_back(line);
    }
    bool throwNext = true;
    std::vector<std::string> lines;
  } channel;
  channel.setRightMargin(3);
  channel.setTextHeaderFormat("&t");
  Message message("N", "id", info, "en", "abcdefgh");
  EXPECT_THROW(channel.onMessage(message), std::runtime_error);
  channel.onMessage(message);
  EXPECT_EQ(channel.lines, (std::vector<std::string>{"abcd", "efgh"}));
}

// What the format language makes of one message, before any wrapping.
std::string expandFormat(const std::string& format, const Message& message) {
  auto piece = [](const char* value) { return std::string(value != nullptr ? value : ""); };
  std::string out;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] == '&' && i + 1 < format.size()) {
      const char next = format[i + 1];
      if (next == 'n' || next == 'i' || next == 't') {
        out += next == 'n'   ? piece(message.getNamespace())
               : next == 'i' ? piece(message.getIdentifier())
                             : piece(message.getMessage());
        ++i;
        continue;
      }
    }
    out += format[i];
  }
  return out;
}

std::string randomText(std::mt19937& random, int maxLength, const std::string& alphabet) {
  std::uniform_int_distribution<int> length(0, maxLength);
  std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
  std::string text(static_cast<std::size_t>(length(random)), ' ');
  for (char& c : text) {
    c = alphabet[pick(random)];
  }
  return text;
}

// For random texts, formats and settings (negative indents, tiny and
// out-of-range margins), the lines handed out give back every character of
// the expanded format, in order, once the margin fill and the one blank
// dropped at each break are accounted for. A full line is a cut and drops
// nothing, and it only happens where the line had no usable blank.
TEST(FormattingChannelTest, NoCharacterIsLostForAnySettings) {
  std::mt19937 random(20240611);
  const std::vector<std::string> formatPieces = {"&n", "&i", "&t", "&", "&&", "&q",
                                                 " ",  "  ", "x",  ":", "-"};
  std::uniform_int_distribution<int> rightDist(-2, 24);
  std::uniform_int_distribution<int> indentDist(-30, 30);
  std::uniform_int_distribution<int> pieceCount(0, 8);
  std::uniform_int_distribution<std::size_t> pieceDist(0, formatPieces.size() - 1);

  for (int round = 0; round < 3000; ++round) {
    const int right = rightDist(random);
    const int left = std::uniform_int_distribution<int>(-2, std::max(right, 0) + 2)(random);
    const int indent = indentDist(random);
    std::string format;
    for (int n = pieceCount(random); n > 0; --n) {
      format += formatPieces[pieceDist(random)];
    }
    const std::string nameSpace = randomText(random, 6, "ns ");
    const std::string identifier = randomText(random, 6, "id ");
    const std::string text = randomText(random, 90, "abcdefg    &\t");

    RecordingChannel channel;
    channel.setRightMargin(right);
    channel.setLeftMargin(left);
    channel.setIndent(indent);
    channel.setTextHeaderFormat(format.c_str());
    Message message(nameSpace.c_str(), identifier.c_str(), info, "en", text.c_str());
    channel.onMessage(message);

    SCOPED_TRACE("round " + std::to_string(round) + " right " + std::to_string(right) + " left " +
                 std::to_string(left) + " indent " + std::to_string(indent) + " format \"" +
                 format + "\" text \"" + text + "\"");
    const int lineRight = std::max(right, 0);
    const int lineLeft = std::clamp(left, 0, lineRight);
    const int start = std::clamp(indent + lineLeft, 0, lineRight);
    const std::size_t full = static_cast<std::size_t>(lineRight) + 1;

    const std::vector<Line>& lines = channel.lines;
    ASSERT_FALSE(lines.empty());
    std::string rebuilt;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const std::string& line = lines[i].text;
      const bool last = i + 1 == lines.size();
      EXPECT_EQ(lines[i].first, i == 0);
      EXPECT_EQ(lines[i].last, last);
      const std::size_t fill = static_cast<std::size_t>(i == 0 ? start : lineLeft);
      ASSERT_LE(line.size(), full);
      ASSERT_GE(line.size(), fill);
      EXPECT_EQ(line.substr(0, fill), std::string(fill, ' '));
      rebuilt += line.substr(fill);
      if (last) {
        break;
      }
      if (line.size() < full) {
        rebuilt += ' ';  // the blank the break dropped
      } else {
        const std::size_t firstBreakable = std::max({fill, std::size_t{1}, std::size_t(lineLeft)});
        for (std::size_t p = firstBreakable; p < full; ++p) {
          EXPECT_NE(line[p], ' ') << "a cut line had a break point at column " << p;
        }
      }
    }
    ASSERT_EQ(rebuilt, expandFormat(format, message));
  }
}

}  // namespace
}  // namespace msg
