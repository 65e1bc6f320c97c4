// UnicodeLineLayout: the Unicode model of FormattingMessageChannel. Breaks
// a message's output, valid UTF-8, into lines by display columns, at the
// places the Unicode line breaking rules allow and never inside a grapheme
// cluster.
//
// Private to the library: not installed, nothing here is exported.

#ifndef MSG_MESSAGE_CORE_UNICODELINELAYOUT_H_
#define MSG_MESSAGE_CORE_UNICODELINELAYOUT_H_

#include <cstddef>
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
  struct Cluster {
    std::size_t begin;  // byte offsets in the text; both kBlank: a blank
    std::size_t end;
    int width;  // display columns
  };
  struct Workspace;

  // Places the clusters between two break opportunities. `mandatory`: the
  // segment ends in a line feed or another mandatory break.
  void placeSegment(const std::string& text, bool mandatory);

  // Appends `cluster` to the line, after the pending blanks.
  void append(const std::string& text, const Cluster& cluster);

  // Hands the line on as not the last one and starts the next at the left
  // margin. Pending blanks are dropped.
  void breakLine();

  FormattingMessageChannel& channel_;
  const int firstColumn_;
  const int leftMargin_;
  const int width_;   // columns a line may fill: rightMargin + 1
  Workspace* work_;   // while layOut() runs
  int column_;        // display columns on the line
  bool lineHasText_;  // anything but margin fill on the line
  bool firstLine_;
  int pendingBlanks_;  // blanks behind the text so far, not yet placed
};

// True if the `size` bytes at `text` are well-formed UTF-8.
bool isValidUtf8(const char* text, std::size_t size);

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_UNICODELINELAYOUT_H_
