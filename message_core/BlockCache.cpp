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
struct CachedBlocks {
  char* blocks[kCachedBlocks];
  unsigned count;
};
struct ThreadBlocks {
  CachedBlocks kinds[2];  // by BlockKind
  bool armed;             // the closer below has been registered for this thread
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
    for (CachedBlocks& kind : cache.kinds) {
      while (kind.count > 0) {
        delete[] kind.blocks[--kind.count];
      }
    }
    cache.closed = true;
  }
  void arm() { threadBlocks.armed = true; }
};
thread_local ThreadBlocksCloser threadBlocksCloser;

}  // namespace

char* takeCachedBlock(BlockKind kind, std::size_t size) {
  CachedBlocks& cached = threadBlocks.kinds[static_cast<int>(kind)];
  if (cached.count > 0) {
    return cached.blocks[--cached.count];
  }
  return new char[size];
}

void giveCachedBlock(BlockKind kind, char* block) noexcept {
  ThreadBlocks& cache = threadBlocks;
  CachedBlocks& cached = cache.kinds[static_cast<int>(kind)];
  if (cache.closed || cached.count == kCachedBlocks) {
    delete[] block;
    return;
  }
  if (!cache.armed) {
    threadBlocksCloser.arm();
  }
  cached.blocks[cached.count++] = block;
}

}  // namespace msg
