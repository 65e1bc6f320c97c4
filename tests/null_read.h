// A real processor fault for tests of the fault translator: a read through
// a null pointer. A test that includes this must be built with
// -fnon-call-exceptions, so that the translator's exception can leave the
// faulting instruction.

#ifndef MSG_TESTS_NULL_READ_H_
#define MSG_TESTS_NULL_READ_H_

#include <optional>

#include "msg/structured_exception.h"

namespace test_support {

// The sanitizers would report the null load themselves before the hardware
// faults, so they stay out; `volatile` and noinline keep the compiler from
// folding the read away.
__attribute__((noinline, no_sanitize("undefined"), no_sanitize("address"))) inline int readThrough(
    volatile int* pointer) {
  return *pointer;
}

inline volatile int* volatile nullPointer = nullptr;
inline volatile int sink = 0;

// The fault of a null read as the translator raised it; nothing if none
// came.
inline std::optional<structured_exception> faultOfNullRead() {
  try {
    sink = readThrough(nullPointer);
  } catch (const structured_exception& fault) {
    return fault;
  }
  return std::nullopt;
}

}  // namespace test_support

#endif  // MSG_TESTS_NULL_READ_H_
