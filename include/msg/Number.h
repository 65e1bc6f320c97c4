// Numbers as the reader's language writes them: msg::number() and
// msg::percent() arguments.

#ifndef MSG_NUMBER_H_
#define MSG_NUMBER_H_

#include <cstdint>
#include <type_traits>

namespace msg {

// A number argument that is written in the language of the text chosen for
// the message, when it is substituted: a de-AT text gives de-AT digits and
// separators, whatever the handler's first language is. Made by number()
// and percent(); Message::substitute(unsigned, const NumberArgument&)
// writes it.
//
// The text is what ICU's LocalizedNumberFormatter gives for the text's
// language with these skeletons (CLDR's symbols, digits of the language's
// default numbering system, grouping with its minimum grouping digits, and
// half-even rounding of the shortest decimal form of a double):
//
//   number(value)              ".###"               1.234,5 (de)
//   number(value, decimals)    ".00" (decimals 0s)  1.234,50 (de, 2)
//                              "precision-integer"  for 0 decimals
//   percent(value)             "percent .###"       12,5 % (de)
//   percent(value, decimals)   "percent .00"        12,50 % (de, 2)
//
// A negative value, negative zero included, keeps its minus sign ("-0");
// infinity and NaN are written with the language's symbols ("∞", "NaN").
// percent() does not multiply: percent(12.5) is 12.5 percent.
//
// As the count of a plural message, the number chooses its form as it is
// shown: number(1.5) is "one" in French, number(1, 1) ("1.0") "other" in
// English.
struct NumberArgument {
  // Which of number() and percent() made the argument.
  enum class Style : std::uint8_t { number, percent };

  double value;             // when !integral
  std::uint64_t magnitude;  // when integral: the absolute value
  bool integral;            // made from an integer type
  bool negative;            // when integral
  Style style;              // number() or percent()
  // Fraction digits: -1 for at most 3, else exactly this many (0 to 16).
  int decimals;
};

namespace number_detail {

constexpr int clampDecimals(int decimals) {
  return decimals < 0 ? 0 : (decimals > 16 ? 16 : decimals);
}

template <typename T>
constexpr NumberArgument make(T value, NumberArgument::Style style, int decimals) {
  static_assert(std::is_arithmetic_v<T> && !std::is_same_v<T, bool>,
                "msg::number and msg::percent take an integer or a floating-point value");
  if constexpr (std::is_integral_v<T>) {
    if constexpr (std::is_signed_v<T>) {
      // The magnitude of the most negative value does not fit T itself.
      const std::uint64_t magnitude = value < 0
                                          ? std::uint64_t{0} - static_cast<std::uint64_t>(value)
                                          : static_cast<std::uint64_t>(value);
      return NumberArgument{0.0, magnitude, true, value < 0, style, decimals};
    } else {
      return NumberArgument{0.0, static_cast<std::uint64_t>(value), true, false, style, decimals};
    }
  } else {
    return NumberArgument{static_cast<double>(value), 0, false, false, style, decimals};
  }
}

}  // namespace number_detail

// `value` (an integer or floating-point number) with at most 3 fraction
// digits.
template <typename T>
constexpr NumberArgument number(T value) {
  return number_detail::make(value, NumberArgument::Style::number, -1);
}

// `value` with exactly `decimals` fraction digits (0 to 16; less gives 0,
// more 16).
template <typename T>
constexpr NumberArgument number(T value, int decimals) {
  return number_detail::make(value, NumberArgument::Style::number,
                             number_detail::clampDecimals(decimals));
}

// `value` percent, with at most 3 fraction digits.
template <typename T>
constexpr NumberArgument percent(T value) {
  return number_detail::make(value, NumberArgument::Style::percent, -1);
}

// `value` percent with exactly `decimals` fraction digits (0 to 16).
template <typename T>
constexpr NumberArgument percent(T value, int decimals) {
  return number_detail::make(value, NumberArgument::Style::percent,
                             number_detail::clampDecimals(decimals));
}

}  // namespace msg

#endif  // MSG_NUMBER_H_
