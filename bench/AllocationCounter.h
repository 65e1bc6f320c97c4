// AllocationCounter: counts the heap allocations made through operator new.
//
// The benchmark program replaces the global operator new and delete (all
// forms) with versions that count and then call malloc and free. Every
// operator new in the process goes through them, the library's included,
// since the program's definitions take precedence over those of the C++
// runtime. C code (glibc's gettext, ICU's C core) calls malloc directly and
// is not counted.
//
// The counters are plain integers: the benchmarks run on one thread.

#ifndef MSG_BENCH_ALLOCATIONCOUNTER_H_
#define MSG_BENCH_ALLOCATIONCOUNTER_H_

#include <cstdint>

namespace msg_bench {

// Number of calls of any operator new since the program started.
std::uint64_t allocationCount();

// Bytes requested through operator new since the program started.
std::uint64_t allocatedBytes();

// Bytes of heap in use right now, allocator overhead included (glibc's
// mallinfo2: small chunks plus mapped ones), and the blocks that the library
// maps from the system itself for its large tables.
std::uint64_t heapBytesInUse();

}  // namespace msg_bench

#endif  // MSG_BENCH_ALLOCATIONCOUNTER_H_
