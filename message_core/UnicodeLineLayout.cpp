#include "message_core/UnicodeLineLayout.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "message_core/Utf8.h"
#include "msg/FormattingMessageChannel.h"
#include "msg/Message.h"

namespace msg {

namespace {

// What the format gives for `message`, before any layout, into `out`.
void expandFormat(const char* format, const Message& message, std::string& out) {
  out.clear();
  for (const char* p = format; *p != '\0'; ++p) {
    const char* value = nullptr;
    if (*p == '&' && p[1] == 'n') {
      value = message.getNamespace();
    } else if (*p == '&' && p[1] == 'i') {
      value = message.getIdentifier();
    } else if (*p == '&' && p[1] == 't') {
      value = message.getMessage();
    } else {
      out += *p;
      continue;
    }
    if (value != nullptr) {
      out += value;
    }
    ++p;
  }
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

// What the layout needs to know of a code point, packed in a byte: display
// width (bits 0-1), grapheme cluster break property (bits 2-6) and
// Extended_Pictographic (bit 7).
std::uint8_t packedProperties(UChar32 c) {
  const int kind = u_getIntPropertyValue(c, UCHAR_GRAPHEME_CLUSTER_BREAK);
  const bool pictographic = u_hasBinaryProperty(c, UCHAR_EXTENDED_PICTOGRAPHIC) != 0;
  return static_cast<std::uint8_t>(codePointWidth(c) | (kind << 2) | (pictographic ? 0x80 : 0));
}

// ICU's property lookups cost more than the rest of the layout, so the
// packed properties of the Basic Multilingual Plane are kept in blocks of
// 256 code points, each made the first time a text needs it and never
// changed after: threads that race to make one keep the first and drop
// theirs. Code points beyond the plane (emoji, rare ideographs) are looked
// up each time.
std::uint8_t propertiesOf(UChar32 c) {
  constexpr int kBlocks = 256;
  static std::atomic<const std::uint8_t*> blocks[kBlocks] = {};
  if (c > 0xFFFF) {
    return packedProperties(c);
  }
  std::atomic<const std::uint8_t*>& slot = blocks[c >> 8];
  const std::uint8_t* block = slot.load(std::memory_order_acquire);
  if (block == nullptr) {
    std::unique_ptr<std::uint8_t[]> made(new std::uint8_t[256]);
    const UChar32 first = c & ~0xFF;
    for (int k = 0; k < 256; ++k) {
      made[static_cast<std::size_t>(k)] = packedProperties(first + k);
    }
    const std::uint8_t* expected = nullptr;
    if (slot.compare_exchange_strong(expected, made.get(), std::memory_order_acq_rel)) {
      block = made.release();  // kept for the life of the process
    } else {
      block = expected;
    }
  }
  return block[c & 0xFF];
}

int widthOf(std::uint8_t properties) {
  return properties & 0x3;
}

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

// The grapheme cluster boundaries of Unicode text segmentation (UAX #29,
// as of Unicode 15.0), read one code point at a time.
class ClusterScanner {
 public:
  // Takes the next code point, by its propertiesOf(); true if a cluster
  // starts with it.
  bool startsCluster(std::uint8_t properties) {
    const int kind = (properties >> 2) & 0x1F;
    const bool pictographic = (properties & 0x80) != 0;
    const bool starts = first_ || breaksBetween(kind, pictographic);
    first_ = false;
    // State for the emoji and flag rules, now including `c`.
    zwjAfterPictographic_ = kind == U_GCB_ZWJ && inPictographic_;
    inPictographic_ = pictographic || (inPictographic_ && kind == U_GCB_EXTEND);
    regionalRun_ = kind == U_GCB_REGIONAL_INDICATOR ? regionalRun_ + 1 : 0;
    previous_ = kind;
    return starts;
  }

 private:
  bool breaksBetween(int next, bool pictographic) const {
    const int prev = previous_;
    if (prev == U_GCB_CR && next == U_GCB_LF) {
      return false;
    }
    if (prev == U_GCB_CONTROL || prev == U_GCB_CR || prev == U_GCB_LF || next == U_GCB_CONTROL ||
        next == U_GCB_CR || next == U_GCB_LF) {
      return true;
    }
    if ((prev == U_GCB_L &&
         (next == U_GCB_L || next == U_GCB_V || next == U_GCB_LV || next == U_GCB_LVT)) ||
        ((prev == U_GCB_LV || prev == U_GCB_V) && (next == U_GCB_V || next == U_GCB_T)) ||
        ((prev == U_GCB_LVT || prev == U_GCB_T) && next == U_GCB_T)) {
      return false;  // a Hangul syllable
    }
    if (next == U_GCB_EXTEND || next == U_GCB_ZWJ || next == U_GCB_SPACING_MARK ||
        prev == U_GCB_PREPEND) {
      return false;
    }
    if (zwjAfterPictographic_ && pictographic) {
      return false;  // an emoji ZWJ sequence
    }
    if (next == U_GCB_REGIONAL_INDICATOR && regionalRun_ % 2 == 1) {
      return false;  // the second half of a flag
    }
    return true;
  }

  bool first_ = true;
  int previous_ = U_GCB_OTHER;
  bool inPictographic_ = false;        // an Extended_Pictographic, then Extend*
  bool zwjAfterPictographic_ = false;  // the last code point: a ZWJ behind one
  int regionalRun_ = 0;                // regional indicators right before
};

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

// The buffers and break iterators of one layout. A break iterator changes
// as it walks, and creating one costs microseconds (cloning still a few
// hundred nanoseconds), far more than laying out a short message; so every
// thread keeps one workspace for its life, and its buffers keep their
// capacity from message to message. An onMessageLine() that writes another
// message on the same thread finds it busy and gets a workspace of its own.
struct UnicodeLineLayout::Workspace {
  std::unique_ptr<icu::BreakIterator> lineBreaks;
  std::string output;               // the expanded format, UTF-8
  std::vector<UChar> units;         // the same in UTF-16, for ICU
  std::vector<std::size_t> byteAt;  // byte offset in output of each unit
  std::string line;
  std::vector<Cluster> clusters;  // every grapheme cluster of output
  std::vector<Cluster> segment;
  bool busy = false;

  // False if ICU cannot give the break iterators (no data).
  bool ready() {
    if (lineBreaks == nullptr) {
      UErrorCode status = U_ZERO_ERROR;
      lineBreaks.reset(icu::BreakIterator::createLineInstance(icu::Locale::getRoot(), status));
      if (U_FAILURE(status) || lineBreaks == nullptr) {
        lineBreaks.reset();
        return false;
      }
    }
    return true;
  }
};

UnicodeLineLayout::UnicodeLineLayout(FormattingMessageChannel& channel, int firstColumn,
                                     int leftMargin, int rightMargin)
    : channel_(channel),
      firstColumn_(firstColumn),
      leftMargin_(leftMargin),
      width_(rightMargin + 1),
      work_(nullptr),
      column_(firstColumn),
      lineHasText_(false),
      firstLine_(true),
      pendingBlanks_(0) {}

bool UnicodeLineLayout::layOut(const char* format, const Message& message, bool onlyBeyondAscii) {
  thread_local Workspace threadWorkspace;
  std::unique_ptr<Workspace> nested;
  Workspace* work = &threadWorkspace;
  if (work->busy) {
    nested.reset(new Workspace);
    work = nested.get();
  }
  if (!work->ready()) {
    return false;
  }
  std::string& text = work->output;
  expandFormat(format, message, text);
  if (!isValidUtf8(text.data(), text.size())) {
    return false;
  }
  // A namespace or identifier beyond ASCII that the format does not show
  // leaves ASCII output, which keeps the byte model.
  if (onlyBeyondAscii && std::none_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) >= 0x80;
      })) {
    return false;
  }
  struct BusyWhileHere {
    explicit BusyWhileHere(Workspace& w) : work(w) { work.busy = true; }
    ~BusyWhileHere() { work.busy = false; }
    Workspace& work;
  } busy(*work);

  // ICU's line iterator walks UTF-16 far faster than UTF-8; byteAt maps
  // its boundaries back to the UTF-8 bytes. The same pass finds the grapheme
  // clusters and their widths.
  work->units.clear();
  work->byteAt.clear();
  work->clusters.clear();
  ClusterScanner scanner;
  int widest = 0;
  int regional = 0;
  const auto closeCluster = [&](std::size_t end) {
    if (!work->clusters.empty()) {
      work->clusters.back().end = end;
      work->clusters.back().width = regional == 2 ? 2 : widest;  // a flag takes 2
    }
    widest = 0;
    regional = 0;
  };
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    UChar32 c = 0;
    U8_NEXT_UNSAFE(text.data(), at, c);
    const std::uint8_t properties = propertiesOf(c);
    if (scanner.startsCluster(properties)) {
      closeCluster(begin);
      work->clusters.push_back({begin, text.size(), 0});
    }
    widest = std::max(widest, widthOf(properties));
    regional += isRegionalIndicator(c) ? 1 : 0;
    if (c <= 0xFFFF) {
      work->units.push_back(static_cast<UChar>(c));
      work->byteAt.push_back(begin);
    } else {
      work->units.push_back(U16_LEAD(c));
      work->units.push_back(U16_TRAIL(c));
      work->byteAt.push_back(begin);
      work->byteAt.push_back(begin);
    }
  }
  closeCluster(text.size());
  work->byteAt.push_back(text.size());
  UErrorCode status = U_ZERO_ERROR;
  UText utf16 = UTEXT_INITIALIZER;
  utext_openUChars(&utf16, work->units.data(), static_cast<int64_t>(work->units.size()), &status);
  work->lineBreaks->setText(&utf16, status);
  utext_close(&utf16);
  if (U_FAILURE(status)) {
    return false;
  }
  work_ = work;
  work->line.assign(static_cast<std::size_t>(firstColumn_), ' ');
  work->segment.clear();

  icu::BreakIterator& lineBreaks = *work->lineBreaks;
  const std::vector<std::size_t>& byteAt = work->byteAt;
  std::size_t nextCluster = 0;
  std::size_t clusterEnd = 0;
  for (int32_t at = lineBreaks.next(); at != icu::BreakIterator::DONE; at = lineBreaks.next()) {
    const std::size_t opportunity = byteAt[static_cast<std::size_t>(at)];
    while (clusterEnd < opportunity && nextCluster < work->clusters.size()) {
      work->segment.push_back(work->clusters[nextCluster]);
      clusterEnd = work->clusters[nextCluster].end;
      ++nextCluster;
    }
    // The line breaking rules allow a few breaks inside a cluster (after a
    // blank that carries a combining mark, say); the cluster wins.
    if (clusterEnd != opportunity) {
      continue;
    }
    placeSegment(text, lineBreaks.getRuleStatus() >= UBRK_LINE_HARD);
    work->segment.clear();
  }
  placeSegment(text, false);

  // Blanks at the end of the output (the default format ends in one) stay
  // as far as the line has room.
  while (pendingBlanks_ > 0 && column_ < width_) {
    work_->line += ' ';
    ++column_;
    --pendingBlanks_;
  }
  channel_.onMessageLine(firstLine_, true, work_->line.c_str());
  return true;
}

void UnicodeLineLayout::placeSegment(const std::string& text, bool mandatory) {
  std::size_t count = work_->segment.size();
  const bool endsLine =
      mandatory && count > 0 && isMandatoryBreak(text, work_->segment[count - 1].begin);
  if (endsLine) {
    --count;  // the line feed itself is not shown
  }
  std::size_t textEnd = count;
  while (textEnd > 0 && work_->segment[textEnd - 1].end - work_->segment[textEnd - 1].begin == 1 &&
         text[work_->segment[textEnd - 1].begin] == ' ') {
    --textEnd;
  }
  if (!lineHasText_ && pendingBlanks_ > 0 && textEnd > 0) {
    // Blanks that open a line (of the text, or behind a line feed) are the
    // text's own, not blanks at a break: they lead its first word.
    const Cluster blank = {kBlank, kBlank, 1};
    work_->segment.insert(work_->segment.begin(), static_cast<std::size_t>(pendingBlanks_), blank);
    count += static_cast<std::size_t>(pendingBlanks_);
    textEnd += static_cast<std::size_t>(pendingBlanks_);
    pendingBlanks_ = 0;
  }
  int width = 0;
  for (std::size_t k = 0; k < textEnd; ++k) {
    width += work_->segment[k].width;
  }
  if (textEnd > 0) {
    if (lineHasText_ && column_ + pendingBlanks_ + width > width_) {
      breakLine();
    }
    // What does not fit on a line of its own is cut between clusters.
    const bool fits = column_ + pendingBlanks_ + width <= width_;
    for (std::size_t k = 0; k < textEnd; ++k) {
      if (!fits && lineHasText_ && column_ + pendingBlanks_ + work_->segment[k].width > width_) {
        breakLine();
      }
      append(text, work_->segment[k]);
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
  if (blanks > 0) {
    work_->line.append(static_cast<std::size_t>(blanks), ' ');
  }
  if (cluster.begin == kBlank) {
    work_->line += ' ';
  } else {
    work_->line.append(text, cluster.begin, cluster.end - cluster.begin);
  }
  column_ += blanks + cluster.width;
  pendingBlanks_ = 0;
  lineHasText_ = true;
}

void UnicodeLineLayout::breakLine() {
  channel_.onMessageLine(firstLine_, false, work_->line.c_str());
  firstLine_ = false;
  work_->line.assign(static_cast<std::size_t>(leftMargin_), ' ');
  column_ = leftMargin_;
  lineHasText_ = false;
  pendingBlanks_ = 0;
}

}  // namespace msg
