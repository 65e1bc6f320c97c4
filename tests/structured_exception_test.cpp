#include "msg/structured_exception.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/MessageHandler.h"
#include "platform/SystemExceptions.h"

namespace {

// A catalogue entry for the rendering tests.
msg::MTE threeArguments(msg::info, "en", "test", "three", "a=&0 b=&1 c=&2", nullptr, false, false);

// A key exception whose argument strings are gone once it is made.
std::unique_ptr<structured_exception> makeWithThreeArguments(bool copyArguments,
                                                             bool nullInTheMiddle = false) {
  std::string first = "one", second = "two", third = "three";
  const char* arguments[] = {first.c_str(), nullInTheMiddle ? nullptr : second.c_str(),
                             third.c_str()};
  std::string text = "diagnostic text";
  auto exception = std::make_unique<structured_exception>(text.c_str(), false, "test", "three", 3,
                                                          arguments, copyArguments);
  // Overwrite the caller's strings: the exception must hold copies.
  first.assign(first.size(), '#');
  second.assign(second.size(), '#');
  third.assign(third.size(), '#');
  text.assign(text.size(), '#');
  return exception;
}

structured_exception makeTranslated(unsigned int code, bool wantDetailBuffer) {
  EXCEPTION_RECORD record{};
  record.ExceptionCode = code;
  record.ExceptionAddress = reinterpret_cast<void*>(std::uintptr_t{0xDEADBEEF});
  EXCEPTION_POINTERS pointers{&record, nullptr};
  return structured_exception(code, &pointers, "fault text", wantDetailBuffer);
}

TEST(StructuredExceptionTest, KeyFormCopiesTextAndArguments) {
  std::unique_ptr<structured_exception> original = makeWithThreeArguments(true);
  EXPECT_STREQ(original->what(), "diagnostic text");
  EXPECT_STREQ(original->getMessageNamespace(), "test");
  EXPECT_STREQ(original->getMessageIdentifier(), "three");
  EXPECT_EQ(original->getExceptionCode(), 0u);
  EXPECT_EQ(original->getExceptionAddress(), 0u);
  EXPECT_EQ(original->getDetailBuffer(), nullptr);
  ASSERT_EQ(original->getArgumentCount(), 3u);
  EXPECT_STREQ(original->getArgument(0), "one");
  EXPECT_STREQ(original->getArgument(1), "two");
  EXPECT_STREQ(original->getArgument(2), "three");

  // The copy owns its own strings and outlives the original.
  auto copy = std::make_unique<structured_exception>(*original);
  for (std::uint32_t i = 0; i < 3; ++i) {
    EXPECT_NE(copy->getArgument(i), original->getArgument(i));
  }
  EXPECT_NE(copy->what(), original->what());
  original.reset();
  EXPECT_STREQ(copy->what(), "diagnostic text");
  ASSERT_EQ(copy->getArgumentCount(), 3u);
  EXPECT_STREQ(copy->getArgument(0), "one");
  EXPECT_STREQ(copy->getArgument(1), "two");
  EXPECT_STREQ(copy->getArgument(2), "three");
  EXPECT_STREQ(copy->getMessageIdentifier(), "three");
}

TEST(StructuredExceptionTest, NullArgumentStaysNullInCopies) {
  std::unique_ptr<structured_exception> original = makeWithThreeArguments(true, true);
  structured_exception copy(*original);
  ASSERT_EQ(copy.getArgumentCount(), 3u);
  EXPECT_EQ(original->getArgument(1), nullptr);
  EXPECT_EQ(copy.getArgument(1), nullptr);
  EXPECT_STREQ(copy.getArgument(2), "three");
}

TEST(StructuredExceptionTest, ArgumentsExistOnlyAsCopies) {
  EXPECT_EQ(makeWithThreeArguments(false)->getArgumentCount(), 0u);
  EXPECT_EQ(structured_exception(*makeWithThreeArguments(false)).getArgumentCount(), 0u);

  const char* list[] = {"x"};
  EXPECT_EQ(structured_exception("t", false, "n", "i", 0, list, true).getArgumentCount(), 0u);
  EXPECT_EQ(structured_exception("t", false, "n", "i", 2, nullptr, true).getArgumentCount(), 0u);
}

TEST(StructuredExceptionTest, SystemFormTakesCodeAndAddress) {
  structured_exception exception = makeTranslated(0xC0000005, true);
  EXPECT_STREQ(exception.what(), "fault text");
  EXPECT_EQ(exception.getExceptionCode(), 0xC0000005u);
  EXPECT_EQ(exception.getExceptionAddress(), 0xDEADBEEFu);
  EXPECT_STREQ(exception.getMessageNamespace(), "exception");
  EXPECT_STREQ(exception.getMessageIdentifier(), "default");
  EXPECT_EQ(exception.getArgumentCount(), 0u);
}

TEST(StructuredExceptionTest, DetailBufferRules) {
  // 4,096 zero bytes when asked for; the stack overflow code never gets one.
  structured_exception withBuffer = makeTranslated(0xC0000094, true);
  ASSERT_NE(withBuffer.getDetailBuffer(), nullptr);
  EXPECT_EQ(withBuffer.getDetailLength(), 0u);
  const char* buffer = withBuffer.getDetailBuffer();
  EXPECT_TRUE(std::all_of(buffer, buffer + 4096, [](char c) { return c == 0; }));
  EXPECT_EQ(makeTranslated(0xC00000FD, true).getDetailBuffer(), nullptr);
  EXPECT_EQ(makeTranslated(0xC0000094, false).getDetailBuffer(), nullptr);
  EXPECT_NE(structured_exception("t", true, "n", "i", 0, nullptr, false).getDetailBuffer(),
            nullptr);

  // A copy of an empty buffer is one zero byte of its own.
  structured_exception copy(withBuffer);
  ASSERT_NE(copy.getDetailBuffer(), nullptr);
  EXPECT_NE(copy.getDetailBuffer(), withBuffer.getDetailBuffer());
  EXPECT_EQ(copy.getDetailBuffer()[0], '\0');
  EXPECT_EQ(copy.getDetailLength(), 0u);
  EXPECT_EQ(copy.getExceptionAddress(), 0xDEADBEEFu);
  EXPECT_EQ(structured_exception(makeTranslated(0xC0000094, false)).getDetailBuffer(), nullptr);
}

TEST(StructuredExceptionTest, CaughtAsStandardException) {
  try {
    throw structured_exception("thrown", false, "test", "three", 0, nullptr, false);
  } catch (const std::exception& exception) {
    EXPECT_STREQ(exception.what(), "thrown");
    const auto* structured = dynamic_cast<const structured_exception*>(&exception);
    ASSERT_NE(structured, nullptr);
    EXPECT_STREQ(structured->getMessageIdentifier(), "three");
  }
}

TEST(StructuredExceptionTest, MessageTextFillsArgumentsInOrder) {
  auto copy = std::make_unique<structured_exception>(*makeWithThreeArguments(true));
  EXPECT_STREQ(copy->getMessageText(), "a=one b=two c=three");
  // Each call renders anew; earlier results stay valid.
  const char* first = copy->getMessageText();
  const char* second = copy->getMessageText();
  EXPECT_STREQ(first, "a=one b=two c=three");
  EXPECT_STREQ(second, "a=one b=two c=three");

  EXPECT_STREQ(makeWithThreeArguments(false)->getMessageText(), "a=&0 b=&1 c=&2");
  EXPECT_STREQ(makeWithThreeArguments(true, true)->getMessageText(), "a=one b=&1 c=three");
}

TEST(StructuredExceptionTest, MessageTextOfAnUnknownKeyIsTheNotFoundText) {
  structured_exception exception("t", false, "test", "missing", 0, nullptr, false);
  EXPECT_STREQ(exception.getMessageText(), "System error: Message with key &0:&1 not found.");

  // With no acceptable language even for that text, the result is empty.
  msg::MessageHandler* handler = msg::MessageHandler::object();
  const msg::LanguageList saved = handler->getLanguageList();
  handler->setLanguageList(msg::LanguageList(msg::Language("fr")));
  EXPECT_STREQ(exception.getMessageText(), "");
  handler->setLanguageList(saved);
}

}  // namespace
