// NumberFormat: a number's decimal digits from the shortest text that reads
// back as the same double, rounded half-even to the fraction digits asked
// for, grouped and written with the language's symbols.

#include "message_core/NumberFormat.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace msg {
namespace {

// A non-negative number as 0.d1d2...dn x 10^point, without trailing zeros
// in the digits once rounded; no digits is zero.
struct Digits {
  char digit[400];
  int count = 0;
  int point = 0;
};

void readDouble(double magnitude, Digits& digits) {
  if (magnitude == 0.0) {
    return;
  }
  // The shortest text that reads back as the same double, "d.ddde+XX".
  char text[64];
  const std::to_chars_result end =
      std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific);
  const char* at = text;
  for (; at < end.ptr && *at != 'e'; ++at) {
    if (*at != '.') {
      digits.digit[digits.count++] = *at;
    }
  }
  // Read by hand, as are the integers below: the templates of <charconv>
  // for integers carry static digit tables that libmsg.so would export.
  const bool negativeExponent = at + 1 < end.ptr && at[1] == '-';
  int exponent = 0;
  for (const char* e = at + 2; e < end.ptr; ++e) {
    exponent = exponent * 10 + (*e - '0');
  }
  digits.point = (negativeExponent ? -exponent : exponent) + 1;
}

void readInteger(std::uint64_t magnitude, Digits& digits) {
  if (magnitude == 0) {
    return;
  }
  char reversed[20];
  int length = 0;
  for (; magnitude != 0; magnitude /= 10) {
    reversed[length++] = static_cast<char>('0' + magnitude % 10);
  }
  for (int k = 0; k < length; ++k) {
    digits.digit[k] = reversed[length - 1 - k];
  }
  digits.count = length;
  digits.point = length;
  while (digits.digit[digits.count - 1] == '0') {
    --digits.count;
  }
}

// Keeps `fraction` fraction digits at most, rounding half to even.
void round(Digits& digits, int fraction) {
  const int keep = digits.point + fraction;
  if (keep >= digits.count) {
    return;
  }
  if (keep < 0) {  // below half a unit of the last place kept
    digits.count = 0;
    digits.point = 0;
    return;
  }
  const char first = digits.digit[keep];
  const bool odd = keep > 0 && (digits.digit[keep - 1] - '0') % 2 == 1;
  const bool up = first > '5' || (first == '5' && (digits.count > keep + 1 || odd));
  digits.count = keep;
  if (up) {
    int at = keep - 1;
    while (at >= 0 && digits.digit[at] == '9') {
      --at;
    }
    if (at < 0) {  // 9.99 becomes 10
      digits.digit[0] = '1';
      digits.count = 1;
      ++digits.point;
    } else {
      ++digits.digit[at];
      digits.count = at + 1;
    }
  }
  while (digits.count > 0 && digits.digit[digits.count - 1] == '0') {
    --digits.count;
  }
  if (digits.count == 0) {
    digits.point = 0;
  }
}

// Appends to a buffer that is big enough for every number (see NumberText);
// it cuts rather than overruns all the same.
class Writer {
 public:
  Writer(char* buffer, std::size_t size) : at(buffer), end(buffer + size - 1) { *at = '\0'; }
  void add(const char* text) {
    const std::size_t length = std::min(std::strlen(text), static_cast<std::size_t>(end - at));
    std::memcpy(at, text, length);
    at += length;
    *at = '\0';
  }
  void add(char c) {
    if (at < end) {
      *at++ = c;
      *at = '\0';
    }
  }

 private:
  char* at;
  char* end;
};

// The digit at `index` of 0.d1d2...dn x 10^point: zero outside the digits.
char digitAt(const Digits& digits, int index) {
  return index >= 0 && index < digits.count ? digits.digit[index] : '0';
}

// A row of the generated table with its offsets made pointers.
NumberStyleSymbols styleOf(const NumberStyleRow& row) {
  const char* texts = kNumberSymbolTexts;
  return NumberStyleSymbols{texts + row.positivePrefix,
                            texts + row.positiveSuffix,
                            texts + row.negativePrefix,
                            texts + row.negativeSuffix,
                            row.primary,
                            row.secondary,
                            row.minimumGrouping};
}

NumberSymbols symbolsOf(const NumberSymbolRow& row) {
  NumberSymbols symbols;
  for (int d = 0; d < 10; ++d) {
    symbols.digits[d] = kNumberSymbolTexts + row.digits[d];
  }
  symbols.decimal = kNumberSymbolTexts + row.decimal;
  symbols.group = kNumberSymbolTexts + row.group;
  symbols.infinity = kNumberSymbolTexts + row.infinity;
  symbols.nan = kNumberSymbolTexts + row.nan;
  symbols.number = styleOf(row.number);
  symbols.percent = styleOf(row.percent);
  return symbols;
}

// True if a group separator goes before the integer digit with `right`
// digits (itself included) to its right, in an integer part of `length`.
bool groupBefore(const NumberStyleSymbols& style, int right, int length) {
  if (style.primary == 0 || length < style.primary + style.minimumGrouping || right == length) {
    return false;
  }
  const int secondary = style.secondary != 0 ? style.secondary : style.primary;
  return right == style.primary ||
         (right > style.primary && (right - style.primary) % secondary == 0);
}

}  // namespace

NumberSymbols numberSymbolsFor(Language language) {
  const auto packed = [](char a, char b, char c, char d) {
    return (std::uint32_t{static_cast<unsigned char>(a)} << 24) |
           (std::uint32_t{static_cast<unsigned char>(b)} << 16) |
           (std::uint32_t{static_cast<unsigned char>(c)} << 8) | static_cast<unsigned char>(d);
  };
  const char* tag = language.tagChars;
  const std::uint32_t keys[2] = {packed(tag[0], tag[1], tag[2], tag[3]),
                                 packed(tag[0], tag[1], 0, 0)};
  const std::uint32_t* first = kNumberSymbolTags;
  const std::uint32_t* last = kNumberSymbolTags + kNumberSymbolRowCount;
  for (const std::uint32_t key : keys) {
    const std::uint32_t* found = std::lower_bound(first, last, key);
    if (found != last && *found == key) {
      return symbolsOf(kNumberSymbolRows[found - first]);
    }
  }
  return symbolsOf(kNumberRootRow);
}

void formatNumber(const NumberSymbols& symbols, const NumberArgument& argument, NumberText& text) {
  const NumberStyleSymbols& style =
      argument.style == NumberArgument::Style::percent ? symbols.percent : symbols.number;
  const bool negative = argument.integral ? argument.negative : std::signbit(argument.value);
  Writer shown(text.shown, sizeof text.shown);
  Writer plain(text.plain, sizeof text.plain);
  shown.add(negative ? style.negativePrefix : style.positivePrefix);
  const char* suffix = negative ? style.negativeSuffix : style.positiveSuffix;

  if (!argument.integral && !std::isfinite(argument.value)) {
    shown.add(std::isnan(argument.value) ? symbols.nan : symbols.infinity);
    shown.add(suffix);
    return;  // no digits, so no plural operands: the count takes `other`
  }

  Digits digits;
  if (argument.integral) {
    readInteger(argument.magnitude, digits);
  } else if (const double magnitude = std::fabs(argument.value);
             magnitude < 0x1p53 && magnitude == std::floor(magnitude)) {
    // A whole number below 2^53 is exact: its digits are the shortest ones,
    // and reading them as an integer is quicker.
    readInteger(static_cast<std::uint64_t>(magnitude), digits);
  } else {
    readDouble(magnitude, digits);
  }
  round(digits, argument.decimals < 0 ? 3 : argument.decimals);
  if (negative) {
    plain.add('-');
  }

  const int length = digits.count > 0 && digits.point > 0 ? digits.point : 1;
  const int offset = digits.count > 0 && digits.point > 0 ? 0 : digits.point - 1;
  for (int k = 0; k < length; ++k) {
    const char digit = digitAt(digits, offset + k);
    if (groupBefore(style, length - k, length)) {
      shown.add(symbols.group);
    }
    shown.add(symbols.digits[digit - '0']);
    plain.add(digit);
  }
  const int fraction =
      argument.decimals >= 0 ? argument.decimals : std::max(0, digits.count - digits.point);
  if (fraction > 0) {
    shown.add(symbols.decimal);
    plain.add('.');
    for (int k = 0; k < fraction; ++k) {
      const char digit = digitAt(digits, digits.point + k);
      shown.add(symbols.digits[digit - '0']);
      plain.add(digit);
    }
  }
  shown.add(suffix);
}

}  // namespace msg
