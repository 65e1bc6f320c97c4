// The translation of system faults into structured_exception.

#ifndef MSG_STRUCTURED_EXCEPTIONS_SYSTEMEXCEPTIONTRANSLATOR_H_
#define MSG_STRUCTURED_EXCEPTIONS_SYSTEMEXCEPTIONTRANSLATOR_H_

#include "platform/SystemExceptions.h"

// The translator that the platform calls with the code of a system fault.
// Throws structured_exception with `code`, the fault address of `pointers`,
// a detail buffer (none for stack overflow, 0xC00000FD), the key
// "exception", "default", no arguments, and the text of the code: the text
// of a known code (e.g. "access violation" for 0xC0000005), or for any other
// code "Exception code 0x" + eight lower-case hex digits + " could not be
// mapped to one of the known WIN32 exception codes.".
// Returns without throwing for the breakpoint (0x80000003) and single-step
// (0x80000004) codes, which stay with the platform and its debugger.
// REQUIRES: pointers is not null.
void translateSystemException(unsigned int code, EXCEPTION_POINTERS* pointers);

// Makes translateSystemException the calling thread's translator (dropping
// any earlier one) and returns 0. The library calls it once while it loads,
// so only the loading thread translates faults.
int installTranslator();

#endif  // MSG_STRUCTURED_EXCEPTIONS_SYSTEMEXCEPTIONTRANSLATOR_H_
