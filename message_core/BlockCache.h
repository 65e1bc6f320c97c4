// BlockCache: a few freed heap blocks of one size, kept per thread.
//
// Private to the library: it is not exported and its header is not installed.

#ifndef MSG_MESSAGE_CORE_BLOCKCACHE_H_
#define MSG_MESSAGE_CORE_BLOCKCACHE_H_

#include <cstddef>

namespace msg {

// Heap blocks for message records and for their working buffers. A record
// that is made, filled and dropped again and again (a render from scratch)
// takes the same blocks each time, from this thread's cache, instead of a
// round trip through the allocator each.
//
// Each thread has its own cache, so no operation locks or shares anything. A
// block may be given back on another thread than the one that took it:
// every block is plain heap memory (new char[]), so it simply joins the
// cache of the thread that gives it back, or is deleted if that cache is
// full. A thread's cache is emptied when the thread ends; after that (in
// destructors that run later at exit) blocks go straight to the allocator.
enum class BlockKind {
  kRecord,   // one Message
  kBuffers,  // the first pair of working buffers, kBufferBlockSize bytes
};

inline constexpr std::size_t kBufferBlockSize = 200;

// A block of `size` bytes, uninitialised; the caller owns it. All blocks of
// one kind must have one size.
char* takeCachedBlock(BlockKind kind, std::size_t size);

// Gives back a block of `kind` made by takeCachedBlock() or with new char[]
// of that kind's size.
void giveCachedBlock(BlockKind kind, char* block) noexcept;

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_BLOCKCACHE_H_
