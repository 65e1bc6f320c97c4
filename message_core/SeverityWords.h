// SeverityWords: the words that name the four severity levels, in documents,
// exchange files and output, and the way between word and level.
//
// Private to the library: not installed, nothing here is exported.

#ifndef MSG_MESSAGE_CORE_SEVERITYWORDS_H_
#define MSG_MESSAGE_CORE_SEVERITYWORDS_H_

#include <string>
#include <string_view>

#include "message_core/DecimalText.h"
#include "msg/SeverityLevel.h"

namespace msg {

// The word of each level, indexed by the level's value.
inline constexpr const char* kSeverityWords[] = {"info", "warning", "error", "abort"};
inline constexpr int kSeverityWordCount = 4;

// The word for `level`, or null for a value that is none of the four levels
// (a SeverityLevel is any 32-bit value, and an entry's severity any short).
inline const char* severityWord(SeverityLevel level) {
  return level >= 0 && level < kSeverityWordCount ? kSeverityWords[level] : nullptr;
}

// The word for `level`, or its decimal number for a value that is none of
// the four levels: output never loses a severity it cannot name.
inline std::string severityText(SeverityLevel level) {
  const char* word = severityWord(level);
  return word != nullptr ? std::string(word) : decimalText(static_cast<long long>(level));
}

// Sets `level` to the level that `word` names and returns true. Words are
// compared exactly: "Warning" names nothing. For any other word returns
// false and leaves `level` as it was.
inline bool severityFromWord(std::string_view word, SeverityLevel& level) {
  for (int value = 0; value < kSeverityWordCount; ++value) {
    if (word == kSeverityWords[value]) {
      level = static_cast<SeverityLevel>(value);
      return true;
    }
  }
  return false;
}

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_SEVERITYWORDS_H_
