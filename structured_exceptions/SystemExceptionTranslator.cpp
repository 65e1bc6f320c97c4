#include "structured_exceptions/SystemExceptionTranslator.h"

#include <iomanip>
#include <ios>
#include <sstream>
#include <string>

#include "msg/structured_exception.h"

namespace {

constexpr unsigned int kBreakpoint = 0x80000003;
constexpr unsigned int kSingleStep = 0x80000004;

struct KnownCode {
  unsigned int code;
  const char* text;
};

constexpr KnownCode kKnownCodes[] = {
    {0x80000001, "guard page"},
    {0x80000002, "datatype misalignment"},
    {0xC0000005, "access violation"},
    {0xC0000006, "in page error"},
    {0xC0000008, "invalid handle"},
    {0xC000001D, "illegal instruction"},
    {0xC0000025, "noncontinuable exception"},
    {0xC0000026, "invalid disposition"},
    {0xC000008C, "array bounds exceeded"},
    {0xC000008D, "float denormal operand"},
    {0xC000008E, "float divide by zero"},
    {0xC000008F, "float inexact result"},
    {0xC0000090, "float invalid operation"},
    {0xC0000091, "float overflow"},
    {0xC0000092, "float stack check"},
    {0xC0000093, "float underflow"},
    {0xC0000094, "integer divide by zero"},
    {0xC0000095, "integer overflow"},
    {0xC0000096, "private instruction"},
    {0xC00000FD, "stack overflow"},
};

const char* knownText(unsigned int code) {
  for (const KnownCode& known : kKnownCodes) {
    if (known.code == code) {
      return known.text;
    }
  }
  return nullptr;
}

}  // namespace

void translateSystemException(unsigned int code, EXCEPTION_POINTERS* pointers) {
  if (code == kBreakpoint || code == kSingleStep) {
    return;
  }
  if (const char* text = knownText(code)) {
    throw structured_exception(code, pointers, text, true);
  }
  std::ostringstream unknown;
  unknown << "Exception code 0x" << std::hex << std::nouppercase << std::setw(8)
          << std::setfill('0') << code
          << " could not be mapped to one of the known WIN32 exception codes.";
  const std::string text = unknown.str();
  throw structured_exception(code, pointers, text.c_str(), true);
}

int installTranslator() {
  _set_se_translator(translateSystemException);
  return 0;
}

namespace {

// Installed while the library loads, on the loading thread, before any
// client code runs. The library links its core ahead of this layer, so the
// built-in catalogue already stands; the translator depends on none of it.
[[maybe_unused]] const int translatorInstalled = installTranslator();

}  // namespace
