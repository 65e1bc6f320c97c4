#include "ToolRun.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace msgbench {

ToolRun runTool(const char* tool, const std::vector<const char*>& arguments) {
  std::vector<char*> argv{const_cast<char*>(tool)};
  for (const char* argument : arguments) {
    argv.push_back(const_cast<char*>(argument));
  }
  argv.push_back(nullptr);

  ToolRun run;
  // The child would write out what the parent still buffers when it
  // reopens stdout.
  std::fflush(nullptr);
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    std::freopen("/dev/null", "w", stdout);
    std::freopen("/dev/null", "w", stderr);
    execv(tool, argv.data());
    _exit(127);
  }
  int status = 0;
  struct rusage usage {};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) {
    return run;
  }
  run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  run.peakKiB = usage.ru_maxrss;
  run.finished = WIFEXITED(status) && WEXITSTATUS(status) <= 1;
  return run;
}

}  // namespace msgbench
