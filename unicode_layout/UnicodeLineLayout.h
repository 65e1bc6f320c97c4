// UnicodeLineLayout: the Unicode model of FormattingMessageChannel. Breaks
// a message's output, valid UTF-8, into lines by display columns, at the
// places the Unicode line breaking rules allow and never inside a grapheme
// cluster.
//
// Private to the library: not installed, nothing here is exported.

#ifndef MSG_MESSAGE_CORE_UNICODELINELAYOUT_H_
#define MSG_MESSAGE_CORE_UNICODELINELAYOUT_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace msg {

class FormattingMessageChannel;
class Message;

// Lays out one message and hands its lines to the channel's
// onMessageLine(). Lives on the stack of one FormattingMessageChannel::
// onMessage() call; its buffers and ICU's break iterators are kept per
// thread, so several threads lay out at the same time without sharing
// state, and a warm thread lays out without allocating.
class UnicodeLineLayout {
 public:
  // The columns of one message, clamped by the caller: the first line starts
  // in `firstColumn`, every further one in `leftMargin`, and no line goes
  // beyond column `rightMargin` (0 <= leftMargin, firstColumn <=
  // rightMargin). The channel must outlive the layout.
  UnicodeLineLayout(FormattingMessageChannel& channel, int firstColumn, int leftMargin,
                    int rightMargin);

  UnicodeLineLayout(const UnicodeLineLayout&) = delete;
  UnicodeLineLayout& operator=(const UnicodeLineLayout&) = delete;

  // Expands `format` for `message` (as the channel's header format) and
  // calls onMessageLine() for each line, at least once. Returns false,
  // having called nothing, if the output is not valid UTF-8, if
  // `onlyBeyondAscii` and the output is pure ASCII, or if ICU cannot give
  // its break iterator (no data); the caller then lays the message out by
  // bytes.
  bool layOut(const char* format, const Message& message, bool onlyBeyondAscii);

 private:
  enum class Kind : unsigned char { kText, kBlank, kLineEnd };
  struct Cluster {
    std::size_t begin;  // byte offsets in the text
    std::size_t end;
    int32_t unit;  // UTF-16 offset of begin, for ICU
    int width;     // display columns
    Kind kind;     // a blank (U+0020), a line feed or other forced line end
  };
  struct Workspace;

  // The last cluster after `after` and up to `at` before which the line
  // breaking rules allow a break; `at` if there is none.
  std::size_t lastBreakBefore(std::size_t after, std::size_t at);

  // Hands clusters [from, to) on as a line behind its margin fill and
  // starts the next line's fill. Blanks at its end are dropped, except on
  // the `last` line as far as they fit.
  void emitLine(std::size_t from, std::size_t to, bool last);

  FormattingMessageChannel& channel_;
  const int firstColumn_;
  const int leftMargin_;
  const int width_;          // columns a line may fill: rightMargin + 1
  Workspace* work_;          // while layOut() runs
  const std::string* text_;  // the expanded format, while layOut() runs
  bool firstLine_;
};

// True if the `size` bytes at `text` are well-formed UTF-8.
bool isValidUtf8(const char* text, std::size_t size);

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_UNICODELINELAYOUT_H_
