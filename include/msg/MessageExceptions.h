// The exception classes of the message core.
//
// They are plain classes with no base class: catch each by its own type. They
// hold pointers, not copies, to strings of the caller, of a catalogue entry or
// of the library's constants; those strings outlive the exception.

#ifndef MSG_MESSAGEEXCEPTIONS_H_
#define MSG_MESSAGEEXCEPTIONS_H_

#include "msg/export.h"

namespace msg {

// A handler's table is inconsistent, or a Message was constructed by key with
// a null handler. The only text the library uses is "MessageHandler corrupted."
class MSG_EXPORT MessageHandlerError {
 public:
  // The exception with the text `errorText` (not copied).
  explicit MessageHandlerError(const char* errorText) : text(errorText) {}
  const char* getText() const { return text; }

 private:
  const char* text;
};

// An entry was added with throwOnDuplicate set while an entry of the same
// namespace, identifier and language stood in the table.
class MSG_EXPORT MessageExists {
 public:
  // The key of the entry that was refused (the strings are not copied).
  MessageExists(const char* keyNamespace, const char* keyIdentifier)
      : nameSpace(keyNamespace), identifier(keyIdentifier) {}
  const char* getNamespace() const { return nameSpace; }
  const char* getIdentifier() const { return identifier; }

 private:
  const char* nameSpace;
  const char* identifier;
};

// A Message was constructed by key, the key was not found, and neither was
// the not-found message ("msg", "notfound") in an acceptable language.
class MSG_EXPORT MessageNotFound {
 public:
  // The key that was asked for (the strings are not copied).
  MessageNotFound(const char* keyNamespace, const char* keyIdentifier)
      : nameSpace(keyNamespace), identifier(keyIdentifier) {}
  const char* getNamespace() const { return nameSpace; }
  const char* getIdentifier() const { return identifier; }

 private:
  const char* nameSpace;
  const char* identifier;
};

}  // namespace msg

#endif  // MSG_MESSAGEEXCEPTIONS_H_
