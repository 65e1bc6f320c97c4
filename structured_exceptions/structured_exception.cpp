#include "msg/structured_exception.h"

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "msg/Message.h"
#include "msg/MessageHandler.h"
#include "platform/SystemExceptions.h"

namespace {

// Process-wide switch for the detail buffer: true while the library is
// loaded; no code of the library changes it.
bool detailBufferEnabled = true;

constexpr std::uint32_t kDetailBufferSize = 4096;
constexpr unsigned int kStackOverflowCode = 0xC00000FD;

const char kDefaultNamespace[] = "exception";
const char kDefaultIdentifier[] = "default";

// An owned copy of `text` with its terminator; a null text gives "".
char* copyText(const char* text) {
  if (text == nullptr) {
    text = "";
  }
  const std::size_t size = std::strlen(text) + 1;
  char* copy = new char[size];
  std::memcpy(copy, text, size);
  return copy;
}

// The records whose texts getMessageText() has handed out. A returned text
// may lie inside its record, and it must stay valid for the rest of the
// process, so the records are kept here, reachable, and never released.
std::vector<std::unique_ptr<msg::Message>>& renderedRecords() {
  static auto* records = new std::vector<std::unique_ptr<msg::Message>>();
  return *records;
}

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
  whatText = copyText(text);
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
  whatText = copyText(text);
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
  whatText = copyText(other.what());
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

// Until the document handler takes over this lookup, the key is rendered
// through the plain process-wide handler: its catalogue text with the
// arguments filled in as &0, &1, ... in order, or the not-found text (its
// placeholders unfilled) when no acceptable language has the key. If even
// the not-found text is not acceptable, the result is "".
const char* structured_exception::getMessageText() const {
  msg::MessageHandler* handler = msg::MessageHandler::object();
  std::unique_ptr<msg::Message> record;
  bool found = false;
  if (messageNamespace != nullptr && messageIdentifier != nullptr) {
    record.reset(handler->getMessage(messageNamespace, messageIdentifier));
    found = record != nullptr;
  }
  if (!found) {
    record.reset(handler->getMessageNotFound());
    if (record == nullptr) {
      return "";
    }
  }
  std::vector<std::unique_ptr<msg::Message>>& records = renderedRecords();
  records.push_back(std::move(record));
  msg::Message& kept = *records.back();
  if (found) {
    for (std::uint32_t i = 0; i < argumentCount; ++i) {
      kept.substitute(i, ownedArguments[i]);
    }
  }
  const char* text = kept.getMessage();
  return text != nullptr ? text : "";
}

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
      ownedArguments[i] = copyText(arguments[i]);
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
