// FormattingMessageChannel: lays messages out for a text terminal.

#ifndef MSG_FORMATTINGMESSAGECHANNEL_H_
#define MSG_FORMATTINGMESSAGECHANNEL_H_

#include "msg/MessageChannel.h"
#include "msg/export.h"

namespace msg {

// An output channel that renders each message by a header format, breaks
// the result into lines between a left and a right margin, and hands every
// finished line to onMessageLine(). By default the lines go to std::cerr;
// derive and override onMessageLine() to send them elsewhere.
//
// Header format: copied character by character, except
//   &n  the namespace of the message
//   &i  the identifier of the message
//   &t  the text of the message, as Message::getMessage() gives it
//   &   followed by any other character: the "&" alone; reading goes on at
//       that character, which may itself start a sequence ("&&n" gives "&"
//       and the namespace). A "&" at the very end gives the "&" alone.
// A null or empty value gives nothing. The default "&n:&i: &t " ends in a
// blank, which comes after the text.
//
// Two models of text. Byte model: columns count from 0, one byte of text
// each. Unicode model (below): columns count display width. By default
// (TextModel::kChosenByText) every message picks its model from its own
// output, the format with its values filled in: output that is valid UTF-8
// and holds at least one character beyond ASCII takes the Unicode model;
// pure ASCII and output that is not valid UTF-8 (a Latin-1 catalogue, say)
// take the byte model. setTextModel() forces one model for every message.
//
// Byte model. Columns count from 0, one byte of text each. The first line of a message
// starts in column leftMargin + indent (clamped to 0 .. rightMargin), every
// further line in column leftMargin; a line holds at most rightMargin + 1
// characters. Columns left of the start hold blanks ("margin fill").
//
// Wrapping: a line is broken when the character behind a full line arrives
// (so a line that fills up exactly at the end of the output stays whole).
// It is broken after the last word on it: the text up to the last blank
// goes out, that one blank is dropped, and the word behind it is carried to
// the next line. A blank in column 0 is no break point. Without a break
// point the word is cut: the full line goes out and the next line goes on
// with the arriving character. Only the blank (character 32) is a break
// point; a tab or a line feed takes one column like a letter.
//
// Negative indent: the first line may then start left of leftMargin, so a
// blank on it can stand left of leftMargin. The word behind such a blank is
// longer than a continuation line can hold next to the arriving character,
// so that blank is no break point: the line is cut there, blank included,
// as if it had no blank. No character is lost and nothing is written
// outside the line buffer.
//
// Unicode model. A grapheme cluster (a character with its combining marks,
// an emoji sequence joined by ZWJ, a flag) takes as many columns as its
// widest code point: East Asian Wide and Fullwidth 2, combining marks and
// zero-width characters 0, everything else 1 (Ambiguous ones included); a
// flag takes 2. Indent and margins keep their meaning, counted in columns,
// and a line holds at most rightMargin + 1 columns. Lines break only where
// the Unicode line breaking rules allow it and never inside a cluster: after
// blanks, between ideographs, but not before closing punctuation such as
// "\u3002". The blanks at a break are dropped. A line feed (or another
// mandatory break) ends the line and is dropped too. Unbreakable text that
// does not fit on a line of its own is cut between clusters; a single
// cluster wider than the line goes on a line of its own. No line ends inside
// a UTF-8 sequence. Output that is not valid UTF-8 has no characters to
// count, so it takes the byte model even when the Unicode model is forced.
// This model uses ICU's line break iterator. Each thread keeps one, and its
// buffers, for its life: the first message on a thread allocates them, the
// messages after it allocate nothing.
//
// Settings outside their limits (a negative rightMargin; a leftMargin that
// is negative or greater than rightMargin) are not rejected by the setters;
// onMessage() lays the message out as if they were clamped to those limits.
// A null format prints an empty line.
//
// Ownership: the channel does not own its format string; the caller keeps
// it alive while the channel may print. In the byte model onMessage()
// allocates one line buffer per message and builds every line, including a
// carried word, in place in it.
//
// Thread safety: onMessage() keeps its working state on its own stack and
// only reads the settings, so several threads may write through one channel
// at the same time, as long as none of them changes a setting meanwhile. An
// override of onMessageLine() must then be safe to call from several threads
// too; the default one hands each line to std::cerr in a single write, so
// lines are not torn, though lines of different messages may interleave
// (a message of several lines may be split by another thread's lines).
class MSG_EXPORT FormattingMessageChannel : public MessageChannel {
 public:
  // How columns and break points are counted (see above).
  enum class TextModel {
    kChosenByText,  // Unicode for valid non-ASCII UTF-8, bytes otherwise
    kBytes,         // bytes for every message
    kUnicode,       // Unicode for every message that is valid UTF-8
  };

  // leftMargin 0, rightMargin 59 (60 characters a line), indent 0, format
  // "&n:&i: &t ".
  FormattingMessageChannel();

  // Copies the five settings (the format pointer, not the string).
  FormattingMessageChannel(const FormattingMessageChannel& other);
  FormattingMessageChannel& operator=(const FormattingMessageChannel&) = delete;

  ~FormattingMessageChannel() override;

  // First column of every line but the first of a message.
  // REQUIRES: 0 <= margin <= getRightMargin() (see above for other values).
  void setLeftMargin(int margin) { leftMargin = margin; }
  int getLeftMargin() const { return leftMargin; }

  // Last usable column (the width is rightMargin + 1).
  // REQUIRES: margin >= 0.
  void setRightMargin(int margin) { rightMargin = margin; }
  int getRightMargin() const { return rightMargin; }

  // Added to leftMargin for the first line of a message; may be negative.
  void setIndent(int newIndent) { indent = newIndent; }
  int getIndent() const { return indent; }

  // Stores the pointer itself, which must stay valid while the channel may
  // print. A change takes effect with the next message.
  void setTextHeaderFormat(const char* format) { textHeaderFormat = format; }
  const char* getTextHeaderFormat() const { return textHeaderFormat; }

  // Forces a model for every message, or lets each message choose by its
  // output (the default, kChosenByText). A change takes effect with the next
  // message.
  void setTextModel(TextModel model) { textModel = model; }
  TextModel getTextModel() const { return textModel; }

  // Renders one message and calls onMessageLine() for each of its lines,
  // at least once, also when the format produces nothing.
  void onMessage(const Message& message) override;

  // Takes one finished line: zero-terminated, without a line end, valid
  // only during the call. The flags are (true, true) for a message of one
  // line; otherwise (true, false) for the first line, (false, false) for
  // those between and (false, true) for the last. By default writes the line
  // and a line feed to std::cerr (no flush) and ignores the flags.
  virtual void onMessageLine(bool firstLine, bool lastLine, const char* line);

 private:
  struct LineState;  // the working state of one onMessage() call

  // Puts `c` at the current column of the line, breaking the line first if
  // it is full.
  void appendCharacter(char c, LineState& state);

  // Every output character of `value` through appendCharacter().
  void appendText(const char* value, LineState& state);

  // Lays `message` out by the byte model.
  void layOutBytes(const Message& message, const char* format);

  int leftMargin;
  int rightMargin;
  int indent;
  const char* textHeaderFormat;
  TextModel textModel;
};

}  // namespace msg

#endif  // MSG_FORMATTINGMESSAGECHANNEL_H_
