#include "msg/ErrorInMessageDocument.h"

#include <cstring>

namespace msg {

namespace {

char* copyText(const char* text) {
  if (text == nullptr) {
    text = "";
  }
  const std::size_t size = std::strlen(text) + 1;
  char* copy = new char[size];
  std::memcpy(copy, text, size);
  return copy;
}

}  // namespace

ErrorInMessageDocument::ErrorInMessageDocument(const char* text) : text(copyText(text)) {}

ErrorInMessageDocument::ErrorInMessageDocument(const ErrorInMessageDocument& other)
    : text(copyText(other.text)) {}

ErrorInMessageDocument::~ErrorInMessageDocument() {
  delete[] text;
}

}  // namespace msg
