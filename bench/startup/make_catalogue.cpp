// Writes the start-up benchmark's compiled catalogue: the benchmark
// catalogue's content (CatalogueData) at any size, every key in en and de,
// every tenth in de-AT, with the severities the benchmark document gives.
// It is written straight from memory, so a million keys need no message
// document of several hundred megabytes.
//
// Usage: make_catalogue CATALOGUE KEY_COUNT
// Prints the identifier of a key with an Austrian text near the middle of
// the catalogue: the key the start-up programs look up.

#include <cstdlib>
#include <iostream>
#include <string>

#include "CatalogueData.h"
#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "msg/SeverityLevel.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: " << argv[0] << " CATALOGUE KEY_COUNT\n";
    return 2;
  }
  const std::size_t keyCount = std::strtoul(argv[2], nullptr, 10);
  if (keyCount < 10) {
    std::cerr << "make_catalogue: KEY_COUNT must be at least 10\n";
    return 2;
  }
  const msg::SeverityLevel severities[] = {msg::info, msg::warning, msg::error, msg::abort};
  msg::CompiledCatalogueWriter writer;
  for (std::size_t i = 0; i < keyCount; ++i) {
    const msg_bench::Entry entry = msg_bench::makeEntry(i);
    const msg::SeverityLevel severity = severities[i % 4];
    const auto add = [&](const char* language, const msg_bench::Text& text) {
      writer.add(severity, language, msg_bench::kNamespace, entry.identifier,
                 text.render(msg_bench::PlaceholderSyntax::kMsg));
    };
    add("en", entry.english);
    add("de", entry.german);
    if (msg_bench::hasAustrianText(i)) {
      add("de-AT", entry.austrian);
    }
  }
  writer.writeFile(argv[1]);
  std::cout << msg_bench::makeIdentifier(keyCount / 2 / 10 * 10) << '\n';
  return 0;
}
