// Placeholders: which numbered placeholders a catalogue text holds, read by
// the library's own scanner (message_core/PlaceholderScanner.h), so that the
// tool and substitution always agree.

#ifndef MSGTOOL_PLACEHOLDERS_H_
#define MSGTOOL_PLACEHOLDERS_H_

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "message_core/PlaceholderScanner.h"

namespace msgtool {

using msg::kMaxPlaceholderDigits;

// A digit run behind "&" that substitution will never replace: too long, or
// too large a value.
struct IgnoredRun {
  std::size_t offset;  // byte offset of the "&" in the text
  std::size_t digits;  // length of the digit run
};

struct PlaceholderScan {
  std::set<unsigned> numbers;       // every placeholder number, once
  std::vector<IgnoredRun> ignored;  // runs that look like placeholders but are not
};

// Reads `text` byte by byte.
PlaceholderScan scanPlaceholders(const std::string& text);

// Just the numbers: what a caller must supply for the text to be filled in.
std::set<unsigned> placeholderNumbers(const std::string& text);

// The numbers as "&0 &1 &3", or "none".
std::string describePlaceholders(const std::set<unsigned>& numbers);

}  // namespace msgtool

#endif  // MSGTOOL_PLACEHOLDERS_H_
