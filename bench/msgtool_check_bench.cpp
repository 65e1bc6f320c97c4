// Times `msgtool check` on the benchmark catalogue and measures its peak
// memory, as a user would see them: the tool runs as its own process.
//
//   msgtool_check_bench MSGTOOL RUNS DOCUMENT [PART...]
//
// DOCUMENT is checked; the PARTs it includes count towards the size of the
// documents. Prints the median wall time, the highest peak resident memory
// of the runs, and that memory as a multiple of the documents' size.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: %s MSGTOOL RUNS DOCUMENT [PART...]\n", argv[0]);
    return 2;
  }
  const int runs = std::max(1, std::atoi(argv[2]));
  std::uintmax_t documentBytes = 0;
  for (int i = 3; i < argc; ++i) {
    documentBytes += std::filesystem::file_size(argv[i]);
  }

  std::vector<double> seconds;
  long peakKiB = 0;
  for (int run = 0; run < runs; ++run) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
      // Findings and the summary are not what is measured.
      std::freopen("/dev/null", "w", stdout);
      std::freopen("/dev/null", "w", stderr);
      execl(argv[1], argv[1], "check", argv[3], static_cast<char*>(nullptr));
      _exit(127);
    }
    int status = 0;
    struct rusage usage {};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) > 1) {
      std::fprintf(stderr, "msgtool check did not run to its end\n");
      return 1;
    }
    seconds.push_back(
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    peakKiB = std::max(peakKiB, usage.ru_maxrss);
  }
  std::sort(seconds.begin(), seconds.end());
  const double peakBytes = static_cast<double>(peakKiB) * 1024.0;
  std::printf(
      "msgtool check, %d runs, documents %.2f MB: median %.2f s, peak memory %.1f MB "
      "(%.1fx the documents)\n",
      runs, documentBytes / 1e6, seconds[seconds.size() / 2], peakBytes / 1e6,
      peakBytes / static_cast<double>(documentBytes));
  return 0;
}
