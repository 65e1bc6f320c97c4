// OutsideFiles: how msgtool reads the XML files it exchanges with
// translators' tools and the message documents it edits.

#ifndef MSGTOOL_OUTSIDEFILES_H_
#define MSGTOOL_OUTSIDEFILES_H_

#include <cstdint>
#include <string>

#include "xml_access/DOMNode.h"

namespace msgtool {

// Reads `path` under the library's profile for files from outside (see
// xml_access/OutsideFile.h): bounded, no DOCTYPE, nothing opened but the
// file, every element with its line. `maxBytes` is the limit of the file's
// kind (platform/InputLimits.h); `keepComments` keeps comments, for a
// document that is written back.
// Returns the document node, which owns the document.
// Raises ToolError naming the file and the line of the fault.
// REQUIRES: the XML system is up (UTF-8 output; see XmlSession).
XercesXML::DOMNode readOutsideFile(const std::string& path, std::uintmax_t maxBytes,
                                   bool keepComments);

}  // namespace msgtool

#endif  // MSGTOOL_OUTSIDEFILES_H_
