// UnicodeLineLayout: the Unicode model of FormattingMessageChannel. Breaks
// a message's output, valid UTF-8, into lines by display columns, at the
// places the Unicode line breaking rules allow and never inside a grapheme
// cluster. The channel reaches it through TextLayout
// (message_core/TextLayout.h); this folder is also the module
// msg-unicode.so, the one part of the library that links ICU.
//
// Private to the library: not installed; the module exports only its entry
// point.

#ifndef MSG_UNICODE_LAYOUT_UNICODELINELAYOUT_H_
#define MSG_UNICODE_LAYOUT_UNICODELINELAYOUT_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "message_core/TextLayout.h"

namespace msg {

// Lays out one message and hands its lines to a LineSink. Lives on the
// stack of one TextLayout::layOut() call; its buffers and ICU's break iterators are kept per
// thread, so several threads lay out at the same time without sharing
// state, and a warm thread lays out without allocating.
class UnicodeLineLayout {
 public:
  // The columns of one message, clamped by the caller: the first line starts
  // in `firstColumn`, every further one in `leftMargin`, and no line goes
  // beyond column `rightMargin` (0 <= leftMargin, firstColumn <=
  // rightMargin). The sink must outlive the layout.
  UnicodeLineLayout(LineSink& sink, int firstColumn, int leftMargin, int rightMargin);

  UnicodeLineLayout(const UnicodeLineLayout&) = delete;
  UnicodeLineLayout& operator=(const UnicodeLineLayout&) = delete;

  // Expands `format` for `fields` (as the channel's header format) and
  // hands each line to the sink, at least once. Returns false,
  // having called nothing, if the output is not valid UTF-8, if
  // `onlyBeyondAscii` and the output is pure ASCII, or if ICU cannot give
  // its break iterator (no data); the caller then lays the message out by
  // bytes.
  bool layOut(const char* format, const LayoutFields& fields, bool onlyBeyondAscii);

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

  // Splits `text` (valid UTF-8) into work.clusters with their widths and
  // kinds, and writes its UTF-16 form to work.units.
  static void scanClusters(const std::string& text, Workspace& work);

  // Fills lines greedily from work_->clusters and hands each to the sink.
  void fillLines();

  // The last cluster after `after` and up to `at` before which the line
  // breaking rules allow a break; `at` if there is none.
  std::size_t lastBreakBefore(std::size_t after, std::size_t at);

  // Hands clusters [from, to) on as a line behind its margin fill and
  // starts the next line's fill. Blanks at its end are dropped, except on
  // the `last` line as far as they fit.
  void emitLine(std::size_t from, std::size_t to, bool last);

  LineSink& sink_;
  const int firstColumn_;
  const int leftMargin_;
  const int width_;          // columns a line may fill: rightMargin + 1
  Workspace* work_;          // while layOut() runs
  const std::string* text_;  // the expanded format, while layOut() runs
  bool firstLine_;
};

}  // namespace msg

#endif  // MSG_UNICODE_LAYOUT_UNICODELINELAYOUT_H_
