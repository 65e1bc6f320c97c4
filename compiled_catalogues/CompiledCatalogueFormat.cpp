#include "compiled_catalogues/CompiledCatalogueFormat.h"

#include <cstdio>

// The hash is compiled into this file alone, so the library needs no xxhash
// at run time and exports none of its symbols.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace msg {
namespace compiled {

std::uint64_t checksumOf(const unsigned char* bytes, std::size_t size) {
  static const unsigned char kZeros[kChecksumSize] = {};
  XXH3_state_t state;
  XXH3_INITSTATE(&state);
  XXH3_64bits_reset(&state);
  XXH3_64bits_update(&state, bytes, kChecksumOffset);
  XXH3_64bits_update(&state, kZeros, kChecksumSize);
  const std::size_t rest = kChecksumOffset + kChecksumSize;
  XXH3_64bits_update(&state, bytes + rest, size - rest);
  return XXH3_64bits_digest(&state);
}

}  // namespace compiled
}  // namespace msg
