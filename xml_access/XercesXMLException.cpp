#include "msg/XercesXMLException.h"

namespace XercesXML {

namespace {

// The catalogue namespace of every kind of this family.
constexpr const char* kCatalogueNamespace = "Xerces";

}  // namespace

// The layer never asks for a detail buffer and passes no arguments: the
// catalogue texts of the kinds have no placeholders to fill.
Exception::Exception(const std::string& text, const char* identifier)
    : structured_exception(text.c_str(), false, kCatalogueNamespace, identifier, 0, nullptr, false),
      text(text) {}

Exception::Exception(const Exception& other) : structured_exception(other), text(other.text) {}

Exception::~Exception() = default;

std::string Exception::getText() const {
  return text;
}

NotInitialized::NotInitialized(const std::string& text) : Exception(text, "NotInitialized") {}
NotInitialized::NotInitialized(const NotInitialized& other) = default;
NotInitialized::~NotInitialized() = default;

InitializationFailure::InitializationFailure(const std::string& text)
    : Exception(text, "InitializationFailure") {}
InitializationFailure::InitializationFailure(const InitializationFailure& other) = default;
InitializationFailure::~InitializationFailure() = default;

ParsingError::ParsingError(const std::string& text) : Exception(text, "ParsingError") {}
ParsingError::ParsingError(const ParsingError& other) = default;
ParsingError::~ParsingError() = default;

NullPointer::NullPointer(const std::string& text) : Exception(text, "NullPointer") {}
NullPointer::NullPointer(const NullPointer& other) = default;
NullPointer::~NullPointer() = default;

NavigationError::NavigationError(const std::string& text) : Exception(text, "NavigationError") {}
NavigationError::NavigationError(const NavigationError& other) = default;
NavigationError::~NavigationError() = default;

}  // namespace XercesXML
