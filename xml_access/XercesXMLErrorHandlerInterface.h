// XercesXMLErrorHandlerInterface: receiver of the finished error texts of a parse.

#ifndef MSG_XML_ACCESS_XERCESXMLERRORHANDLERINTERFACE_H_
#define MSG_XML_ACCESS_XERCESXMLERRORHANDLERINTERFACE_H_

#include <string>

namespace XercesXML {

// Receives one finished block of text per problem that a parse reports (see
// TreeErrorReporter for the layout). The parser's own DefaultErrorHandler
// collects the blocks in the error text of the running parse; a client may
// install its own receiver on a Parser instead.
//
// A receiver is never owned by the objects that call it, and it is never
// deleted through this interface: the destructor is protected and not
// virtual, so the owner deletes a receiver through its own type.
class XercesXMLErrorHandlerInterface {
 public:
  // A warning. The library's reporter never passes warnings on.
  virtual void warning(std::string text) = 0;

  // An error the parser could recover from.
  virtual void error(std::string text) = 0;

  // An error after which the parser stops.
  virtual void fatalError(std::string text) = 0;

 protected:
  XercesXMLErrorHandlerInterface() = default;
  XercesXMLErrorHandlerInterface(const XercesXMLErrorHandlerInterface&) = default;
  XercesXMLErrorHandlerInterface& operator=(const XercesXMLErrorHandlerInterface&) = default;
  ~XercesXMLErrorHandlerInterface() = default;
};

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_XERCESXMLERRORHANDLERINTERFACE_H_
