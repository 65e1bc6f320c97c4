// IndexArena: the memory of the key groups of one KeyIndex.
//
// Private to the library: it is not exported and its header is not installed.

#ifndef MSG_MESSAGE_CORE_INDEXARENA_H_
#define MSG_MESSAGE_CORE_INDEXARENA_H_

#include <cstddef>

namespace msg {

// Hands out small blocks from chunks that it owns, and gives them all back
// at once. A key group is a few dozen bytes that live as long as the index:
// cutting them from chunks saves the allocator's header and call per group,
// keeps the groups of one load together in memory, and lets the index forget
// all of them without a walk. A group that outgrows its block gives the
// block back, and the next group of that size takes it again.
//
// Each chunk is an eighth of what the arena holds, from 16 KiB to 8 MiB;
// from 2 MiB on, chunks are mapped from the system in whole huge pages
// (lookups at a million keys spend much of their time in address translation
// otherwise).
// Blocks above kLargestPooled bytes come from the general allocator, one by
// one; their owner gives them back through release like any other.
//
// Not thread-safe.
class IndexArena {
 public:
  // Blocks up to this size come from the chunks and are recycled by size.
  static constexpr std::size_t kLargestPooled = 512;

  IndexArena() = default;
  IndexArena(const IndexArena&) = delete;
  IndexArena& operator=(const IndexArena&) = delete;
  ~IndexArena() { clear(); }

  // A block of at least `bytes` bytes, aligned for a pointer. Throws
  // std::bad_alloc, changing nothing, if no memory is left.
  void* allocate(std::size_t bytes);

  // Takes back a block of allocate(bytes), with the same `bytes`.
  void release(void* block, std::size_t bytes) noexcept;

  // Gives back every chunk. Blocks above kLargestPooled are not tracked:
  // their owner must release them before.
  void clear() noexcept;

  // Bytes held in chunks, used or not (for tests and benchmarks).
  std::size_t chunkBytes() const { return heldBytes; }

 private:
  static constexpr std::size_t kGranule = sizeof(void*);
  static constexpr std::size_t kClassCount = kLargestPooled / kGranule + 1;

  // Opens a new chunk with room for at least `bytes`.
  void openChunk(std::size_t bytes);

  struct Chunk {
    Chunk* previous;
    std::size_t size;  // of the whole chunk, this header included
  };

  void* freeBlocks[kClassCount] = {};  // a free block holds the next one
  char* cursor = nullptr;
  char* limit = nullptr;
  Chunk* newest = nullptr;
  std::size_t nextChunkSize = 0;
  std::size_t heldBytes = 0;
};

// A zeroed block of `bytes` for a table, aligned for a pointer; one of 2 MiB
// or more is mapped from the system in huge pages. Throws std::bad_alloc.
void* allocateTable(std::size_t bytes);

// Gives back a block of allocateTable(bytes), with the same `bytes`.
void releaseTable(void* block, std::size_t bytes) noexcept;

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_INDEXARENA_H_
