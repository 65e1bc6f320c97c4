#include "xml_access/XMLSystem.h"

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "msg/XercesXMLException.h"

namespace XercesXML {

namespace {

// Process-wide state, zero when the library is loaded. Plain data: start,
// stop and UTF-8 conversions run on one thread at a time.
std::int32_t startCount = 0;
OutputEncoding outputEncoding = LocalCodePage;
xercesc::XMLTranscoder* outputTranscoder = nullptr;  // owned
// True only for a transcoder that was made without an error code.
bool outputTranscoderReady = false;

constexpr XMLSize_t kTranscoderBlockSize = 16384;
constexpr XMLSize_t kChunkBytes = 1024;

constexpr char kInitializationPrefix[] = "XercesXML - Error on initialization: ";
constexpr char kTranscodingFailed[] =
    "XercesXML::transcodeFromXMLCh(): Error while transcoding a string.";

// The message of a failed platform start in narrow form. The system is not
// up at that moment, so no Xerces-C conversion can be trusted: characters
// below 0x80 are copied as they are and every other unit becomes '?'. The
// platform's messages are English, so nothing of them is lost in practice.
std::string narrowPlatformMessage(const XMLCh* message) {
  std::string narrow;
  if (message == nullptr) {
    return narrow;
  }
  for (const XMLCh* unit = message; *unit != 0; ++unit) {
    narrow += *unit < 0x80 ? static_cast<char>(*unit) : '?';
  }
  return narrow;
}

void createOutputTranscoder() {
  xercesc::XMLTransService::Codes result = xercesc::XMLTransService::Ok;
  outputTranscoder = xercesc::XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
      "UTF-8", result, kTranscoderBlockSize, xercesc::XMLPlatformUtils::fgMemoryManager);
  outputTranscoderReady = result == xercesc::XMLTransService::Ok && outputTranscoder != nullptr;
  if (result != xercesc::XMLTransService::Ok) {
    throw ParsingError("");
  }
}

void releaseOutputTranscoder() {
  delete outputTranscoder;
  outputTranscoder = nullptr;
  outputTranscoderReady = false;
}

// One pass of the output transcoder: converts from `source` (`sourceCount`
// units) into `target` (`targetBytes` bytes), stores the units consumed in
// `consumed` and gives the number of bytes written.
XMLSize_t transcodeChunk(const XMLCh* source, XMLSize_t sourceCount, XMLByte* target,
                         XMLSize_t targetBytes, XMLSize_t& consumed,
                         xercesc::XMLTranscoder::UnRepOpts option) {
  return outputTranscoder->transcodeTo(source, sourceCount, target, targetBytes, consumed, option);
}

// Releases a buffer that Xerces-C allocated for a transcoded string.
class TranscodedBuffer {
 public:
  explicit TranscodedBuffer(char* buffer) : buffer(buffer) {}
  TranscodedBuffer(const TranscodedBuffer&) = delete;
  TranscodedBuffer& operator=(const TranscodedBuffer&) = delete;
  ~TranscodedBuffer() {
    xercesc::XMLString::release(&buffer, xercesc::XMLPlatformUtils::fgMemoryManager);
  }
  const char* get() const { return buffer; }

 private:
  char* buffer;
};

std::string transcodeToLocalCodePage(const XMLCh* text) {
  const TranscodedBuffer buffer(
      xercesc::XMLString::transcode(text, xercesc::XMLPlatformUtils::fgMemoryManager));
  if (buffer.get() == nullptr) {
    throw ParsingError(
        "XercesXML::transcodeFromXMLCh(): Error while transcoding a string: "
        "XMLString::transcode() returns NULL");
  }
  return std::string(buffer.get());
}

// Converts in passes into a fixed buffer. The transcoder stops a pass short
// of the buffer's end rather than split a character, and reports how many
// units it consumed, so the next pass starts exactly where this one ended.
std::string transcodeToUtf8(const XMLCh* text) {
  std::string result;
  XMLSize_t remaining = xercesc::XMLString::stringLen(text);
  if (remaining == 0) {
    return result;
  }
  if (!outputTranscoderReady) {
    throw ParsingError(kTranscodingFailed);
  }
  const XMLCh* position = text;
  XMLByte buffer[kChunkBytes];
  while (remaining > 0) {
    XMLSize_t consumed = 0;
    const XMLSize_t written = transcodeChunk(position, remaining, buffer, kChunkBytes, consumed,
                                             xercesc::XMLTranscoder::UnRep_Throw);
    if (consumed == 0) {
      throw ParsingError(kTranscodingFailed);
    }
    position += consumed;
    remaining -= consumed;
    result.append(reinterpret_cast<const char*>(buffer), written);
  }
  return result;
}

}  // namespace

void initializeSystem(OutputEncoding encoding) {
  const std::int32_t previousCount = startCount;
  ++startCount;
  if (previousCount == 0) {
    try {
      xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                            nullptr, nullptr);
    } catch (const xercesc::XMLException& failure) {
      --startCount;
      throw InitializationFailure(kInitializationPrefix +
                                  narrowPlatformMessage(failure.getMessage()));
    }
    outputEncoding = encoding;
    createOutputTranscoder();
    return;
  }
  if (encoding == outputEncoding) {
    return;
  }
  throw InitializationFailure(std::string(kInitializationPrefix) +
                              "No Modification allowed for Xerces-OutputEncoding");
}

void terminateSystem() {
  --startCount;
  if (startCount == 0) {
    releaseOutputTranscoder();
    xercesc::XMLPlatformUtils::Terminate();
  }
}

bool isSystemInitialized() {
  return startCount > 0;
}

OutputEncoding getOutputEncoding() {
  if (!isSystemInitialized()) {
    throw NotInitialized("XercesXML - OutputEncoding requested without initializing system.");
  }
  return outputEncoding;
}

std::string transcodeFromXMLCh(const XMLCh* text) {
  if (text == nullptr) {
    return std::string();
  }
  switch (getOutputEncoding()) {
    case LocalCodePage:
      return transcodeToLocalCodePage(text);
    case UTF8:
      return transcodeToUtf8(text);
    default:
      return std::string();
  }
}

}  // namespace XercesXML
