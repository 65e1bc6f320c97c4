// W2 render: the lookup of W1 plus three string arguments, into a finished
// string, per contender. Before it is timed, every contender's result for
// every key is checked against the expected text.

#include <benchmark/benchmark.h>
#include <libintl.h>

#include <cstdio>
#include <memory>

#include "BenchSupport.h"
#include "Peers.h"
#include "msg/Message.h"

#ifdef MSG_BENCH_WITH_ICU
#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/locid.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>
#endif

#ifdef MSG_BENCH_WITH_FMT
#include <fmt/format.h>
#endif

namespace msg_bench {
namespace {

constexpr std::size_t kMask = kSequenceLength - 1;
const char* const kArguments[3] = {kArgument0, kArgument1, kArgument2};

// The expected finished text of every key, by identifier.
const std::unordered_map<std::string_view, std::string>& expectedTexts() {
  static const std::unordered_map<std::string_view, std::string> texts = [] {
    std::unordered_map<std::string_view, std::string> made;
    const std::vector<Entry>& entries = standardEntries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
      made.emplace(entries[i].identifier, preferredText(entries[i], i).fill(kArguments));
    }
    return made;
  }();
  return texts;
}

// Runs `render` (identifier -> finished UTF-8 text) over every key and
// gives a description of the first difference, or an empty string.
template <typename Render>
std::string checkRender(const char* contender, Render render) {
  for (const auto& [identifier, expected] : expectedTexts()) {
    const std::string got = render(std::string(identifier).c_str());
    if (got != expected) {
      return std::string(contender) + ": key " + std::string(identifier) + " gives \"" + got +
             "\", expected \"" + expected + "\"";
    }
  }
  return {};
}

// The record is made by key, filled and read, then destroyed: a render
// from nothing, as the peers do it.
std::string renderMsg(msg::MessageHandler& handler, const char* key) {
  msg::Message message(&handler, kNamespace, key);
  message.substitute(0, kArgument0);
  message.substitute(1, kArgument1);
  message.substitute(2, kArgument2);
  return message.getMessage();
}

void W2Msg(benchmark::State& state) {
  msg::MessageHandler& handler = standardHandler();
  static const std::string problem =
      checkRender("msg", [&](const char* key) { return renderMsg(handler, key); });
  if (!problem.empty()) {
    state.SkipWithError(problem.c_str());
    return;
  }
  const std::vector<const char*>& keys = standardSequenceKeys();
  std::size_t next = 0;
  for (auto _ : state) {
    msg::Message message(&handler, kNamespace, keys[next++ & kMask]);
    message.substitute(0, kArgument0);
    message.substitute(1, kArgument1);
    message.substitute(2, kArgument2);
    benchmark::DoNotOptimize(message.getMessage());
  }
}
BENCHMARK(W2Msg)->Name("W2_render/msg");

#ifdef MSG_BENCH_WITH_GETTEXT
// Positional conversions (%2$s) let a translation reorder its arguments.
int renderGettext(const char* domain, const char* key, char* out, std::size_t size) {
  return std::snprintf(out, size, dcgettext(domain, key, LC_MESSAGES), kArgument0, kArgument1,
                       kArgument2);
}

void W2Gettext(benchmark::State& state) {
  const char* domain = gettextDomain();
  static const std::string problem = checkRender("gettext", [&](const char* key) {
    char out[512];
    renderGettext(domain, key, out, sizeof out);
    return std::string(out);
  });
  if (!problem.empty()) {
    state.SkipWithError(problem.c_str());
    return;
  }
  const std::vector<const char*>& keys = standardSequenceKeys();
  std::size_t next = 0;
  char out[512];
  for (auto _ : state) {
    benchmark::DoNotOptimize(renderGettext(domain, keys[next++ & kMask], out, sizeof out));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(W2Gettext)->Name("W2_render/gettext+snprintf");
#endif

#ifdef MSG_BENCH_WITH_ICU
// The arguments as ICU takes them, converted once: in ICU's favour.
const icu::Formattable* icuArguments() {
  static const icu::Formattable arguments[3] = {
      icu::Formattable(icu::UnicodeString::fromUTF8(kArgument0)),
      icu::Formattable(icu::UnicodeString::fromUTF8(kArgument1)),
      icu::Formattable(icu::UnicodeString::fromUTF8(kArgument2))};
  return arguments;
}

const icu::Locale& icuLocale() {
  static const icu::Locale locale("de", "AT");
  return locale;
}

// The pattern is read from the bundle and compiled on every call.
void renderIcuPerCall(const char* key, icu::UnicodeString& result) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = 0;
  const UChar* pattern = ures_getStringByKey(icuBundle(), key, &length, &status);
  icu::MessageFormat format(icu::UnicodeString(false, pattern, length), icuLocale(), status);
  icu::FieldPosition position(icu::FieldPosition::DONT_CARE);
  result.remove();
  format.format(icuArguments(), 3, result, position, status);
}

std::string toUtf8(const icu::UnicodeString& text) {
  std::string out;
  text.toUTF8String(out);
  return out;
}

using IcuRender = void (*)(const char* key, icu::UnicodeString& result);

// Why ICU cannot take part, or empty once `render` gives the expected texts.
std::string icuRenderProblem(IcuRender render) {
  const std::string bundleProblem = checkIcu();
  return !bundleProblem.empty() ? bundleProblem : checkRender("ICU", [render](const char* key) {
    icu::UnicodeString result;
    render(key, result);
    return toUtf8(result);
  });
}

void timeIcuRender(benchmark::State& state, const std::string& problem, IcuRender render) {
  if (!problem.empty()) {
    state.SkipWithError(problem.c_str());
    return;
  }
  const std::vector<const char*>& keys = standardSequenceKeys();
  std::size_t next = 0;
  icu::UnicodeString result;
  for (auto _ : state) {
    render(keys[next++ & kMask], result);
    benchmark::DoNotOptimize(result.getBuffer());
  }
}

void W2IcuPerCall(benchmark::State& state) {
  static const std::string problem = icuRenderProblem(renderIcuPerCall);
  timeIcuRender(state, problem, renderIcuPerCall);
}
BENCHMARK(W2IcuPerCall)->Name("W2_render/icu_pattern_per_call");

// One compiled MessageFormat per key, made before the run and found by key.
const std::unordered_map<std::string_view, std::unique_ptr<icu::MessageFormat>>& icuFormats() {
  static const auto formats = [] {
    std::unordered_map<std::string_view, std::unique_ptr<icu::MessageFormat>> made;
    for (const Entry& entry : standardEntries()) {
      UErrorCode status = U_ZERO_ERROR;
      int32_t length = 0;
      const UChar* pattern =
          ures_getStringByKey(icuBundle(), entry.identifier.c_str(), &length, &status);
      made.emplace(entry.identifier,
                   std::make_unique<icu::MessageFormat>(icu::UnicodeString(false, pattern, length),
                                                        icuLocale(), status));
    }
    return made;
  }();
  return formats;
}

void renderIcuCached(const char* key, icu::UnicodeString& result) {
  UErrorCode status = U_ZERO_ERROR;
  icu::FieldPosition position(icu::FieldPosition::DONT_CARE);
  result.remove();
  icuFormats().find(key)->second->format(icuArguments(), 3, result, position, status);
}

void W2IcuCached(benchmark::State& state) {
  static const std::string problem = icuRenderProblem(renderIcuCached);
  timeIcuRender(state, problem, renderIcuCached);
}
BENCHMARK(W2IcuCached)->Name("W2_render/icu_cached_pattern");
#endif

#ifdef MSG_BENCH_WITH_FMT
// The floor: the text found in a std::unordered_map and formatted by fmt
// with a format string known only at run time.
const std::unordered_map<std::string_view, std::string>& fmtTexts() {
  static const auto texts = [] {
    std::unordered_map<std::string_view, std::string> made;
    const std::vector<Entry>& entries = standardEntries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
      made.emplace(entries[i].identifier,
                   preferredText(entries[i], i).render(PlaceholderSyntax::kBraces));
    }
    return made;
  }();
  return texts;
}

std::string renderFmt(const char* key) {
  return fmt::format(fmt::runtime(fmtTexts().find(key)->second), kArgument0, kArgument1,
                     kArgument2);
}

void W2Fmt(benchmark::State& state) {
  static const std::string problem = checkRender("fmt", renderFmt);
  if (!problem.empty()) {
    state.SkipWithError(problem.c_str());
    return;
  }
  const std::vector<const char*>& keys = standardSequenceKeys();
  std::size_t next = 0;
  for (auto _ : state) {
    std::string result = renderFmt(keys[next++ & kMask]);
    benchmark::DoNotOptimize(result.data());
  }
}
BENCHMARK(W2Fmt)->Name("W2_render/fmt_floor");
#endif

}  // namespace
}  // namespace msg_bench
