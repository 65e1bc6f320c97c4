#include "OutsideXml.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "platform/AtomicFile.h"
#include "xml_access/BoundedDOMParser.h"

namespace msgtool {

namespace {

// The library's bounded parser (element depth, entity expansion) with every
// door closed: no DOCTYPE, no validation, no schema, no include, no
// external entity.
void closeEveryDoor(XercesXML::BoundedDOMParser& parser) {
  parser.setRefuseDoctype(true);
  parser.setKeepPositions(true);
  parser.setDoNamespaces(true);
  parser.setValidationScheme(xercesc::XercesDOMParser::Val_Never);
  parser.setDoSchema(false);
  parser.setLoadSchema(false);
  parser.setLoadExternalDTD(false);
  parser.setDoXInclude(false);
  parser.setDisableDefaultEntityResolution(true);
  parser.setCreateEntityReferenceNodes(false);
  parser.setExitOnFirstFatalError(true);
}

// Keeps the first error of a parse with its line.
class FirstErrorKeeper : public xercesc::ErrorHandler {
 public:
  void warning(const xercesc::SAXParseException&) override {}
  void error(const xercesc::SAXParseException& problem) override { keep(problem); }
  void fatalError(const xercesc::SAXParseException& problem) override { keep(problem); }
  void resetErrors() override {}

  bool failed = false;
  int line = 0;
  std::string message;

 private:
  void keep(const xercesc::SAXParseException& problem) {
    if (!failed) {
      failed = true;
      line = static_cast<int>(problem.getLineNumber());
      message = toUtf8(problem.getMessage());
    }
  }
};

xercesc::DOMImplementation* implementation() {
  static const XMLCh kCore[] = {'C', 'o', 'r', 'e', 0};
  xercesc::DOMImplementation* found =
      xercesc::DOMImplementationRegistry::getDOMImplementation(kCore);
  if (found == nullptr) {
    throw std::runtime_error("no DOM implementation is registered");
  }
  return found;
}

}  // namespace

std::string FileProblem::describe() const {
  return file + (line > 0 ? ":" + std::to_string(line) : std::string()) + ": error: " + what();
}

XmlString::XmlString(const std::string& utf8) {
  xercesc::TranscodeFromStr converted(reinterpret_cast<const XMLByte*>(utf8.data()), utf8.size(),
                                      "UTF-8");
  XMLSize_t length = converted.length();
  text.reset(new XMLCh[length + 1]);
  std::memcpy(text.get(), converted.str(), length * sizeof(XMLCh));
  text[length] = 0;
}

std::string toUtf8(const XMLCh* text) {
  if (text == nullptr || *text == 0) {
    return std::string();
  }
  xercesc::TranscodeToStr converted(text, "UTF-8");
  return std::string(reinterpret_cast<const char*>(converted.str()), converted.length());
}

std::string attributeOf(const xercesc::DOMElement* element, const char* localName,
                        const char* namespaceUri) {
  const xercesc::DOMAttr* attribute =
      *namespaceUri == 0
          ? element->getAttributeNodeNS(nullptr, XmlString(localName))
          : element->getAttributeNodeNS(XmlString(namespaceUri), XmlString(localName));
  return attribute == nullptr ? std::string() : toUtf8(attribute->getValue());
}

std::string localNameOf(const xercesc::DOMNode* node) {
  const XMLCh* local = node->getLocalName();
  return toUtf8(local != nullptr ? local : node->getNodeName());
}

XmlDocument XmlDocument::parse(const std::string& path, bool keepComments) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    throw FileProblem(path, 0, "is a folder, not a file");
  }
  std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) {
    throw FileProblem(path, 0, "cannot be read: " + error.message());
  }
  if (size > kMaxXmlFileBytes) {
    throw FileProblem(path, 0, "is larger than " + std::to_string(kMaxXmlFileBytes >> 20) + " MiB");
  }
  if (access(path.c_str(), R_OK) != 0) {
    throw FileProblem(path, 0, std::string("cannot be read: ") + std::strerror(errno));
  }
  XercesXML::BoundedDOMParser parser;
  closeEveryDoor(parser);
  parser.setCreateCommentNodes(keepComments);
  FirstErrorKeeper errors;
  parser.setErrorHandler(&errors);
  try {
    parser.parseBounded(path.c_str());
  } catch (const XercesXML::ParseRefused& refused) {
    throw FileProblem(path, static_cast<int>(refused.problem.line), refused.problem.message);
  } catch (const xercesc::XMLException& failure) {
    throw FileProblem(path, static_cast<int>(failure.getSrcLine()), toUtf8(failure.getMessage()));
  } catch (const xercesc::DOMException& failure) {
    throw FileProblem(path, 0, toUtf8(failure.getMessage()));
  }
  if (errors.failed) {
    throw FileProblem(path, errors.line, "is not well-formed XML: " + errors.message);
  }
  if (parser.getDocument() == nullptr || parser.getDocument()->getDocumentElement() == nullptr) {
    throw FileProblem(path, 0, "holds no XML document");
  }
  XmlDocument document(parser.adoptDocument());
  document.positions = parser.takePositions();
  return document;
}

XmlDocument XmlDocument::create(const std::string& namespaceUri, const std::string& qualifiedName) {
  XmlString name(qualifiedName);
  if (namespaceUri.empty()) {
    return XmlDocument(implementation()->createDocument(nullptr, name, nullptr));
  }
  return XmlDocument(implementation()->createDocument(XmlString(namespaceUri), name, nullptr));
}

XmlDocument::XmlDocument(XmlDocument&& other) noexcept
    : document(other.document), positions(std::move(other.positions)) {
  other.document = nullptr;
}

XmlDocument& XmlDocument::operator=(XmlDocument&& other) noexcept {
  if (this != &other) {
    if (document != nullptr) {
      document->release();
    }
    document = other.document;
    other.document = nullptr;
    positions = std::move(other.positions);
  }
  return *this;
}

XmlDocument::~XmlDocument() {
  if (document != nullptr) {
    document->release();
  }
}

int XmlDocument::lineOf(const xercesc::DOMNode* node) const {
  return static_cast<int>(positions.find(node).line);
}

std::string XmlDocument::serialize() const {
  static const XMLCh kLoadSave[] = {'L', 'S', 0};
  auto* ls = dynamic_cast<xercesc::DOMImplementationLS*>(
      xercesc::DOMImplementationRegistry::getDOMImplementation(kLoadSave));
  if (ls == nullptr) {
    throw std::runtime_error("no DOM implementation with Load and Save is registered");
  }
  std::unique_ptr<xercesc::DOMLSSerializer, void (*)(xercesc::DOMLSSerializer*)> serializer(
      ls->createLSSerializer(), [](xercesc::DOMLSSerializer* s) { s->release(); });
  std::unique_ptr<xercesc::DOMLSOutput, void (*)(xercesc::DOMLSOutput*)> output(
      ls->createLSOutput(), [](xercesc::DOMLSOutput* o) { o->release(); });
  // The declaration is written here: the serialiser's own adds standalone="no".
  // The nodes around the root element (comments, processing instructions)
  // go on lines of their own, as they stood in a parsed file.
  serializer->getDomConfig()->setParameter(xercesc::XMLUni::fgDOMXMLDeclaration, false);
  output->setEncoding(XmlString("UTF-8"));
  std::string bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  for (xercesc::DOMNode* node = document->getFirstChild(); node != nullptr;
       node = node->getNextSibling()) {
    xercesc::MemBufFormatTarget target;
    output->setByteStream(&target);
    if (!serializer->write(node, output.get())) {
      throw std::runtime_error("the document could not be written as XML");
    }
    bytes.append(reinterpret_cast<const char*>(target.getRawBuffer()), target.getLen());
    bytes += '\n';
  }
  return bytes;
}

void replaceFileAtomically(const std::string& path, const std::string& bytes,
                           const std::function<void(const std::string&)>& verify) {
  try {
    msg::platform::replaceFileAtomically(path, bytes.data(), bytes.size(), verify);
  } catch (const msg::platform::AtomicFileError& failure) {
    const bool replacing = failure.getStep() == msg::platform::AtomicFileError::Step::replace;
    throw FileProblem(
        path, 0, (replacing ? "cannot be replaced: " : "cannot be written: ") + failure.reason());
  }
}

}  // namespace msgtool
