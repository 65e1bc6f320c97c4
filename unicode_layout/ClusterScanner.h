// ClusterScanner and the code point properties behind the formatting
// channel's Unicode model: display width, grapheme cluster boundaries.
//
// Private to the library: not installed, nothing here is exported.

#ifndef MSG_UNICODE_LAYOUT_CLUSTERSCANNER_H_
#define MSG_UNICODE_LAYOUT_CLUSTERSCANNER_H_

#include <unicode/uchar.h>

#include <atomic>
#include <cstdint>

namespace msg {

// What the layout needs to know of a code point, packed in a byte: display
// width (bits 0-1: East Asian Wide and Fullwidth 2; marks, format
// characters and the vowels and finals of conjoining Hangul 0; others 1),
// grapheme cluster break property (bits 2-6) and Extended_Pictographic
// (bit 7). Looks ICU up every time.
std::uint8_t packedProperties(UChar32 c);

// ICU's property lookups cost more than the rest of the layout, so the
// packed properties of the Basic Multilingual Plane are kept in blocks of
// 256 code points, each made the first time a text needs it and never
// changed after: threads that race to make one keep the first and drop
// theirs. Code points beyond the plane (emoji, rare ideographs) are looked
// up every time.
using PropertyBlock = std::atomic<const std::uint8_t*>;
inline PropertyBlock propertyBlocks[256] = {};

// Makes the block of the 256 code points from `first` on, stores it in
// `slot` unless another thread was faster, and returns the one stored.
const std::uint8_t* makePropertyBlock(PropertyBlock& slot, UChar32 first);

// packedProperties(c), from the blocks where it can.
inline std::uint8_t codePointProperties(UChar32 c) {
  if (c > 0xFFFF) {
    return packedProperties(c);
  }
  PropertyBlock& slot = propertyBlocks[c >> 8];
  const std::uint8_t* block = slot.load(std::memory_order_acquire);
  if (block == nullptr) {
    block = makePropertyBlock(slot, c & ~0xFF);
  }
  return block[c & 0xFF];
}

inline int displayWidth(std::uint8_t properties) {
  return properties & 0x3;
}

inline bool isRegionalIndicator(UChar32 c) {
  return c >= 0x1F1E6 && c <= 0x1F1FF;
}

// The grapheme cluster boundaries of Unicode text segmentation (UAX #29,
// as of Unicode 15.0), read one code point at a time. One scanner per text.
class ClusterScanner {
 public:
  // Takes the next code point, as its codePointProperties(); returns true
  // if a cluster starts with it.
  bool startsCluster(std::uint8_t properties) {
    const int kind = (properties >> 2) & 0x1F;
    const bool pictographic = (properties & 0x80) != 0;
    const bool starts = first_ || breaksBetween(kind, pictographic);
    first_ = false;
    // State for the emoji and flag rules, now including this code point.
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

}  // namespace msg

#endif  // MSG_UNICODE_LAYOUT_CLUSTERSCANNER_H_
