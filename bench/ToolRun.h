// ToolRun: runs msgtool as its own process, as a user would, and measures
// the run: wall time and peak resident memory.

#ifndef MSG_BENCH_TOOLRUN_H_
#define MSG_BENCH_TOOLRUN_H_

#include <vector>

namespace msgbench {

struct ToolRun {
  double seconds = 0;
  long peakKiB = 0;  // the process's peak resident memory
  bool finished = false;
};

// Runs `tool` with `arguments`, its output discarded (findings and
// summaries are not what is measured). `finished` is set if it exited with
// 0 or 1 (clean, or findings).
ToolRun runTool(const char* tool, const std::vector<const char*>& arguments);

}  // namespace msgbench

#endif  // MSG_BENCH_TOOLRUN_H_
