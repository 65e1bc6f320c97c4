#include "platform/StandardError.h"

#include <ios>

// std::cerr, by the name the Itanium C++ ABI gives it (libstdc++ exports
// the object as _ZSt4cerr). Declared here because <iostream>, which
// declares it for everyone, is what this unit must not include.
extern std::ostream msgStandardErrorStream __asm__("_ZSt4cerr");

namespace msg {
namespace platform {

std::ostream& standardError() {
  // Sets up the standard streams once, unless the program did already.
  static const std::ios_base::Init streams;
  return msgStandardErrorStream;
}

}  // namespace platform
}  // namespace msg
