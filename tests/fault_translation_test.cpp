// Built with -fnon-call-exceptions (tests/cmake/fault_translation.cmake), so
// that the exception thrown by the translator can leave a faulting
// instruction of this file.

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>

#include <cstdint>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <thread>

#include "msg/structured_exception.h"
#include "platform/SystemExceptions.h"
#include "structured_exceptions/SystemExceptionTranslator.h"

namespace {

// Real faults. The sanitizers would report a null load or a division by
// zero themselves before the hardware faults, so they stay out of these two
// functions; `volatile` and noinline keep the compiler from folding the
// operations away.
__attribute__((noinline, no_sanitize("undefined"), no_sanitize("address"))) int readThrough(
    volatile int* pointer) {
  return *pointer;
}

__attribute__((noinline, no_sanitize("undefined"), no_sanitize("address"))) int divide(
    volatile int numerator, volatile int denominator) {
  return numerator / denominator;
}

volatile int* volatile nullPointer = nullptr;
volatile int zero = 0;
volatile int sink = 0;

void readNull() {
  sink = readThrough(nullPointer);
}
void divideByZero() {
  sink = divide(7, zero);
}

bool within(std::uint64_t address, int (*function)(volatile int*)) {
  const auto start = reinterpret_cast<std::uintptr_t>(function);
  return address >= start && address < start + 512;
}
bool within(std::uint64_t address, int (*function)(volatile int, volatile int)) {
  const auto start = reinterpret_cast<std::uintptr_t>(function);
  return address >= start && address < start + 512;
}

template <typename Action>
std::optional<structured_exception> caught(Action action) {
  try {
    action();
  } catch (const structured_exception& exception) {
    return exception;
  }
  return std::nullopt;
}

// What the translator throws for `code`, with a record at a known address.
std::optional<structured_exception> translated(unsigned int code) {
  EXCEPTION_RECORD record{};
  record.ExceptionCode = code;
  record.ExceptionAddress = reinterpret_cast<void*>(std::uintptr_t{0x1234});
  EXCEPTION_POINTERS pointers{&record, nullptr};
  return caught([&] { translateSystemException(code, &pointers); });
}

void passThrough(unsigned int, EXCEPTION_POINTERS*) {}

// How a fault that nobody translates ends the process: by the handler that
// stood before ours, which under AddressSanitizer is the sanitizer's report,
// and otherwise by the signal itself. The dying child writes no core file.
#if defined(__SANITIZE_ADDRESS__)
#define EXPECT_UNTRANSLATED_DEATH(statement, signal, report) \
  EXPECT_DEATH(                                              \
      {                                                      \
        withoutCoreFile();                                   \
        statement;                                           \
      },                                                     \
      "AddressSanitizer: " report)
#else
#define EXPECT_UNTRANSLATED_DEATH(statement, signal, report) \
  EXPECT_EXIT(                                               \
      {                                                      \
        withoutCoreFile();                                   \
        statement;                                           \
      },                                                     \
      ::testing::KilledBySignal(signal), "")
#endif

void withoutCoreFile() {
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
}

class FaultTranslationDeathTest : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST(FaultTranslationTest, KnownCodesGiveTheirTexts) {
  const struct {
    unsigned int code;
    const char* text;
  } table[] = {
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
  for (const auto& row : table) {
    SCOPED_TRACE(row.text);
    std::optional<structured_exception> exception = translated(row.code);
    ASSERT_TRUE(exception.has_value());
    EXPECT_STREQ(exception->what(), row.text);
    EXPECT_EQ(exception->getExceptionCode(), row.code);
    EXPECT_EQ(exception->getExceptionAddress(), 0x1234u);
    EXPECT_STREQ(exception->getMessageNamespace(), "exception");
    EXPECT_STREQ(exception->getMessageIdentifier(), "default");
    EXPECT_EQ(exception->getArgumentCount(), 0u);
    // Every translated exception has a detail buffer but a stack overflow.
    EXPECT_EQ(exception->getDetailBuffer() == nullptr, row.code == 0xC00000FD);
  }
}

TEST(FaultTranslationTest, UnknownCodesShowEightLowerCaseHexDigits) {
  const struct {
    unsigned int code;
    const char* digits;
  } table[] = {
      {0xC0000007, "c0000007"}, {1, "00000001"},          {0x80000000, "80000000"},
      {0xC00000FE, "c00000fe"}, {0xFFFFFFFF, "ffffffff"},
  };
  for (const auto& row : table) {
    std::optional<structured_exception> exception = translated(row.code);
    ASSERT_TRUE(exception.has_value());
    EXPECT_EQ(std::string(exception->what()),
              std::string("Exception code 0x") + row.digits +
                  " could not be mapped to one of the known WIN32 exception codes.");
    EXPECT_EQ(exception->getExceptionCode(), row.code);
    EXPECT_NE(exception->getDetailBuffer(), nullptr);
  }
}

TEST(FaultTranslationTest, BreakpointAndSingleStepPassThrough) {
  EXPECT_FALSE(translated(0x80000003).has_value());
  EXPECT_FALSE(translated(0x80000004).has_value());
}

TEST(FaultTranslationTest, SignalsMapToCodes) {
  using msg::platform::exceptionCodeForSignal;
  EXPECT_EQ(exceptionCodeForSignal(SIGSEGV, SEGV_MAPERR), 0xC0000005u);
  EXPECT_EQ(exceptionCodeForSignal(SIGSEGV, SI_KERNEL), 0xC0000005u);
  EXPECT_EQ(exceptionCodeForSignal(SIGBUS, BUS_ADRALN), 0x80000002u);
  EXPECT_EQ(exceptionCodeForSignal(SIGBUS, BUS_ADRERR), 0xC0000006u);
  EXPECT_EQ(exceptionCodeForSignal(SIGFPE, FPE_INTDIV), 0xC0000094u);
  EXPECT_EQ(exceptionCodeForSignal(SIGFPE, FPE_FLTDIV), 0xC000008Eu);
  EXPECT_EQ(exceptionCodeForSignal(SIGFPE, FPE_FLTUNK), 0xC0000090u);
  EXPECT_EQ(exceptionCodeForSignal(SIGILL, ILL_ILLOPN), 0xC000001Du);
  EXPECT_EQ(exceptionCodeForSignal(SIGILL, ILL_PRVOPC), 0xC0000096u);
  // Sent signals are no faults, and other signals are not ours.
  EXPECT_EQ(exceptionCodeForSignal(SIGSEGV, SI_USER), 0u);
  EXPECT_EQ(exceptionCodeForSignal(SIGFPE, SI_TKILL), 0u);
  EXPECT_EQ(exceptionCodeForSignal(SIGTRAP, 1), 0u);
}

TEST(FaultTranslationTest, TranslatorIsInstalledOnTheLoadingThreadOnly) {
  _se_translator_function onMainThread = _set_se_translator(nullptr);
  EXPECT_EQ(onMainThread, &translateSystemException);
  EXPECT_EQ(_set_se_translator(onMainThread), nullptr);

  _se_translator_function onOtherThread = &passThrough;
  std::thread([&] { onOtherThread = _set_se_translator(nullptr); }).join();
  EXPECT_EQ(onOtherThread, nullptr);
}

TEST(FaultTranslationTest, NullPointerReadIsCaughtAsAccessViolation) {
  // Twice: after the first translated fault the signal must not stay
  // blocked on this thread.
  for (int round = 0; round < 2; ++round) {
    std::optional<structured_exception> exception = caught(readNull);
    ASSERT_TRUE(exception.has_value());
    EXPECT_EQ(exception->getExceptionCode(), 0xC0000005u);
    EXPECT_STREQ(exception->what(), "access violation");
    EXPECT_TRUE(within(exception->getExceptionAddress(), &readThrough))
        << std::hex << exception->getExceptionAddress();
    EXPECT_NE(exception->getDetailBuffer(), nullptr);
  }
  // An ordinary catch of std::exception sees it too.
  try {
    readNull();
    FAIL() << "no exception";
  } catch (const std::exception& exception) {
    EXPECT_STREQ(exception.what(), "access violation");
  }
}

TEST(FaultTranslationTest, IntegerDivisionByZeroIsCaught) {
  std::optional<structured_exception> exception = caught(divideByZero);
  ASSERT_TRUE(exception.has_value());
  EXPECT_EQ(exception->getExceptionCode(), 0xC0000094u);
  EXPECT_STREQ(exception->what(), "integer divide by zero");
  EXPECT_TRUE(within(exception->getExceptionAddress(), &divide))
      << std::hex << exception->getExceptionAddress();
}

TEST(FaultTranslationTest, TranslatedExceptionRendersTheDefaultCatalogueText) {
  std::optional<structured_exception> exception = caught(readNull);
  ASSERT_TRUE(exception.has_value());
  EXPECT_STREQ(exception->getMessageText(),
               "Meldung: Das Subsystem [&0] hat die Fehlersituation [&1] gemeldet. "
               "Text: [&2], Parameter sind 1: [&3], 2: [&4], 3: [&5], usw.");
}

TEST(FaultTranslationTest, TranslatorOfAnotherThreadCatchesItsOwnFaults) {
  std::optional<structured_exception> exception;
  std::thread([&] {
    _set_se_translator(translateSystemException);
    try {
      divideByZero();
    } catch (const structured_exception& caughtException) {
      exception.emplace(caughtException);
    }
  }).join();
  ASSERT_TRUE(exception.has_value());
  EXPECT_EQ(exception->getExceptionCode(), 0xC0000094u);
}

TEST_F(FaultTranslationDeathTest, FaultOnAThreadWithoutTranslatorEndsTheProcess) {
  EXPECT_UNTRANSLATED_DEATH(std::thread(readNull).join(), SIGSEGV, "SEGV");
  EXPECT_UNTRANSLATED_DEATH(std::thread(divideByZero).join(), SIGFPE, "FPE");
}

TEST_F(FaultTranslationDeathTest, PassThroughTranslatorLeavesTheFaultAlone) {
  EXPECT_UNTRANSLATED_DEATH(
      {
        _set_se_translator(passThrough);
        readNull();
      },
      SIGSEGV, "SEGV");
}

TEST_F(FaultTranslationDeathTest, FaultInsideTheTranslatorIsNotTranslatedAgain) {
  EXPECT_UNTRANSLATED_DEATH(
      {
        _set_se_translator([](unsigned int, EXCEPTION_POINTERS*) { readNull(); });
        readNull();
      },
      SIGSEGV, "SEGV");
}

TEST_F(FaultTranslationDeathTest, SentFaultSignalIsNoFault) {
  // raise() on the loading thread, which has a translator: still no
  // exception, the signal ends the process.
  EXPECT_UNTRANSLATED_DEATH(raise(SIGFPE), SIGFPE, "FPE");
}

}  // namespace
