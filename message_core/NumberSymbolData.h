// NumberSymbolData: the table of number symbols that the build writes from
// ICU (tools/number_symbols). Only NumberFormat reads it.
//
// Private to the library: not installed, nothing here is exported.

#ifndef MSG_MESSAGE_CORE_NUMBERSYMBOLDATA_H_
#define MSG_MESSAGE_CORE_NUMBERSYMBOLDATA_H_

#include <cstddef>
#include <cstdint>

namespace msg {

// How one kind of number (plain or percent) is laid out: the texts before
// and after a positive and a negative number (a percent sign, a minus sign
// with its bidi marks), and the grouping of the integer digits. `primary`
// is the size of the group nearest the decimal separator, 0 if the digits
// are never grouped; `secondary` that of the groups to its left (2 for
// Indian grouping, 12,34,567). Digits are grouped only when the integer
// part has at least primary + minimumGrouping digits (Spanish: 1234, but
// 12.345).
struct NumberStyleSymbols {
  const char* positivePrefix;
  const char* positiveSuffix;
  const char* negativePrefix;
  const char* negativeSuffix;
  std::uint8_t primary;
  std::uint8_t secondary;
  std::uint8_t minimumGrouping;
};

// The symbols of one language (or language and region), all UTF-8: the
// digits of its default numbering system ("٠".."٩" for Arabic), the
// separators and the words for infinity and not-a-number.
struct NumberSymbols {
  const char* digits[10];
  const char* decimal;
  const char* group;
  const char* infinity;
  const char* nan;
  NumberStyleSymbols number;
  NumberStyleSymbols percent;
};

// The generated table holds no pointers, so that it needs no relocation
// when the library is loaded and stays in read-only pages nobody touches
// until a number is formatted: every text is an offset into
// kNumberSymbolTexts, where it ends with a NUL.
struct NumberStyleRow {
  std::uint16_t positivePrefix;
  std::uint16_t positiveSuffix;
  std::uint16_t negativePrefix;
  std::uint16_t negativeSuffix;
  std::uint8_t primary;
  std::uint8_t secondary;
  std::uint8_t minimumGrouping;
};

// One row of the table: NumberSymbols with offsets for pointers.
struct NumberSymbolRow {
  std::uint16_t digits[10];
  std::uint16_t decimal;
  std::uint16_t group;
  std::uint16_t infinity;
  std::uint16_t nan;
  NumberStyleRow number;
  NumberStyleRow percent;
};

// The texts of every row, each once, each ending with a NUL.
extern const char kNumberSymbolTexts[];

// What a language without a row of its own uses.
extern const NumberSymbolRow kNumberRootRow;

// The rows' tags packed as msg::Language packs them, as big-endian numbers
// ("de-AT" is 0x64654154), in ascending order; kNumberSymbolRows holds the
// rows in the same order.
extern const std::uint32_t kNumberSymbolTags[];
extern const NumberSymbolRow kNumberSymbolRows[];
extern const std::size_t kNumberSymbolRowCount;

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_NUMBERSYMBOLDATA_H_
