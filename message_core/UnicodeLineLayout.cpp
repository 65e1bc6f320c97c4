#include "message_core/UnicodeLineLayout.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <memory>

#include "message_core/Utf8.h"
#include "msg/FormattingMessageChannel.h"

namespace msg {

namespace {

// A break iterator changes as it walks, so every thread keeps its own pair.
// Creating one costs microseconds and cloning one still a few hundred
// nanoseconds, far more than laying out a short message; a thread keeps
// them for its life.
struct BreakIterators {
  std::unique_ptr<icu::BreakIterator> line;
  std::unique_ptr<icu::BreakIterator> character;
};

BreakIterators* threadBreakIterators() {
  thread_local BreakIterators iterators = [] {
    BreakIterators created;
    UErrorCode status = U_ZERO_ERROR;
    created.line.reset(icu::BreakIterator::createLineInstance(icu::Locale::getRoot(), status));
    created.character.reset(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status)) {
      created.line.reset();
      created.character.reset();
    }
    return created;
  }();
  return iterators.line != nullptr && iterators.character != nullptr ? &iterators : nullptr;
}

int codePointWidth(UChar32 c) {
  switch (u_charType(c)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_COMBINING_SPACING_MARK:
    case U_FORMAT_CHAR:  // zero width space and joiners, soft hyphen, ...
      return 0;
    default:
      break;
  }
  const int syllable = u_getIntPropertyValue(c, UCHAR_HANGUL_SYLLABLE_TYPE);
  if (syllable == U_HST_VOWEL_JAMO || syllable == U_HST_TRAILING_JAMO) {
    return 0;  // joins the leading consonant before it into one syllable
  }
  const int width = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

// Marks a cluster that is a blank taken from the pending ones.
constexpr std::size_t kBlank = static_cast<std::size_t>(-1);

bool isRegionalIndicator(UChar32 c) {
  return c >= 0x1F1E6 && c <= 0x1F1FF;
}

// The cluster is a line feed, a carriage return (with its line feed) or
// another character that forces a break.
bool isMandatoryBreak(const std::string& text, std::size_t begin) {
  std::size_t at = begin;
  UChar32 c = 0;
  U8_NEXT_UNSAFE(text.data(), at, c);
  switch (u_getIntPropertyValue(c, UCHAR_LINE_BREAK)) {
    case U_LB_MANDATORY_BREAK:
    case U_LB_CARRIAGE_RETURN:
    case U_LB_LINE_FEED:
    case U_LB_NEXT_LINE:
      return true;
    default:
      return false;
  }
}

}  // namespace

bool isValidUtf8(const char* text, std::size_t size) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text);
  std::size_t at = 0;
  while (at < size) {
    if (bytes[at] < 0x80) {
      ++at;
      continue;
    }
    const std::size_t length = utf8SequenceLength(bytes + at, size - at);
    if (length == 0) {
      return false;
    }
    at += length;
  }
  return true;
}

int clusterWidth(const char* text, std::size_t size) {
  if (size == 1) {
    return 1;  // ASCII
  }
  int widest = 0;
  int regionalIndicators = 0;
  std::size_t at = 0;
  while (at < size) {
    UChar32 c = 0;
    U8_NEXT_UNSAFE(text, at, c);
    widest = std::max(widest, codePointWidth(c));
    regionalIndicators += isRegionalIndicator(c) ? 1 : 0;
  }
  return regionalIndicators == 2 ? 2 : widest;
}

UnicodeLineLayout::UnicodeLineLayout(FormattingMessageChannel& channel, int firstColumn,
                                     int leftMargin, int rightMargin)
    : channel_(channel),
      leftMargin_(leftMargin),
      width_(rightMargin + 1),
      line_(static_cast<std::size_t>(firstColumn), ' '),
      column_(firstColumn),
      lineHasText_(false),
      firstLine_(true),
      pendingBlanks_(0) {}

bool UnicodeLineLayout::layOut(const std::string& text) {
  BreakIterators* iterators = threadBreakIterators();
  if (iterators == nullptr) {
    return false;
  }
  // Both iterators read the UTF-8 bytes in place, so every boundary they
  // give is a byte offset into `text`.
  UErrorCode status = U_ZERO_ERROR;
  UText utf8 = UTEXT_INITIALIZER;
  utext_openUTF8(&utf8, text.data(), static_cast<int64_t>(text.size()), &status);
  iterators->line->setText(&utf8, status);
  iterators->character->setText(&utf8, status);
  utext_close(&utf8);
  if (U_FAILURE(status)) {
    return false;
  }

  icu::BreakIterator& lineBreaks = *iterators->line;
  icu::BreakIterator& clusters = *iterators->character;
  segment_.clear();
  std::size_t clusterEnd = 0;
  for (int32_t at = lineBreaks.next(); at != icu::BreakIterator::DONE; at = lineBreaks.next()) {
    const auto opportunity = static_cast<std::size_t>(at);
    while (clusterEnd < opportunity) {
      const int32_t next = clusters.next();
      if (next == icu::BreakIterator::DONE) {
        break;
      }
      const auto end = static_cast<std::size_t>(next);
      segment_.push_back(
          {clusterEnd, end, clusterWidth(text.data() + clusterEnd, end - clusterEnd)});
      clusterEnd = end;
    }
    // The line breaking rules allow a few breaks inside a cluster (after a
    // blank that carries a combining mark, say); the cluster wins.
    if (clusterEnd != opportunity) {
      continue;
    }
    placeSegment(text, lineBreaks.getRuleStatus() >= UBRK_LINE_HARD);
    segment_.clear();
  }
  placeSegment(text, false);

  // Blanks at the end of the output (the default format ends in one) stay
  // as far as the line has room.
  while (pendingBlanks_ > 0 && column_ < width_) {
    line_ += ' ';
    ++column_;
    --pendingBlanks_;
  }
  channel_.onMessageLine(firstLine_, true, line_.c_str());
  return true;
}

void UnicodeLineLayout::placeSegment(const std::string& text, bool mandatory) {
  std::size_t count = segment_.size();
  const bool endsLine = mandatory && count > 0 && isMandatoryBreak(text, segment_[count - 1].begin);
  if (endsLine) {
    --count;  // the line feed itself is not shown
  }
  std::size_t textEnd = count;
  while (textEnd > 0 && segment_[textEnd - 1].end - segment_[textEnd - 1].begin == 1 &&
         text[segment_[textEnd - 1].begin] == ' ') {
    --textEnd;
  }
  if (!lineHasText_ && pendingBlanks_ > 0 && textEnd > 0) {
    // Blanks that open a line (of the text, or behind a line feed) are the
    // text's own, not blanks at a break: they lead its first word.
    const Cluster blank = {kBlank, kBlank, 1};
    segment_.insert(segment_.begin(), static_cast<std::size_t>(pendingBlanks_), blank);
    count += static_cast<std::size_t>(pendingBlanks_);
    textEnd += static_cast<std::size_t>(pendingBlanks_);
    pendingBlanks_ = 0;
  }
  int width = 0;
  for (std::size_t k = 0; k < textEnd; ++k) {
    width += segment_[k].width;
  }
  if (textEnd > 0) {
    if (lineHasText_ && column_ + pendingBlanks_ + width > width_) {
      breakLine();
    }
    // What does not fit on a line of its own is cut between clusters.
    const bool fits = column_ + pendingBlanks_ + width <= width_;
    for (std::size_t k = 0; k < textEnd; ++k) {
      if (!fits && lineHasText_ && column_ + pendingBlanks_ + segment_[k].width > width_) {
        breakLine();
      }
      append(text, segment_[k]);
    }
  }
  pendingBlanks_ += static_cast<int>(count - textEnd);
  if (endsLine) {
    breakLine();
  }
}

void UnicodeLineLayout::append(const std::string& text, const Cluster& cluster) {
  // Blanks that would push the cluster off the line are dropped, like the
  // blanks at a break.
  const int room = std::max(width_ - column_ - cluster.width, 0);
  const int blanks = std::min(pendingBlanks_, room);
  line_.append(static_cast<std::size_t>(blanks), ' ');
  if (cluster.begin == kBlank) {
    line_ += ' ';
  } else {
    line_.append(text, cluster.begin, cluster.end - cluster.begin);
  }
  column_ += blanks + cluster.width;
  pendingBlanks_ = 0;
  lineHasText_ = true;
}

void UnicodeLineLayout::breakLine() {
  channel_.onMessageLine(firstLine_, false, line_.c_str());
  firstLine_ = false;
  line_.assign(static_cast<std::size_t>(leftMargin_), ' ');
  column_ = leftMargin_;
  lineHasText_ = false;
  pendingBlanks_ = 0;
}

}  // namespace msg
