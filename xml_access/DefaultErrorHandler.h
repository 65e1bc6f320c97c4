// DefaultErrorHandler: writes the error texts of a parse to a stream.

#ifndef MSG_XML_ACCESS_DEFAULTERRORHANDLER_H_
#define MSG_XML_ACCESS_DEFAULTERRORHANDLER_H_

#include <ostream>
#include <string>

#include "xml_access/XercesXMLErrorHandlerInterface.h"

namespace XercesXML {

// The receiver that a parse uses when no client receiver is installed: it
// appends every text, unchanged and with nothing added, to a stream that the
// parse owns (its error text). The stream is borrowed and must outlive the
// handler.
class DefaultErrorHandler final : public XercesXMLErrorHandlerInterface {
 public:
  explicit DefaultErrorHandler(std::ostream& stream) : stream(stream) {}

  DefaultErrorHandler(const DefaultErrorHandler&) = delete;
  DefaultErrorHandler& operator=(const DefaultErrorHandler&) = delete;

  // Each writes `text` to the stream as it stands.
  void warning(std::string text) override;
  void error(std::string text) override;
  void fatalError(std::string text) override;

 private:
  std::ostream& stream;  // not owned
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_DEFAULTERRORHANDLER_H_
