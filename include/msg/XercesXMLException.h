// The exceptions of the library's XML access layer.

#ifndef MSG_XERCESXMLEXCEPTION_H_
#define MSG_XERCESXMLEXCEPTION_H_

#include <string>

#include "msg/export.h"
#include "msg/structured_exception.h"

namespace XercesXML {

// Common base of every failure of the XML access layer: catch this type to
// see all five kinds below. It is never raised itself.
//
// Each exception carries two texts. The detailed English diagnostic text,
// made up where the failure happened, is kept as an owned copy and given by
// both what() and getText(). The catalogue key, namespace "Xerces" and the
// name of the kind as identifier, gives the general text for users through
// getMessageText().
class MSG_EXPORT Exception : public structured_exception {
 public:
  // Copies the text; the copy shares nothing with `other`.
  Exception(const Exception& other);
  Exception& operator=(const Exception&) = delete;
  ~Exception() override;

  // A copy of the detailed text; the same characters as what().
  std::string getText() const;

 protected:
  // `identifier` is the catalogue identifier of the kind; it must be a string
  // that outlives the exception (the kinds pass string constants).
  Exception(const std::string& text, const char* identifier);

 private:
  std::string text;
};

// The XML system was used, or a layer object made, while the system was
// not started. Key "Xerces", "NotInitialized".
class MSG_EXPORT NotInitialized : public Exception {
 public:
  // The exception with the detailed diagnostic `text`; copies share nothing.
  explicit NotInitialized(const std::string& text);
  NotInitialized(const NotInitialized& other);
  ~NotInitialized() override;
};

// The XML platform could not be started, or a start asked for an output
// encoding other than the one in force. Key "Xerces", "InitializationFailure".
class MSG_EXPORT InitializationFailure : public Exception {
 public:
  // The exception with the detailed diagnostic `text`; copies share nothing.
  explicit InitializationFailure(const std::string& text);
  InitializationFailure(const InitializationFailure& other);
  ~InitializationFailure() override;
};

// A document could not be parsed, validated, serialised or walked, or a text
// could not be converted. Key "Xerces", "ParsingError".
class MSG_EXPORT ParsingError : public Exception {
 public:
  // The exception with the detailed diagnostic `text`; copies share nothing.
  explicit ParsingError(const std::string& text);
  ParsingError(const ParsingError& other);
  ~ParsingError() override;
};

// An operation was called on a null node handle. Key "Xerces", "NullPointer".
class MSG_EXPORT NullPointer : public Exception {
 public:
  // The exception with the detailed diagnostic `text`; copies share nothing.
  explicit NullPointer(const std::string& text);
  NullPointer(const NullPointer& other);
  ~NullPointer() override;
};

// The DOM failed while a name, a value or an attribute was read, or during a
// search. Key "Xerces", "NavigationError".
class MSG_EXPORT NavigationError : public Exception {
 public:
  // The exception with the detailed diagnostic `text`; copies share nothing.
  explicit NavigationError(const std::string& text);
  NavigationError(const NavigationError& other);
  ~NavigationError() override;
};

}  // namespace XercesXML

#endif  // MSG_XERCESXMLEXCEPTION_H_
