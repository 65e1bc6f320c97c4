// structured_exception, and the translation of real faults into it.
//
// Built with -fnon-call-exceptions (tests/cmake/fault_translation.cmake), so
// that the exception thrown by the translator can leave a faulting
// instruction of this file.

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "msg/structured_exception.h"
#include "platform/SystemExceptions.h"
#include "structured_exceptions/SystemExceptionTranslator.h"
#include "tests/null_read.h"

namespace {

// Real faults: a null read (tests/null_read.h) and a division by zero,
// kept from the sanitizers and the optimiser in the same way.
__attribute__((noinline, no_sanitize("undefined"), no_sanitize("address"))) int divide(
    volatile int numerator, volatile int denominator) {
  return numerator / denominator;
}

using test_support::readThrough;
using test_support::sink;
volatile int zero = 0;

void readNull() {
  sink = readThrough(test_support::nullPointer);
}
void divideByZero() {
  sink = divide(7, zero);
}

// Whether a fault address lies in the first 512 bytes of `function`.
template <typename Function>
bool within(std::uint64_t address, Function* function) {
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
void faultAgain(unsigned int, EXCEPTION_POINTERS*) {
  readNull();
}

// How a fault that nobody translates ends the process: by the handler that
// stood before ours, which under AddressSanitizer is the sanitizer's report,
// and otherwise by the signal itself.
#if defined(__SANITIZE_ADDRESS__)
#define EXPECT_UNTRANSLATED_DEATH(statement, signal, report) \
  EXPECT_DEATH(statement, "AddressSanitizer: " report)
#else
#define EXPECT_UNTRANSLATED_DEATH(statement, signal, report) \
  EXPECT_EXIT(statement, ::testing::KilledBySignal(signal), "")
#endif

// A key exception whose text and argument strings are overwritten once it is made.
std::unique_ptr<structured_exception> makeWithThreeArguments(bool copyArguments) {
  std::string first = "one", third = "three", text = "diagnostic text";
  const char* arguments[] = {first.c_str(), nullptr, third.c_str()};
  auto exception = std::make_unique<structured_exception>(text.c_str(), false, "test", "three", 3,
                                                          arguments, copyArguments);
  first = third = text = "overwritten";
  return exception;
}

TEST(StructuredExceptionTest, TextArgumentsAndDetailBufferAreCopiesAndACopyHasItsOwn) {
  std::unique_ptr<structured_exception> original = makeWithThreeArguments(true);
  EXPECT_EQ(original->getDetailBuffer(), nullptr);
  const structured_exception copy(*original);
  original.reset();
  EXPECT_STREQ(copy.what(), "diagnostic text");
  EXPECT_STREQ(copy.getMessageIdentifier(), "three");
  ASSERT_EQ(copy.getArgumentCount(), 3u);
  EXPECT_STREQ(copy.getArgument(0), "one");
  EXPECT_EQ(copy.getArgument(1), nullptr);
  EXPECT_STREQ(copy.getArgument(2), "three");

  // Arguments exist only as copies, and only with a list and a count.
  EXPECT_EQ(makeWithThreeArguments(false)->getArgumentCount(), 0u);
  EXPECT_EQ(structured_exception("t", false, "n", "i", 2, nullptr, true).getArgumentCount(), 0u);

  EXCEPTION_RECORD record{};
  EXCEPTION_POINTERS pointers{&record, nullptr};
  const structured_exception withBuffer(0xC0000094, &pointers, "fault", true);
  const char* buffer = withBuffer.getDetailBuffer();
  ASSERT_NE(buffer, nullptr);
  EXPECT_TRUE(std::all_of(buffer, buffer + 4096, [](char c) { return c == 0; }));
  const structured_exception bufferCopy(withBuffer);
  ASSERT_NE(bufferCopy.getDetailBuffer(), nullptr);
  EXPECT_NE(bufferCopy.getDetailBuffer(), buffer);
  EXPECT_EQ(bufferCopy.getDetailLength(), 0u);
}

// What the translator raises for `code`, with the default catalogue key and a
// detail buffer for all but a stack overflow.
void expectTranslated(unsigned int code, const std::string& text) {
  std::optional<structured_exception> exception = translated(code);
  ASSERT_TRUE(exception.has_value()) << text;
  EXPECT_EQ(exception->what(), text);
  EXPECT_EQ(exception->getExceptionCode(), code);
  EXPECT_EQ(exception->getExceptionAddress(), 0x1234u);
  EXPECT_STREQ(exception->getMessageNamespace(), "exception");
  EXPECT_STREQ(exception->getMessageIdentifier(), "default");
  EXPECT_EQ(exception->getArgumentCount(), 0u);
  EXPECT_EQ(exception->getDetailBuffer() == nullptr, code == 0xC00000FD) << text;
}

TEST(FaultTranslationTest, CodesGiveTheirTextsAndUnknownCodesTheirDigits) {
  // The first and last code of each range, and the one without a detail buffer.
  const std::pair<unsigned int, const char*> known[] = {
      {0x80000001, "guard page"},          {0x80000002, "datatype misalignment"},
      {0xC0000005, "access violation"},    {0xC000008C, "array bounds exceeded"},
      {0xC0000096, "private instruction"}, {0xC00000FD, "stack overflow"}};
  for (const auto& [code, text] : known) {
    expectTranslated(code, text);
  }
  const std::pair<unsigned int, const char*> unknown[] = {
      {0xC0000007, "c0000007"}, {1, "00000001"}, {0xC00000FE, "c00000fe"}};
  for (const auto& [code, digits] : unknown) {
    expectTranslated(code, std::string("Exception code 0x") + digits +
                               " could not be mapped to one of the known WIN32 exception codes.");
  }
  EXPECT_FALSE(translated(0x80000003).has_value());  // breakpoint
  EXPECT_FALSE(translated(0x80000004).has_value());  // single step
}

TEST(FaultTranslationTest, RealFaultsAreCaughtWithTheirCodeAndAddress) {
  // Twice: after the first translated fault the signal must not stay blocked.
  for (int round = 0; round < 2; ++round) {
    std::optional<structured_exception> exception = caught(readNull);
    ASSERT_TRUE(exception.has_value());
    EXPECT_EQ(exception->getExceptionCode(), 0xC0000005u);
    EXPECT_STREQ(exception->what(), "access violation");
    EXPECT_TRUE(within(exception->getExceptionAddress(), &readThrough))
        << std::hex << exception->getExceptionAddress();
  }
  std::optional<structured_exception> division = caught(divideByZero);
  ASSERT_TRUE(division.has_value());
  EXPECT_STREQ(division->what(), "integer divide by zero");
  EXPECT_TRUE(within(division->getExceptionAddress(), &divide));

  EXPECT_THROW(readNull(), std::exception);
}

TEST(FaultTranslationTest, TranslatorOfAnotherThreadCatchesItsOwnFaults) {
  std::optional<structured_exception> exception;
  std::thread([&] {
    _set_se_translator(translateSystemException);
    if (std::optional<structured_exception> inThread = caught(divideByZero)) {
      exception.emplace(*inThread);
    }
  }).join();
  ASSERT_TRUE(exception.has_value());
  EXPECT_EQ(exception->getExceptionCode(), 0xC0000094u);
}

TEST(FaultTranslationDeathTest, UntranslatedFaultsEndTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const rlimit noCoreFile{0, 0};  // the dying children write none
  setrlimit(RLIMIT_CORE, &noCoreFile);
  // A thread without a translator.
  EXPECT_UNTRANSLATED_DEATH(std::thread(readNull).join(), SIGSEGV, "SEGV");
  EXPECT_UNTRANSLATED_DEATH(std::thread(divideByZero).join(), SIGFPE, "FPE");
  // A translator that returns, and a fault inside the translator itself.
  EXPECT_UNTRANSLATED_DEATH((_set_se_translator(passThrough), readNull()), SIGSEGV, "SEGV");
  EXPECT_UNTRANSLATED_DEATH((_set_se_translator(faultAgain), readNull()), SIGSEGV, "SEGV");
  // A fault signal sent by raise() is no fault, even on a thread with a translator.
  EXPECT_UNTRANSLATED_DEATH(raise(SIGFPE), SIGFPE, "FPE");
}

}  // namespace
