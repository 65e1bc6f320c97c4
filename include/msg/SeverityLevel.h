// Severity of a message.

#ifndef MSG_SEVERITYLEVEL_H_
#define MSG_SEVERITYLEVEL_H_

#include <cstdint>

namespace msg {

// Higher is more severe. The library only compares these values: a record of
// severity `abort` is written like any other and stops nothing.
//
// The enumerators live in namespace msg (msg::info ... msg::abort); code that
// says `using namespace msg;` must call the C library's abort as std::abort.
enum SeverityLevel : std::int32_t {
  info = 0,     // for the record; the default threshold
  warning = 1,  // something may be wrong; work goes on
  error = 2,    // something failed
  abort = 3,    // the program cannot go on (the library itself stops nothing)
};

}  // namespace msg

#endif  // MSG_SEVERITYLEVEL_H_
