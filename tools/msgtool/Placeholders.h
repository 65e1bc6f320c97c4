// Placeholders: which numbered placeholders a catalogue text holds, read
// exactly as the library's substitution reads them.
//
// A placeholder is "&" followed by a run of 1 to 22 decimal digits; the run
// goes on as long as digits follow, and its value is the number (so "&007"
// is placeholder 7 and "&10" never placeholder 1). A "&" with no digit
// behind it is plain text, and so is a run of more than 22 digits or one
// whose value does not fit an int: substitution never replaces those.

#ifndef MSGTOOL_PLACEHOLDERS_H_
#define MSGTOOL_PLACEHOLDERS_H_

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace msgtool {

// The most digits a placeholder may have; a longer run is plain text.
inline constexpr std::size_t kMaxPlaceholderDigits = 22;

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
