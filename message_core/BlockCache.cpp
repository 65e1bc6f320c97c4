#include "message_core/BlockCache.h"

namespace msg {

namespace {

// Blocks a thread keeps at most. A thread rarely holds more than a couple
// of records with buffers at once; the bound keeps a thread that only
// deletes records made elsewhere from hoarding their blocks.
constexpr unsigned kCachedBlocks = 4;

// Trivially destructible and zero-initialised, so reaching it needs no
// guard. `closed` is set once the thread's cache has been emptied at its
// end.
struct ThreadBlocks {
  char* blocks[kCachedBlocks];
  unsigned count;
  bool armed;  // the closer below has been registered for this thread
  bool closed;
};
thread_local ThreadBlocks threadBlocks;

// Empties the cache when its thread ends. Made (and its destructor
// registered) on the first use of arm(), that is when a thread first keeps a
// block.
struct ThreadBlocksCloser {
  ThreadBlocksCloser() {}
  ~ThreadBlocksCloser() {
    ThreadBlocks& cache = threadBlocks;
    while (cache.count > 0) {
      delete[] cache.blocks[--cache.count];
    }
    cache.closed = true;
  }
  void arm() { threadBlocks.armed = true; }
};
thread_local ThreadBlocksCloser threadBlocksCloser;

}  // namespace

char* takeCachedBlock() {
  ThreadBlocks& cache = threadBlocks;
  if (cache.count > 0) {
    return cache.blocks[--cache.count];
  }
  return new char[kCachedBlockSize];
}

void giveCachedBlock(char* block) noexcept {
  ThreadBlocks& cache = threadBlocks;
  if (cache.closed || cache.count == kCachedBlocks) {
    delete[] block;
    return;
  }
  if (!cache.armed) {
    threadBlocksCloser.arm();
  }
  cache.blocks[cache.count++] = block;
}

}  // namespace msg
