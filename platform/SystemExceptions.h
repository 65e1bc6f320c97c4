// Our stand-ins for the Windows interfaces through which system faults reach
// a per-thread translator, and the Linux mechanism that makes them real.
//
// A platform that hosts the library must provide:
//
//   EXCEPTION_RECORD     The code of a fault and the address of the
//                        instruction that raised it.
//   EXCEPTION_POINTERS   The record of one fault plus the processor context.
//   _set_se_translator   Makes a function the calling thread's translator and
//                        returns the earlier one. The platform calls the
//                        translator on the faulting thread with the fault's
//                        code and EXCEPTION_POINTERS. A C++ exception thrown
//                        by the translator leaves the faulting instruction as
//                        if that instruction had thrown it; a translator that
//                        returns leaves the fault to the platform's further
//                        handling.
//
// On Windows these are the system's own. This file provides them on Linux:
// the first translator installed in the process installs signal handlers for
// SIGSEGV, SIGBUS, SIGFPE and SIGILL (see SystemExceptions.cpp for the full
// mapping of signal and si_code to a code). The handlers stay for the life of
// the process; which thread translates is decided per fault by that thread's
// translator.
//
// What the faulting code must do: it must be compiled with
// -fnon-call-exceptions, so that the compiler emits unwind information that
// lets an exception leave an instruction that traps rather than only a call.
// Without it, a throw from the translator reaches std::terminate.
//
// What is never translated, and ends the process exactly as it would without
// the library (the handler installed before ours, for example a sanitizer's,
// runs; or the default action with its core dump):
//   - a fault on a thread without a translator, or while that thread is
//     already inside its translator;
//   - a fault for which the translator returns (the pass-through codes);
//   - a fault signal sent by kill(), raise() or sigqueue(), which is no fault;
//   - a stack overflow: without an alternate signal stack the handler cannot
//     run at all; with one (sanitizers set one up), a segmentation fault close
//     to the stack pointer is taken for an overflow and passed on.
//
// This is a diagnostic aid: it lets a program report a fault in its own words
// before it stops. It does not make it safe to go on after memory corruption.

#ifndef MSG_PLATFORM_SYSTEMEXCEPTIONS_H_
#define MSG_PLATFORM_SYSTEMEXCEPTIONS_H_

#include <cstdint>

// The record of one fault. The field names are those of Windows.
struct EXCEPTION_RECORD {
  // A Windows exception code, e.g. 0xC0000005 for an access violation.
  std::uint32_t ExceptionCode;
  // Address of the instruction that faulted (as on Windows).
  void* ExceptionAddress;
  // Number of valid entries in ExceptionInformation.
  std::uint32_t NumberParameters;
  // For an access violation (and an in-page error), as on Windows: [0] is 0
  // for a read, 1 for a write, 8 for an execute (Linux does not tell, so 0),
  // and [1] is the data address that could not be accessed.
  std::uintptr_t ExceptionInformation[2];
};

// What a translator gets for one fault.
struct EXCEPTION_POINTERS {
  EXCEPTION_RECORD* ExceptionRecord;
  // The processor state at the fault: on Linux the signal's ucontext_t.
  void* ContextRecord;
};

// The form of a translator: the fault's code and its record, valid only
// during the call.
using _se_translator_function = void (*)(unsigned int code, EXCEPTION_POINTERS* pointers);

// Makes `translator` the calling thread's translator (null removes it) and
// returns the one it had before (null if none). Other threads are not
// affected. The first non-null translator in the process installs the signal
// handlers.
_se_translator_function _set_se_translator(_se_translator_function translator);

namespace msg {
namespace platform {

// The Windows exception code that a fault signal with `siCode`
// (siginfo_t::si_code) stands for, or 0 if the signal is not one of the four
// fault signals or was not raised by a fault (sent by kill(), raise(), ...).
std::uint32_t exceptionCodeForSignal(int signalNumber, int siCode);

}  // namespace platform
}  // namespace msg

#endif  // MSG_PLATFORM_SYSTEMEXCEPTIONS_H_
