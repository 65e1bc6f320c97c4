#include "Placeholders.h"

#include <cstdint>
#include <limits>

namespace msgtool {

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

PlaceholderScan scanPlaceholders(const std::string& text) {
  PlaceholderScan scan;
  std::size_t at = text.find('&');
  while (at != std::string::npos) {
    std::size_t end = at + 1;
    std::uint64_t value = 0;
    bool fitsInt = true;
    while (end < text.size() && isDigit(text[end])) {
      if (fitsInt) {
        value = value * 10 + static_cast<std::uint64_t>(text[end] - '0');
        fitsInt = value <= static_cast<std::uint64_t>(std::numeric_limits<int>::max());
      }
      ++end;
    }
    const std::size_t digits = end - at - 1;
    if (digits >= 1 && digits <= kMaxPlaceholderDigits && fitsInt) {
      scan.numbers.insert(static_cast<unsigned>(value));
    } else if (digits > 0) {
      scan.ignored.push_back(IgnoredRun{at, digits});
    }
    // The character that ended the run may itself open the next candidate.
    at = text.find('&', end);
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
