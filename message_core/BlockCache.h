// BlockCache: a few freed heap blocks of one size, kept per thread.
//
// Private to the library: it is not exported and its header is not installed.

#ifndef MSG_MESSAGE_CORE_BLOCKCACHE_H_
#define MSG_MESSAGE_CORE_BLOCKCACHE_H_

#include <cstddef>

namespace msg {

// Blocks of kCachedBlockSize bytes for the working buffers of message
// records. A record that is made, filled and dropped again and again (a
// render from scratch) takes the same block each time, from this thread's
// cache, instead of a round trip through the allocator.
//
// Each thread has its own cache, so no operation locks or shares anything. A
// block may be given back on another thread than the one that took it:
// every block is plain heap memory (new char[]), so it simply joins the
// cache of the thread that gives it back, or is deleted if that cache is
// full. A thread's cache is emptied when the thread ends; after that (in
// destructors that run later at exit) blocks go straight to the allocator.
inline constexpr std::size_t kCachedBlockSize = 200;

// A block of kCachedBlockSize bytes, uninitialised; the caller owns it.
char* takeCachedBlock();

// Gives back a block that takeCachedBlock() made, or any block made with
// new char[kCachedBlockSize].
void giveCachedBlock(char* block) noexcept;

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_BLOCKCACHE_H_
