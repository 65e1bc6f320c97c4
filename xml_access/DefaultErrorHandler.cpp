#include "xml_access/DefaultErrorHandler.h"

namespace XercesXML {

void DefaultErrorHandler::warning(std::string text) {
  stream << text;
}

void DefaultErrorHandler::error(std::string text) {
  stream << text;
}

void DefaultErrorHandler::fatalError(std::string text) {
  stream << text;
}

}  // namespace XercesXML
