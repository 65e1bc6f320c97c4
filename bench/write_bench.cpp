// W5 write path: one record, made once and reused, written again and again
// through writeMessage3, to a channel that does nothing and through a
// FormattingMessageChannel whose onMessageLine discards the lines. The heap
// allocations per write are counted.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>

#include "AllocationCounter.h"
#include "BenchSupport.h"
#include "msg/FormattingMessageChannel.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"

namespace msg_bench {
namespace {

class NullChannel : public msg::MessageChannel {
 protected:
  void onMessage(const msg::Message& message) override {
    benchmark::DoNotOptimize(message.getMessage());
  }
};

class DiscardingFormattingChannel : public msg::FormattingMessageChannel {
 public:
  void onMessageLine(bool, bool, const char* line) override { benchmark::DoNotOptimize(line); }
};

// The first key whose text has three arguments, so that every argument of
// writeMessage3 is used.
const char* keyWithThreeArguments() {
  const std::vector<Entry>& entries = standardEntries();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (preferredText(entries[i], i).arguments.size() == 3) {
      return entries[i].identifier.c_str();
    }
  }
  return entries[0].identifier.c_str();
}

void writeReused(benchmark::State& state, msg::MessageChannel* channel) {
  // A child of the standard handler: it finds the catalogue through its
  // parent and has the channel to itself.
  msg::MessageHandler handler(&standardHandler());
  handler.setMessageChannel(channel, false);
  handler.setMessageChannel2(nullptr, false);
  msg::Message record(&handler, kNamespace, keyWithThreeArguments());
  handler.writeMessage3(record, kArgument0, kArgument1, kArgument2);  // buffers made here

  const std::uint64_t before = allocationCount();
  for (auto _ : state) {
    handler.writeMessage3(record, kArgument0, kArgument1, kArgument2);
  }
  state.counters["allocs_per_write"] = benchmark::Counter(
      static_cast<double>(allocationCount() - before), benchmark::Counter::kAvgIterations);
}

void W5NullChannel(benchmark::State& state) {
  NullChannel channel;
  writeReused(state, &channel);
}
BENCHMARK(W5NullChannel)->Name("W5_write/msg_null_channel");

void W5FormattingChannel(benchmark::State& state) {
  DiscardingFormattingChannel channel;
  writeReused(state, &channel);
}
BENCHMARK(W5FormattingChannel)->Name("W5_write/msg_formatting_channel");

// Layout alone: one message of 160 bytes through the formatting channel's
// default header and 60 columns, in ASCII (byte model), Cyrillic and
// Japanese (Unicode model). The three texts have the same byte length, so
// the Unicode model's cost shows against the byte model's.
const char kAsciiText[] =
    "The archive on /srv/data will be reorganised tonight between one and three. Files stay "
    "readable all the time, but changes made while it runs may be lost, sorry.";
const char kCyrillicText[] =  // "Архив на /srv/data будет реорганизован этой ночью. ..."
    "\xD0\x90\xD1\x80\xD1\x85\xD0\xB8\xD0\xB2 \xD0\xBD\xD0\xB0 /srv/data "
    "\xD0\xB1\xD1\x83\xD0\xB4\xD0\xB5\xD1\x82 \xD1\x80\xD0\xB5\xD0\xBE\xD1\x80"
    "\xD0\xB3\xD0\xB0\xD0\xBD\xD0\xB8\xD0\xB7\xD0\xBE\xD0\xB2\xD0\xB0\xD0\xBD "
    "\xD1\x8D\xD1\x82\xD0\xBE\xD0\xB9 \xD0\xBD\xD0\xBE\xD1\x87\xD1\x8C\xD1\x8E. "
    "\xD0\xA4\xD0\xB0\xD0\xB9\xD0\xBB\xD1\x8B \xD0\xBE\xD1\x81\xD1\x82\xD0\xB0"
    "\xD1\x8E\xD1\x82\xD1\x81\xD1\x8F \xD0\xB4\xD0\xBE\xD1\x81\xD1\x82\xD1\x83"
    "\xD0\xBF\xD0\xBD\xD1\x8B\xD0\xBC\xD0\xB8 \xD0\xB2\xD1\x81\xD1\x91 "
    "\xD0\xB2\xD1\x80\xD0\xB5\xD0\xBC\xD1\x8F. \xD0\x92\xD1\x81\xD1\x91!";
const char kJapaneseText[] =  // "/srv/data のアーカイブは今夜一時から三時の間に再編成されます。..."
    "/srv/data \xE3\x81\xAE\xE3\x82\xA2\xE3\x83\xBC\xE3\x82\xAB\xE3\x82\xA4"
    "\xE3\x83\x96\xE3\x81\xAF\xE4\xBB\x8A\xE5\xA4\x9C\xE4\xB8\x80\xE6\x99\x82"
    "\xE3\x81\x8B\xE3\x82\x89\xE4\xB8\x89\xE6\x99\x82\xE3\x81\xAE\xE9\x96\x93"
    "\xE3\x81\xAB\xE5\x86\x8D\xE7\xB7\xA8\xE6\x88\x90\xE3\x81\x95\xE3\x82\x8C"
    "\xE3\x81\xBE\xE3\x81\x99\xE3\x80\x82\xE3\x83\x95\xE3\x82\xA1\xE3\x82\xA4"
    "\xE3\x83\xAB\xE3\x81\xAF\xE5\xB8\xB8\xE3\x81\xAB\xE8\xAA\xAD\xE3\x82\x81"
    "\xE3\x81\xBE\xE3\x81\x99\xE3\x80\x82"
    "\xE5\xA4\x89\xE6\x9B\xB4\xE3\x81\xAF\xE5\xA4\xB1\xE3\x82\x8F\xE3\x82\x8C"
    "\xE3\x82\x8B\xE4\xBA\x8B\xE3\x81\x8C\xE3\x81\x82\xE3\x82\x8B\xE3\x80\x82";

void layOut(benchmark::State& state, const char* text) {
  DiscardingFormattingChannel channel;
  const msg::Message record("demo", "maintenance", msg::info, msg::Language("en"), text);
  channel.onMessage(record);  // a thread's break iterators are made here
  const std::uint64_t before = allocationCount();
  for (auto _ : state) {
    channel.onMessage(record);
  }
  state.counters["allocs_per_write"] = benchmark::Counter(
      static_cast<double>(allocationCount() - before), benchmark::Counter::kAvgIterations);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(std::strlen(text)));
}

void W5LayoutAscii(benchmark::State& state) {
  layOut(state, kAsciiText);
}
BENCHMARK(W5LayoutAscii)->Name("W5_layout/msg_ascii");

void W5LayoutCyrillic(benchmark::State& state) {
  layOut(state, kCyrillicText);
}
BENCHMARK(W5LayoutCyrillic)->Name("W5_layout/msg_cyrillic");

void W5LayoutJapanese(benchmark::State& state) {
  layOut(state, kJapaneseText);
}
BENCHMARK(W5LayoutJapanese)->Name("W5_layout/msg_japanese");

}  // namespace
}  // namespace msg_bench
