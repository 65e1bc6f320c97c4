// Owned copies of narrow strings, shared by the classes that keep their own.

#ifndef MSG_MESSAGE_CORE_STRINGCOPY_H_
#define MSG_MESSAGE_CORE_STRINGCOPY_H_

#include <cstddef>
#include <cstring>

namespace msg {

// A copy of `text` with its terminator, made with new[]; the caller owns it
// and releases it with delete[]. A null text is copied as "".
inline char* copyString(const char* text) {
  if (text == nullptr) {
    text = "";
  }
  const std::size_t size = std::strlen(text) + 1;
  char* copy = new char[size];
  std::memcpy(copy, text, size);
  return copy;
}

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_STRINGCOPY_H_
