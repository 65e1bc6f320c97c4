#include "msg/FormattingMessageChannel.h"

#include <cstring>
#include <iostream>
#include <memory>

#include "msg/Message.h"

namespace msg {

namespace {

const char kDefaultFormat[] = "&n:&i: &t ";

}  // namespace

FormattingMessageChannel::FormattingMessageChannel()
    : leftMargin(0),
      rightMargin(59),
      indent(0),
      textHeaderFormat(kDefaultFormat),
      column(0),
      lastBlank(-1),
      firstLine(true),
      lineLeft(0),
      lineRight(0) {}

FormattingMessageChannel::FormattingMessageChannel(const FormattingMessageChannel& other)
    : MessageChannel(other),
      leftMargin(other.leftMargin),
      rightMargin(other.rightMargin),
      indent(other.indent),
      textHeaderFormat(other.textHeaderFormat),
      column(0),
      lastBlank(-1),
      firstLine(true),
      lineLeft(0),
      lineRight(0) {}

FormattingMessageChannel::~FormattingMessageChannel() = default;

void FormattingMessageChannel::onMessage(const Message& message) {
  lineRight = rightMargin < 0 ? 0 : rightMargin;
  lineLeft = leftMargin < 0 ? 0 : (leftMargin > lineRight ? lineRight : leftMargin);

  // rightMargin + 1 characters and a terminator; the only allocation of the
  // message.
  std::unique_ptr<char[]> line(new char[static_cast<std::size_t>(lineRight) + 2]);
  char* buffer = line.get();
  std::memset(buffer, ' ', static_cast<std::size_t>(lineRight) + 1);
  buffer[lineRight + 1] = '\0';

  long long start = static_cast<long long>(indent) + lineLeft;
  if (start < 0) {
    start = 0;
  }
  if (start > lineRight) {
    start = lineRight;
  }
  column = static_cast<int>(start);
  lastBlank = -1;
  firstLine = true;

  const char* format = textHeaderFormat != nullptr ? textHeaderFormat : "";
  for (const char* p = format; *p != '\0'; ++p) {
    if (*p != '&') {
      appendCharacter(*p, buffer);
      continue;
    }
    switch (p[1]) {
      case 'n':
        appendText(message.getNamespace(), buffer);
        ++p;
        break;
      case 'i':
        appendText(message.getIdentifier(), buffer);
        ++p;
        break;
      case 't':
        appendText(message.getMessage(), buffer);
        ++p;
        break;
      default:
        // A lone "&": the character behind it (or the terminator) is read
        // on its own in the next round.
        appendCharacter('&', buffer);
        break;
    }
  }

  buffer[column] = '\0';
  onMessageLine(firstLine, true, buffer);
}

void FormattingMessageChannel::onMessageLine(bool /*firstLine*/, bool /*lastLine*/,
                                             const char* line) {
  std::cerr << line << '\n';
}

void FormattingMessageChannel::appendText(const char* value, char* buffer) {
  if (value == nullptr) {
    return;
  }
  for (const char* p = value; *p != '\0'; ++p) {
    appendCharacter(*p, buffer);
  }
}

void FormattingMessageChannel::appendCharacter(char c, char* buffer) {
  if (column > lineRight) {
    // The line is full and `c` does not fit: break it now, whatever `c` is.
    // A blank left of the left margin (first line, negative indent) would
    // leave a word too long for a continuation line, so it does not count.
    if (lastBlank > 0 && lastBlank >= lineLeft) {
      buffer[lastBlank] = '\0';
      onMessageLine(firstLine, false, buffer);
      // Carry the word behind the blank to the start of the next line. It
      // lies right of lineLeft, so the move goes left and the margin fill
      // below does not touch it.
      const int tailStart = lastBlank + 1;
      const int tailLength = lineRight + 1 - tailStart;
      std::memmove(buffer + lineLeft, buffer + tailStart, static_cast<std::size_t>(tailLength));
      std::memset(buffer, ' ', static_cast<std::size_t>(lineLeft));
      column = lineLeft + tailLength;
    } else {
      buffer[column] = '\0';
      onMessageLine(firstLine, false, buffer);
      std::memset(buffer, ' ', static_cast<std::size_t>(lineLeft));
      column = lineLeft;
    }
    firstLine = false;
    lastBlank = -1;
  }
  buffer[column] = c;
  if (c == ' ') {
    lastBlank = column;
  }
  ++column;
}

}  // namespace msg
