#include "Placeholders.h"

namespace msgtool {

PlaceholderScan scanPlaceholders(const std::string& text) {
  PlaceholderScan scan;
  msg::PlaceholderScanner scanner(text.data(), text.data() + text.size());
  msg::PlaceholderRun run{};
  while (scanner.next(run)) {
    if (run.replaceable) {
      scan.numbers.insert(run.value);
    } else {
      scan.ignored.push_back(IgnoredRun{run.offset, run.digits});
    }
  }
  return scan;
}

std::set<unsigned> placeholderNumbers(const std::string& text) {
  return scanPlaceholders(text).numbers;
}

std::string describePlaceholders(const std::set<unsigned>& numbers) {
  if (numbers.empty()) {
    return "none";
  }
  std::string out;
  for (unsigned number : numbers) {
    if (!out.empty()) {
      out += ' ';
    }
    out += '&' + std::to_string(number);
  }
  return out;
}

}  // namespace msgtool
