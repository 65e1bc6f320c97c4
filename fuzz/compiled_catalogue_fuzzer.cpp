// Fuzzes the compiled catalogue loader: arbitrary bytes as a file, loaded by
// MessageHandlerX::loadCompiledCatalogue into a handler that already holds
// an entry. Each input is tried twice: as it is, and with its checksum made
// right, so that mutations reach the checks behind the checksum. The
// in-memory reader decides on every input; the loader, from a file, must
// decide the same: succeed, or fail with ErrorInMessageDocument leaving the
// table as it was. After a load, every key gives the record that adding the
// accepted texts one by one gives. A file with a key index is read in place:
// its texts of a key are those the index names and that check, and no
// lookup may read outside the file (the sanitizers watch).

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "compiled_catalogues/CompiledCatalogueFormat.h"
#include "compiled_catalogues/CompiledCatalogueReader.h"
#include "message_core/MessageTable.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageHandlerX.h"

namespace {

std::string* scratchPath = nullptr;

void fail(const char* what) {
  std::fprintf(stderr, "compiled catalogue check failed: %s\n", what);
  std::abort();
}

class ProbeHandler : public msg::MessageHandlerX {
 public:
  ProbeHandler() {
    setMessageChannel(nullptr, false);
    const msg::Language languages[] = {msg::Language("de-AT"), msg::Language("de"),
                                       msg::Language("en")};
    setLanguageList(msg::LanguageList(3, languages));
    new msg::MTE(msg::info, "en", "\x01", "\x01", "made before", this, false, true);
    new msg::MTE(msg::error, "en", "msgx", "MessageDocumentError", "cannot load &0", this, false,
                 true);
  }
  std::uint32_t entryCount() const { return messageTableOf(*this)->getCount(); }
};

void writeScratch(const unsigned char* data, std::size_t size) {
  const int fd = open(scratchPath->c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (fd < 0 || (size > 0 && write(fd, data, size) != static_cast<ssize_t>(size)) ||
      close(fd) != 0) {
    fail("cannot write the scratch file");
  }
}

void loadOnce(const unsigned char* data, std::size_t size) {
  const msg::CompiledCatalogueReader reader(data, size);
  // Most inputs are refused by the reader; the whole load through a file
  // and a handler runs for every accepted one and for one refused in 32,
  // which keeps the target fast enough for long runs.
  static unsigned refusedCount = 0;
  if (!reader.problem().empty() && refusedCount++ % 32 != 0) {
    return;
  }
  writeScratch(data, size);
  ProbeHandler handler;
  const std::uint32_t before = handler.entryCount();
  bool loaded = true;
  try {
    handler.loadCompiledCatalogue(scratchPath->c_str());
  } catch (const msg::ErrorInMessageDocument& error) {
    loaded = false;
    if (error.getProblems().empty()) {
      fail("a refusal without a problem");
    }
  }
  if (loaded != reader.problem().empty()) {
    fail("the loader and the reader disagree");
  }
  if (!loaded && handler.entryCount() != before) {
    fail("a refused file changed the table");
  }
  std::unique_ptr<msg::Message> kept(handler.getMessage("\x01", "\x01"));
  if (kept == nullptr) {
    fail("the entry made before is gone");  // a file of that key may replace it, not remove it
  }
  if (!loaded) {
    return;
  }
  // The same texts added one by one through the entry constructor, as a
  // program would: the loader's linking of whole keys, or the lookup that
  // ranks the table with a file read in place, must agree with it.
  ProbeHandler reference;
  const msg::LanguageList languages = handler.getLanguageList();
  const auto addToReference = [&](const msg::CompiledCatalogueReader::Entry& entry) {
    if (languages.distance(msg::Language(entry.language)) >= 0) {
      new msg::MTE(static_cast<short>(entry.severity), entry.language, entry.nameSpace,
                   entry.identifier, entry.text, &reference, false, true);
    }
  };
  std::vector<std::pair<const char*, const char*>> keys;
  if (!reader.hasIndex()) {
    for (std::uint32_t i = 0; i < reader.entryCount(); ++i) {
      addToReference(reader.entry(i));
    }
    if (reference.entryCount() != handler.entryCount()) {
      fail("the load and single additions give different numbers of entries");
    }
    for (std::uint32_t i = 0; i < reader.entryCount() && i < 256; ++i) {
      keys.emplace_back(reader.entry(i).nameSpace, reader.entry(i).identifier);
    }
  } else {
    if (handler.entryCount() != before) {
      fail("a file read in place registered entries");
    }
    std::set<std::pair<std::string, std::string>> seen;
    for (std::uint32_t i = 0; i < reader.entryCount() && i < 256; ++i) {
      msg::CompiledCatalogueReader::Entry entry;
      if (!reader.checkedEntry(i, nullptr, nullptr, entry) ||
          !seen.emplace(entry.nameSpace, entry.identifier).second) {
        continue;
      }
      keys.emplace_back(entry.nameSpace, entry.identifier);
      const std::size_t namespaceLength = std::strlen(entry.nameSpace);
      const std::size_t identifierLength = std::strlen(entry.identifier);
      const msg::CompiledCatalogueReader::Found found =
          reader.find(msg::CompiledCatalogueReader::hashOf(entry.nameSpace, namespaceLength,
                                                           entry.identifier, identifierLength),
                      entry.nameSpace, namespaceLength, entry.identifier, identifierLength);
      for (std::uint32_t k = found.first; k < found.first + found.texts; ++k) {
        msg::CompiledCatalogueReader::Entry text;
        if (reader.checkedEntry(k, entry.nameSpace, entry.identifier, text)) {
          addToReference(text);
        }
      }
    }
  }
  for (const auto& [nameSpace, identifier] : keys) {
    std::unique_ptr<msg::Message> record(handler.getMessage(nameSpace, identifier));
    std::unique_ptr<msg::Message> expected(reference.getMessage(nameSpace, identifier));
    if ((record == nullptr) != (expected == nullptr)) {
      fail("a key is found after one kind of addition only");
    }
    if (record != nullptr && (std::strcmp(record->getText(), expected->getText()) != 0 ||
                              record->getSeverityLevel() != expected->getSeverityLevel() ||
                              !(record->getLanguage() == expected->getLanguage()))) {
      fail("the load and single additions give another record for a key");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  static msg::MessageHandlerX xmlSystemKeeper;  // each handler only joins the running system
  // In memory where possible: a file truncated and rewritten on a disk file
  // system is flushed at every close.
  const char* dir = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : std::getenv("TMPDIR");
  static std::string path = std::string(dir != nullptr ? dir : "/tmp") + "/msg-compiled-fuzz-" +
                            std::to_string(getpid()) + ".msgc";
  scratchPath = &path;
  std::atexit([] { unlink(scratchPath->c_str()); });
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  loadOnce(data, size);
  if (size >= msg::compiled::kHeaderSize) {
    std::vector<unsigned char> fixed(data, data + size);
    msg::compiled::writeU64(fixed.data() + msg::compiled::kChecksumOffset,
                            msg::compiled::checksumOf(fixed.data(), fixed.size()));
    loadOnce(fixed.data(), fixed.size());
  }
  return 0;
}
