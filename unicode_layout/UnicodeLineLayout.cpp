#include "unicode_layout/UnicodeLineLayout.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "message_core/Utf8.h"
#include "unicode_layout/ClusterScanner.h"

namespace msg {

namespace {

// What the format gives for `fields`, before any layout, into `out`.
void expandFormat(const char* format, const LayoutFields& fields, std::string& out) {
  out.clear();
  for (const char* p = format; *p != '\0'; ++p) {
    const char* value = nullptr;
    if (*p == '&' && p[1] == 'n') {
      value = fields.nameSpace;
    } else if (*p == '&' && p[1] == 'i') {
      value = fields.identifier;
    } else if (*p == '&' && p[1] == 't') {
      value = fields.text;
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

// The code point at `at` of well-formed UTF-8; moves `at` behind it.
UChar32 decodeValidUtf8(const unsigned char* bytes, std::size_t& at) {
  const UChar32 lead = bytes[at];
  if (lead < 0x80) {
    ++at;
    return lead;
  }
  if (lead < 0xE0) {
    const UChar32 c = ((lead & 0x1F) << 6) | (bytes[at + 1] & 0x3F);
    at += 2;
    return c;
  }
  if (lead < 0xF0) {
    const UChar32 c =
        ((lead & 0x0F) << 12) | ((bytes[at + 1] & 0x3F) << 6) | (bytes[at + 2] & 0x3F);
    at += 3;
    return c;
  }
  const UChar32 c = ((lead & 0x07) << 18) | ((bytes[at + 1] & 0x3F) << 12) |
                    ((bytes[at + 2] & 0x3F) << 6) | (bytes[at + 3] & 0x3F);
  at += 4;
  return c;
}

// A line feed, a carriage return (with its line feed: one cluster) or
// another character after which a line must end.
bool endsLine(UChar32 c) {
  return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

}  // namespace

// The buffers and break iterators of one layout. A break iterator changes
// as it walks, and creating one costs microseconds (cloning still a few
// hundred nanoseconds), far more than laying out a short message; so every
// thread keeps one workspace for its life, and its buffers keep their
// capacity from message to message. A sink that writes another
// message on the same thread finds it busy and gets a workspace of its own.
struct UnicodeLineLayout::Workspace {
  std::unique_ptr<icu::BreakIterator> lineBreaks;
  std::string output;        // the expanded format, UTF-8
  std::vector<UChar> units;  // the same in UTF-16, for ICU
  std::string line;
  std::vector<Cluster> clusters;  // every grapheme cluster of output
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

UnicodeLineLayout::UnicodeLineLayout(LineSink& sink, int firstColumn, int leftMargin,
                                     int rightMargin)
    : sink_(sink),
      firstColumn_(firstColumn),
      leftMargin_(leftMargin),
      width_(rightMargin + 1),
      work_(nullptr),
      text_(nullptr),
      firstLine_(true) {}

bool UnicodeLineLayout::layOut(const char* format, const LayoutFields& fields,
                               bool onlyBeyondAscii) {
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
  expandFormat(format, fields, text);
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

  // ICU's line iterator walks UTF-16 far faster than UTF-8; each cluster
  // keeps its UTF-16 offset, which maps the iterator's boundaries back to
  // the UTF-8 bytes.
  scanClusters(text, *work);
  UErrorCode status = U_ZERO_ERROR;
  UText utf16 = UTEXT_INITIALIZER;
  utext_openUChars(&utf16, work->units.data(), static_cast<int64_t>(work->units.size()), &status);
  work->lineBreaks->setText(&utf16, status);
  utext_close(&utf16);
  if (U_FAILURE(status)) {
    return false;
  }
  work_ = work;
  text_ = &text;
  work->line.assign(static_cast<std::size_t>(firstColumn_), ' ');
  fillLines();
  return true;
}

void UnicodeLineLayout::scanClusters(const std::string& text, Workspace& work) {
  work.units.clear();
  work.clusters.clear();
  ClusterScanner scanner;
  std::vector<Cluster>& clusters = work.clusters;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  int regional = 0;  // regional indicators in the cluster: two make a flag
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    const UChar32 c = decodeValidUtf8(bytes, at);
    const std::uint8_t properties = codePointProperties(c);
    if (scanner.startsCluster(properties)) {
      clusters.emplace_back();
      Cluster& added = clusters.back();
      added.begin = begin;
      added.unit = static_cast<int32_t>(work.units.size());
      added.width = 0;
      added.kind = c == ' ' ? Kind::kBlank : (endsLine(c) ? Kind::kLineEnd : Kind::kText);
      regional = 0;
    }
    Cluster& current = clusters.back();
    current.width = std::max(current.width, displayWidth(properties));
    if (isRegionalIndicator(c) && ++regional == 2) {
      current.width = 2;
    }
    if (c <= 0xFFFF) {
      work.units.push_back(static_cast<UChar>(c));
    } else {
      work.units.push_back(U16_LEAD(c));
      work.units.push_back(U16_TRAIL(c));
    }
  }
  for (std::size_t k = 0; k < clusters.size(); ++k) {
    Cluster& cluster = clusters[k];
    cluster.end = k + 1 < clusters.size() ? clusters[k + 1].begin : text.size();
    if (cluster.kind == Kind::kBlank && cluster.end - cluster.begin != 1) {
      cluster.kind = Kind::kText;  // a blank that carries a mark
    }
  }
}

void UnicodeLineLayout::fillLines() {
  // Greedy filling, cluster by cluster. Only where a cluster overflows the
  // line is the line break iterator asked for the last break opportunity:
  // walking every opportunity of the text costs more than the rest of the
  // layout.
  const std::vector<Cluster>& clusters = work_->clusters;
  const std::size_t count = clusters.size();
  std::size_t lineStart = 0;  // first cluster of the line
  std::size_t firstText = 0;  // first cluster on it that is not a blank
  bool lineHasText = false;
  int column = firstColumn_;
  std::size_t k = 0;
  while (k < count) {
    const Cluster& cluster = clusters[k];
    if (cluster.kind == Kind::kLineEnd) {
      emitLine(lineStart, k, false);  // the line feed itself is not shown
      lineStart = ++k;
      lineHasText = false;
      column = leftMargin_;
      continue;
    }
    if (cluster.kind == Kind::kBlank) {
      ++column;  // may pass the width: blanks at a break are dropped
      ++k;
      continue;
    }
    if (column + cluster.width <= width_ || k == lineStart) {
      // Fits, or stands first on its line, where it goes even if too wide.
      if (!lineHasText) {
        lineHasText = true;
        firstText = k;
      }
      column += cluster.width;
      ++k;
      continue;
    }
    // The cluster does not fit. After text, break at the last opportunity
    // behind its first cluster (cut before this one if there is none);
    // blanks that open a line are the text's own and go out as they are.
    const std::size_t at = lineHasText ? lastBreakBefore(firstText, k) : k;
    emitLine(lineStart, at, false);
    lineStart = at;
    k = at;
    lineHasText = false;
    column = leftMargin_;
  }
  emitLine(lineStart, count, true);
}

std::size_t UnicodeLineLayout::lastBreakBefore(std::size_t after, std::size_t at) {
  const std::vector<Cluster>& clusters = work_->clusters;
  icu::BreakIterator& lineBreaks = *work_->lineBreaks;
  const int32_t floor = clusters[after].unit;
  int32_t unit = clusters[at].unit;
  if (!lineBreaks.isBoundary(unit)) {
    unit = lineBreaks.preceding(unit);
  }
  while (unit != icu::BreakIterator::DONE && unit > floor) {
    // The line breaking rules allow a few breaks inside a cluster (after a
    // blank that carries a combining mark, say); the cluster wins.
    const auto found = std::lower_bound(
        clusters.begin() + static_cast<std::ptrdiff_t>(after),
        clusters.begin() + static_cast<std::ptrdiff_t>(at) + 1, unit,
        [](const Cluster& cluster, int32_t value) { return cluster.unit < value; });
    if (found->unit == unit) {
      return static_cast<std::size_t>(found - clusters.begin());
    }
    unit = lineBreaks.preceding(unit);
  }
  return at;
}

void UnicodeLineLayout::emitLine(std::size_t from, std::size_t to, bool last) {
  const std::vector<Cluster>& clusters = work_->clusters;
  std::string& line = work_->line;
  int column = static_cast<int>(line.size());  // the margin fill
  std::size_t text = from;
  while (text < to && clusters[text].kind == Kind::kBlank) {
    ++text;
  }
  std::size_t textEnd = to;
  while (textEnd > text && clusters[textEnd - 1].kind == Kind::kBlank) {
    --textEnd;
  }
  if (text == to) {
    // Blanks alone (they opened the line): as many as fit.
    const std::size_t fit = static_cast<std::size_t>(std::max(width_ - column, 0));
    line.append(std::min(to - from, fit), ' ');
  } else {
    // Leading blanks and text; blanks at a break are dropped.
    line.append(*text_, clusters[from].begin, clusters[textEnd - 1].end - clusters[from].begin);
    for (std::size_t k = from; k < textEnd; ++k) {
      column += clusters[k].width;
    }
    if (last) {
      // Blanks at the end of the output (the default format ends in one)
      // stay as far as the line has room.
      for (std::size_t k = textEnd; k < to && column < width_; ++k, ++column) {
        line += ' ';
      }
    }
  }
  sink_.onLine(firstLine_, last, line.c_str());
  firstLine_ = false;
  line.assign(static_cast<std::size_t>(leftMargin_), ' ');
}

namespace {

// The process's one TextLayout: all state of a layout is on the stack or
// per thread.
class UnicodeTextLayout final : public TextLayout {
 public:
  bool layOut(const char* format, const LayoutFields& fields, int firstColumn, int leftMargin,
              int rightMargin, bool onlyBeyondAscii, LineSink& sink) const override {
    UnicodeLineLayout layout(sink, firstColumn, leftMargin, rightMargin);
    return layout.layOut(format, fields, onlyBeyondAscii);
  }
};

}  // namespace

}  // namespace msg

extern "C" __attribute__((visibility("default"))) const msg::TextLayout*
MSG_UNICODE_LAYOUT_ENTRY() {
  static msg::UnicodeTextLayout layout;
  return &layout;
}
