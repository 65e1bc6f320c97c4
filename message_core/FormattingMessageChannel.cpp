#include "msg/FormattingMessageChannel.h"

#include <cstring>
#include <memory>
#include <string>

#include "message_core/TextLayout.h"
#include "msg/Message.h"
#include "platform/StandardError.h"

namespace msg {

namespace {

const char kDefaultFormat[] = "&n:&i: &t ";

bool hasNonAscii(const char* value) {
  if (value == nullptr) {
    return false;
  }
  for (const char* p = value; *p != '\0'; ++p) {
    if (static_cast<unsigned char>(*p) >= 0x80) {
      return true;
    }
  }
  return false;
}

// The Unicode model's lines, to the channel's onMessageLine().
class ChannelLines final : public LineSink {
 public:
  explicit ChannelLines(FormattingMessageChannel& channel) : channel_(channel) {}
  void onLine(bool firstLine, bool lastLine, const char* line) override {
    channel_.onMessageLine(firstLine, lastLine, line);
  }

 private:
  FormattingMessageChannel& channel_;
};

// The settings clamped to their limits: the last usable column, at least 0;
// the left margin, 0 .. right; the first line's start, 0 .. right.
struct Columns {
  int left;
  int right;
  int first;
};

Columns clampColumns(int leftMargin, int rightMargin, int indent) {
  Columns columns;
  columns.right = rightMargin < 0 ? 0 : rightMargin;
  columns.left = leftMargin < 0 ? 0 : (leftMargin > columns.right ? columns.right : leftMargin);
  long long start = static_cast<long long>(indent) + columns.left;
  if (start < 0) {
    start = 0;
  }
  if (start > columns.right) {
    start = columns.right;
  }
  columns.first = static_cast<int>(start);
  return columns;
}

}  // namespace

// The working state of one onMessage() call. It lives on that call's stack,
// so calls from several threads never share it.
struct FormattingMessageChannel::LineState {
  char* buffer;    // the line being built, lineRight + 2 bytes
  int column;      // where the next character goes = length of the line
  int lastBlank;   // column of the last blank on the line, -1 if none
  bool firstLine;  // the current line is the message's first
  int lineLeft;    // leftMargin clamped to 0 .. lineRight
  int lineRight;   // rightMargin, at least 0
};

FormattingMessageChannel::FormattingMessageChannel()
    : leftMargin(0),
      rightMargin(59),
      indent(0),
      textHeaderFormat(kDefaultFormat),
      textModel(TextModel::kChosenByText) {}

FormattingMessageChannel::FormattingMessageChannel(const FormattingMessageChannel& other)
    : MessageChannel(other),
      leftMargin(other.leftMargin),
      rightMargin(other.rightMargin),
      indent(other.indent),
      textHeaderFormat(other.textHeaderFormat),
      textModel(other.textModel) {}

FormattingMessageChannel::~FormattingMessageChannel() = default;

void FormattingMessageChannel::onMessage(const Message& message) {
  const char* format = textHeaderFormat != nullptr ? textHeaderFormat : "";
  // ASCII output never needs the Unicode model, and finding that out costs
  // one look at every byte and no allocation.
  const bool mayBeUnicode =
      textModel == TextModel::kUnicode ||
      (textModel == TextModel::kChosenByText &&
       (hasNonAscii(format) || hasNonAscii(message.getNamespace()) ||
        hasNonAscii(message.getIdentifier()) || hasNonAscii(message.getMessage())));
  // The Unicode model loads ICU, so only a text that may need it asks for it.
  const TextLayout* unicode = mayBeUnicode ? unicodeTextLayout() : nullptr;
  if (unicode != nullptr) {
    const Columns columns = clampColumns(leftMargin, rightMargin, indent);
    ChannelLines lines(*this);
    const LayoutFields fields = {message.getNamespace(), message.getIdentifier(),
                                 message.getMessage()};
    if (unicode->layOut(format, fields, columns.first, columns.left, columns.right,
                        textModel == TextModel::kChosenByText, lines)) {
      return;
    }
  }
  layOutBytes(message, format);
}

void FormattingMessageChannel::layOutBytes(const Message& message, const char* format) {
  const Columns columns = clampColumns(leftMargin, rightMargin, indent);
  LineState state;
  state.lineRight = columns.right;
  state.lineLeft = columns.left;
  const int lineRight = state.lineRight;

  // rightMargin + 1 characters and a terminator; the only allocation of the
  // message.
  std::unique_ptr<char[]> line(new char[static_cast<std::size_t>(lineRight) + 2]);
  state.buffer = line.get();
  std::memset(state.buffer, ' ', static_cast<std::size_t>(lineRight) + 1);
  state.buffer[lineRight + 1] = '\0';

  state.column = columns.first;
  state.lastBlank = -1;
  state.firstLine = true;

  for (const char* p = format; *p != '\0'; ++p) {
    if (*p != '&') {
      appendCharacter(*p, state);
      continue;
    }
    switch (p[1]) {
      case 'n':
        appendText(message.getNamespace(), state);
        ++p;
        break;
      case 'i':
        appendText(message.getIdentifier(), state);
        ++p;
        break;
      case 't':
        appendText(message.getMessage(), state);
        ++p;
        break;
      default:
        // A lone "&": the character behind it (or the terminator) is read
        // on its own in the next round.
        appendCharacter('&', state);
        break;
    }
  }

  state.buffer[state.column] = '\0';
  onMessageLine(state.firstLine, true, state.buffer);
}

void FormattingMessageChannel::onMessageLine(bool /*firstLine*/, bool /*lastLine*/,
                                             const char* line) {
  // One write per line, so that lines of several threads do not tear.
  std::string text(line);
  text += '\n';
  platform::standardError().write(text.data(), static_cast<std::streamsize>(text.size()));
}

void FormattingMessageChannel::appendText(const char* value, LineState& state) {
  if (value == nullptr) {
    return;
  }
  for (const char* p = value; *p != '\0'; ++p) {
    appendCharacter(*p, state);
  }
}

void FormattingMessageChannel::appendCharacter(char c, LineState& state) {
  char* buffer = state.buffer;
  const int lineLeft = state.lineLeft;
  if (state.column > state.lineRight) {
    // The line is full and `c` does not fit: break it now, whatever `c` is.
    // A blank left of the left margin (first line, negative indent) would
    // leave a word too long for a continuation line, so it does not count.
    if (state.lastBlank > 0 && state.lastBlank >= lineLeft) {
      buffer[state.lastBlank] = '\0';
      onMessageLine(state.firstLine, false, buffer);
      // Carry the word behind the blank to the start of the next line. It
      // lies right of lineLeft, so the move goes left and the margin fill
      // below does not touch it.
      const int tailStart = state.lastBlank + 1;
      const int tailLength = state.lineRight + 1 - tailStart;
      std::memmove(buffer + lineLeft, buffer + tailStart, static_cast<std::size_t>(tailLength));
      std::memset(buffer, ' ', static_cast<std::size_t>(lineLeft));
      state.column = lineLeft + tailLength;
    } else {
      buffer[state.column] = '\0';
      onMessageLine(state.firstLine, false, buffer);
      std::memset(buffer, ' ', static_cast<std::size_t>(lineLeft));
      state.column = lineLeft;
    }
    state.firstLine = false;
    state.lastBlank = -1;
  }
  buffer[state.column] = c;
  if (c == ' ') {
    state.lastBlank = state.column;
  }
  ++state.column;
}

}  // namespace msg
