// DecimalText: integers as decimal text inside the library.

#ifndef MSG_MESSAGE_CORE_DECIMALTEXT_H_
#define MSG_MESSAGE_CORE_DECIMALTEXT_H_

#include <cstdio>
#include <string>

namespace msg {

// `value` in decimal. The library does not use std::to_string: the static
// digit table of its helper template would be exported from libmsg.so along
// with it.
inline std::string decimalText(long long value) {
  char text[24];
  std::snprintf(text, sizeof text, "%lld", value);
  return text;
}

inline std::string decimalText(unsigned long long value) {
  char text[24];
  std::snprintf(text, sizeof text, "%llu", value);
  return text;
}

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_DECIMALTEXT_H_
