#include "msg/ErrorInMessageDocument.h"

#include <utility>

#include "message_core/StringCopy.h"

namespace msg {

ErrorInMessageDocument::ErrorInMessageDocument(const char* text) : text(copyString(text)) {}

ErrorInMessageDocument::ErrorInMessageDocument(const char* text,
                                               std::vector<DocumentProblem> problems)
    : text(copyString(text)), problems(std::move(problems)) {}

ErrorInMessageDocument::ErrorInMessageDocument(const ErrorInMessageDocument& other)
    : text(copyString(other.text)), problems(other.problems) {}

ErrorInMessageDocument::~ErrorInMessageDocument() {
  delete[] text;
}

}  // namespace msg
