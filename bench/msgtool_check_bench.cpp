// Times `msgtool check` on the benchmark catalogue and measures its peak
// memory, as a user would see them: the tool runs as its own process.
//
//   msgtool_check_bench MSGTOOL RUNS DOCUMENT [PART...]
//
// DOCUMENT is checked; the PARTs it includes count towards the size of the
// documents. Prints the median wall time, the highest peak resident memory
// of the runs, and what the check adds to the memory of the idle tool: the
// peak of `msgtool --version`, measured the same way, is mostly the shared
// libraries (Xerces-C, ICU, the C++ runtime), which no document changes.
// The added memory is also given as a multiple of the documents' size.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "ToolRun.h"

namespace {

using msgbench::runTool;
using msgbench::ToolRun;

double megabytes(long kib) {
  return static_cast<double>(kib) * 1024.0 / 1e6;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: %s MSGTOOL RUNS DOCUMENT [PART...]\n", argv[0]);
    return 2;
  }
  const char* tool = argv[1];
  const int runs = std::max(1, std::atoi(argv[2]));
  std::uintmax_t documentBytes = 0;
  for (int i = 3; i < argc; ++i) {
    documentBytes += std::filesystem::file_size(argv[i]);
  }

  long idleKiB = 0;
  std::vector<double> seconds;
  long peakKiB = 0;
  for (int run = 0; run < runs; ++run) {
    const ToolRun idle = runTool(tool, {"--version"});
    const ToolRun check = runTool(tool, {"check", argv[3]});
    if (!idle.finished || !check.finished) {
      std::fprintf(stderr, "msgtool did not run to its end\n");
      return 1;
    }
    idleKiB = std::max(idleKiB, idle.peakKiB);
    peakKiB = std::max(peakKiB, check.peakKiB);
    seconds.push_back(check.seconds);
  }
  std::sort(seconds.begin(), seconds.end());
  const double documentMB = static_cast<double>(documentBytes) / 1e6;
  const double addedMB = megabytes(peakKiB - idleKiB);
  std::printf(
      "msgtool check, %d runs, documents %.2f MB: median %.2f s, peak memory %.1f MB "
      "(%.1fx the documents); the idle tool %.1f MB, so the check adds %.1f MB "
      "(%.1fx the documents)\n",
      runs, documentMB, seconds[seconds.size() / 2], megabytes(peakKiB),
      megabytes(peakKiB) / documentMB, megabytes(idleKiB), addedMB, addedMB / documentMB);
  return 0;
}
