// PlaceholderScanner: the one reading of the placeholder grammar, for
// substitution and for every tool that must agree with it.
//
// A placeholder is "&" followed by a run of 1 to kMaxPlaceholderDigits
// decimal digits. The run goes on as long as digits follow, and its value is
// the number it spells: "&007" is placeholder 7, and "&10" is never
// placeholder 1. A "&" with no digit behind it is plain text. A run of more
// digits, or one whose value does not fit an int, looks like a placeholder
// but substitution never replaces it.
//
// Private to the library: not installed, nothing here is exported. It is
// all inline, since substitution scans the working text on every call.

#ifndef MSG_MESSAGE_CORE_PLACEHOLDERSCANNER_H_
#define MSG_MESSAGE_CORE_PLACEHOLDERSCANNER_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace msg {

// The most digits a placeholder may have; a longer run is plain text.
inline constexpr std::size_t kMaxPlaceholderDigits = 22;

// One placeholder-like run: "&" and every digit behind it (at least one).
struct PlaceholderRun {
  std::size_t offset;  // of the "&", from the start of the scanned text
  std::size_t length;  // "&" and digits
  std::size_t digits;  // length - 1
  // The number it names when `replaceable`; otherwise meaningless.
  unsigned int value;
  // Whether substitution of `value` would replace it: at most
  // kMaxPlaceholderDigits digits and a value that fits an int.
  bool replaceable;
};

// Walks the placeholder-like runs of the bytes [begin, end) from left to
// right. The scanner only reads the text, which the caller keeps alive and
// unchanged while it scans. It never allocates.
class PlaceholderScanner {
 public:
  PlaceholderScanner(const char* begin, const char* end) : begin(begin), end(end), at(begin) {}

  // Walks the runs of the NUL-terminated `text`, without measuring it
  // first: substitution scans its working text on every call, and a pass
  // of strlen there costs as much as the scan itself.
  explicit PlaceholderScanner(const char* text) : begin(text), end(nullptr), at(text) {}

  // Fills `run` with the next run and returns true; returns false, leaving
  // `run` as it was, when no run is left.
  bool next(PlaceholderRun& run) {
    while (end == nullptr || at < end) {
      // memchr and strchr pass over the plain text between candidates many
      // bytes at a time.
      const char* ampersand =
          end == nullptr
              ? std::strchr(at, '&')
              : static_cast<const char*>(std::memchr(at, '&', static_cast<std::size_t>(end - at)));
      if (ampersand == nullptr) {
        if (end != nullptr) {
          at = end;
        }
        return false;
      }
      const char* runEnd = ampersand + 1;
      // The value as long as it fits an int; a larger one names no number.
      // In a NUL-terminated text the terminator ends the run.
      std::uint64_t value = 0;
      bool fitsInt = true;
      while ((end == nullptr || runEnd < end) && isDigit(*runEnd)) {
        if (fitsInt) {
          value = value * 10 + static_cast<std::uint64_t>(*runEnd - '0');
          fitsInt = value <= static_cast<std::uint64_t>(std::numeric_limits<int>::max());
        }
        ++runEnd;
      }
      // Go on at the character that ended the run: a "&" there opens the
      // next candidate at once.
      at = runEnd;
      const auto digits = static_cast<std::size_t>(runEnd - ampersand - 1);
      if (digits == 0) {
        continue;
      }
      run.offset = static_cast<std::size_t>(ampersand - begin);
      run.length = digits + 1;
      run.digits = digits;
      run.replaceable = digits <= kMaxPlaceholderDigits && fitsInt;
      run.value = run.replaceable ? static_cast<unsigned int>(value) : 0;
      return true;
    }
    return false;
  }

 private:
  static bool isDigit(char c) { return c >= '0' && c <= '9'; }

  const char* begin;
  const char* end;  // null: the text ends at its terminator
  const char* at;   // where the search for the next run starts
};

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_PLACEHOLDERSCANNER_H_
