// The standard error stream, std::cerr, for the library's default output.
//
// A platform that hosts the library provides:
//
//   standardError   std::cerr itself, set up when it is first asked for
//                   rather than when the library is loaded.
//
// Why not simply std::cerr: libstdc++ before GCC 13 gives every unit that
// includes <iostream> a static std::ios_base::Init, and constructing it
// when the library is loaded sets up all eight standard streams with their
// locale. That maps about 0.5 MiB of libstdc++'s code into every program
// that links the library, whether it ever writes a message or not. On
// Linux this unit names std::cerr by the symbol libstdc++ exports for it,
// without <iostream>, and constructs a std::ios_base::Init on the first
// call, which sets the streams up if nothing has yet. A platform without
// that cost may simply return std::cerr.

#ifndef MSG_PLATFORM_STANDARDERROR_H_
#define MSG_PLATFORM_STANDARDERROR_H_

#include <ostream>

namespace msg {
namespace platform {

// std::cerr, with the standard streams set up. Safe to call from any
// thread; the stream's own rules hold for writing to it.
std::ostream& standardError();

}  // namespace platform
}  // namespace msg

#endif  // MSG_PLATFORM_STANDARDERROR_H_
