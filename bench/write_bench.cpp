// W5 write path: one record, made once and reused, written again and again
// through writeMessage3, to a channel that does nothing and through a
// FormattingMessageChannel whose onMessageLine discards the lines. The heap
// allocations per write are counted.

#include <benchmark/benchmark.h>

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

}  // namespace
}  // namespace msg_bench
