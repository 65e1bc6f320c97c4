#include "xml_access/DocumentSerializer.h"

#include <cstddef>
#include <memory>
#include <sstream>

#include <xercesc/dom/DOMConfiguration.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/dom/DOMImplementation.hpp>
#include <xercesc/dom/DOMImplementationLS.hpp>
#include <xercesc/dom/DOMImplementationRegistry.hpp>
#include <xercesc/dom/DOMLSOutput.hpp>
#include <xercesc/dom/DOMLSSerializer.hpp>
#include <xercesc/framework/LocalFileFormatTarget.hpp>
#include <xercesc/framework/XMLFormatter.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/util/XMLUniDefs.hpp>

#include "msg/XercesXMLException.h"
#include "platform/InputLimits.h"
#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace {

// The feature name under which the registry keeps DOM Load and Save.
const XMLCh kLoadAndSave[] = {xercesc::chLatin_L, xercesc::chLatin_S, xercesc::chNull};

// A narrow name converted to XMLCh for the life of the object. The output
// object keeps only a pointer to its encoding name, so the name has to live
// until the serialiser is done.
class TranscodedName {
 public:
  explicit TranscodedName(const std::string& narrow)
      : text(xercesc::XMLString::transcode(narrow.c_str(),
                                           xercesc::XMLPlatformUtils::fgMemoryManager)) {}
  TranscodedName(const TranscodedName&) = delete;
  TranscodedName& operator=(const TranscodedName&) = delete;
  ~TranscodedName() {
    xercesc::XMLString::release(&text, xercesc::XMLPlatformUtils::fgMemoryManager);
  }

  const XMLCh* get() const { return text; }

 private:
  XMLCh* text;
};

// True if some node lies more than `limit` levels below `root`. Walks the
// tree without recursion, and stops at the first node past the limit.
bool deeperThan(const xercesc::DOMNode* root, std::size_t limit) {
  std::size_t depth = 0;
  const xercesc::DOMNode* node = root;
  while (true) {
    if (node->getFirstChild() != nullptr) {
      node = node->getFirstChild();
      if (++depth > limit) {
        return true;
      }
      continue;
    }
    while (node != root && node->getNextSibling() == nullptr) {
      node = node->getParentNode();
      --depth;
    }
    if (node == root) {
      return false;
    }
    node = node->getNextSibling();
  }
}

// The implementation that serialises `node`, once `node` is known to be
// one the serialiser can write: not null, and not nested so deep that its
// recursion would overflow the stack.
// Raises NullPointer for a null node and ParsingError for a deep one or a
// registry without Load and Save.
xercesc::DOMImplementation* serializerFor(const xercesc::DOMNode* node) {
  if (node == nullptr) {
    throw NullPointer("XercesXML - Access to DOM null pointer.");
  }
  if (deeperThan(node, msg::limits::kMaxElementDepth)) {
    std::ostringstream text;
    text << "XercesXML - Document nested deeper than " << msg::limits::kMaxElementDepth
         << " levels cannot be serialised.";
    throw ParsingError(text.str());
  }
  xercesc::DOMImplementation* implementation =
      xercesc::DOMImplementationRegistry::getDOMImplementation(kLoadAndSave);
  if (implementation == nullptr) {
    // The registry always holds the implementation of Xerces-C itself, so
    // this means a broken installation; say so rather than crash.
    throw ParsingError("XercesXML - No DOM implementation with Load and Save available.");
  }
  return implementation;
}

}  // namespace

void serializeDocument(const DOMNode& document, const std::string& fileName,
                       xercesc::MemBufFormatTarget*& memoryTarget, const std::string& encoding) {
  xercesc::MemoryManager* const memoryManager = xercesc::XMLPlatformUtils::fgMemoryManager;
  try {
    xercesc::DOMImplementation* implementation = serializerFor(document.node);
    const TranscodedName encodingName(encoding);
    xercesc::DOMLSSerializer* serializer = implementation->createLSSerializer(memoryManager);
    xercesc::DOMLSOutput* output = implementation->createLSOutput(memoryManager);
    xercesc::XMLFormatTarget* target = nullptr;
    try {
      output->setEncoding(encodingName.get());
      if (fileName.empty()) {
        memoryTarget = new xercesc::MemBufFormatTarget(1023, memoryManager);
        target = memoryTarget;
      } else {
        target = new xercesc::LocalFileFormatTarget(fileName.c_str(), memoryManager);
      }
      output->setByteStream(target);
      // The result is not looked at: a document the serialiser could write
      // only in part fails when it is parsed again.
      serializer->write(document.node, output);
    } catch (...) {
      output->release();
      serializer->release();
      delete target;
      memoryTarget = nullptr;
      throw;
    }
    output->release();
    serializer->release();
    if (!fileName.empty()) {
      delete target;  // flushes and closes the file
    }
  } catch (const xercesc::OutOfMemoryException&) {
    throw ParsingError("OutOfMemoryException");
  } catch (const xercesc::XMLException& exception) {
    throw ParsingError(transcodeFromXMLCh(exception.getMessage()));
  }
}

std::string serializeAsWritten(const DOMNode& document) {
  static const XMLCh kUtf8[] = {'U', 'T', 'F', '-', '8', 0};
  try {
    xercesc::DOMImplementation* implementation = serializerFor(document.node);
    std::unique_ptr<xercesc::DOMLSSerializer, void (*)(xercesc::DOMLSSerializer*)> serializer(
        implementation->createLSSerializer(), [](xercesc::DOMLSSerializer* s) { s->release(); });
    std::unique_ptr<xercesc::DOMLSOutput, void (*)(xercesc::DOMLSOutput*)> output(
        implementation->createLSOutput(), [](xercesc::DOMLSOutput* o) { o->release(); });
    // The declaration is written here: the serialiser's own adds
    // standalone="no".
    serializer->getDomConfig()->setParameter(xercesc::XMLUni::fgDOMXMLDeclaration, false);
    output->setEncoding(kUtf8);
    std::string bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    for (xercesc::DOMNode* node = document.node->getFirstChild(); node != nullptr;
         node = node->getNextSibling()) {
      xercesc::MemBufFormatTarget target;
      output->setByteStream(&target);
      try {
        if (!serializer->write(node, output.get())) {
          throw ParsingError("the document could not be written as XML");
        }
      } catch (const xercesc::DOMException& failure) {
        // The serialiser raises this when it meets what it cannot write,
        // such as a character XML 1.0 cannot hold. It becomes ours here:
        // its destructor frees through Xerces-C's memory manager, so one
        // that outlived the XML system would crash when it is caught.
        throw ParsingError("the document could not be written as XML: " +
                           transcodeFromXMLCh(failure.getMessage()));
      }
      bytes.append(reinterpret_cast<const char*>(target.getRawBuffer()), target.getLen());
      bytes += '\n';
    }
    return bytes;
  } catch (const xercesc::OutOfMemoryException&) {
    throw ParsingError("OutOfMemoryException");
  } catch (const xercesc::XMLException& exception) {
    throw ParsingError(transcodeFromXMLCh(exception.getMessage()));
  }
}

void serializeToMemory(const DOMNode& document, xercesc::MemBufFormatTarget*& memoryTarget,
                       const std::string& encoding) {
  serializeDocument(document, std::string(), memoryTarget, encoding);
}

}  // namespace XercesXML
