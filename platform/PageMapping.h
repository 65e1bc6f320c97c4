// Large blocks mapped from the operating system, for the library's big
// tables.
//
// A platform that hosts the library may provide:
//
//   mapBlock / unmapBlock   Zeroed blocks taken from the system directly
//                           rather than from the heap, backed by large
//                           (huge) pages where the platform has them, so
//                           that random reads across a large table miss the
//                           address-translation cache less often.
//   mappedBytes             What such blocks hold at the moment.
//
// On Linux this is an anonymous mmap aligned to 2 MiB with
// madvise(MADV_HUGEPAGE), which matters where transparent huge pages are set
// to "madvise" (the Debian default). Fresh pages are what makes the advice
// work: pages that the heap has touched before keep their small size. A
// platform without such pages may serve the blocks from the heap.

#ifndef MSG_PLATFORM_PAGEMAPPING_H_
#define MSG_PLATFORM_PAGEMAPPING_H_

#include <cstddef>

namespace msg {
namespace platform {

// The size of one huge page where the platform has them.
constexpr std::size_t kHugePageSize = std::size_t{2} << 20;

// A zeroed block of `bytes` (a multiple of kHugePageSize), aligned to
// kHugePageSize. Throws std::bad_alloc if the system has no room.
void* mapBlock(std::size_t bytes);

// Gives back a block of mapBlock(bytes), with the same `bytes`.
void unmapBlock(void* block, std::size_t bytes) noexcept;

// Bytes of all blocks of mapBlock not yet given back, in this process (they
// are not part of the heap that malloc reports).
std::size_t mappedBytes() noexcept;

}  // namespace platform
}  // namespace msg

#endif  // MSG_PLATFORM_PAGEMAPPING_H_
