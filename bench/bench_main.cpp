// The benchmark program: sets the locale and the language preference that
// the peers need, takes the catalogue directory, and runs Google Benchmark.
//
// Usage: msg_bench [--catalogue=DIR] [Google Benchmark flags]
// Without --catalogue the directory the build generated is used.

#include <benchmark/benchmark.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include "BenchSupport.h"

int main(int argc, char** argv) {
  // gettext takes the preference from LANGUAGE, which glibc ignores under
  // the plain "C" locale; C.UTF-8 also keeps its UTF-8 texts unconverted.
  setenv("LANGUAGE", "de_AT:de:en", 1);
  if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) {
    std::cerr << "msg_bench: the locale C.UTF-8 is not available\n";
    return 1;
  }

  std::string catalogue = MSG_BENCH_CATALOGUE_DIR;
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    const char* prefix = "--catalogue=";
    if (std::strncmp(argv[i], prefix, std::strlen(prefix)) == 0) {
      catalogue = argv[i] + std::strlen(prefix);
    } else {
      argv[kept++] = argv[i];
    }
  }
  argc = kept;
  msg_bench::setCatalogueDir(catalogue);

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
