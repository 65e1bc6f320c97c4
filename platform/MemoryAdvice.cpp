#include "platform/MemoryAdvice.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace msg {
namespace platform {

void adviseHugePages(void* block, std::size_t size) noexcept {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t first = (start + kHugePageSize - 1) / kHugePageSize * kHugePageSize;
  const std::uintptr_t end = (start + size) / kHugePageSize * kHugePageSize;
  if (first < end) {
    (void)madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
  }
#else
  (void)block;
  (void)size;
#endif
}

}  // namespace platform
}  // namespace msg
