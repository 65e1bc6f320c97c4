// Times `msgtool import` of a PO file whose keys are all new, into a new
// per-language document: the first import of a language, where every key
// adds a Message to one namespace. The tool runs as its own process.
//
//   msgtool_import_bench MSGTOOL RUNS SCHEMA [KEYS...]
//
// SCHEMA is the message document schema, copied beside the document so
// that the import can load what it wrote. KEYS are the sizes to time
// (default 5000 and 10000); each is timed RUNS times into a fresh document,
// and the median is printed with the time per key, which stays flat while
// the work grows linearly with the number of keys.

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "ToolRun.h"

namespace fs = std::filesystem;

namespace {

// The arguments of one import, in one place: an option the import needs to
// add unknown keys goes here.
std::vector<std::string> importArguments(const fs::path& po, const fs::path& document) {
  return {"import", "--format", "po", po.string(), "--into", document.string()};
}

void writePo(const fs::path& path, int keys) {
  std::ofstream po(path);
  po << "msgid \"\"\nmsgstr \"\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n"
        "\"Language: de\\n\"\n\n";
  for (int key = 0; key < keys; ++key) {
    po << "msgctxt \"bench:key" << key << "\"\nmsgid \"Source text " << key
       << " with &1\"\nmsgstr \"Zieltext " << key << " mit &1\"\n\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: %s MSGTOOL RUNS SCHEMA [KEYS...]\n", argv[0]);
    return 2;
  }
  const char* tool = argv[1];
  const int runs = std::max(1, std::atoi(argv[2]));
  std::vector<int> sizes;
  for (int i = 4; i < argc; ++i) {
    sizes.push_back(std::max(1, std::atoi(argv[i])));
  }
  if (sizes.empty()) {
    sizes = {5000, 10000};
  }

  char pattern[] = "/tmp/msgtool_import_bench.XXXXXX";
  if (mkdtemp(pattern) == nullptr) {
    std::perror("mkdtemp");
    return 1;
  }
  const fs::path folder(pattern);
  fs::copy_file(argv[3], folder / "messages.xsd");
  const fs::path document = folder / "de.xml";
  int failed = 0;
  for (const int keys : sizes) {
    const fs::path po = folder / "de.po";
    writePo(po, keys);
    const std::vector<std::string> arguments = importArguments(po, document);
    std::vector<const char*> argumentPointers;
    for (const std::string& argument : arguments) {
      argumentPointers.push_back(argument.c_str());
    }
    std::vector<double> seconds;
    for (int run = 0; run < runs; ++run) {
      fs::remove(document);
      const msgbench::ToolRun import = msgbench::runTool(tool, argumentPointers);
      if (!import.finished || !fs::exists(document)) {
        std::fprintf(stderr, "msgtool import of %d keys did not run to its end\n", keys);
        failed = 1;
        break;
      }
      seconds.push_back(import.seconds);
    }
    if (seconds.empty()) {
      continue;
    }
    std::sort(seconds.begin(), seconds.end());
    const double median = seconds[seconds.size() / 2];
    std::printf(
        "msgtool import, %d new keys into a new document, %d runs: median %.2f s (%.1f us a key)\n",
        keys, runs, median, median * 1e6 / keys);
  }
  fs::remove_all(folder);
  return failed;
}
