#include "platform/PageMapping.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

// The leak checker of AddressSanitizer scans the heap, not mappings made
// here; blocks that point into the heap (a slot array pointing at large key
// groups) are handed to it as roots.
#if defined(__SANITIZE_ADDRESS__)
#define MSG_LEAK_CHECKED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MSG_LEAK_CHECKED 1
#endif
#endif
#if defined(MSG_LEAK_CHECKED)
#include <sanitizer/lsan_interface.h>
#endif

namespace msg {
namespace platform {

namespace {

std::atomic<std::size_t> mappedTotal{0};

}  // namespace

#if defined(__linux__)

namespace {

void noteMapped(void* block, std::size_t bytes) {
  mappedTotal.fetch_add(bytes, std::memory_order_relaxed);
#if defined(MSG_LEAK_CHECKED)
  __lsan_register_root_region(block, bytes);
#else
  (void)block;
#endif
}

void noteUnmapped(void* block, std::size_t bytes) {
  mappedTotal.fetch_sub(bytes, std::memory_order_relaxed);
#if defined(MSG_LEAK_CHECKED)
  __lsan_unregister_root_region(block, bytes);
#else
  (void)block;
#endif
}

}  // namespace

void* mapBlock(std::size_t bytes) {
  // Map one huge page more than asked and cut the ragged ends off, so that
  // the block starts on a huge-page boundary.
  const std::size_t span = bytes + kHugePageSize;
  void* mapped = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) {
    throw std::bad_alloc();
  }
  const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(mapped);
  const std::uintptr_t aligned = (start + kHugePageSize - 1) / kHugePageSize * kHugePageSize;
  if (aligned > start) {
    munmap(mapped, aligned - start);
  }
  const std::uintptr_t end = start + span;
  if (end > aligned + bytes) {
    munmap(reinterpret_cast<void*>(aligned + bytes), end - (aligned + bytes));
  }
#if defined(MADV_HUGEPAGE)
  // A hint: without huge pages the block works the same.
  (void)madvise(reinterpret_cast<void*>(aligned), bytes, MADV_HUGEPAGE);
#endif
  noteMapped(reinterpret_cast<void*>(aligned), bytes);
  return reinterpret_cast<void*>(aligned);
}

void unmapBlock(void* block, std::size_t bytes) noexcept {
  if (block == nullptr) {
    return;
  }
  noteUnmapped(block, bytes);
  munmap(block, bytes);
}

#else

void* mapBlock(std::size_t bytes) {
  void* block = ::operator new (bytes, std::align_val_t{kHugePageSize});
  std::memset(block, 0, bytes);
  mappedTotal.fetch_add(bytes, std::memory_order_relaxed);  // heap: no root to register
  return block;
}

void unmapBlock(void* block, std::size_t bytes) noexcept {
  if (block == nullptr) {
    return;
  }
  ::operator delete (block, std::align_val_t{kHugePageSize});
  mappedTotal.fetch_sub(bytes, std::memory_order_relaxed);
}

#endif

std::size_t mappedBytes() noexcept {
  return mappedTotal.load(std::memory_order_relaxed);
}

}  // namespace platform
}  // namespace msg
