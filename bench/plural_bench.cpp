// Plural render: the lookup, the choice of the variant by the count and two
// arguments, into a finished string; beside it the plain render of the same
// text (W2's path with two arguments) and ICU's MessageFormat with a cached
// pattern doing the same plural. And the choice of a category alone.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <string>

#include "Peers.h"
#include "message_core/MessageTable.h"
#include "message_core/PluralForms.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageHandler.h"
#include "msg/Plural.h"
#include "msg/Typed.h"

#ifdef MSG_BENCH_WITH_ICU
#include <unicode/fmtable.h>
#include <unicode/locid.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>
#endif

namespace msg_bench {
namespace {

constexpr char kNamespace[] = "bench";
constexpr char kOther[] = "&0 files were copied to &1.";
constexpr char kOne[] = "&0 file was copied to &1.";
constexpr char kFolder[] = "/srv/archive";
// Counts that take both forms, as a program's counts do.
constexpr int kCounts[8] = {1, 2, 5, 1, 21, 100, 3, 1};

// A handler with the plural key "copied" and the plain key "plain" of the
// same `other` text.
class PluralHandler : public msg::MessageHandler {
 public:
  PluralHandler() {
    const msg::MTE* entry =
        new msg::MTE(msg::info, "en", kNamespace, "copied", kOther, this, false, true);
    auto forms = std::make_unique<msg::PluralForms>(msg::PluralKind::cardinal, 0,
                                                    msg::Language("en"), entry->getText());
    forms->setText(msg::PluralCategory::one, forms->keep(kOne));
    messageTableOf(*this)->attachPluralForms(entry, std::move(forms));
    new msg::MTE(msg::info, "en", kNamespace, "plain", kOther, this, false, true);
  }
};

PluralHandler& handler() {
  static PluralHandler made;
  return made;
}

std::string render(const char* identifier, int count) {
  msg::Message message(&handler(), kNamespace, identifier);
  msg::fill(message, count, kFolder);
  return message.getMessage();
}

void PluralRenderMsg(benchmark::State& state) {
  if (render("copied", 1) != "1 file was copied to /srv/archive." ||
      render("copied", 5) != "5 files were copied to /srv/archive.") {
    state.SkipWithError("msg chose the wrong variant");
    return;
  }
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(render("copied", kCounts[next++ & 7]));
  }
}
BENCHMARK(PluralRenderMsg)->Name("plural_render/msg");

void PlainRenderMsg(benchmark::State& state) {
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(render("plain", kCounts[next++ & 7]));
  }
}
BENCHMARK(PlainRenderMsg)->Name("plural_render/msg_same_text_plain");

#ifdef MSG_BENCH_WITH_ICU
void PluralRenderIcuCached(benchmark::State& state) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::MessageFormat format(
      icu::UnicodeString::fromUTF8("{0, plural, one {# file was copied to {1}.} other {# files "
                                   "were copied to {1}.}}"),
      icu::Locale("en"), status);
  if (U_FAILURE(status)) {
    state.SkipWithError("ICU refused the pattern");
    return;
  }
  const auto renderIcu = [&](int count) {
    const icu::Formattable arguments[2] = {icu::Formattable(count),
                                           icu::Formattable(icu::UnicodeString(kFolder))};
    return formatIcu(format, arguments);
  };
  if (renderIcu(1) != "1 file was copied to /srv/archive.") {
    state.SkipWithError(("ICU gave " + renderIcu(1)).c_str());
    return;
  }
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(renderIcu(kCounts[next++ & 7]));
  }
}
BENCHMARK(PluralRenderIcuCached)->Name("plural_render/icu_cached_pattern");
#endif

// The category alone, from the count's text as shown.
void CategoryOfInteger(benchmark::State& state) {
  const char* const texts[4] = {"1", "22", "105", "7"};
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        msg::Plurals::category(msg::Language("pl"), msg::PluralKind::cardinal, texts[next++ & 3]));
  }
}
BENCHMARK(CategoryOfInteger)->Name("plural_category/integer_pl");

void CategoryOfDecimal(benchmark::State& state) {
  const char* const texts[4] = {"1.5", "22.25", "0.125", "7.0"};
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        msg::Plurals::category(msg::Language("pl"), msg::PluralKind::cardinal, texts[next++ & 3]));
  }
}
BENCHMARK(CategoryOfDecimal)->Name("plural_category/decimal_pl");

}  // namespace
}  // namespace msg_bench
