#include "message_core/IndexArena.h"

#include <cstring>
#include <new>

#include "platform/PageMapping.h"

namespace msg {

namespace {

constexpr std::size_t kFirstChunkSize = std::size_t{16} << 10;

std::size_t roundUp(std::size_t bytes, std::size_t step) {
  return (bytes + step - 1) / step * step;
}

// Blocks from this size on are mapped from the system, in whole huge pages.
constexpr std::size_t kMappedSize = platform::kHugePageSize;

bool mapped(std::size_t bytes) {
  return bytes >= kMappedSize;
}

// Large chunks stop growing here, so that the last one, partly used, wastes
// little.
constexpr std::size_t kLargestChunkSize = std::size_t{8} << 20;

}  // namespace

void* IndexArena::allocate(std::size_t bytes) {
  bytes = roundUp(bytes == 0 ? 1 : bytes, kGranule);
  if (bytes > kLargestPooled) {
    return ::operator new(bytes);
  }
  void*& freeBlock = freeBlocks[bytes / kGranule];
  if (freeBlock != nullptr) {
    void* block = freeBlock;
    std::memcpy(&freeBlock, block, sizeof freeBlock);
    return block;
  }
  if (static_cast<std::size_t>(limit - cursor) < bytes) {
    openChunk(bytes);
  }
  void* block = cursor;
  cursor += bytes;
  return block;
}

void IndexArena::release(void* block, std::size_t bytes) noexcept {
  if (block == nullptr) {
    return;
  }
  bytes = roundUp(bytes == 0 ? 1 : bytes, kGranule);
  if (bytes > kLargestPooled) {
    ::operator delete(block);
    return;
  }
  void*& freeBlock = freeBlocks[bytes / kGranule];
  std::memcpy(block, &freeBlock, sizeof freeBlock);
  freeBlock = block;
}

void IndexArena::openChunk(std::size_t bytes) {
  std::size_t size = nextChunkSize == 0 ? kFirstChunkSize : nextChunkSize;
  size = roundUp(size < sizeof(Chunk) + bytes ? sizeof(Chunk) + bytes : size, kGranule);
  void* memory;
  if (mapped(size)) {
    // Whole huge pages only; a chunk this size holds far more than a block.
    size = size / kMappedSize * kMappedSize;
    memory = platform::mapBlock(size);
  } else {
    memory = ::operator new(size);
  }
  // The rest of the current chunk is given up; it is less than one block.
  Chunk* chunk = new (memory) Chunk{newest, size};
  newest = chunk;
  heldBytes += size;
  cursor = static_cast<char*>(memory) + sizeof(Chunk);
  limit = static_cast<char*>(memory) + size;
  // Growing by an eighth of what is held, not doubling: the unused end of the
  // newest chunk is the arena's waste, and it stays below a ninth of what the
  // arena holds (the groups are most of the index's heap).
  nextChunkSize = heldBytes / 8;
  if (nextChunkSize < kFirstChunkSize) {
    nextChunkSize = kFirstChunkSize;
  } else if (nextChunkSize > kLargestChunkSize) {
    nextChunkSize = kLargestChunkSize;
  }
}

void IndexArena::clear() noexcept {
  while (newest != nullptr) {
    Chunk* chunk = newest;
    newest = chunk->previous;
    if (mapped(chunk->size)) {
      platform::unmapBlock(chunk, chunk->size);
    } else {
      ::operator delete(chunk);
    }
  }
  std::memset(freeBlocks, 0, sizeof freeBlocks);
  cursor = nullptr;
  limit = nullptr;
  nextChunkSize = 0;
  heldBytes = 0;
}

void* allocateTable(std::size_t bytes) {
  if (mapped(bytes)) {
    return platform::mapBlock(roundUp(bytes, kMappedSize));
  }
  void* block = ::operator new(bytes);
  std::memset(block, 0, bytes);
  return block;
}

void releaseTable(void* block, std::size_t bytes) noexcept {
  if (mapped(bytes)) {
    platform::unmapBlock(block, roundUp(bytes, kMappedSize));
  } else {
    ::operator delete(block);
  }
}

}  // namespace msg
