// W3c load: the benchmark catalogue made ready from its compiled form.
//
//   msg   loadCompiledCatalogue into a fresh MessageHandlerX with the
//         preference de-AT, de, en, and the end of that handler: the same
//         work as W3_load/msg (whose figures are the XML load) from the file
//         `msgtool compile` writes
//
// The compiled file is written once per run, beside the generated document,
// from that document. The report relates this workload's time to W3_load's
// msg (XML), gettext_ready and icu_ready of the same run.
//
// Memory, measured once per run on a handler that stays alive: the heap
// that a load leaves in use, and the resident set it adds (heap touched plus
// the pages of the mapped file), per text of the catalogue, for the compiled
// and the XML load. Counters on W3c_load/msg:
//   heap_bytes_per_entry, resident_bytes_per_entry          compiled
//   xml_heap_bytes_per_entry, xml_resident_bytes_per_entry  XML document

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "AllocationCounter.h"
#include "BenchSupport.h"
#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "message_documents/DocumentCompilation.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/Message.h"
#include "msg/MessageHandlerX.h"

namespace msg_bench {
namespace {

class CountingHandler : public msg::MessageHandlerX {
 public:
  CountingHandler() { setLanguageList(preferredLanguages()); }
};

std::uint64_t residentBytes() {
  long pages = 0;
  long resident = 0;
  if (std::FILE* statm = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) {
      resident = 0;
    }
    std::fclose(statm);
  }
  return static_cast<std::uint64_t>(resident) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

struct Footprint {
  double heapPerEntry = 0;
  double residentPerEntry = 0;
};

// Loads through `load` into a handler that is kept until the figures are
// taken, per text of the catalogue (a file read in place registers none).
template <typename Load>
Footprint footprintOf(Load load) {
  double entries = 0;
  for (std::size_t i = 0; i < standardEntries().size(); ++i) {
    entries += hasAustrianText(i) ? 3 : 2;
  }
  const double heapBefore = static_cast<double>(heapBytesInUse());
  const double residentBefore = static_cast<double>(residentBytes());
  CountingHandler handler;
  load(handler);
  // The resident set may also shrink: an allocator can give back more than
  // the load adds. Then the figure is negative, and says so.
  return Footprint{(static_cast<double>(heapBytesInUse()) - heapBefore) / entries,
                   (static_cast<double>(residentBytes()) - residentBefore) / entries};
}

// The compiled file, written on first use; empty if that failed.
const std::string& compiledPath() {
  static const std::string path = []() -> std::string {
    static msg::MessageHandlerX xmlSystemKeeper;
    const std::string target = catalogueDir() + "/messages.msgc";
    try {
      msg::CompiledCatalogueWriter writer;
      msg::addMessageDocument(writer, (catalogueDir() + "/messages.xml").c_str());
      writer.writeFile(target);
      return target;
    } catch (...) {
      return {};
    }
  }();
  return path;
}

void W3cMsg(benchmark::State& state) {
  const std::string& path = compiledPath();
  if (path.empty()) {
    state.SkipWithError("cannot compile the benchmark document");
    return;
  }
  static const std::string problem = [&]() -> std::string {
    try {
      CountingHandler handler;
      handler.loadCompiledCatalogue(path.c_str());
      for (std::size_t i = 0; i < standardEntries().size(); ++i) {
        const Entry& entry = standardEntries()[i];
        std::unique_ptr<msg::Message> record(
            handler.getMessage(kNamespace, entry.identifier.c_str()));
        if (record == nullptr ||
            preferredText(entry, i).render(PlaceholderSyntax::kMsg) != record->getText()) {
          return "compiled load: key " + entry.identifier + " gives another text";
        }
      }
      return {};
    } catch (const msg::ErrorInMessageDocument& error) {
      return std::string("compiled load: ") + error.getProblems().front().message;
    }
  }();
  if (!problem.empty()) {
    state.SkipWithError(problem.c_str());
    return;
  }
  static const Footprint compiled =
      footprintOf([&](CountingHandler& h) { h.loadCompiledCatalogue(path.c_str()); });
  static const Footprint xml = footprintOf([](CountingHandler& h) {
    h.loadMessageDocument((catalogueDir() + "/messages.xml").c_str());
  });

  for (auto _ : state) {
    CountingHandler handler;
    handler.loadCompiledCatalogue(path.c_str());
  }
  state.counters["heap_bytes_per_entry"] = compiled.heapPerEntry;
  state.counters["resident_bytes_per_entry"] = compiled.residentPerEntry;
  state.counters["xml_heap_bytes_per_entry"] = xml.heapPerEntry;
  state.counters["xml_resident_bytes_per_entry"] = xml.residentPerEntry;
}
BENCHMARK(W3cMsg)->Name("W3c_load/msg")->MinTime(0.5)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace msg_bench
