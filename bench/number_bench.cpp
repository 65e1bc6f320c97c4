// Number render: the lookup of a German text, one msg::number(double) and one
// string, into a finished string; beside it the same text with two string
// arguments (the plain render of W2's path) and ICU's MessageFormat with a
// cached "{0,number}" pattern doing the same. And the number alone.

#include <benchmark/benchmark.h>

#include <string>

#include "Peers.h"
#include "message_core/NumberFormat.h"
#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageHandler.h"
#include "msg/Number.h"

#ifdef MSG_BENCH_WITH_ICU
#include <unicode/fmtable.h>
#include <unicode/locid.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>
#endif

namespace msg_bench {
namespace {

constexpr char kNamespace[] = "bench";
constexpr char kText[] = "Die Datei &1 ist &0 Bytes groß.";
constexpr char kFile[] = "/srv/archiv/bericht.pdf";
// Sizes with and without fraction digits, large and small, as a program's are.
constexpr double kValues[8] = {1234.5, 0.25, 1048576.0, 3.14159, 99.5, 12345678.9, 7.0, 0.001};
constexpr char kValueTexts[8][16] = {"1.234,5", "0,25",         "1.048.576", "3,142",
                                     "99,5",    "12.345.678,9", "7",         "0,001"};

msg::MessageHandler& handler() {
  static msg::MessageHandler* made = [] {
    auto* made = new msg::MessageHandler();
    made->setLanguageList(msg::LanguageList::parse("de"));
    new msg::MTE(msg::info, "de", kNamespace, "size", kText, made, false, true);
    return made;
  }();
  return *made;
}

std::string renderNumber(double value) {
  msg::Message message(&handler(), kNamespace, "size");
  message.substitute(0, msg::number(value));
  message.substitute(1, kFile);
  return message.getMessage();
}

std::string renderPlain(const char* value) {
  msg::Message message(&handler(), kNamespace, "size");
  message.substitute(0, value);
  message.substitute(1, kFile);
  return message.getMessage();
}

std::string expected(std::size_t k) {
  return std::string("Die Datei ") + kFile + " ist " + kValueTexts[k] + " Bytes groß.";
}

void NumberRenderMsg(benchmark::State& state) {
  for (std::size_t k = 0; k < 8; ++k) {
    if (renderNumber(kValues[k]) != expected(k)) {
      state.SkipWithError(("msg gave " + renderNumber(kValues[k])).c_str());
      return;
    }
  }
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(renderNumber(kValues[next++ & 7]));
  }
}
BENCHMARK(NumberRenderMsg)->Name("number_render/msg");

void PlainRenderMsg(benchmark::State& state) {
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(renderPlain(kValueTexts[next++ & 7]));
  }
}
BENCHMARK(PlainRenderMsg)->Name("number_render/msg_same_text_strings");

#ifdef MSG_BENCH_WITH_ICU
void NumberRenderIcuCached(benchmark::State& state) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::MessageFormat format(
      icu::UnicodeString::fromUTF8("Die Datei {1} ist {0,number} Bytes groß."), icu::Locale("de"),
      status);
  if (U_FAILURE(status)) {
    state.SkipWithError("ICU refused the pattern");
    return;
  }
  const auto renderIcu = [&](double value) {
    const icu::Formattable arguments[2] = {icu::Formattable(value),
                                           icu::Formattable(icu::UnicodeString(kFile))};
    return formatIcu(format, arguments);
  };
  for (std::size_t k = 0; k < 8; ++k) {
    if (renderIcu(kValues[k]) != expected(k)) {
      state.SkipWithError(("ICU gave " + renderIcu(kValues[k])).c_str());
      return;
    }
  }
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(renderIcu(kValues[next++ & 7]));
  }
}
BENCHMARK(NumberRenderIcuCached)->Name("number_render/icu_cached_pattern");
#endif

// The number alone, into the record's buffer of a number.
void NumberAlone(benchmark::State& state) {
  const msg::NumberSymbols& symbols = msg::numberSymbolsFor(msg::Language("de"));
  msg::NumberText text;
  std::size_t next = 0;
  for (auto _ : state) {
    msg::formatNumber(symbols, msg::number(kValues[next++ & 7]), text);
    benchmark::DoNotOptimize(text.shown[0]);
  }
}
BENCHMARK(NumberAlone)->Name("number_format/de_double");

}  // namespace
}  // namespace msg_bench
