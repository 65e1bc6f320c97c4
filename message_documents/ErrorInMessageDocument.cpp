#include "msg/ErrorInMessageDocument.h"

#include "message_core/StringCopy.h"

namespace msg {

ErrorInMessageDocument::ErrorInMessageDocument(const char* text) : text(copyString(text)) {}

ErrorInMessageDocument::ErrorInMessageDocument(const ErrorInMessageDocument& other)
    : text(copyString(other.text)) {}

ErrorInMessageDocument::~ErrorInMessageDocument() {
  delete[] text;
}

}  // namespace msg
