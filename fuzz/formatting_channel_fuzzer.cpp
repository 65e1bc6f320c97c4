// Fuzzes FormattingMessageChannel: arbitrary header formats, keys and texts
// under arbitrary margins and indents (negative ones and values outside the
// documented limits included).
//
// Checked for every message:
//  - onMessageLine() comes at least once, with the flags of first and last
//    line in the documented order;
//  - no line is longer than the clamped right margin allows, and each starts
//    with its margin fill of blanks;
//  - no character is lost: the lines, without their fill, put back together
//    give the expanded format, where only a blank may vanish at a line break
//    (the blank at which the line was broken).
// The input also picks the text model. Where the Unicode model lays the
// message out (valid UTF-8 output), every line is valid UTF-8 and only
// blanks and one mandatory line break may vanish between two lines, and
// blanks at the end; the columns themselves are the unit test's business.
// AddressSanitizer watches the line buffer itself.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "message_core/Utf8.h"
#include "msg/FormattingMessageChannel.h"
#include "msg/Message.h"

namespace {

void fail(const char* what, const std::string& detail) {
  std::fprintf(stderr, "layout check failed: %s\n%s\n", what, detail.c_str());
  std::abort();
}

struct Line {
  bool first;
  bool last;
  std::string text;
};

class RecordingChannel : public msg::FormattingMessageChannel {
 public:
  void onMessageLine(bool firstLine, bool lastLine, const char* line) override {
    lines.push_back({firstLine, lastLine, line});
  }
  std::vector<Line> lines;
};

// What the format gives for `message`, before any layout.
std::string expandFormat(const char* format, const msg::Message& message) {
  auto orEmpty = [](const char* s) { return std::string(s == nullptr ? "" : s); };
  std::string out;
  for (const char* p = format; *p != '\0'; ++p) {
    if (*p == '&' && p[1] == 'n') {
      out += orEmpty(message.getNamespace());
    } else if (*p == '&' && p[1] == 'i') {
      out += orEmpty(message.getIdentifier());
    } else if (*p == '&' && p[1] == 't') {
      out += orEmpty(message.getMessage());
    } else {
      out += *p;
      continue;
    }
    ++p;
  }
  return out;
}

int pickSetting(FuzzedDataProvider& data, int low, int high) {
  switch (data.ConsumeIntegralInRange(0, 15)) {
    case 0:
      return INT_MIN;
    case 1:
      return INT_MAX;
    case 2:
      return data.ConsumeIntegral<int>();
    default:
      return data.ConsumeIntegralInRange(low, high);
  }
}

// The right margin, the left one within it, and where the first line
// starts, as the channel applies them.
struct Margins {
  int left;
  int right;
  long long start;
};

Margins marginsOf(int leftMargin, int rightMargin, int indent) {
  const int right = std::max(rightMargin, 0);
  const int left = std::min(std::max(leftMargin, 0), right);
  return Margins{
      left, right,
      std::min<long long>(std::max<long long>(static_cast<long long>(indent) + left, 0), right)};
}

// Line `i` behind its margin fill; fails if its flags or its fill are wrong.
std::string contentOf(const std::vector<Line>& lines, std::size_t i, const Margins& margins) {
  const Line& line = lines[i];
  if (line.first != (i == 0) || line.last != (i + 1 == lines.size())) {
    fail("flags out of order", "line " + std::to_string(i) + ": " + line.text);
  }
  const std::size_t fill = static_cast<std::size_t>(i == 0 ? margins.start : margins.left);
  if (line.text.size() < fill || line.text.find_first_not_of(' ') < fill) {
    fail("margin fill missing", line.text);
  }
  return line.text.substr(fill);
}

void checkLayout(const RecordingChannel& channel, const std::string& expected, int leftMargin,
                 int rightMargin, int indent) {
  const Margins margins = marginsOf(leftMargin, rightMargin, indent);
  const std::vector<Line>& lines = channel.lines;
  if (lines.empty()) {
    fail("no line", expected);
  }

  // Positions in `expected` that the text read so far can have reached.
  std::set<std::size_t> positions = {0};
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const Line& line = lines[i];
    if (line.text.size() > static_cast<std::size_t>(margins.right) + 1) {
      fail("line too long", line.text);
    }
    const std::string content = contentOf(lines, i, margins);
    std::set<std::size_t> next;
    for (std::size_t at : positions) {
      // A break may have dropped the blank in front of this line.
      if (i > 0 && at < expected.size() && expected[at] == ' ' &&
          expected.compare(at + 1, content.size(), content) == 0) {
        next.insert(at + 1 + content.size());
      }
      if (expected.compare(at, content.size(), content) == 0) {
        next.insert(at + content.size());
      }
    }
    if (next.empty()) {
      fail("line does not continue the text",
           "line: \"" + line.text + "\"\ntext: \"" + expected + "\"");
    }
    positions.swap(next);
  }
  if (positions.count(expected.size()) == 0) {
    fail("characters lost", expected);
  }
}

// Length of the mandatory line break at `at` (a line feed, CR LF, ...), 0
// if there is none.
std::size_t lineBreakLength(const std::string& text, std::size_t at) {
  static const char* const kBreaks[] = {"\r\n", "\n",       "\r",           "\v",
                                        "\f",   "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"};
  for (const char* mark : kBreaks) {
    const std::string breakText(mark);
    if (text.compare(at, breakText.size(), breakText) == 0) {
      return breakText.size();
    }
  }
  return 0;
}

void checkUnicodeLayout(const RecordingChannel& channel, const std::string& expected,
                        int leftMargin, int rightMargin, int indent) {
  const Margins margins = marginsOf(leftMargin, rightMargin, indent);
  const std::vector<Line>& lines = channel.lines;
  if (lines.empty()) {
    fail("no line", expected);
  }
  std::set<std::size_t> positions = {0};
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const Line& line = lines[i];
    if (!msg::isValidUtf8(line.text.data(), line.text.size())) {
      fail("line is not valid UTF-8", line.text);
    }
    const std::string content = contentOf(lines, i, margins);
    std::set<std::size_t> next;
    for (std::size_t at : positions) {
      // Between two lines: blanks, then at most one mandatory break.
      std::size_t candidate = at;
      while (true) {
        if (expected.compare(candidate, content.size(), content) == 0) {
          next.insert(candidate + content.size());
        }
        if (i == 0 || candidate >= expected.size()) {
          break;
        }
        const std::size_t breakLength = lineBreakLength(expected, candidate);
        if (breakLength > 0) {
          if (expected.compare(candidate + breakLength, content.size(), content) == 0) {
            next.insert(candidate + breakLength + content.size());
          }
          break;
        }
        if (expected[candidate] != ' ') {
          break;
        }
        ++candidate;
      }
    }
    if (next.empty()) {
      fail("line does not continue the text",
           "line: \"" + line.text + "\"\ntext: \"" + expected + "\"");
    }
    positions.swap(next);
  }
  for (std::size_t at : positions) {
    if (expected.find_first_not_of(' ', at) == std::string::npos) {
      return;
    }
  }
  fail("characters lost", expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const int rightMargin = pickSetting(data, -2, 80);
  // The line buffer follows the right margin; keep it to a sane size.
  if (rightMargin > 4096) {
    return 0;
  }
  const int leftMargin = pickSetting(data, -2, std::max(rightMargin, 0) + 2);
  const int indent = pickSetting(data, -100, 100);
  const std::string nameSpace = data.ConsumeRandomLengthString(40);
  const std::string identifier = data.ConsumeRandomLengthString(40);
  const auto model =
      static_cast<msg::FormattingMessageChannel::TextModel>(data.ConsumeIntegralInRange(0, 2));
  const bool defaultFormat = data.ConsumeBool();
  const std::string format = data.ConsumeRandomLengthString(80);
  const std::string text = data.ConsumeRemainingBytesAsString();

  msg::Message message(nameSpace.c_str(), identifier.c_str(), msg::error, msg::Language("en"),
                       text.c_str());
  RecordingChannel channel;
  channel.setRightMargin(rightMargin);
  channel.setLeftMargin(leftMargin);
  channel.setIndent(indent);
  if (!defaultFormat) {
    channel.setTextHeaderFormat(format.c_str());
  }
  channel.setTextModel(model);
  channel.onMessage(message);
  const std::string expected = expandFormat(channel.getTextHeaderFormat(), message);
  const bool nonAscii =
      std::any_of(expected.begin(), expected.end(), [](char c) { return (c & 0x80) != 0; });
  const bool unicode =
      model == msg::FormattingMessageChannel::TextModel::kUnicode ||
      (model == msg::FormattingMessageChannel::TextModel::kChosenByText && nonAscii);
  if (unicode && msg::isValidUtf8(expected.data(), expected.size())) {
    checkUnicodeLayout(channel, expected, leftMargin, rightMargin, indent);
  } else {
    checkLayout(channel, expected, leftMargin, rightMargin, indent);
  }
  return 0;
}
