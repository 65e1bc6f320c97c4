// Measures the start of whole processes side by side.
//
// Usage: startup_runner RUNS PLAN [LABEL=BASELINE...]
//
// PLAN holds one process a line: a name, a tab, and the command (program
// and arguments separated by spaces, no quoting). Each of the RUNS rounds
// starts every process once, in an order that rotates from round to round,
// and takes its CPU time (user + system) and peak resident set from the
// kernel's accounting of the child (wait4). The shared libraries a process
// loads are counted once, the way ldd counts them: the dynamic loader lists
// them under LD_TRACE_LOADED_OBJECTS (the vDSO is left out).
//
// Prints a Markdown table of the medians. Each LABEL=BASELINE names one
// process of the plan (a gettext program) and adds two columns headed by
// LABEL: each CPU median as a multiple of the baseline's, and each peak RSS
// less the baseline's. Every process must exit with 0, or the run stops
// with its name and status.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Process {
  std::string name;
  std::vector<std::string> command;
  std::vector<double> cpuMilliseconds;
  std::vector<double> peakMebibytes;
  int libraries = 0;
};

std::vector<char*> argumentsOf(std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (std::string& word : command) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  return arguments;
}

// Starts `process` once and records its figures.
void runOnce(Process& process) {
  std::vector<char*> arguments = argumentsOf(process.command);
  const pid_t child = fork();
  if (child == 0) {
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) {
    std::perror("startup_runner");
    std::exit(2);
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::cerr << "startup_runner: " << process.name << " failed (status " << status << ")\n";
    std::exit(1);
  }
  const double cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
                     static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
  process.cpuMilliseconds.push_back(cpu);
  process.peakMebibytes.push_back(static_cast<double>(usage.ru_maxrss) / 1024.0);
}

// The number of shared libraries the loader maps for `process`.
int librariesOf(Process& process) {
  int pipeEnds[2];
  if (pipe(pipeEnds) != 0) {
    std::exit(2);
  }
  std::vector<char*> arguments = argumentsOf(process.command);
  const pid_t child = fork();
  if (child == 0) {
    dup2(pipeEnds[1], STDOUT_FILENO);
    close(pipeEnds[0]);
    setenv("LD_TRACE_LOADED_OBJECTS", "1", 1);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  close(pipeEnds[1]);
  std::string listing;
  char buffer[4096];
  for (ssize_t got; (got = read(pipeEnds[0], buffer, sizeof buffer)) > 0;) {
    listing.append(buffer, static_cast<std::size_t>(got));
  }
  close(pipeEnds[0]);
  waitpid(child, nullptr, 0);
  int count = 0;
  std::istringstream lines(listing);
  for (std::string line; std::getline(lines, line);) {
    if (line.find('/') != std::string::npos && line.find("vdso") == std::string::npos) {
      ++count;
    }
  }
  return count;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3 || std::atoi(argv[1]) < 1) {
    std::cerr << "usage: " << argv[0] << " RUNS PLAN [LABEL=BASELINE...]\n";
    return 2;
  }
  const int runs = std::atoi(argv[1]);
  struct Baseline {
    std::string label;
    std::string name;
    double cpu = 0;
    double rss = 0;
  };
  std::vector<Baseline> baselines;
  for (int i = 3; i < argc; ++i) {
    const std::string argument = argv[i];
    const std::size_t equals = argument.find('=');
    if (equals == std::string::npos) {
      std::cerr << "startup_runner: a baseline is LABEL=NAME, not " << argument << "\n";
      return 2;
    }
    baselines.push_back({argument.substr(0, equals), argument.substr(equals + 1)});
  }

  std::vector<Process> processes;
  std::ifstream plan(argv[2]);
  for (std::string line; std::getline(plan, line);) {
    const std::size_t tab = line.find('\t');
    if (line.empty() || tab == std::string::npos) {
      continue;
    }
    Process process;
    process.name = line.substr(0, tab);
    std::istringstream words(line.substr(tab + 1));
    for (std::string word; words >> word;) {
      process.command.push_back(word);
    }
    processes.push_back(process);
  }
  if (processes.empty()) {
    std::cerr << "startup_runner: no process in " << argv[2] << "\n";
    return 2;
  }

  for (Process& process : processes) {
    runOnce(process);  // warms the page cache; not counted
    process.cpuMilliseconds.clear();
    process.peakMebibytes.clear();
    process.libraries = librariesOf(process);
  }
  for (int round = 0; round < runs; ++round) {
    for (std::size_t i = 0; i < processes.size(); ++i) {
      runOnce(processes[(i + static_cast<std::size_t>(round)) % processes.size()]);
    }
  }

  for (Baseline& baseline : baselines) {
    const auto found = std::find_if(processes.begin(), processes.end(),
                                    [&](const Process& p) { return p.name == baseline.name; });
    if (found == processes.end()) {
      std::cerr << "startup_runner: no process named " << baseline.name << "\n";
      return 2;
    }
    baseline.cpu = median(found->cpuMilliseconds);
    baseline.rss = median(found->peakMebibytes);
  }
  std::printf("Medians of %d runs each.\n\n", runs);
  std::printf("| process | CPU (user+sys) | ");
  for (const Baseline& baseline : baselines) {
    std::printf("CPU vs %s | ", baseline.label.c_str());
  }
  std::printf("peak RSS | ");
  for (const Baseline& baseline : baselines) {
    std::printf("RSS vs %s | ", baseline.label.c_str());
  }
  std::printf("shared libraries |\n|---|---|");
  for (std::size_t i = 0; i < 2 * baselines.size() + 2; ++i) {
    std::printf("---|");
  }
  std::printf("\n");
  for (const Process& process : processes) {
    const double cpu = median(process.cpuMilliseconds);
    const double rss = median(process.peakMebibytes);
    std::printf("| %s | %.2f ms | ", process.name.c_str(), cpu);
    for (const Baseline& baseline : baselines) {
      std::printf("%.2fx | ", baseline.cpu > 0 ? cpu / baseline.cpu : 0.0);
    }
    std::printf("%.1f MiB | ", rss);
    for (const Baseline& baseline : baselines) {
      std::printf("%+.1f MiB | ", rss - baseline.rss);
    }
    std::printf("%d |\n", process.libraries);
  }
  return 0;
}
