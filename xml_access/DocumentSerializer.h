// Serialisation of a document through DOM Load and Save.

#ifndef MSG_XML_ACCESS_DOCUMENTSERIALIZER_H_
#define MSG_XML_ACCESS_DOCUMENTSERIALIZER_H_

#include <string>

#include <xercesc/framework/MemBufFormatTarget.hpp>

#include "xml_access/DOMNode.h"

namespace XercesXML {

// Writes the node of `document` (as a rule a document node) as XML text,
// through the DOM Load and Save serialiser of Xerces-C in its default
// configuration. `encoding` names the output encoding; empty leaves the
// choice to the serialiser.
//
// With a non-empty `fileName` the text goes to that file, which is created
// or truncated, and `memoryTarget` is left alone. With an empty `fileName`
// the text goes to a new memory target with an initial capacity of 1023
// bytes, which `memoryTarget` receives and the caller owns (delete it).
//
// On failure nothing made here survives: a target already created is
// deleted and `memoryTarget` is set to null, so a caller's guard on it never
// deletes twice.
// Raises NullPointer on a null handle; ParsingError for a tree more than
// 1,000 levels deep (the serialiser recurses per level and would overflow
// the stack), if no DOM implementation with Load and Save is registered,
// with "OutOfMemoryException" if Xerces-C runs out of memory, and with the
// message of any Xerces-C XMLException (for example a file that cannot be
// opened). A DOMException passes unchanged.
void serializeDocument(const DOMNode& document, const std::string& fileName,
                       xercesc::MemBufFormatTarget*& memoryTarget, const std::string& encoding);

// serializeDocument into a new memory target (an empty file name).
void serializeToMemory(const DOMNode& document, xercesc::MemBufFormatTarget*& memoryTarget,
                       const std::string& encoding);

// The document of `document` as UTF-8 XML text in the form of a file that
// people edit: an XML declaration without "standalone", then each node
// around the root element (comments, processing instructions, the root
// element itself) on a line of its own, and the tree as it stands (no
// reformatting).
// Raises NullPointer on a null handle; ParsingError for a tree deeper than
// kMaxElementDepth or that the serialiser cannot write, such as one with a
// character that XML 1.0 cannot hold. No exception of Xerces-C passes.
std::string serializeAsWritten(const DOMNode& document);

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_DOCUMENTSERIALIZER_H_
