// The XML access layer of the library: a small object layer over Xerces-C.
// Everything in namespace XercesXML is private to the library except the
// exceptions, which clients catch.

#ifndef MSG_XML_ACCESS_XERCESXML_H_
#define MSG_XML_ACCESS_XERCESXML_H_

#include "msg/XercesXMLException.h"
#include "xml_access/DOMNode.h"
#include "xml_access/DefaultErrorHandler.h"
#include "xml_access/DocumentSerializer.h"
#include "xml_access/Parser.h"
#include "xml_access/TreeErrorReporter.h"
#include "xml_access/XMLSystem.h"
#include "xml_access/XercesXMLErrorHandlerInterface.h"

#endif  // MSG_XML_ACCESS_XERCESXML_H_
