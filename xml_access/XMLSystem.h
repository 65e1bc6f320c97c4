// Counted start and stop of the XML system, and the conversion of Xerces-C
// text into narrow strings.

#ifndef MSG_XML_ACCESS_XMLSYSTEM_H_
#define MSG_XML_ACCESS_XMLSYSTEM_H_

#include <cstdint>
#include <string>

#include <xercesc/util/XercesDefs.hpp>

namespace XercesXML {

// The narrow encoding in which the XML layer hands out all its text. A start
// accepts any value; only two have a meaning, and every other id makes each
// conversion give an empty string.
enum OutputEncoding : std::uint32_t {
  LocalCodePage = 0,  // the local code page of the process
  UTF8 = 1,           // UTF-8
};

// The XML system is process-wide state: a start count, the output encoding
// chosen by the first start, and one UTF-8 transcoder. There is no lock:
// start, stop and UTF-8 conversions must run on one thread at a time.

// Counted start. The count rises first, before any test, so every call owes
// one terminateSystem(), also a call that raises (with the one exception
// below). The first start (count was 0) starts the Xerces-C platform, stores
// `encoding` and creates the UTF-8 transcoder, whatever the encoding. A later
// start must name the stored encoding.
// Raises:
//  - InitializationFailure if the platform cannot start. The count is taken
//    back, so no stop is owed. The platform's message follows the prefix
//    with its ASCII characters as they are and every other character as
//    '?': no conversion of the platform can be trusted at that moment.
//  - InitializationFailure if a later start names another encoding. The
//    count stays raised and the stored encoding stays in force.
//  - ParsingError with an empty text if the transcoder cannot be made. The
//    system is up nevertheless; see transcodeFromXMLCh.
void initializeSystem(OutputEncoding encoding);

// Counted stop. The stop that brings the count to 0 releases the transcoder
// and then stops the Xerces-C platform. Every DOMNode must be gone by then.
// REQUIRES: a start not yet matched by a stop.
void terminateSystem();

// True while starts outnumber stops.
bool isSystemInitialized();

// The encoding stored by the first start.
// Raises NotInitialized while the system is down.
OutputEncoding getOutputEncoding();

// A narrow copy of the zero-terminated `text` in the output encoding. A null
// `text` gives an empty string at any time and never raises.
// Under LocalCodePage Xerces-C converts to the local code page; under UTF8
// the text is converted in passes of at most 1,024 bytes; under any other id
// the result is empty.
// Raises NotInitialized for a non-null text while the system is down, and
// ParsingError if the conversion fails; under UTF8 that is a pass that
// converts nothing (as for a text that ends in half a surrogate pair), and
// nothing of the partial result is returned. A system whose transcoder could
// not be made converts nothing under UTF8: every non-empty text raises that
// same ParsingError. What Xerces-C itself raises passes through unchanged.
std::string transcodeFromXMLCh(const XMLCh* text);

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_XMLSYSTEM_H_
