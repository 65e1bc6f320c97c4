// Message: one message record and the substitution of its placeholders.

#include "msg/Message.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <string>

#include "message_core/StringCopy.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandler.h"

namespace msg {
namespace {

// A placeholder is "&" followed by at most this many decimal digits.
constexpr std::size_t kMaxPlaceholderDigits = 22;

// The first pair of working buffers has at least this capacity.
constexpr std::size_t kMinBufferSize = 100;

// A copy of `source` made with new[], or null for a null or empty string.
char* copyOrNull(const char* source) {
  if (source == nullptr || source[0] == '\0') {
    return nullptr;
  }
  return copyString(source);
}

std::size_t lengthOrZero(const char* s) {
  return s == nullptr ? 0 : std::strlen(s);
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// True if `p` points into the `size` bytes at `buffer`. std::less gives a
// total order even for pointers into unrelated arrays.
bool pointsInto(const char* p, const char* buffer, std::size_t size) {
  const std::less<const char*> before;
  return buffer != nullptr && !before(p, buffer) && before(p, buffer + size);
}

}  // namespace

Message::Message(const char* nameSpace, const char* identifier, SeverityLevel severity,
                 Language language, const char* text)
    : Message(nameSpace, identifier, severity, language, text, true) {}

Message::Message(const char* nameSpace, const char* identifier, SeverityLevel severity,
                 Language language, const char* text, bool copyStrings)
    : nameSpace(nameSpace),
      identifier(identifier),
      text(text),
      severity(severity),
      language(language),
      ownsStrings(copyStrings),
      ownNamespace(nullptr),
      ownIdentifier(nullptr),
      ownText(nullptr),
      resultBuffer(nullptr),
      workBuffer(nullptr),
      bufferSize(0) {
  if (!copyStrings) {
    return;
  }
  // Held by unique_ptr until all three exist, so a failed allocation leaks
  // none of them.
  std::unique_ptr<char[]> namespaceCopy(copyOrNull(nameSpace));
  std::unique_ptr<char[]> identifierCopy(copyOrNull(identifier));
  std::unique_ptr<char[]> textCopy(copyOrNull(text));
  ownNamespace = namespaceCopy.release();
  ownIdentifier = identifierCopy.release();
  ownText = textCopy.release();
  this->nameSpace = ownNamespace;
  this->identifier = ownIdentifier;
  this->text = ownText;
}

// Delegates first, so that the record counts as constructed and the
// destructor frees the buffers if a substitution below throws.
Message::Message(const MessageHandler* handler, const char* nameSpace, const char* identifier)
    : Message(nullptr, nullptr, info, Language(), nullptr, false) {
  if (handler == nullptr) {
    throw MessageHandlerError("MessageHandler corrupted.");
  }
  Message* found = handler->getMessage(nameSpace, identifier);
  const bool keyMissing = found == nullptr;
  if (keyMissing) {
    found = handler->getMessageNotFound();
    if (found == nullptr) {
      throw MessageNotFound(nameSpace, identifier);
    }
  }
  // The handler's record borrows the entry's strings, and so does this one.
  this->nameSpace = found->nameSpace;
  this->identifier = found->identifier;
  this->text = found->text;
  severity = found->severity;
  language = found->language;
  delete found;

  if (keyMissing) {
    substitute(0, nameSpace);
    substitute(1, identifier);
  }
}

Message::~Message() {
  if (ownsStrings) {
    delete[] ownNamespace;
    delete[] ownIdentifier;
    delete[] ownText;
  }
  delete[] resultBuffer;
  delete[] workBuffer;
}

const char* Message::getMessage() const {
  return resultBuffer != nullptr ? resultBuffer : text;
}

void Message::clear() {
  if (resultBuffer != nullptr) {
    std::memset(resultBuffer, 0, bufferSize);
  }
  if (workBuffer != nullptr) {
    std::memset(workBuffer, 0, bufferSize);
    // The buffers were first made with room for `text`, and never shrink.
    if (text != nullptr) {
      std::strcpy(workBuffer, text);
    }
  }
}

void Message::clean() {
  delete[] resultBuffer;
  resultBuffer = nullptr;
  delete[] workBuffer;
  workBuffer = nullptr;
  bufferSize = 0;
}

void Message::growBuffers(std::size_t room) {
  constexpr std::size_t kMaxBufferSize = std::numeric_limits<std::uint32_t>::max();
  if (room > kMaxBufferSize) {
    throw std::bad_array_new_length();
  }
  std::size_t capacity = bufferSize == 0 ? std::max(room, kMinBufferSize)
                                         : std::max(2 * std::size_t{bufferSize}, room);
  capacity = std::min(capacity, kMaxBufferSize);

  std::unique_ptr<char[]> newResult(new char[capacity]());
  std::unique_ptr<char[]> newWork(new char[capacity]());
  const char* workingText = workBuffer != nullptr ? workBuffer : text;
  if (workingText != nullptr) {
    std::strcpy(newWork.get(), workingText);
  }
  delete[] resultBuffer;
  delete[] workBuffer;
  resultBuffer = newResult.release();
  workBuffer = newWork.release();
  bufferSize = static_cast<std::uint32_t>(capacity);
}

bool Message::substitute(unsigned int number, const char* value) {
  if (value == nullptr) {
    return false;
  }
  // Both buffers are rewritten (and may be replaced) below.
  std::string ownValue;
  if (pointsInto(value, resultBuffer, bufferSize) || pointsInto(value, workBuffer, bufferSize)) {
    ownValue = value;
    value = ownValue.c_str();
  }

  // The room counts the shown text, not the working text, and keeps the
  // placeholder that goes away. The working text is never longer than the
  // shown one (they are equal once filled, and the cleared working text is
  // `text`), so the result below always fits.
  const std::size_t shownLength = resultBuffer != nullptr && resultBuffer[0] != '\0'
                                      ? std::strlen(resultBuffer)
                                      : lengthOrZero(text);
  const std::size_t valueLength = std::strlen(value);
  const std::size_t room = shownLength + valueLength + 1;
  if (bufferSize < room) {
    growBuffers(room);
  }

  unsigned int first = 0;
  unsigned int last = 0;
  const bool found = findPlaceholder(number, first, last);
  std::memset(resultBuffer, 0, bufferSize);
  if (found) {
    std::memcpy(resultBuffer, workBuffer, first);
    std::memcpy(resultBuffer + first, value, valueLength);
    std::strcpy(resultBuffer + first + valueLength, workBuffer + last + 1);
    std::strcpy(workBuffer, resultBuffer);
  } else {
    std::strcpy(resultBuffer, workBuffer);
  }
  return found;
}

bool Message::findPlaceholder(unsigned int number, unsigned int& first, unsigned int& last) const {
  first = 0;
  last = 0;
  if (workBuffer == nullptr) {
    return false;
  }
  // strchr skips the plain text between candidates many bytes at a time.
  for (const char* ampersand = std::strchr(workBuffer, '&'); ampersand != nullptr;) {
    const char* digits = ampersand + 1;
    const char* runEnd = digits;
    // The value of the run, as atoi would give it, as long as it fits an
    // int; a larger value names no number.
    std::uint64_t value = 0;
    bool fitsInt = true;
    while (isDigit(*runEnd)) {
      if (fitsInt) {
        value = value * 10 + static_cast<std::uint64_t>(*runEnd - '0');
        fitsInt = value <= static_cast<std::uint64_t>(std::numeric_limits<int>::max());
      }
      ++runEnd;
    }
    const std::size_t runLength = static_cast<std::size_t>(runEnd - digits);
    if (runLength >= 1 && runLength <= kMaxPlaceholderDigits && fitsInt && value == number) {
      // Positions fit: the buffer capacity is a 32-bit number.
      first = static_cast<unsigned int>(ampersand - workBuffer);
      last = static_cast<unsigned int>(runEnd - 1 - workBuffer);
      return true;
    }
    // Go on at the character that ended the run: a "&" there opens the next
    // candidate at once, anything else is passed over.
    ampersand = std::strchr(runEnd, '&');
  }
  return false;
}

}  // namespace msg
