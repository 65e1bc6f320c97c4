// structured_exception: the library's exception base class, with a catalogue key.

#ifndef MSG_STRUCTURED_EXCEPTION_H_
#define MSG_STRUCTURED_EXCEPTION_H_

#include <cstdint>
#include <exception>

#include "msg/export.h"

// The record of a system fault that reaches the translator (see
// platform/SystemExceptions.h). Clients never need its definition.
struct EXCEPTION_POINTERS;

// An exception with two texts: what(), the fixed diagnostic text given at
// construction, and getMessageText(), the catalogue text of its key rendered
// at the moment it is asked, in the language the process-wide handler
// prefers, with the exception's arguments filled in.
//
// Faults translated from the system (access violation, division by zero, ...)
// are raised as this class itself, with their code and fault address and the
// key "exception", "default". The XML layer derives its exceptions from it.
//
// The what-text and the arguments are owned copies. The key strings are not
// copied: they must outlive every exception (string constants do).
class MSG_EXPORT structured_exception : public std::exception {
 public:
  // For the translator of system faults: `code` is the system's exception
  // code; of `pointers` only the fault address in its exception record is
  // read. Asks for a detail buffer if `wantDetailBuffer` (never for the
  // stack-overflow code 0xC00000FD).
  // REQUIRES: pointers is not null.
  structured_exception(unsigned int code, EXCEPTION_POINTERS* pointers, const char* text,
                       bool wantDetailBuffer);

  // For an exception with a catalogue key. With `copyArguments` true the
  // `argumentCount` strings of `arguments` are copied (null entries stay
  // null); otherwise the exception has no arguments at all.
  structured_exception(const char* text, bool wantDetailBuffer, const char* nameSpace,
                       const char* identifier, unsigned int argumentCount,
                       const char* const* arguments, bool copyArguments);

  // Deep copy: shares no buffer and no argument with `other`.
  structured_exception(const structured_exception& other);
  structured_exception& operator=(const structured_exception&) = delete;

  ~structured_exception() override;

  // The diagnostic text given at construction.
  const char* what() const noexcept override;

  // The catalogue text of the key, looked up now through
  // msg::MessageHandlerX::object() (which stacks the document handler on
  // first use), arguments substituted in order. That holds in a program
  // linked to libmsg.so (msg::msg). A program linked to libmsg-core.so
  // alone (msg::core) has no document handler: there the text comes from
  // msg::MessageHandler::object(), the one way the two differ. An unknown key gives the
  // not-found text with its placeholders unfilled; if no acceptable language
  // has even that, the result is "" (never null). The pointer stays valid for
  // the rest of the process; free nothing.
  virtual const char* getMessageText() const;

  // System exception code and fault address; 0 unless translated from a fault.
  std::uint32_t getExceptionCode() const { return exceptionCode; }
  std::uint64_t getExceptionAddress() const { return exceptionAddress; }

  // Zero-filled buffer reserved for fault details, or null; its length in
  // characters (0 unless a copy took over a filled buffer).
  const char* getDetailBuffer() const { return detailBuffer; }
  std::uint32_t getDetailLength() const { return detailLength; }

  // The catalogue key.
  const char* getMessageNamespace() const { return messageNamespace; }
  const char* getMessageIdentifier() const { return messageIdentifier; }

  // The copied arguments; getArgument gives null for a null argument.
  // REQUIRES: index < getArgumentCount().
  std::uint32_t getArgumentCount() const { return argumentCount; }
  const char* getArgument(std::uint32_t index) const { return ownedArguments[index]; }

 private:
  // Copies `arguments` into ownedArguments, or drops the list as a whole.
  void cloneArguments();

  // Frees every owned buffer; used by the destructor and when a
  // constructor fails half-way.
  void releaseOwned() noexcept;

  char* whatText;  // new[], owned
  std::uint64_t exceptionAddress;
  std::uint32_t exceptionCode;
  char* detailBuffer;  // new[], owned, may be null
  std::uint32_t detailLength;
  const char* messageNamespace;
  const char* messageIdentifier;
  std::uint32_t argumentCount;
  const char* const* arguments;  // the caller's list, during construction only
  char** ownedArguments;         // new[], owned, may be null
  bool copyArguments;
};

#endif  // MSG_STRUCTURED_EXCEPTION_H_
