// Fuzzes the message document loader: arbitrary bytes as a file, read by
// MessageHandlerX::loadMessageDocument into a handler that already holds an
// entry. A load must either succeed or fail with ErrorInMessageDocument; on
// failure the table must be as it was, and in every case the entry made
// before must still be found with its text.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz/DocumentScratch.h"
#include "message_core/MessageTable.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/LanguageList.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageHandlerX.h"
#include "xml_access/XMLSystem.h"

namespace {

msgfuzz::DocumentScratch* scratch = nullptr;

// The loader turns an empty namespace or identifier into "no-ns" or "no-id",
// so no document can replace an entry of this key.
const char kKeptNamespace[] = "";
const char kKeptIdentifier[] = "";
const char kKeptText[] = "made before the load";

void fail(const char* what) {
  std::fprintf(stderr, "document check failed: %s\n", what);
  std::abort();
}

// A document handler with the plain process-wide handler behind it, so the
// loader's reports find the not-found text whatever the language list, and
// with access to its table.
class ProbeHandler : public msg::MessageHandlerX {
 public:
  ProbeHandler() {
    setParent(msg::MessageHandler::object());
    setMessageChannel(nullptr, false);
  }
  // The parent is borrowed: it must not be deleted with this handler.
  ~ProbeHandler() override { setParent(nullptr); }

  std::uint32_t entryCount() const { return messageTableOf(*this)->getCount(); }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  msgfuzz::leaveTheNetwork();
  // Keeps the XML system up between inputs, so each handler only joins it.
  XercesXML::initializeSystem(XercesXML::LocalCodePage);
  static msgfuzz::DocumentScratch files;
  scratch = &files;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string& path = scratch->write(bytes, size);

  ProbeHandler handler;
  // The length picks the language list, so every input is a whole file.
  switch (size % 3) {
    case 0:
      break;  // ["en"]
    case 1:
      handler.setLanguageList(msg::LanguageList(msg::Language("de-AT"), msg::Language("en")));
      break;
    default:
      handler.setLanguageList(msg::LanguageList(0, nullptr));
      break;
  }
  new msg::MTE(msg::info, "en", kKeptNamespace, kKeptIdentifier, kKeptText, &handler, false, true);
  const std::uint32_t countBefore = handler.entryCount();

  try {
    handler.loadMessageDocument(path.c_str());
  } catch (const msg::ErrorInMessageDocument& error) {
    if (error.getText() == nullptr || error.getText()[0] == '\0') {
      fail("ErrorInMessageDocument without a text");
    }
    if (handler.entryCount() != countBefore) {
      fail("a failed load changed the table");
    }
  }

  // Where the list accepts its language, the entry made before is found.
  std::unique_ptr<msg::Message> kept(handler.getMessage(kKeptNamespace, kKeptIdentifier));
  const bool englishAccepted = handler.getLanguageList().distance(msg::Language("en")) >= 0;
  if (englishAccepted && (kept == nullptr || std::strcmp(kept->getText(), kKeptText) != 0)) {
    fail("the entry made before the load is gone");
  }
  return 0;
}
