// NumberFormat: msg::number() and msg::percent() arguments as text in the
// language of a message.
//
// Private to the library: not installed, nothing here is exported. The
// public face is msg/Number.h.

#ifndef MSG_MESSAGE_CORE_NUMBERFORMAT_H_
#define MSG_MESSAGE_CORE_NUMBERFORMAT_H_

#include <cstddef>

#include "message_core/NumberSymbolData.h"
#include "msg/Language.h"
#include "msg/Number.h"

namespace msg {

// One number written out, in two forms.
struct NumberText {
  // The largest double has 309 integer digits; with a digit of up to four
  // bytes, a separator of up to eight after every second digit, 16 fraction
  // digits and the texts around the number this is ample.
  static constexpr std::size_t kShownSize = 4096;
  static constexpr std::size_t kPlainSize = 400;

  // As the language writes it, UTF-8, terminated.
  char shown[kShownSize];
  // The same number in ASCII, "[-]digits[.digits]" with the fraction digits
  // that `shown` has, for the operands of plural rules; "" for infinity and
  // NaN.
  char plain[kPlainSize];
};

// The symbols of `language`: those of its own row if the table has one
// (de-CH), else those of its language (de-AT reads de), else the root's.
// The texts point into the immutable table: they may be used from any
// thread, for as long as the library is loaded.
NumberSymbols numberSymbolsFor(Language language);

// Writes `argument` with `symbols` into `text` (see msg/Number.h for what
// it gives). Never fails: every value has a text.
void formatNumber(const NumberSymbols& symbols, const NumberArgument& argument, NumberText& text);

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_NUMBERFORMAT_H_
