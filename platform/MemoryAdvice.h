// Hints to the operating system about how the library uses large blocks.
//
// A platform that hosts the library may provide:
//
//   adviseHugePages   Asks that the pages of a block be backed by large
//                     (huge) pages, so that random reads across a large
//                     table miss the address-translation cache less often.
//                     A hint only: the contents, the address and the
//                     lifetime of the block do not change, and a platform
//                     without such pages does nothing.
//
// On Linux this is madvise(MADV_HUGEPAGE), which matters where transparent
// huge pages are set to "madvise" (the Debian default) and is harmless
// elsewhere.

#ifndef MSG_PLATFORM_MEMORYADVICE_H_
#define MSG_PLATFORM_MEMORYADVICE_H_

#include <cstddef>

namespace msg {
namespace platform {

// The size of one huge page where the platform has them. A block gains from
// the advice only if it holds at least one whole, aligned huge page.
constexpr std::size_t kHugePageSize = std::size_t{2} << 20;

// Advises that the whole huge pages inside [block, block + size) be backed
// by huge pages; the ragged ends keep ordinary pages. Call it before the
// block is first written, since pages already touched keep their size.
// Failures are ignored: the advice is an optimisation, never a requirement.
void adviseHugePages(void* block, std::size_t size) noexcept;

}  // namespace platform
}  // namespace msg

#endif  // MSG_PLATFORM_MEMORYADVICE_H_
