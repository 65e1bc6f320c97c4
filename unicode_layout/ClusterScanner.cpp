#include "unicode_layout/ClusterScanner.h"

#include <cstddef>
#include <memory>

namespace msg {

namespace {

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

}  // namespace

std::uint8_t packedProperties(UChar32 c) {
  const int kind = u_getIntPropertyValue(c, UCHAR_GRAPHEME_CLUSTER_BREAK);
  const bool pictographic = u_hasBinaryProperty(c, UCHAR_EXTENDED_PICTOGRAPHIC) != 0;
  return static_cast<std::uint8_t>(codePointWidth(c) | (kind << 2) | (pictographic ? 0x80 : 0));
}

// Out of line on purpose: inlined into the lookup, it made the compiler keep
// the code point on the stack on every call, which stalled the layout.
const std::uint8_t* makePropertyBlock(PropertyBlock& slot, UChar32 first) {
  std::unique_ptr<std::uint8_t[]> made(new std::uint8_t[256]);
  for (int k = 0; k < 256; ++k) {
    made[static_cast<std::size_t>(k)] = packedProperties(first + k);
  }
  const std::uint8_t* expected = nullptr;
  if (slot.compare_exchange_strong(expected, made.get(), std::memory_order_acq_rel)) {
    return made.release();  // kept for the life of the process
  }
  return expected;
}

}  // namespace msg
