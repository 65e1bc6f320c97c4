// What loading ICU's common library costs a process: a C++ program linked
// to libicuuc that asks it one question which needs no data.

#include <unicode/uversion.h>

int main() {
  UVersionInfo version;
  u_getVersion(version);
  return version[0] != 0 ? 0 : 1;
}
