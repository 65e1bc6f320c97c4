// Fuzzes `msgtool import --format po`: arbitrary bytes as the
// translator's PO file, read and imported into a document that includes a
// part (ImportScratch.h says what is checked after every input).

#include <cstddef>
#include <cstdint>

#include "fuzz/ImportScratch.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  msgfuzz::startImportTarget();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  msgfuzz::importInput("po", ".po", bytes, size);
  return 0;
}
