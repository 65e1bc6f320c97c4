#include "msg/structured_exception.h"

#include <cstring>

#include "message_core/StringCopy.h"
#include "platform/SystemExceptions.h"

namespace {

// Process-wide switch for the detail buffer: true while the library is
// loaded; no code of the library changes it.
bool detailBufferEnabled = true;

constexpr std::uint32_t kDetailBufferSize = 4096;
constexpr unsigned int kStackOverflowCode = 0xC00000FD;

const char kDefaultNamespace[] = "exception";
const char kDefaultIdentifier[] = "default";

}  // namespace

structured_exception::structured_exception(unsigned int code, EXCEPTION_POINTERS* pointers,
                                           const char* text, bool wantDetailBuffer)
    : whatText(nullptr),
      exceptionAddress(
          reinterpret_cast<std::uintptr_t>(pointers->ExceptionRecord->ExceptionAddress)),
      exceptionCode(code),
      detailBuffer(nullptr),
      detailLength(0),
      messageNamespace(kDefaultNamespace),
      messageIdentifier(kDefaultIdentifier),
      argumentCount(0),
      arguments(nullptr),
      ownedArguments(nullptr),
      copyArguments(false) {
  whatText = msg::copyString(text);
  // A stack overflow gets no detail buffer: the translator may run with
  // little room left.
  if (wantDetailBuffer && detailBufferEnabled && code != kStackOverflowCode) {
    try {
      detailBuffer = new char[kDetailBufferSize]();
    } catch (...) {
      releaseOwned();
      throw;
    }
  }
}

structured_exception::structured_exception(const char* text, bool wantDetailBuffer,
                                           const char* nameSpace, const char* identifier,
                                           unsigned int argumentCount, const char* const* arguments,
                                           bool copyArguments)
    : whatText(nullptr),
      exceptionAddress(0),
      exceptionCode(0),
      detailBuffer(nullptr),
      detailLength(0),
      messageNamespace(nameSpace),
      messageIdentifier(identifier),
      argumentCount(argumentCount),
      arguments(arguments),
      ownedArguments(nullptr),
      copyArguments(copyArguments) {
  whatText = msg::copyString(text);
  try {
    if (wantDetailBuffer && detailBufferEnabled) {
      detailBuffer = new char[kDetailBufferSize]();
    }
    cloneArguments();
  } catch (...) {
    releaseOwned();
    throw;
  }
}

structured_exception::structured_exception(const structured_exception& other)
    : std::exception(other),
      whatText(nullptr),
      exceptionAddress(other.exceptionAddress),
      exceptionCode(other.exceptionCode),
      detailBuffer(nullptr),
      detailLength(other.detailLength),
      messageNamespace(other.messageNamespace),
      messageIdentifier(other.messageIdentifier),
      argumentCount(other.argumentCount),
      arguments(nullptr),
      ownedArguments(nullptr),
      copyArguments(other.copyArguments) {
  whatText = msg::copyString(other.what());
  try {
    // The copy holds only what the source's buffer holds: detailLength
    // characters and a terminator. Content beyond detailLength is not read.
    if (other.detailBuffer != nullptr) {
      detailBuffer = new char[std::size_t{detailLength} + 1]();
      std::memcpy(detailBuffer, other.detailBuffer, strnlen(other.detailBuffer, detailLength));
    }
    if (copyArguments) {
      arguments = other.ownedArguments;
      cloneArguments();
    } else {
      argumentCount = 0;
    }
  } catch (...) {
    releaseOwned();
    throw;
  }
}

structured_exception::~structured_exception() {
  releaseOwned();
}

const char* structured_exception::what() const noexcept {
  return whatText;
}

// getMessageText() is in MessageTextOfException.cpp.

void structured_exception::cloneArguments() {
  if (argumentCount == 0 || arguments == nullptr || !copyArguments) {
    argumentCount = 0;
    arguments = nullptr;
    ownedArguments = nullptr;
    copyArguments = false;
    return;
  }
  ownedArguments = new char*[argumentCount]();  // all null until copied
  for (std::uint32_t i = 0; i < argumentCount; ++i) {
    if (arguments[i] != nullptr) {
      ownedArguments[i] = msg::copyString(arguments[i]);
    }
  }
  arguments = nullptr;
}

void structured_exception::releaseOwned() noexcept {
  delete[] whatText;
  whatText = nullptr;
  delete[] detailBuffer;
  detailBuffer = nullptr;
  if (copyArguments && ownedArguments != nullptr) {
    for (std::uint32_t i = 0; i < argumentCount; ++i) {
      delete[] ownedArguments[i];
    }
    delete[] ownedArguments;
  }
  ownedArguments = nullptr;
}
