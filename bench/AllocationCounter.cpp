#include "AllocationCounter.h"

#include <malloc.h>

#include <cstddef>
#include <cstdlib>
#include <new>

#include "platform/PageMapping.h"

namespace {

std::uint64_t gAllocations = 0;
std::uint64_t gBytes = 0;

void* countedAllocate(std::size_t size) {
  ++gAllocations;
  gBytes += size;
  // malloc(0) may give null; operator new must give a unique pointer.
  void* p = std::malloc(size == 0 ? 1 : size);
  if (p == nullptr) {
    throw std::bad_alloc();
  }
  return p;
}

void* countedAllocateAligned(std::size_t size, std::align_val_t alignment) {
  ++gAllocations;
  gBytes += size;
  const std::size_t align = static_cast<std::size_t>(alignment);
  // aligned_alloc wants a size that is a multiple of the alignment.
  const std::size_t rounded = ((size == 0 ? 1 : size) + align - 1) / align * align;
  void* p = std::aligned_alloc(align, rounded);
  if (p == nullptr) {
    throw std::bad_alloc();
  }
  return p;
}

}  // namespace

namespace msg_bench {

std::uint64_t allocationCount() {
  return gAllocations;
}

std::uint64_t allocatedBytes() {
  return gBytes;
}

std::uint64_t heapBytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<std::uint64_t>(info.uordblks) + static_cast<std::uint64_t>(info.hblkhd) +
         msg::platform::mappedBytes();
}

}  // namespace msg_bench

// The replacements. The nothrow forms catch what the throwing forms throw.
void* operator new(std::size_t size) {
  return countedAllocate(size);
}
void* operator new[](std::size_t size) {
  return countedAllocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return countedAllocate(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return countedAllocate(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return countedAllocateAligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return countedAllocateAligned(size, alignment);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  try {
    return countedAllocateAligned(size, alignment);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  try {
    return countedAllocateAligned(size, alignment);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void operator delete(void* p) noexcept {
  std::free(p);
}
void operator delete[](void* p) noexcept {
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
  std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
  std::free(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
  std::free(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
  std::free(p);
}
void operator delete(void* p, std::align_val_t) noexcept {
  std::free(p);
}
void operator delete[](void* p, std::align_val_t) noexcept {
  std::free(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
  std::free(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
  std::free(p);
}
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(p);
}
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(p);
}
