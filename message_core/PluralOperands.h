// PluralOperands: the operands of CLDR's plural rules, read from a number
// as it is displayed.
//
// Private to the library: not installed, nothing here is exported. Inline,
// since a plural message reads its count on every render.

#ifndef MSG_MESSAGE_CORE_PLURALOPERANDS_H_
#define MSG_MESSAGE_CORE_PLURALOPERANDS_H_

#include <cstdint>

namespace msg {

// The operands of one number: i (integer digits), v and w (count of visible
// fraction digits with and without trailing zeros), f and t (those digits
// as a number). n is i and the fraction f / 10^v; c and e are always 0,
// since msg never shows a number in compact or exponent form.
//
// i keeps the value of its last 18 digits only; `wide` says that there were
// more. Every modulus in CLDR's rules is a power of ten up to 10^6, so
// "i mod m" stays exact, while a wide i itself is beyond every range.
struct PluralOperands {
  std::uint64_t i = 0;
  std::uint64_t f = 0;
  std::uint64_t t = 0;
  std::uint32_t v = 0;
  std::uint32_t w = 0;
  bool wide = false;

  // Reads "[-]digits[.digits]" (at least one digit before the point and, if
  // there is a point, at least one behind it). Returns false for anything
  // else, leaving *this unspecified. At most 18 fraction digits are
  // accepted; msg shows 16 at most.
  bool read(const char* text) {
    if (text == nullptr) {
      return false;
    }
    const char* at = text;
    if (*at == '-') {
      ++at;
    }
    i = 0;
    wide = false;
    std::uint32_t digits = 0;
    for (; isDigit(*at); ++at, ++digits) {
      // Keeps the value of the last 18 digits; their count says the rest.
      i = (i % kLastDigits) * 10 + static_cast<std::uint64_t>(*at - '0');
    }
    if (digits == 0) {
      return false;
    }
    wide = digits > 18;
    f = 0;
    t = 0;
    v = 0;
    w = 0;
    if (*at == '.') {
      ++at;
      std::uint32_t trailingZeros = 0;
      for (; isDigit(*at); ++at) {
        if (++v > 18) {
          return false;
        }
        f = f * 10 + static_cast<std::uint64_t>(*at - '0');
        trailingZeros = *at == '0' ? trailingZeros + 1 : 0;
      }
      if (v == 0) {
        return false;
      }
      w = v - trailingZeros;
      t = f;
      for (std::uint32_t k = 0; k < trailingZeros; ++k) {
        t /= 10;
      }
    }
    return *at == '\0';
  }

 private:
  static constexpr std::uint64_t kLastDigits = 100000000000000000;  // 10^17
  static bool isDigit(char c) { return c >= '0' && c <= '9'; }
};

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_PLURALOPERANDS_H_
