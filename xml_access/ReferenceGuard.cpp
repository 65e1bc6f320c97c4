#include "xml_access/ReferenceGuard.h"

#include <cctype>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/util/XMLString.hpp>

#include "xml_access/BoundedDOMParser.h"
#include "xml_access/XMLSystem.h"

namespace XercesXML {

namespace fs = std::filesystem;

namespace {

// The whole of an open file, read in one go into a string of its size.
std::string readWhole(std::ifstream& file) {
  file.seekg(0, std::ios::end);
  const std::streamoff size = file.tellg();
  file.seekg(0, std::ios::beg);
  std::string bytes;
  if (size > 0) {
    bytes.resize(static_cast<std::size_t>(size));
    file.read(&bytes[0], static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
  }
  return bytes;
}

// The length of the URL scheme that `name` starts with ("file:" gives 4),
// or 0. One letter before the colon is no scheme.
std::size_t schemeLength(const std::string& name) {
  if (name.empty() || std::isalpha(static_cast<unsigned char>(name[0])) == 0) {
    return 0;
  }
  for (std::size_t i = 1; i < name.size(); ++i) {
    const auto c = static_cast<unsigned char>(name[i]);
    if (c == ':') {
      return i > 1 ? i : 0;
    }
    if (std::isalnum(c) == 0 && c != '+' && c != '-' && c != '.') {
      return 0;
    }
  }
  return 0;
}

bool equalsIgnoringCase(const std::string& text, const char* lower) {
  std::size_t i = 0;
  for (; i < text.size() && lower[i] != '\0'; ++i) {
    if (std::tolower(static_cast<unsigned char>(text[i])) != lower[i]) {
      return false;
    }
  }
  return i == text.size() && lower[i] == '\0';
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// %XX escapes of a URL path turned back into bytes.
std::string percentDecoded(const std::string& text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 &&
        hexValue(text[i + 2]) >= 0) {
      decoded += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
      i += 2;
    } else {
      decoded += text[i];
    }
  }
  return decoded;
}

// True if `path` is `folder` or lies below it.
bool isWithin(const fs::path& path, const fs::path& folder) {
  auto inner = path.begin();
  for (auto outer = folder.begin(); outer != folder.end(); ++outer, ++inner) {
    if (outer->empty()) {
      continue;  // the empty last element of a folder that ends in '/'
    }
    if (inner == path.end() || *inner != *outer) {
      return false;
    }
  }
  return true;
}

fs::path canonicalOrNormal(const fs::path& path) {
  std::error_code failed;
  fs::path canonical = fs::weakly_canonical(path, failed);
  return failed ? path.lexically_normal() : canonical;
}

// The refusal of `reference`, at the place of the reference if known.
ParseRefused refusalOf(const xercesc::XMLResourceIdentifier& resource, const std::string& reason) {
  ParseProblem problem;
  problem.message = reason;
  const xercesc::Locator* locator = resource.getLocator();
  if (locator != nullptr) {
    problem.file = transcodeFromXMLCh(locator->getSystemId());
    problem.line = locator->getLineNumber();
    problem.column = locator->getColumnNumber();
  }
  if (problem.file.empty()) {
    problem.file = transcodeFromXMLCh(resource.getBaseURI());
  }
  return ParseRefused{problem};
}

// Ends the check of a part or schema at its first error: what Xerces-C's
// own parser would stop at, or a bound of BoundedDOMParser that the
// scanner enforces (the number of entity references).
class RefuseOnError : public xercesc::HandlerBase {
 public:
  RefuseOnError(const BoundedDOMParser& checker, std::string what)
      : checker(checker), what(std::move(what)) {}
  void error(const xercesc::SAXParseException& exception) override { refuse(exception); }
  void fatalError(const xercesc::SAXParseException& exception) override { refuse(exception); }

 private:
  [[noreturn]] void refuse(const xercesc::SAXParseException& exception) {
    throw ParseRefused{
        ParseProblem{transcodeFromXMLCh(exception.getSystemId()),
                     static_cast<std::uint64_t>(exception.getLineNumber()),
                     static_cast<std::uint64_t>(exception.getColumnNumber()),
                     what + " cannot be read: " + transcodeFromXMLCh(exception.getMessage()) +
                         noteOf(checker.referenceLimitNote())}};
  }

  static std::string noteOf(const std::string& note) {
    return note.empty() ? note : " (" + note + ")";
  }

  const BoundedDOMParser& checker;
  std::string what;
};

}  // namespace

std::string localFileOf(const std::string& name) {
  const std::size_t scheme = schemeLength(name);
  if (scheme == 0) {
    return name;
  }
  if (!equalsIgnoringCase(name.substr(0, scheme), "file")) {
    return std::string();
  }
  std::string rest = name.substr(scheme + 1);
  if (rest.compare(0, 2, "//") == 0) {
    const std::size_t pathStart = rest.find('/', 2);
    const std::string host =
        rest.substr(2, pathStart == std::string::npos ? std::string::npos : pathStart - 2);
    if (!host.empty() && !equalsIgnoringCase(host, "localhost")) {
      return std::string();
    }
    rest = pathStart == std::string::npos ? std::string("/") : rest.substr(pathStart);
  }
  return percentDecoded(rest);
}

fs::path resolveLocalFile(const std::string& reference, const std::string& base) {
  const fs::path path(reference);
  if (path.is_absolute()) {
    return path.lexically_normal();
  }
  fs::path folder = fs::path(localFileOf(base)).parent_path();
  if (folder.is_relative()) {
    folder = fs::current_path() / folder;
  }
  return (folder / path).lexically_normal();
}

ReferenceGuard::ReferenceGuard(const BoundedDOMParser& parser) : parser(parser) {}

ReferenceGuard::~ReferenceGuard() = default;

void ReferenceGuard::start(const std::string& documentPath, bool confine,
                           bool refuseDoctypeInParts) {
  contents.clear();
  refused.clear();
  this->refuseDoctypeInParts = refuseDoctypeInParts;
  root.clear();
  if (confine) {
    root =
        canonicalOrNormal(resolveLocalFile(localFileOf(documentPath), std::string())).parent_path();
  }
}

xercesc::InputSource* ReferenceGuard::resolveEntity(xercesc::XMLResourceIdentifier* resource) {
  try {
    return answer(*resource);
  } catch (const ParseRefused& refusal) {
    refused.push_back(refusal);
  }
  // Null would let Xerces-C open some references itself (an include, for
  // one). One blank ends every kind of reference quietly; an empty source
  // would make Xerces-C lose the reader of an external DTD.
  static const XMLByte kBlank[] = {' '};
  return new xercesc::MemBufInputSource(kBlank, 1, resource->getSystemId(), false);
}

xercesc::InputSource* ReferenceGuard::answer(const xercesc::XMLResourceIdentifier& resource) {
  const std::string reference = transcodeFromXMLCh(resource.getSystemId());
  const std::string base = transcodeFromXMLCh(resource.getBaseURI());
  switch (resource.getResourceIdentifierType()) {
    case xercesc::XMLResourceIdentifier::SchemaGrammar:
    case xercesc::XMLResourceIdentifier::SchemaImport:
    case xercesc::XMLResourceIdentifier::SchemaInclude:
    case xercesc::XMLResourceIdentifier::SchemaRedefine:
      return open(reference, base, Kind::Schema, resource);
    case xercesc::XMLResourceIdentifier::ExternalEntity:
      if (parser.isExpandingInclude()) {
        return open(reference, base, Kind::Part, resource);
      }
      break;
    default:
      break;
  }
  throw refusalOf(resource, "the external entity or DTD \"" + reference +
                                "\" is not read: external entities and DTDs are refused");
}

xercesc::InputSource* ReferenceGuard::open(const std::string& reference, const std::string& base,
                                           Kind kind,
                                           const xercesc::XMLResourceIdentifier& resource) {
  const char* what = kind == Kind::Part ? "the include" : "the schema";
  const std::string local = localFileOf(reference);
  if (local.empty()) {
    throw refusalOf(resource, std::string(what) + " \"" + reference +
                                  "\" is not a local file: nothing is read over a network");
  }
  const fs::path path = resolveLocalFile(local, base);
  if (kind == Kind::Part && !root.empty() && !isWithin(canonicalOrNormal(path), root)) {
    throw refusalOf(resource, std::string(what) + " \"" + reference +
                                  "\" lies outside the folder of the document (" + root.string() +
                                  "): parts must be in that folder or below it");
  }

  std::ifstream file(path, std::ios::binary);
  std::error_code notAFile;
  if (!file || !fs::is_regular_file(path, notAFile)) {
    // Xerces-C fails on it as on any missing file.
    XMLCh* widePath = xercesc::XMLString::transcode(path.c_str());
    xercesc::InputSource* source = nullptr;
    try {
      source = new xercesc::LocalFileInputSource(widePath);
    } catch (...) {
      xercesc::XMLString::release(&widePath);
      throw;
    }
    xercesc::XMLString::release(&widePath);
    return source;
  }
  contents.push_back(readWhole(file));
  const std::string& bytes = contents.back();
  const std::string systemId = "file://" + path.string();

  // The parse of Xerces-C's own parser comes after this one, over the same
  // bytes, so it meets nothing this one did not accept.
  BoundedDOMParser checker;
  ReferenceGuard checkerGuard(checker);
  checker.setDoNamespaces(true);
  checker.setCreateEntityReferenceNodes(false);
  checker.setRefuseDoctype(kind == Kind::Part && refuseDoctypeInParts);
  checker.setXMLEntityResolver(&checkerGuard);
  checker.setDisableDefaultEntityResolution(true);
  RefuseOnError refuseOnError(checker, std::string(what) + " \"" + reference + "\"");
  checker.setErrorHandler(&refuseOnError);
  const bool recordPart = kind == Kind::Part && partPositions != nullptr;
  checker.setKeepPositions(recordPart);
  // Neither source copies the bytes: `contents` keeps them for the parse.
  {
    xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                                      systemId.c_str(), false);
    source.setCopyBufToStream(false);
    checker.parseBounded(source);
  }
  if (const ParseRefused* inner = checkerGuard.getRefusal()) {
    throw *inner;
  }
  if (recordPart) {
    partPositions->record(path.string(), checker.getDocument(), checker.takePositions());
  }
  auto* source = new xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(bytes.data()),
                                                bytes.size(), systemId.c_str(), false);
  source->setCopyBufToStream(false);
  return source;
}

}  // namespace XercesXML
