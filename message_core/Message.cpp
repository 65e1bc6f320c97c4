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
#include <typeinfo>

#include "message_core/BlockCache.h"
#include "message_core/CompiledCatalogueStorage.h"
#include "message_core/MessageTable.h"
#include "message_core/PlaceholderScanner.h"
#include "message_core/PluralForms.h"
#include "message_core/StringCopy.h"
#include "msg/MTE.h"
#include "msg/MessageExceptions.h"
#include "msg/MessageHandler.h"

namespace msg {
namespace {

// The first pair of working buffers has at least this capacity.
constexpr std::size_t kMinBufferSize = 100;

// A copy of `source` made with new[], or null for a null or empty string.
char* copyOrNull(const char* source) {
  if (source == nullptr || source[0] == '\0') {
    return nullptr;
  }
  return copyString(source);
}

// Both working buffers lie in one block, the result buffer first. The
// block of the first pair, the most common one, comes from a per-thread
// cache.
static_assert(kBufferBlockSize == 2 * kMinBufferSize, "the first pair is cached");

char* makeBufferBlock(std::size_t capacity) {
  return 2 * capacity == kBufferBlockSize ? takeCachedBlock(BlockKind::kBuffers, kBufferBlockSize)
                                          : new char[2 * capacity];
}

void releaseBufferBlock(char* block, std::size_t capacity) noexcept {
  if (block != nullptr && 2 * capacity == kBufferBlockSize) {
    giveCachedBlock(BlockKind::kBuffers, block);
  } else {
    delete[] block;
  }
}

std::size_t lengthOrZero(const char* s) {
  return s == nullptr ? 0 : std::strlen(s);
}

// True if `p` points into the `size` bytes at `buffer`. std::less gives a
// total order even for pointers into unrelated arrays.
bool pointsInto(const char* p, const char* buffer, std::size_t size) {
  const std::less<const char*> before;
  return buffer != nullptr && !before(p, buffer) && before(p, buffer + size);
}

}  // namespace

void* Message::operator new(std::size_t size) {
  return size == sizeof(Message) ? takeCachedBlock(BlockKind::kRecord, sizeof(Message))
                                 : new char[size];
}

void Message::operator delete(void* memory, std::size_t size) noexcept {
  if (memory != nullptr && size == sizeof(Message)) {
    giveCachedBlock(BlockKind::kRecord, static_cast<char*>(memory));
  } else {
    delete[] static_cast<char*>(memory);
  }
}

Message::Message(const char* nameSpace, const char* identifier, SeverityLevel severity,
                 Language language, const char* text)
    : Message(nameSpace, identifier, severity, language, text, true) {}

Message::Message(const char* nameSpace, const char* identifier, SeverityLevel severity,
                 Language language, const char* text, bool copyStrings)
    : keySource(nullptr),
      nameSpace(nameSpace),
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
      bufferSize(0),
      forms(nullptr) {
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

Message::Message(const MTE* entry, const char* text, SeverityLevel severity, Language language,
                 const PluralForms* forms)
    : keySource(entry),
      nameSpace(nullptr),
      identifier(nullptr),
      text(text),
      severity(severity),
      language(language),
      ownsStrings(false),
      ownNamespace(nullptr),
      ownIdentifier(nullptr),
      ownText(nullptr),
      resultBuffer(nullptr),
      workBuffer(nullptr),
      bufferSize(0),
      forms(forms) {}

// Delegates first, so that the record counts as constructed and the
// destructor frees the buffers if a substitution below throws.
Message::Message(const MessageHandler* handler, const char* nameSpace, const char* identifier)
    : Message(nullptr, nullptr, info, Language(), nullptr, false) {
  if (handler == nullptr) {
    throw MessageHandlerError("MessageHandler corrupted.");
  }
  // A plain MessageHandler answers getMessage() from its own table when that
  // has an acceptable entry; this takes the entry from there directly,
  // which is the same answer without the temporary record. Every other case
  // (a derived handler, which may answer differently; the parent; the
  // not-found message) goes through the virtual call below.
  if (typeid(*handler) == typeid(MessageHandler)) {
    const MessageTable::Choice choice =
        findBestOf(*handler->messageTable, handler->compiledCatalogues, nameSpace, identifier,
                   handler->languageList);
    if (choice.found()) {
      keySource = choice.entry;
      if (choice.entry == nullptr) {
        this->nameSpace = choice.nameSpace;  // in a mapped catalogue
        this->identifier = choice.identifier;
      }
      text = choice.text;
      severity = static_cast<SeverityLevel>(choice.severity);
      language = choice.language;
      forms = choice.forms;
      return;
    }
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
  keySource = found->keySource;
  this->nameSpace = found->nameSpace;
  this->identifier = found->identifier;
  this->text = found->text;
  severity = found->severity;
  language = found->language;
  forms = found->forms;
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
  releaseBufferBlock(resultBuffer, bufferSize);
}

const char* Message::getMessage() const {
  return resultBuffer != nullptr ? resultBuffer : text;
}

unsigned int Message::getCountPlaceholder() const {
  return forms != nullptr ? forms->countPlaceholder() : 0;
}

void Message::clear() {
  if (forms != nullptr) {
    useText(forms->other());
    return;
  }
  if (resultBuffer == nullptr) {
    return;
  }
  // The buffers were first made with room for `text`, and never shrink.
  resultBuffer[0] = '\0';
  if (text != nullptr) {
    std::strcpy(workBuffer, text);
  } else {
    workBuffer[0] = '\0';
  }
}

void Message::useText(const char* chosen) {
  text = chosen;
  if (resultBuffer == nullptr) {
    return;  // the first substitution makes the buffers from `text`
  }
  // A variant may be longer than every text the buffers were made for.
  const std::size_t length = lengthOrZero(text);
  if (bufferSize < length + 1) {
    growBuffers(length + 1);
  }
  resultBuffer[0] = '\0';
  if (text != nullptr) {
    std::memcpy(workBuffer, text, length + 1);
  } else {
    workBuffer[0] = '\0';
  }
}

void Message::clean() {
  releaseBufferBlock(resultBuffer, bufferSize);
  resultBuffer = nullptr;
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

  if (capacity > std::numeric_limits<std::size_t>::max() / 2) {
    throw std::bad_array_new_length();
  }
  char* block = makeBufferBlock(capacity);
  char* newWork = block + capacity;
  const char* workingText = workBuffer != nullptr ? workBuffer : text;
  if (workingText != nullptr) {
    std::strcpy(newWork, workingText);
  } else {
    newWork[0] = '\0';
  }
  block[0] = '\0';
  releaseBufferBlock(resultBuffer, bufferSize);
  resultBuffer = block;
  workBuffer = newWork;
  bufferSize = static_cast<std::uint32_t>(capacity);
}

bool Message::substitute(unsigned int number, const char* value) {
  return substituteValue(number, value, value);
}

bool Message::substituteValue(unsigned int number, const char* value, const char* countText) {
  if (value == nullptr) {
    return false;
  }
  // Both buffers are rewritten (and may be replaced) below.
  std::string ownValue;
  if (pointsInto(value, resultBuffer, 2 * std::size_t{bufferSize})) {
    ownValue = value;
    countText = countText == value ? ownValue.c_str() : countText;
    value = ownValue.c_str();
  }
  // The count, filled into a record that holds nothing filled in yet,
  // chooses the variant.
  if (forms != nullptr && number == forms->countPlaceholder() &&
      (resultBuffer == nullptr || resultBuffer[0] == '\0')) {
    const char* chosen = forms->choose(countText);
    if (chosen != text) {
      useText(chosen);
    }
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
  // Once filled, and not empty, the shown text is the working text.
  const std::size_t workLength = resultBuffer[0] != '\0' ? shownLength : std::strlen(workBuffer);
  if (!found) {
    std::memcpy(resultBuffer, workBuffer, workLength + 1);
    return false;
  }
  // The text behind the placeholder, with its terminator.
  const std::size_t tailLength = workLength - last;
  std::memcpy(resultBuffer, workBuffer, first);
  std::memcpy(resultBuffer + first, value, valueLength);
  std::memcpy(resultBuffer + first + valueLength, workBuffer + last + 1, tailLength);
  std::memcpy(workBuffer, resultBuffer, first + valueLength + tailLength);
  return true;
}

bool Message::findPlaceholder(unsigned int number, unsigned int& first, unsigned int& last) const {
  first = 0;
  last = 0;
  if (workBuffer == nullptr) {
    return false;
  }
  PlaceholderScanner scanner(workBuffer);
  PlaceholderRun run{};
  while (scanner.next(run)) {
    if (run.replaceable && run.value == number) {
      // Positions fit: the buffer capacity is a 32-bit number.
      first = static_cast<unsigned int>(run.offset);
      last = static_cast<unsigned int>(run.offset + run.length - 1);
      return true;
    }
  }
  return false;
}

}  // namespace msg
